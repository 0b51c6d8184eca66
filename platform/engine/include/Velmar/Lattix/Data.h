#pragma once

#include <memory>
#include <string>

#include "Velmar/Lattix/JsonValue.h"
#include "Velmar/Lattix/ObjectName.h"

namespace Velmar::Lattix {

// A typed value of the engine: what ports hold, attributes store and models save. Every type has a
// full name ("TAMARIN.Int"), a text form that FromString reads back, a JSON form that FromJson
// reads back, and a deep Clone. Values are always held by shared pointer. A value is not locked:
// share one between threads only for reading.
class Data {
public:
    virtual ~Data() = default;

    // The full name of this value's type.
    virtual ObjectName GetDataTypeName() const = 0;
    // The name of the generic type, "TAMARIN.Data"; each subclass hides it with its own type name.
    static ObjectName DefaultTypeName();

    // The text form shown to users and written into "Operator.Port=value" arguments.
    virtual std::wstring ToString() const = 0;
    // Replaces the value with the one the text describes. A text that does not describe a value of
    // this type raises QuarnLog::Exception naming the text, the type and what was expected; the
    // value is unchanged then.
    virtual void FromString(const std::wstring& text) = 0;

    virtual JsonValue ToJson() const = 0;
    // Replaces the value from its JSON form; a wrong shape raises QuarnLog::Exception.
    virtual void FromJson(const JsonValue& value) = 0;

    // A deep copy that shares nothing with this value.
    virtual std::shared_ptr<Data> Clone() const = 0;

    // Resets to the type's initial value (0, empty text, false, no items).
    virtual void Initialize() = 0;
    // Same as FromString.
    void Initialize(const std::wstring& text) { FromString(text); }

    // True for single values that a user types in one field (numbers, texts, files, booleans,
    // enumerations); false for lists, dictionaries, rasters and generic values.
    virtual bool IsPlainValue() const { return true; }

    // Same type and JSON-equal values.
    bool Equals(const Data& other) const;
};

}  // namespace Velmar::Lattix
