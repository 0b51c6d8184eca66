#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace Velmar::Lattix {

class Model;

// One way of writing a model as bytes: a file format of ModelFormatFactory. Formats are stateless
// and shared by every thread.
class ModelFormat {
public:
    virtual ~ModelFormat() = default;

    // The name callers select the format by ("SpatialModelFormat").
    virtual std::wstring GetName() const = 0;
    // The file name extension, with its dot (".gmdx").
    virtual std::wstring GetExtension() const = 0;
    // Whether bytes look like this format (checks the first bytes only).
    virtual bool Recognizes(std::string_view bytes) const = 0;

    // The whole model as bytes. model must not be null. Raises QuarnLog::Exception on failure.
    virtual std::string Write(const Model& model) const = 0;
    // A new model read from bytes; source names the file (or the text) in error messages. A
    // damaged or hostile input raises QuarnLog::Exception naming source and the place.
    virtual std::shared_ptr<Model> Read(std::string_view bytes,
                                        const std::wstring& source) const = 0;

    // Bytes as wide text for SaveToBuffer, and back for OpenFromBuffer. The default carries UTF-8
    // text over unchanged; binary formats armour their bytes.
    virtual std::wstring BytesToText(const std::string& bytes) const;
    virtual std::string TextToBytes(const std::wstring& text) const;
};

}  // namespace Velmar::Lattix
