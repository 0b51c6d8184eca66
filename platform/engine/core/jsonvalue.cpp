#include "Velmar/Lattix/JsonValue.h"

#include "QuarnLog/Exception.h"

namespace Velmar::Lattix {

struct jsonValue {
    nlohmann::json json;
};

JsonValue::JsonValue() : jsonData(std::make_shared<jsonValue>()) {}
JsonValue::JsonValue(nlohmann::json json)
    : jsonData(std::make_shared<jsonValue>(jsonValue{std::move(json)})) {}
JsonValue::JsonValue(const JsonValue& other)
    : jsonData(std::make_shared<jsonValue>(*other.jsonData)) {}

JsonValue& JsonValue::operator=(const JsonValue& other) {
    if (this != &other) jsonData = std::make_shared<jsonValue>(*other.jsonData);
    return *this;
}

const nlohmann::json& JsonValue::GetJson() const {
    return jsonData->json;
}
nlohmann::json& JsonValue::GetJson() {
    return jsonData->json;
}

std::string JsonValue::ToText() const {
    return jsonData->json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

JsonValue JsonValue::FromText(const std::string& text) {
    try {
        return JsonValue(nlohmann::json::parse(text));
    } catch (const nlohmann::json::parse_error& error) {
        QUARN_THROW("Invalid JSON text at byte " + std::to_string(error.byte) + ": " +
                    error.what());
    }
}

bool JsonValue::IsNull() const {
    return jsonData->json.is_null();
}

bool operator==(const JsonValue& a, const JsonValue& b) {
    return a.GetJson() == b.GetJson();
}

}  // namespace Velmar::Lattix
