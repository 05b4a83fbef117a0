#include "intelligence/burrower_message.hpp"

#include <nlohmann/json.hpp>

namespace vx {

std::string VXBurrowerObjectForProcess(long pid) { return "burrower-" + std::to_string(pid); }

std::string VXEncodeBurrowerMessage(const VXBurrowerMessage& message) {
    nlohmann::ordered_json info = nlohmann::ordered_json::object();
    for (const auto& [key, value] : message.userInfo) info[key] = value;
    nlohmann::ordered_json object = {{"name", message.name}, {"object", message.object}, {"userInfo", info}};
    // Invalid UTF-8 in a document's text is replaced rather than failing the whole message.
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::optional<VXBurrowerMessage> VXDecodeBurrowerMessage(std::string_view line) {
    const auto object = nlohmann::json::parse(line.begin(), line.end(), nullptr, false);
    if (!object.is_object()) return std::nullopt;
    auto name = object.find("name");
    auto target = object.find("object");
    auto info = object.find("userInfo");
    if (name == object.end() || !name->is_string() || target == object.end() || !target->is_string()) return std::nullopt;
    VXBurrowerMessage message;
    message.name = name->get<std::string>();
    message.object = target->get<std::string>();
    if (info != object.end() && info->is_object())
        for (const auto& [key, value] : info->items())
            if (value.is_string()) message.userInfo[key] = value.get<std::string>();
    return message;
}

}  // namespace vx
