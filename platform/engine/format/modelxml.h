#pragma once

// Reading and writing models as the XML of the plain model format (not installed).
#include <memory>
#include <string>
#include <string_view>

namespace Velmar::Lattix {
class Model;
}

namespace Velmar::Lattix::format {

// The version written into every file; files of a higher version are refused.
constexpr int ModelXmlVersion = 1;
// How deep models may nest inside models, and values (lists, dictionaries) inside values.
constexpr int MaxModelDepth = 64;
constexpr int MaxValueDepth = 64;

// The model as UTF-8 XML, written deterministically (fixed order and indentation).
std::string WriteModelXml(const Model& model);
// A new model from UTF-8 XML. source names the input in errors ("model file \"/a/b.gmdx\"").
std::shared_ptr<Model> ReadModelXml(std::string_view bytes, const std::wstring& source);

}  // namespace Velmar::Lattix::format
