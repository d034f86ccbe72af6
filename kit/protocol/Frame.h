#ifndef KIT_PROTOCOL_FRAME_H
#define KIT_PROTOCOL_FRAME_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace kit
{

/// One message on the socket between an application and the service:
///
///     4 bytes  length of channel name and text together
///     4 bytes  type
///     8 bytes  id: an answer has that of its request; 0 where none is awaited
///     4 bytes  length of the channel name
///              channel name, then text, as they stand
///
/// Numbers have their highest byte first.
struct Frame
{
    enum Type : std::uint32_t
    {
        request = 1,  ///< to the service, answered
        subscribe,    ///< the same; the channel is where events are to go
        post,         ///< to the service, not answered
        control,      ///< to the simulation, answered
        answer,       ///< to the application
        event,        ///< to the application, for a channel
        refusal,      ///< the answer to a control that is not carried out: why
        complaint,    ///< to the application: what is wrong with a request of its own
        farewell      ///< to the application: why the service closes the connection
    };

    Type type = request;
    std::uint64_t id = 0;
    std::string channel;
    std::string text;
};

constexpr std::size_t frameHeaderSize = 20;
constexpr std::size_t maximumFrameContents = 16 * 1024 * 1024;

/// What came is no frame; the connection cannot be used any further.
class FrameError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Throws FrameError for contents that are too large.
std::string encodeFrame(const Frame& frame);

/// Takes frames out of a stream of bytes, however it comes in pieces. Not for several threads.
class FrameReader
{
public:
    void append(const char* data, std::size_t size) { buffer_.append(data, size); }

    /// Bytes that have come and are not taken yet.
    std::size_t held() const { return buffer_.size() - taken_; }

    /// False when no whole frame is there. Throws FrameError; a size is checked before its bytes
    /// are waited for.
    bool next(Frame& frame);

private:
    std::string buffer_;
    std::size_t taken_ = 0;
};

}  // namespace kit

#endif
