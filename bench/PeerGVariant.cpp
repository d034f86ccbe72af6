// GVariant, the format of D-Bus in glib: typed tuples, written and read with format strings; texts
// are borrowed when read ("&s"), so that only the callback's strings are made.

#include "bench/Bench.h"

#include <glib.h>

#include <cstring>

namespace
{

std::string stored(GVariant* variant)
{
    g_variant_ref_sink(variant);
    std::string bytes(g_variant_get_size(variant), '\0');
    g_variant_store(variant, &bytes[0]);
    g_variant_unref(variant);
    return bytes;
}

/// A tuple as it comes in: not trusted, as from another process.
struct Tuple
{
    Tuple(const char* type, const std::string& bytes)
        : variant(g_variant_ref_sink(g_variant_new_from_data(
              G_VARIANT_TYPE(type), bytes.data(), bytes.size(), FALSE, nullptr, nullptr)))
    {
    }
    ~Tuple() { g_variant_unref(variant); }
    Tuple(const Tuple&) = delete;
    Tuple& operator=(const Tuple&) = delete;

    GVariant* variant;
};

template <typename Write, typename Read>
void addRequest(const std::string& name, const std::string& answer, Write write, Read read)
{
    const std::shared_ptr<ProxyRequest> channel = std::make_shared<Channel>(answer);
    add(name + "/GVariant",
        [channel, write, read]
        {
            std::string answered;
            channel->sendRequest(stored(write()), answered);
            read(answered);
        });
}

void done(const std::string& answer)
{
    const Tuple tuple("(i)", answer);
    gint32 result = 0;
    g_variant_get(tuple.variant, "(i)", &result);
    Touch().heard("", result);
}

/// The fields in one tuple behind the name of the event: "s" for texts and "i" for numbers.
std::string packed(const Message& message, std::string& type)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_TUPLE);
    if (!message.method.empty())
        g_variant_builder_add(&builder, "s", message.method.c_str());
    for (const Message::Field& field : message.fields)
        if (field.isNumber)
            g_variant_builder_add(&builder, "i", std::stoi(field.value));
        else
            g_variant_builder_add(&builder, "s", field.value.c_str());
    if (!message.payload.empty())
        g_variant_builder_add(&builder, "s", message.payload.c_str());
    GVariant* const tuple = g_variant_builder_end(&builder);
    type = g_variant_get_type_string(tuple);
    return stored(tuple);
}

template <typename Tell>
void addEvent(const std::string& name, const Message& message, Tell tell)
{
    std::string type;
    const std::string bytes = packed(message, type);
    add(name + "/GVariant",
        [bytes, type, tell]
        {
            const Tuple tuple(type.c_str(), bytes);
            tell(callbacks(&subscriber), tuple.variant);
            response.messageHandled();
        });
}

}  // namespace

void addGVariant()
{
    using Ifc = CommunicationsServiceEventIfc;
    const std::string carriedOut = stored(g_variant_new("(i)", 5));
    addRequest(
        "answerCall", carriedOut,
        [] { return g_variant_new("(ssi)", "AnswerCall", line.c_str(), callId); }, done);
    addRequest(
        "outgoingCallMake", carriedOut,
        []
        {
            return g_variant_new("(ssisbbb)", "OutgoingCallMakeRequest", line.c_str(), callId,
                                 destination, TRUE, FALSE, TRUE);
        },
        done);
    addRequest(
        "setForwardingConfiguration", carriedOut,
        []
        {
            return g_variant_new("(ssibsib)", "setForwardingConfiguration", line.c_str(), 1, TRUE,
                                 uri.c_str(), 3, FALSE);
        },
        done);
    addRequest(
        "SendCSTARequest.2KiB", carriedOut,
        [] { return g_variant_new("(sss)", "SendCSTARequest", line.c_str(), payload.c_str()); },
        done);
    addRequest(
        "getForwardingConfiguration", stored(g_variant_new("(ibsi)", 5, TRUE, uri.c_str(), 3)),
        [] { return g_variant_new("(si)", "getForwardingConfiguration", 1); },
        [](const std::string& answer)
        {
            const Tuple tuple("(ibsi)", answer);
            gint32 result = 0;
            gboolean status = FALSE;
            const char* text = nullptr;
            gint32 rings = 0;
            g_variant_get(tuple.variant, "(ib&si)", &result, &status, &text, &rings);
            Touch().heard("", result, status != FALSE, std::string(text), rings);
        });
    addRequest(
        "getMessageWaitingIndicator",
        stored(g_variant_new("(iiiiiiiiis)", 5, 1, 3, 12, 1, 2, 4, 5, 1, "+4989700019999")),
        [] { return g_variant_new("(s)", "GetMessageWaitingIndicator"); },
        [](const std::string& answer)
        {
            const Tuple tuple("(iiiiiiiiis)", answer);
            gint32 n[9] = {};
            const char* number = nullptr;
            g_variant_get(tuple.variant, "(iiiiiiiii&s)", &n[0], &n[1], &n[2], &n[3], &n[4], &n[5],
                          &n[6], &n[7], &n[8], &number);
            Touch().heard("", n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8],
                          std::string(number));
        });
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
    for (const std::string& device : devices)
        g_variant_builder_add(&list, "s", device.c_str());
    addRequest(
        "getDevices.12", stored(g_variant_new("(as)", &list)),
        [] { return g_variant_new("(s)", "GetDevices"); },
        [](const std::string& answer)
        {
            const Tuple tuple("(as)", answer);
            GVariantIter* iterator = nullptr;
            g_variant_get(tuple.variant, "(as)", &iterator);
            std::vector<std::string> items;
            const char* item = nullptr;
            while (g_variant_iter_next(iterator, "&s", &item))
                items.push_back(item);
            g_variant_iter_free(iterator);
            Touch().heard("", items);
        });

    addEvent("DevicesChangedEvent", devicesChanged,
             [](Ifc& to, GVariant* tuple)
             {
                 const char* method = nullptr;
                 g_variant_get(tuple, "(&s)", &method);
                 to.onDevicesChangedEvent();
             });
    addEvent("CallHeldEvent", callHeld,
             [](Ifc& to, GVariant* tuple)
             {
                 const char* s[2] = {};
                 gint32 id = 0;
                 g_variant_get(tuple, "(&s&si)", &s[0], &s[1], &id);
                 to.onCallHeldEvent(s[1], id);
             });
    addEvent("CallStateChangeEvent.18", callState,
             [](Ifc& to, GVariant* tuple)
             {
                 const char* s[10] = {};
                 gint32 n[9] = {};
                 g_variant_get(tuple, "(&s&siiii&s&s&s&s&s&s&sii&siii)", &s[0], &s[1], &n[0], &n[1],
                               &n[2], &n[3], &s[2], &s[3], &s[4], &s[5], &s[6], &s[7], &s[8], &n[4],
                               &n[5], &s[9], &n[6], &n[7], &n[8]);
                 CallPartyInfo record;
                 record.reservedText1[0] = record.reservedText2[0] = '\0';
                 record.reservedText3[0] = record.reservedText4[0] = '\0';
                 record.reservedNumber = 0;
                 std::strcpy(record.callingNumber, s[5]);
                 std::strcpy(record.callingName, s[6]);
                 std::strcpy(record.calledNumber, s[7]);
                 std::strcpy(record.calledName, s[8]);
                 to.onCallStateChangeEvent(s[1], n[0], n[1], n[2], n[3], s[2], s[3], s[4], &record,
                                           n[4], n[5], s[9], n[6] != 0, n[7], n[8]);
             });
    addEvent("IncomingCallEvent.17", incomingCall,
             [](Ifc& to, GVariant* tuple)
             {
                 const char* s[9] = {};
                 gint32 n[9] = {};
                 g_variant_get(tuple, "(&s&si&s&s&s&s&sii&s&siiiiii)", &s[0], &s[1], &n[0], &s[2],
                               &s[3], &s[4], &s[5], &s[6], &n[1], &n[2], &s[7], &s[8], &n[3], &n[4],
                               &n[5], &n[6], &n[7], &n[8]);
                 to.onIncomingCallEvent(s[1], n[0], s[2], s[3], s[4], s[5], s[6], n[1] != 0, n[2],
                                        s[7], s[8], n[3], n[4] != 0, n[5], n[6], n[7], n[8] != 0);
             });
    addEvent("b2buaCSTAResponse.2KiB", cstaResponse,
             [](Ifc& to, GVariant* tuple)
             {
                 const char* s[3] = {};
                 gint32 success = 0;
                 g_variant_get(tuple, "(&s&si&s)", &s[0], &s[1], &success, &s[2]);
                 std::string text = s[2];
                 to.onB2buaCSTAResponse(s[1], success != 0, text);
             });

    GVariantBuilder ids;
    g_variant_builder_init(&ids, G_VARIANT_TYPE("ai"));
    g_variant_builder_add(&ids, "i", 4711);
    g_variant_builder_add(&ids, "i", 4712);
    GVariantBuilder uris;
    g_variant_builder_init(&uris, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&uris, "s", "498970001001");
    g_variant_builder_add(&uris, "s", "498970001002");
    const std::string security = stored(
        g_variant_new("(ssiiaias)", "securityStatusChanged", line.c_str(), callId, 2, &ids, &uris));
    add("securityStatusChanged/GVariant",
        [security]
        {
            const Tuple tuple("(ssiiaias)", security);
            const char* s[2] = {};
            gint32 n[2] = {};
            GVariantIter* numbers = nullptr;
            GVariantIter* texts = nullptr;
            g_variant_get(tuple.variant, "(&s&siiaias)", &s[0], &s[1], &n[0], &n[1], &numbers,
                          &texts);
            std::vector<int> recorded;
            gint32 id = 0;
            while (g_variant_iter_next(numbers, "i", &id))
                recorded.push_back(id);
            std::vector<std::string> lines;
            const char* text = nullptr;
            while (g_variant_iter_next(texts, "&s", &text))
                lines.push_back(text);
            g_variant_iter_free(numbers);
            g_variant_iter_free(texts);
            callbacks(&subscriber).onSecurityStatusChanged(s[1], n[0], n[1], recorded, lines);
            response.messageHandled();
        });
}
