#pragma once

// The built-in model formats and the file access they share (not installed).
#include <memory>
#include <string>
#include <string_view>

#include "Velmar/Lattix/Format/ModelFormat.h"

namespace Velmar::Lattix::format {

// "SpatialModelFormat": the model as XML.
class SpatialModelFormat : public ModelFormat {
public:
    std::wstring GetName() const override;
    std::wstring GetExtension() const override;
    bool Recognizes(std::string_view bytes) const override;
    std::string Write(const Model& model) const override;
    std::shared_ptr<Model> Read(std::string_view bytes, const std::wstring& source) const override;
};

// "EncryptedSpatialModelFormat": the XML under XChaCha20-Poly1305 (docs/model-format.md).
class EncryptedSpatialModelFormat : public ModelFormat {
public:
    std::wstring GetName() const override;
    std::wstring GetExtension() const override;
    bool Recognizes(std::string_view bytes) const override;
    std::string Write(const Model& model) const override;
    std::shared_ptr<Model> Read(std::string_view bytes, const std::wstring& source) const override;
    std::wstring BytesToText(const std::string& bytes) const override;
    std::string TextToBytes(const std::wstring& text) const override;
};

// The whole content of a file; raises QuarnLog::Exception naming the file and the failed call.
std::string ReadWholeFile(const std::wstring& path);
// Writes bytes to a temporary file beside path, flushes it to disk and renames it over path; on
// failure the temporary file is removed and path is untouched.
void WriteFileAtomically(const std::wstring& path, std::string_view bytes);

}  // namespace Velmar::Lattix::format
