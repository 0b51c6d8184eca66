#pragma once

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

namespace Velmar::Lattix {

struct jsonValue;

// A structured value used to compare and exchange data values: two values are equal when their
// JSON documents are equal (object keys compare unordered, numbers by value). Copies share nothing.
class JsonValue {
public:
    JsonValue();
    explicit JsonValue(nlohmann::json json);
    JsonValue(const JsonValue& other);
    JsonValue& operator=(const JsonValue& other);
    JsonValue(JsonValue&&) noexcept = default;
    JsonValue& operator=(JsonValue&&) noexcept = default;

    const nlohmann::json& GetJson() const;
    nlohmann::json& GetJson();

    // Compact JSON text (UTF-8 keys and strings).
    std::string ToText() const;
    // Parses JSON text; a malformed text raises QuarnLog::Exception naming the byte offset.
    static JsonValue FromText(const std::string& text);

    bool IsNull() const;
    friend bool operator==(const JsonValue& a, const JsonValue& b);

private:
    std::shared_ptr<jsonValue> jsonData;
};

}  // namespace Velmar::Lattix
