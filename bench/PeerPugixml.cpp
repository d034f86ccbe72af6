// pugixml: a root element with the fields in it, parsed in place as its manual recommends for speed,
// and looked up by name.

#include "bench/DocumentPeer.h"
#include "bench/Entrants.h"

#include <pugixml.hpp>

namespace
{

struct Xml
{
    class Document
    {
    public:
        void put(const char* tag, const std::string& value) { put(tag, value.c_str()); }

        template <typename Value>
        void put(const char* tag, const Value& value)
        {
            root_.append_child(tag).text().set(value);
        }

        template <typename Value>
        void add(const std::string& tag, const Value& value)
        {
            put(tag.c_str(), value);
        }

        std::string text() const
        {
            struct Writer : pugi::xml_writer
            {
                void write(const void* data, std::size_t size) override
                {
                    text.append(static_cast<const char*>(data), size);
                }
                std::string text;
            } writer;
            document_.print(writer, "", pugi::format_raw | pugi::format_no_declaration);
            return writer.text;
        }

    private:
        pugi::xml_document document_;
        pugi::xml_node root_ = document_.append_child("message");
    };

    class Fields
    {
    public:
        explicit Fields(const std::string& from) : text_(from)
        {
            parsed_.load_buffer_inplace(&text_[0], text_.size());
            root = parsed_.document_element();
        }

        std::string_view view(const char* tag) const { return root.child(tag).child_value(); }
        std::string text(const char* tag) const { return root.child(tag).child_value(); }
        int number(const char* tag) const { return root.child(tag).text().as_int(-1); }

        std::vector<std::string> texts(const char* tag) const
        {
            std::vector<std::string> all;
            for (const pugi::xml_node& item : root.children(tag))
                all.push_back(item.child_value());
            return all;
        }

        std::vector<int> numbers(const char* tag) const
        {
            std::vector<int> all;
            for (const pugi::xml_node& item : root.children(tag))
                all.push_back(item.text().as_int());
            return all;
        }

        pugi::xml_node root;

    private:
        std::string text_;
        pugi::xml_document parsed_;
    };

    static std::vector<std::string> values(const std::string& request)
    {
        std::vector<std::string> all;
        const Fields fields(request);
        for (const pugi::xml_node& field : fields.root.children())
            if (std::string_view(field.name()) != "Method")
                all.push_back(field.child_value());
        return all;
    }
};

}  // namespace

void addPugixml()
{
    DocumentPeer<Xml> peer("pugixml");
    peer.addRequests();
    peer.addEvents();
    peer.addCallState("CallStateChangeEvent.18.reverse", callState.reversed());
    for (std::size_t size = smallest; measuresGrowth && size <= largest; size *= 4)
        peer.addCallState("growth.unknownInFront." + std::to_string(size),
                          callState.withUnknownInFront(size));
}
