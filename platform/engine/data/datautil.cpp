#include "data/datautil.h"

#include "QuarnLog/Exception.h"
#include "core/textutil.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix::detail {

void RaiseReadError(const char* function, const ObjectName& type, const std::wstring& text,
                    const std::wstring& expected) {
    throw QuarnLog::Exception(function, __FILE__,
                              L"Cannot read " + Quote(text) + L" as " + type.GetFullName() +
                                  L": expected " + expected + L".");
}

void RaiseJsonError(const char* function, const ObjectName& type, const JsonValue& value,
                    const std::wstring& expected) {
    throw QuarnLog::Exception(function, __FILE__,
                              L"Cannot read JSON " + Quote(qtxt::widen(value.ToText())) + L" as " +
                                  type.GetFullName() + L": expected " + expected + L".");
}

std::string ToUtf8(const std::wstring& text) {
    return qtxt::DefaultWideToUTF8(text);
}
std::wstring FromUtf8(const std::string& text) {
    return qtxt::UTF8toDefaultWide(text);
}

}  // namespace Velmar::Lattix::detail
