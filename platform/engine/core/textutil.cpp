#include "core/textutil.h"

#include <charconv>
#include <cmath>
#include <cwctype>
#include <limits>

#include "qtxt/Text.h"

namespace Velmar::Lattix::detail {

std::wstring Trim(std::wstring_view text) {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && std::iswspace(static_cast<wint_t>(text[begin]))) ++begin;
    while (end > begin && std::iswspace(static_cast<wint_t>(text[end - 1]))) --end;
    return std::wstring(text.substr(begin, end - begin));
}

std::wstring Lower(std::wstring_view text) {
    std::wstring result(text);
    for (auto& c : result) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return result;
}

bool EqualsNoCase(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::towlower(static_cast<wint_t>(a[i])) != std::towlower(static_cast<wint_t>(b[i])))
            return false;
    }
    return true;
}

std::wstring Join(const std::vector<std::wstring>& items, std::wstring_view separator) {
    std::wstring result;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i) result += separator;
        result += items[i];
    }
    return result;
}

std::vector<std::wstring> SplitTrimmed(std::wstring_view text, wchar_t separator) {
    std::vector<std::wstring> result;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find(separator, start);
        if (end == std::wstring_view::npos) end = text.size();
        auto piece = Trim(text.substr(start, end - start));
        if (!piece.empty()) result.push_back(piece);
        start = end + 1;
    }
    return result;
}

std::wstring Quote(std::wstring_view text) {
    constexpr std::size_t limit = 80;
    std::wstring result = L"\"";
    if (text.size() > limit) {
        result += text.substr(0, limit);
        result += L"...";
    } else {
        result += text;
    }
    return result + L"\"";
}

namespace {
// The trimmed text as ASCII, or empty when it holds anything else (no number has other letters).
std::string AsciiOf(std::wstring_view text) {
    auto trimmed = Trim(text);
    std::string result;
    for (auto c : trimmed) {
        if (c <= 0 || c > 127) return {};
        result.push_back(static_cast<char>(c));
    }
    return result;
}
}  // namespace

bool ReadInt64(std::wstring_view text, long long& value) {
    auto ascii = AsciiOf(text);
    if (ascii.empty()) return false;
    const char* begin = ascii.data();
    if (*begin == '+') ++begin;
    const char* end = ascii.data() + ascii.size();
    auto [ptr, ec] = std::from_chars(begin, end, value);
    return ec == std::errc() && ptr == end;
}

bool ReadUInt64(std::wstring_view text, unsigned long long& value) {
    auto ascii = AsciiOf(text);
    if (ascii.empty() || ascii[0] == '-') return false;
    const char* begin = ascii.data();
    if (*begin == '+') ++begin;
    const char* end = ascii.data() + ascii.size();
    auto [ptr, ec] = std::from_chars(begin, end, value);
    return ec == std::errc() && ptr == end;
}

bool ReadDouble(std::wstring_view text, double& value) {
    auto ascii = AsciiOf(text);
    if (ascii.empty()) return false;
    const char* begin = ascii.data();
    if (*begin == '+') ++begin;
    const char* end = ascii.data() + ascii.size();
    auto [ptr, ec] = std::from_chars(begin, end, value);
    return ec == std::errc() && ptr == end;
}

bool ReadBool(std::wstring_view text, bool& value) {
    auto word = Lower(Trim(text));
    if (word == L"true" || word == L"yes" || word == L"on" || word == L"1") {
        value = true;
        return true;
    }
    if (word == L"false" || word == L"no" || word == L"off" || word == L"0") {
        value = false;
        return true;
    }
    return false;
}

std::wstring DoubleToText(double value) {
    if (std::isnan(value)) return L"nan";
    if (std::isinf(value)) return value > 0 ? L"inf" : L"-inf";
    char buffer[64];
    auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return qtxt::widen(std::string_view(buffer, static_cast<std::size_t>(ptr - buffer)));
}

}  // namespace Velmar::Lattix::detail
