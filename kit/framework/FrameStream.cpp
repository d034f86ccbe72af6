#include "kit/framework/FrameStream.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kit
{

namespace
{

/// How long one who is sent a last word may take to read it.
constexpr std::chrono::milliseconds patience = std::chrono::seconds(1);

}  // namespace

FrameStream::FrameStream(Socket socket, std::shared_ptr<std::atomic<std::size_t>> all)
    : socket_(std::move(socket)), deadline_(socket_.get_executor()), all_(std::move(all))
{
}

FrameStream::~FrameStream()
{
    if (all_ != nullptr)
        *all_ -= counted_;
}

void FrameStream::start(Ear ear)
{
    ear_ = std::move(ear);
    read();
}

/// Keeps the count of all streams right; with the lock held.
void FrameStream::countLocked()
{
    const std::size_t now = waitingBytes_ + sendingBytes_ + unread_;
    if (all_ != nullptr)
        *all_ += now - counted_;
    counted_ = now;
}

FrameStream::Sent FrameStream::send(const Frame& frame)
{
    Parcel parcel{frame.id, encodeFrame(frame)};
    const std::lock_guard<std::mutex> lock(mutex_);
    if (over_ || last_)
        return Sent::over;
    if (waitingBytes_ + sendingBytes_ + parcel.bytes.size() > maximumWaiting)
        return Sent::tooMuch;
    waitingBytes_ += parcel.bytes.size();
    waiting_.push_back(std::move(parcel));
    countLocked();
    if (!std::exchange(writing_, true))
        asio::post(socket_.get_executor(), [self = shared_from_this()] { self->write(); });
    return Sent::taken;
}

void FrameStream::takeBack(std::uint64_t id)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto unsent = std::find_if(waiting_.begin(), waiting_.end(),
                                     [&](const Parcel& parcel) { return parcel.id == id; });
    if (unsent == waiting_.end())
        return;
    waitingBytes_ -= unsent->bytes.size();
    waiting_.erase(unsent);
    countLocked();
}

std::size_t FrameStream::held() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return counted_;
}

bool FrameStream::waitUntilSent(std::chrono::milliseconds time)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return sent_.wait_for(lock, time, [this] { return !writing_ || over_; });
}

void FrameStream::read()
{
    socket_.async_read_some(
        asio::buffer(incoming_),
        [self = shared_from_this()](const asio::error_code& error, std::size_t size)
        {
            if (error)
            {
                self->end(self->why_);
                return;
            }
            try
            {
                self->reader_.append(self->incoming_.data(), size);
                Frame frame;
                while (!self->over_ && !self->last_ && self->reader_.next(frame))
                    self->ear_.frame(frame);
            }
            catch (const FrameError& wrong)
            {
                self->ear_.broken(wrong.what());
                return;
            }
            {
                const std::lock_guard<std::mutex> lock(self->mutex_);
                if (self->over_ || self->last_)
                    return;
                self->unread_ = self->reader_.held();
                self->countLocked();
            }
            if (self->unread_ > 0 && self->ear_.part)
                self->ear_.part();
            if (!self->over_)
                self->read();
        });
}

void FrameStream::write()
{
    std::vector<asio::const_buffer> buffers;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (over_ || !sending_.empty())
            return;
        if (deaf_)
            waiting_.clear();
        sending_.assign(std::make_move_iterator(waiting_.begin()),
                        std::make_move_iterator(waiting_.end()));
        waiting_.clear();
        sendingBytes_ = deaf_ ? 0 : waitingBytes_;
        waitingBytes_ = 0;
        writing_ = !sending_.empty();
        countLocked();
    }
    if (sending_.empty())
    {
        sent_.notify_all();
        if (last_)
            end(why_);
        return;
    }
    for (const Parcel& parcel : sending_)
        buffers.push_back(asio::buffer(parcel.bytes));
    asio::async_write(socket_, buffers,
                      [self = shared_from_this()](const asio::error_code& error, std::size_t)
                      {
                          {
                              const std::lock_guard<std::mutex> lock(self->mutex_);
                              self->sending_.clear();
                              self->sendingBytes_ = 0;
                          }
                          // What the other side sent before it went is still taken in: reading,
                          // which comes to an end as well, ends it.
                          if (error)
                              self->deaf_ = true;
                          self->write();
                      });
}

void FrameStream::finish(const Frame& last, const std::string& why)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (over_ || last_)
            return;
        last_ = true;
        why_ = why;
        Parcel parcel{0, encodeFrame(last)};
        waitingBytes_ += parcel.bytes.size();
        waiting_.push_back(std::move(parcel));
        writing_ = true;
    }
    const auto self = shared_from_this();
    deadline_.expires_after(patience);
    deadline_.async_wait(
        [self](const asio::error_code& error)
        {
            if (!error)
                self->end(self->why_);
        });
    write();
}

void FrameStream::end(const std::string& why)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (std::exchange(over_, true))
            return;
        waiting_.clear();
        waitingBytes_ = 0;
        unread_ = 0;
        countLocked();
    }
    const auto self = shared_from_this();
    sent_.notify_all();
    asio::error_code ignored;
    socket_.close(ignored);
    deadline_.cancel();
    ear_.ended(why);
}

}  // namespace kit
