#include "kit/protocol/Frame.h"

namespace kit
{

namespace
{

void put(std::string& text, std::uint64_t value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift & 0xff);
}

std::uint64_t get(const std::string& text, std::size_t at, std::size_t bytes)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        value = value << 8 | static_cast<unsigned char>(text[at + i]);
    return value;
}

void checkSize(std::uint64_t size)
{
    if (size > maximumFrameContents)
        throw FrameError("a message of " + std::to_string(size) + " bytes, " +
                         std::to_string(maximumFrameContents) + " are possible");
}

}  // namespace

std::string encodeFrame(const Frame& frame)
{
    const std::size_t size = frame.channel.size() + frame.text.size();
    checkSize(size);
    std::string bytes;
    bytes.reserve(frameHeaderSize + size);
    put(bytes, size, 4);
    put(bytes, frame.type, 4);
    put(bytes, frame.id, 8);
    put(bytes, frame.channel.size(), 4);
    bytes += frame.channel;
    bytes += frame.text;
    return bytes;
}

bool FrameReader::next(Frame& frame)
{
    if (buffer_.size() - taken_ < frameHeaderSize)
    {
        // What has been taken is let go only now and then.
        buffer_.erase(0, taken_);
        taken_ = 0;
        return false;
    }
    const std::uint64_t size = get(buffer_, taken_, 4);
    const std::uint64_t type = get(buffer_, taken_ + 4, 4);
    const std::uint64_t channel = get(buffer_, taken_ + 16, 4);
    if (type < Frame::request || type > Frame::farewell)
        throw FrameError("a message of the unknown type " + std::to_string(type));
    checkSize(size);
    if (channel > size)
        throw FrameError("a channel name of " + std::to_string(channel) +
                         " bytes in a message of " + std::to_string(size));
    if (buffer_.size() - taken_ - frameHeaderSize < size)
        return false;
    const std::size_t contents = taken_ + frameHeaderSize;
    frame.type = static_cast<Frame::Type>(type);
    frame.id = get(buffer_, taken_ + 8, 8);
    frame.channel.assign(buffer_, contents, static_cast<std::size_t>(channel));
    frame.text.assign(buffer_, contents + static_cast<std::size_t>(channel),
                      static_cast<std::size_t>(size - channel));
    taken_ = contents + static_cast<std::size_t>(size);
    return true;
}

}  // namespace kit
