#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/ObjectName.h"

namespace Velmar::Lattix {

// The process-wide registry of data types: makes a fresh (initialized) value of a type by name.
// The standard types, the generic "TAMARIN.Data", "TAMARIN.Dictionary", "TAMARIN.Color" and the
// catalogue's enumerations are registered on first use. Safe to call from any thread.
class DataFactory {
public:
    // A new value of the type; an unknown type raises QuarnLog::Exception naming it.
    static std::shared_ptr<Data> Create(const ObjectName& type);
    static std::shared_ptr<Data> Create(const std::wstring& fullTypeName);
    // Like Create, but null for an unknown type.
    static std::shared_ptr<Data> TryCreate(const ObjectName& type);
    static bool IsKnownType(const ObjectName& type);
    // Every registered type, ordered by full name.
    static std::vector<ObjectName> GetListOfAllTypes();
    // Adds (or replaces) a type: Create clones prototype and initializes the copy.
    // prototype must not be null.
    static void Register(const std::shared_ptr<Data>& prototype);

    // Makes a value of `type` from `text` (Create, then FromString); errors as FromString.
    static std::shared_ptr<Data> FromString(const ObjectName& type, const std::wstring& text);
    // Makes a value from {"type": full name, "value": JSON}; errors name the type or the shape.
    static std::shared_ptr<Data> FromTypedJson(const JsonValue& typed);
    static JsonValue ToTypedJson(const Data& data);
};

}  // namespace Velmar::Lattix
