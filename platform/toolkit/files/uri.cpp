#include "urilib/URI.h"

#include <cwctype>
#include <filesystem>

#include "QuarnLog/Exception.h"
#include "qtxt/Text.h"

namespace urilib {

struct uriData {
    std::wstring text;
};

namespace {

bool Unreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

int HexValue(wchar_t c) {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
}

[[noreturn]] void NotAFile(const std::wstring& uri, const std::string& why) {
    throw QuarnLog::Exception("urilib::URI::toFile", __FILE__,
                              "'" + qtxt::DefaultWideToUTF8(uri) + "' " + why);
}

}  // namespace

URI::URI(std::wstring text) : uriData(std::make_shared<const struct uriData>(std::move(text))) {}

URI URI::fromFile(const std::wstring& path) {
    std::wstring internal = path;
    for (auto& c : internal) {
        if (c == L'\\') c = L'/';
    }
    // Paths go through UTF-8: std::filesystem would convert wide text by the C locale.
    std::string utf8 = qtxt::DefaultWideToUTF8(internal);
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(utf8, error);
    if (!error) utf8 = absolute.lexically_normal().string();
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string text = "file://";
    for (unsigned char c : utf8) {
        if (Unreserved(c) || c == '/') {
            text.push_back(static_cast<char>(c));
        } else {
            text.push_back('%');
            text.push_back(hex[c >> 4]);
            text.push_back(hex[c & 15]);
        }
    }
    return URI(qtxt::UTF8toDefaultWide(text));
}

const std::wstring& URI::toString() const {
    return uriData->text;
}

std::wstring URI::Scheme() const {
    const auto& text = uriData->text;
    const auto colon = text.find(L':');
    if (colon == std::wstring::npos || colon == 0) return {};
    std::wstring scheme;
    for (std::size_t i = 0; i < colon; ++i) {
        const wchar_t c = text[i];
        const bool ok = std::iswalpha(c) ||
                        (i > 0 && (std::iswdigit(c) || c == L'+' || c == L'-' || c == L'.'));
        if (!ok || c > 0x7f) return {};
        scheme.push_back(static_cast<wchar_t>(std::towlower(c)));
    }
    return scheme;
}

bool URI::IsFile() const {
    return Scheme() == L"file";
}

std::wstring URI::toFile() const {
    const auto& text = uriData->text;
    if (!IsFile()) NotAFile(text, "is not a file URI");
    std::wstring rest = text.substr(5);  // after "file:"
    if (rest.rfind(L"//", 0) == 0) {
        const auto slash = rest.find(L'/', 2);
        const std::wstring host =
            rest.substr(2, slash == std::wstring::npos ? rest.npos : slash - 2);
        if (!host.empty() && host != L"localhost") NotAFile(text, "names another host");
        rest = slash == std::wstring::npos ? std::wstring(L"/") : rest.substr(slash);
    }
    const auto end = rest.find_first_of(L"?#");
    if (end != std::wstring::npos) rest.resize(end);
    std::string bytes;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (rest[i] != L'%') {
            bytes += qtxt::DefaultWideToUTF8(std::wstring(1, rest[i]));
            continue;
        }
        const int hi = i + 2 < rest.size() ? HexValue(rest[i + 1]) : -1;
        const int lo = hi >= 0 ? HexValue(rest[i + 2]) : -1;
        if (lo < 0) NotAFile(text, "has a malformed percent escape");
        bytes.push_back(static_cast<char>(hi * 16 + lo));
        i += 2;
    }
    if (bytes.empty() || bytes[0] != '/') NotAFile(text, "has no absolute path");
    return qtxt::UTF8toDefaultWide(bytes);
}

}  // namespace urilib
