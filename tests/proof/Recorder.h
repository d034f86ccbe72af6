#ifndef COMMUNICATIONS_SERVICE_PROOF_RECORDER_H
#define COMMUNICATIONS_SERVICE_PROOF_RECORDER_H

#include "CommunicationsServiceEventIfc.h"
#include "framework/Executable.h"

#include <cstdio>
#include <string>
#include <vector>

/// Writes "callback(argument, argument)" so that no two lists of arguments look the same: a text
/// stands with its length, an unsigned number with a "u". The whole of it is appended to one string,
/// and nothing else is allocated: with enough reserved, nothing at all.
class CallText
{
public:
    explicit CallText(std::string& to) : to_(to) {}

    void begin(const char* callback)
    {
        to_ += callback;
        to_ += '(';
    }

    void add(const std::string& text)
    {
        print("%zu:", text.size());
        to_.append(text).append(", ");
    }
    void add(int number) { print("%d, ", number); }
    void add(unsigned int number) { print("%uu, ", number); }
    void add(bool flag) { to_ += flag ? "true, " : "false, "; }
    void add(const std::vector<int>& numbers)
    {
        to_ += '[';
        for (const int number : numbers)
            add(number);
        to_ += "], ";
    }
    void add(const std::vector<std::string>& texts)
    {
        to_ += '[';
        for (const std::string& text : texts)
            add(text);
        to_ += "], ";
    }
    void add(const CallPartyInfo* record)
    {
        to_ += '{';
        for (const char* text : {record->reservedText1,
                                 record->reservedText2,
                                 record->reservedText3,
                                 record->reservedText4})
            to_.append(text).append("|");
        print("%d", record->reservedNumber);
        for (const char* text :
             {record->calledName, record->calledNumber, record->callingName, record->callingNumber})
            to_.append("|").append(text);
        to_ += "}, ";
    }

    void end() { to_ += ")\n"; }

private:
    template <typename Number>
    void print(const char* format, Number number)
    {
        char digits[32];
        std::snprintf(digits, sizeof digits, format, number);
        to_ += digits;
    }

    std::string& to_;
};

/// A subscriber that writes down what it is told.
class Recorder : public Executable, public CommunicationsServiceEventIfc
{
public:
    explicit Recorder(std::size_t room = 0) { said.reserve(room); }

    void init(Context&) override {}
    void shutdown() override {}

    std::string said;
    bool writes = true;

    /// Called at the end of every callback.
    virtual void told() {}

    // clang-format off
    void onCallStateChangeEvent(const std::string& a, int b, int c, int d, int e,
        const std::string& f, const std::string& g, const std::string& h, CallPartyInfo* i, int j,
        int k, const std::string& l, bool m, int n, int o) override
        { say("onCallStateChangeEvent", a, b, c, d, e, f, g, h, static_cast<const CallPartyInfo*>(i),
              j, k, l, m, n, o); }
    void onRegistrationStateChangeEvent(const std::string& a, int b, bool c, int d) override
        { say("onRegistrationStateChangeEvent", a, b, c, d); }
    void onIncomingCallEvent(const std::string& a, int b, const std::string& c,
        const std::string& d, const std::string& e, const std::string& f, const std::string& g,
        bool h, int i, const std::string& j, const std::string& k, int l, bool m, int n, int o,
        int p, bool q) override
        { say("onIncomingCallEvent", a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q); }
    void onIncomingPickupCallEvent(const std::string& a, int b, const std::string& c,
        const std::string& d, const std::string& e) override
        { say("onIncomingPickupCallEvent", a, b, c, d, e); }
    void onCallHeldEvent(const std::string& a, int b) override { say("onCallHeldEvent", a, b); }
    void onCallRetrievedEvent(const std::string& a, int b, const std::string& c,
        const std::string& d, const std::string& e, int f, int g, bool h) override
        { say("onCallRetrievedEvent", a, b, c, d, e, f, g, h); }
    void onFeatureSuccessEvent(const std::string& a, int b, int c) override
        { say("onFeatureSuccessEvent", a, b, c); }
    void onFeatureFailedEvent(const std::string& a, int b, int c, int d) override
        { say("onFeatureFailedEvent", a, b, c, d); }
    void onRemoteEndpointDetailsChangedEvent(const std::string& a, int b, const std::string& c,
        const std::string& d, const std::string& e, bool f, bool g) override
        { say("onRemoteEndpointDetailsChangedEvent", a, b, c, d, e, f, g); }
    void onIncomingCallMissedEvent(const std::string& a, int b, const std::string& c,
        const std::string& d, const std::string& e, int f, const std::string& g,
        const std::string& h, int i) override
        { say("onIncomingCallMissedEvent", a, b, c, d, e, f, g, h, i); }
    void onCallForwardedEvent(const std::string& a, int b, const std::string& c,
        const std::string& d, const std::string& e, const std::string& f, int g) override
        { say("onCallForwardedEvent", a, b, c, d, e, f, g); }
    void onIncomingAssociatedCallEvent(const std::string& a, int b, int c) override
        { say("onIncomingAssociatedCallEvent", a, b, c); }
    void onDevicesChangedEvent() override { say("onDevicesChangedEvent"); }
    void onMessageWaitingEvent(const std::string& a, int b, unsigned int c, unsigned int d,
        unsigned int e, unsigned int f, int g, int h, int i, const std::string& j) override
        { say("onMessageWaitingEvent", a, b, c, d, e, f, g, h, i, j); }
    void onDoNotDisturbEvent(const std::string& a, bool b) override
        { say("onDoNotDisturbEvent", a, b); }
    void onAgentStateEvent(const std::string& a, const std::string& b) override
        { say("onAgentStateEvent", a, b); }
    void onSecurityStatusChanged(const std::string& a, int b, int c, std::vector<int>& d,
        std::vector<std::string>& e) override
        { say("onSecurityStatusChanged", a, b, c, d, e); }
    void onCallRecordingStatusEvent(const std::string& a, int b, const std::string& c) override
        { say("onCallRecordingStatusEvent", a, b, c); }
    void onPreemptionStatusChanged(const std::string& a, int b, int c, int d,
        const std::string& e) override
        { say("onPreemptionStatusChanged", a, b, c, d, e); }
    void onImpactLevelChanged(const std::string& a, int b, int c, int d) override
        { say("onImpactLevelChanged", a, b, c, d); }
    void onSystemStatusEvent(const std::string& a, const std::string& b) override
        { say("onSystemStatusEvent", a, b); }
    void onServerFeatureStatusEvent(const std::string& a, const std::string& b) override
        { say("onServerFeatureStatusEvent", a, b); }
    void onB2buaCSTAResponse(const std::string& a, bool b, std::string& c) override
        { say("onB2buaCSTAResponse", a, b, c); }
    void onB2buaCSTAEventOrRequest(const std::string& a, std::string& b) override
        { say("onB2buaCSTAEventOrRequest", a, b); }
    void onConferenceStatusEvent(const std::string& a, int b, const std::string& c) override
        { say("onConferenceStatusEvent", a, b, c); }
    void onCallCompletionEvent(const std::string& a, const std::string& b, int c, int d,
        bool e) override
        { say("onCallCompletionEvent", a, b, c, d, e); }
    void onCallCompletionFailedEvent(const std::string& a, const std::string& b, int c) override
        { say("onCallCompletionFailedEvent", a, b, c); }
    void onBluetoothAudioStatusChanged(const std::string& a, int b, bool c, bool d,
        bool e) override
        { say("onBluetoothAudioStatusChanged", a, b, c, d, e); }
    // clang-format on

private:
    template <typename... Arguments>
    void say(const char* callback, const Arguments&... arguments)
    {
        if (writes)
        {
            CallText call(said);
            call.begin(callback);
            (call.add(arguments), ...);
            call.end();
        }
        told();
    }
};

#endif
