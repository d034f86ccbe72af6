#ifndef KIT_TRACE_LABELS_H
#define KIT_TRACE_LABELS_H

#include "kit/binding/Subscriber.h"

#include <string>

namespace kit
{

/// "CallHeldEvent lineId=1001 callId=12": what a person wants to know of an event.
std::string eventLabel(const ReceivedEvent& received);

/// The same with every field that is not absent.
std::string fullEventLabel(const ReceivedEvent& received);

/// "holdCall line=1001 callId=12 holdCallReason=hold manual=true"; flags that are usually off are
/// left out where they are.
std::string callLabel(const Operation& operation, const Values& values,
                      const std::vector<std::string>& nulls);

/// A message on the wire in short, "CallHeldEvent CallID=12".
std::string messageLabel(const std::string& text);

/// Whether a field tells the line, or the number of a call.
bool isLine(const Field& field);
bool isCall(const Field& field);

/// Nothing was sent for the field.
bool isAbsent(const std::string& value);

/// The value is absent, the usual, or said by another field.
bool saysNothing(const Field& field, const std::string& value);

/// "2001" of "sip:2001@example.com".
std::string shortNumber(const std::string& uri);

}  // namespace kit

#endif
