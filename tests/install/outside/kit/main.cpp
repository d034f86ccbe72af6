// An outside program that was given the installed kit: opens the library through it, sends a request
// and takes an event.
#include "kit/testing/EventInjector.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/RecordingChannel.h"

#include <iostream>

int main()
{
    kit::RecordingChannel channel;
    const int result = channel.service().answerCall("1001", 12);
    const std::string request = channel.requests("AnswerCall").at(0).text;

    kit::EventRecorder recorder;
    kit::EventInjector events(recorder);
    events.inject("CallHeldEvent", {{"lineId", "1002"}, {"callId", "34"}});
    const std::string event = recorder.events().at(0).inWords();

    std::cout << result << "\n" << request << "\n" << event << "\n";
    return result == sfiSuccess &&
                   request == "<Method>AnswerCall</Method><Line>1001</Line><CallID>12</CallID>" &&
                   event == "CallHeldEvent lineId=1002 callId=34"
               ? 0
               : 1;
}
