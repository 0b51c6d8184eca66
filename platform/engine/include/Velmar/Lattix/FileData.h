#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct fileDataRecord;

// A file or folder name, "TAMARIN.File". The text form is the name itself; any text but one holding
// a line break or a NUL is accepted. Whether the name denotes an input or an output is the port's
// "Input" data attribute.
class FileData : public Data {
public:
    FileData();
    explicit FileData(const std::wstring& value);

    static ObjectName DefaultTypeName();

    std::wstring GetValue() const;
    void SetValue(const std::wstring& value);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;

private:
    std::shared_ptr<fileDataRecord> fileData;
};

}  // namespace Velmar::Lattix
