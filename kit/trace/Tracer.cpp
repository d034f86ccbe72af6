#include "kit/trace/Tracer.h"

#include <utility>

namespace kit
{

Tracer::Tracer(Sink sink) : sink_(std::move(sink)) {}

TraceHead Tracer::head(const std::string& program) const
{
    TraceHead head;
    head.format = traceFormat;
    head.start = timeOfDay_;
    head.program = program;
    return head;
}

void Tracer::take(const Passage& passage)
{
    switch (passage.what)
    {
    case Passage::What::request:
    {
        const int number = request(passage.sending, passage.text, passage.channel);
        const std::lock_guard<std::mutex> lock(mutex_);
        numbers_[passage.number] = number;
        break;
    }
    case Passage::What::answer:
    {
        int number = 0;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            const auto found = numbers_.find(passage.number);
            number = found == numbers_.end() ? 0 : found->second;
            numbers_.erase(passage.number);
        }
        answer(number, passage.sending, passage.delivery, passage.text);
        break;
    }
    case Passage::What::message:
        request(passage.sending, passage.text);
        break;
    case Passage::What::arrival:
    {
        TraceRecord record;
        record.kind = TraceRecord::Kind::event;
        record.channel = passage.channel;
        record.text = passage.text;
        tell(std::move(record));
        break;
    }
    case Passage::What::event:
        break;
    }
}

int Tracer::request(Sending sending, const std::string& text, const std::string& channel)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::request;
    record.sending = sending;
    record.text = text;
    record.channel = channel;
    if (sending != Sending::oneWay)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        record.number = ++requests_;
    }
    const int number = record.number;
    tell(std::move(record));
    return number;
}

void Tracer::answer(int number, Sending sending, Delivery delivery, const std::string& text)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::answer;
    record.number = number;
    record.sending = sending;
    record.delivery = delivery;
    if (delivery == Delivery::done)
        record.text = text;
    tell(std::move(record));
}

void Tracer::control(const std::string& command)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::control;
    record.text = command;
    tell(std::move(record));
}

void Tracer::tell(TraceRecord record)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    record.thread =
        threads_.emplace(std::this_thread::get_id(), static_cast<int>(threads_.size()) + 1)
            .first->second;
    record.time = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - start_);
    sink_(record);
}

}  // namespace kit
