#include <string>
#include <string_view>

#include "Velmar/Lattix/Model.h"
#include "format/formats.h"
#include "format/modelxml.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix {

std::wstring ModelFormat::BytesToText(const std::string& bytes) const {
    return qtxt::UTF8toDefaultWide(bytes);
}

std::string ModelFormat::TextToBytes(const std::wstring& text) const {
    return qtxt::DefaultWideToUTF8(text);
}

namespace format {

std::wstring SpatialModelFormat::GetName() const {
    return L"SpatialModelFormat";
}

std::wstring SpatialModelFormat::GetExtension() const {
    return L".gmdx";
}

bool SpatialModelFormat::Recognizes(std::string_view bytes) const {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    auto start = bytes.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && bytes[start] == '<';
}

std::string SpatialModelFormat::Write(const Model& model) const {
    return WriteModelXml(model);
}

std::shared_ptr<Model> SpatialModelFormat::Read(std::string_view bytes,
                                                const std::wstring& source) const {
    return ReadModelXml(bytes, source);
}

}  // namespace format
}  // namespace Velmar::Lattix
