// Pseudonyms: what is put in the place of what, and that equal ones stay equal.

#include "recorder/Mask.h"

#include <gtest/gtest.h>

namespace
{

using recorder::Kind;
using recorder::Mask;

const struct
{
    Kind kind;
    const char* text;
    const char* masked;
} rows[] = {
    // One after the other, with one mask: pseudonyms are counted through.
    {Kind::request, "<Method>AnswerCall</Method><Line>2001</Line><CallID>12</CallID>",
     "<Method>AnswerCall</Method><Line>900001</Line><CallID>12</CallID>"},
    {Kind::event,
     "<Method>IncomingCallEvent</Method><LineID>2001</LineID><CallID>2001</CallID>"
     "<URI>sip:+492002@example.com;user=phone</URI><Name>Zoe Maier</Name>",
     "<Method>IncomingCallEvent</Method><LineID>900001</LineID><CallID>2001</CallID>"
     "<URI>sip:900002@name3;user=phone</URI><Name>name4 name5</Name>"},
    {Kind::event, "<Method>CallHeldEvent</Method><URI>Zoe \"2001\" <2001></URI>",
     "<Method>CallHeldEvent</Method><URI>name4 \"900001\" <900001></URI>"},
    {Kind::request, "<Method>GenerateDigits</Method><Line></Line><digits>12#4</digits>",
     "<Method>GenerateDigits</Method><Line></Line><digits>0000</digits>"},
    // What is no short word is none of the protocol's, whatever its tag.
    {Kind::event, "<Method>AgentStateEvent</Method><agentState>Zoe, call +49 89!</agentState>",
     "<Method>AgentStateEvent</Method><agentState>masked6</agentState>"},
    // Not known.
    {Kind::event,
     "<Method>NewEvent</Method><NewTag>2001</NewTag><Other>7</Other><CallID>33</CallID>",
     "<Method>NewEvent</Method><NewTag>masked1</NewTag><Other>7</Other><CallID>33</CallID>"},
    // Payloads.
    {Kind::request, "<Method>SendCSTARequest</Method><Line>2001</Line><?xml v=\"1\"?><a>2</a>",
     "<Method>SendCSTARequest</Method><Line>900001</Line>masked7"},
    {Kind::request, "SigEvent:INVITE sip:2001", "SigEvent:masked8"},
    {Kind::request, "SigEvent:", "SigEvent:"},
    {Kind::request, "INVITE", "masked9"},
    // Cut off behind its tag, and in the middle of one.
    {Kind::request, "<Method>DeflectCall</Method><Line>2001</Line><Destination>",
     "<Method>DeflectCall</Method><Line>900001</Line><Destination>"},
    {Kind::request, "<Method>DeflectCall</Method><Destination>2001",
     "<Method>DeflectCall</Method><Destination>masked1"},
    {Kind::event, "<Method>CallHeldEvent</Method><Line", "<Method>CallHeldEvent</Method>masked10"},
    // Answers.
    {Kind::answer, "", ""},
    {Kind::answer, "true", "true"},
    {Kind::answer, "sfiSuccess", "sfiSuccess"},
    {Kind::answer, "sfi says: ask Zoe at 2001", "masked11"},
    {Kind::answer, "2001", "masked1"},
    {Kind::answer, "<2001><2003>", "<900001><900012>"},
    {Kind::answer, "<sfiResult>sfiSuccess</sfiResult><status>1</status><uri>2003</uri>",
     "<sfiResult>sfiSuccess</sfiResult><status>1</status><uri>900012</uri>"},
    {Kind::exception, "std::runtime_error: no way to 2001", "std::runtime_error"},
    {Kind::exception, "MarloException", "MarloException"},
};

TEST(RecorderMask, Texts)
{
    Mask mask;
    for (const auto& row : rows)
        EXPECT_EQ(mask.masked(row.kind, row.text), row.masked);
}

}  // namespace
