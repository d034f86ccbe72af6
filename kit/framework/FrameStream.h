#ifndef KIT_FRAMEWORK_FRAME_STREAM_H
#define KIT_FRAMEWORK_FRAME_STREAM_H

#include "kit/protocol/Frame.h"

#include <array>
#include <asio.hpp>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kit
{

/// What may wait to be sent on one connection while the other side does not read.
constexpr std::size_t maximumWaiting = 64 * 1024 * 1024;

/// Either end of a connection: frames go out in their order, at the pace of the other side, and come
/// in one by one.
///
/// Threads: send(), takeBack(), held() and waitUntilSent() from any; everything else on the one that
/// runs the socket's io_context, where the ear is told too.
class FrameStream : public std::enable_shared_from_this<FrameStream>
{
public:
    using Socket = asio::local::stream_protocol::socket;

    struct Ear
    {
        /// A FrameError that this throws is told to `broken`.
        std::function<void(Frame& frame)> frame;
        /// What came is no message: nothing more is read.
        std::function<void(const std::string& what)> broken;
        /// Part of a frame has come; more of it is awaited. May be null.
        std::function<void()> part;
        /// Told once; "" when the other side has just gone.
        std::function<void(const std::string& why)> ended;
    };

    /// @param all  counts what all streams of a process hold; may be null
    explicit FrameStream(Socket socket, std::shared_ptr<std::atomic<std::size_t>> all = nullptr);
    ~FrameStream();

    FrameStream(const FrameStream&) = delete;
    FrameStream& operator=(const FrameStream&) = delete;

    void start(Ear ear);

    enum class Sent
    {
        taken,
        tooMuch,  ///< already waits
        over
    };

    /// Throws FrameError for a frame that is too large.
    Sent send(const Frame& frame);

    /// What has not begun to be sent is not sent.
    void takeBack(std::uint64_t id);

    /// Bytes that wait here, in either direction.
    std::size_t held() const;

    /// False when that takes longer.
    bool waitUntilSent(std::chrono::milliseconds patience);

    /// Reads nothing more, sends what waits and then `last`, and ends; after a second in any case.
    void finish(const Frame& last, const std::string& why);

    /// Ends at once.
    void end(const std::string& why);

private:
    /// A frame that is to be sent.
    struct Parcel
    {
        std::uint64_t id;
        std::string bytes;
    };

    void read();
    void write();
    void countLocked();

    Socket socket_;
    asio::steady_timer deadline_;
    const std::shared_ptr<std::atomic<std::size_t>> all_;
    Ear ear_;
    FrameReader reader_;
    std::array<char, 65536> incoming_;
    std::vector<Parcel> sending_;
    std::string why_;
    bool deaf_ = false;  ///< nothing can be sent any more; what has been sent to us is still read

    mutable std::mutex mutex_;
    std::condition_variable sent_;
    std::deque<Parcel> waiting_;
    std::size_t waitingBytes_ = 0;
    std::size_t sendingBytes_ = 0;
    std::size_t unread_ = 0;   ///< bytes of a frame that is not whole yet
    std::size_t counted_ = 0;  ///< what `all_` has of this
    bool writing_ = false;
    bool last_ = false;
    bool over_ = false;
};

}  // namespace kit

#endif
