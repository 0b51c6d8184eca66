#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace Velmar::Lattix {

class Data;
class DictionaryData;
struct dataRefRecord;

// One entry of a dictionary, by key: reads it as a given type and assigns it. Reading a missing
// entry, or one of another type, answers the type's empty value (empty text, 0, false, null);
// IsNull tells a missing entry apart. Holds the dictionary by shared pointer.
class DataRef {
public:
    // dictionary must not be null.
    DataRef(std::shared_ptr<DictionaryData> dictionary, std::wstring key);

    bool IsNull() const;
    std::wstring AsString() const;
    // Int, Unsigned, Double (truncated toward zero) and Bool entries read as numbers.
    std::int64_t AsInt() const;
    double AsDouble() const;
    bool AsBool() const;
    std::shared_ptr<Data> AsData() const;

    // Assignments store a new value of the matching standard type under the key (a null Data
    // removes the entry).
    DataRef& operator=(std::shared_ptr<Data> value);
    DataRef& operator=(const std::wstring& value);
    DataRef& operator=(const wchar_t* value);
    DataRef& operator=(std::int64_t value);
    DataRef& operator=(int value);
    DataRef& operator=(double value);
    DataRef& operator=(bool value);

    const std::wstring& GetKey() const;

private:
    std::shared_ptr<dataRefRecord> dataRef;
};

}  // namespace Velmar::Lattix
