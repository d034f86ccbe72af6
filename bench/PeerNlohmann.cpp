// nlohmann JSON: one object with the fields in it; texts are read by reference, without a copy.

#include "bench/DocumentPeer.h"
#include "bench/Entrants.h"

#include <nlohmann/json.hpp>

namespace
{

struct Json
{
    class Document
    {
    public:
        template <typename Value>
        void put(const char* tag, const Value& value)
        {
            object_[tag] = value;
        }

        /// Fields that come more than once become an array.
        template <typename Value>
        void add(const std::string& tag, const Value& value)
        {
            if (tag == "item" || tag == "id" || (tag == "uri" && object_.contains("id")))
                object_[tag].push_back(value);
            else
                object_[tag] = value;
        }

        std::string text() const { return object_.dump(); }

    private:
        nlohmann::json object_;
    };

    class Fields
    {
    public:
        explicit Fields(const std::string& from) : root(nlohmann::json::parse(from)) {}

        const std::string& text(const char* tag) const
        {
            return root.at(tag).get_ref<const std::string&>();
        }
        std::string_view view(const char* tag) const { return text(tag); }
        int number(const char* tag) const { return root.at(tag).get<int>(); }

        std::vector<std::string> texts(const char* tag) const
        {
            std::vector<std::string> all;
            for (const nlohmann::json& item : root.at(tag))
                all.push_back(item.get_ref<const std::string&>());
            return all;
        }

        std::vector<int> numbers(const char* tag) const
        {
            std::vector<int> all;
            for (const nlohmann::json& item : root.at(tag))
                all.push_back(item.get<int>());
            return all;
        }

        nlohmann::json root;
    };

    static std::vector<std::string> values(const std::string& request)
    {
        std::vector<std::string> all;
        const Fields fields(request);
        for (const auto& [tag, value] : fields.root.items())
            if (tag != "Method")
                all.push_back(value.is_string() ? value.get<std::string>() : value.dump());
        return all;
    }
};

}  // namespace

void addNlohmann()
{
    DocumentPeer<Json> peer("nlohmann");
    peer.addRequests();
    peer.addEvents();
}
