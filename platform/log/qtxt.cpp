#include "qtxt/Text.h"

#include <cstdint>

namespace qtxt {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsScalar(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

void Append(std::string& out, char32_t c) {
    if (!IsScalar(c)) c = kReplacement;
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

}  // namespace

std::string DefaultWideToUTF8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (wchar_t w : text) {
        Append(out, static_cast<char32_t>(static_cast<std::uint32_t>(w)));
    }
    return out;
}

// Decodes UTF-8 with the "maximal subpart" rule: each ill-formed subsequence becomes one U+FFFD and
// decoding resumes at the first byte that could not continue it.
std::wstring UTF8toDefaultWide(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t n = text.size();
    std::size_t i = 0;
    while (i < n) {
        const unsigned char b = p[i];
        if (b < 0x80) {
            out.push_back(static_cast<wchar_t>(b));
            ++i;
            continue;
        }
        int len = 0;
        char32_t c = 0;
        unsigned char lo = 0x80, hi = 0xBF;  // allowed range of the second byte
        if (b >= 0xC2 && b <= 0xDF) {
            len = 2;
            c = b & 0x1F;
        } else if (b >= 0xE0 && b <= 0xEF) {
            len = 3;
            c = b & 0x0F;
            if (b == 0xE0) lo = 0xA0;  // no overlong forms
            if (b == 0xED) hi = 0x9F;  // no surrogates
        } else if (b >= 0xF0 && b <= 0xF4) {
            len = 4;
            c = b & 0x07;
            if (b == 0xF0) lo = 0x90;  // no overlong forms
            if (b == 0xF4) hi = 0x8F;  // nothing beyond U+10FFFF
        } else {
            out.push_back(static_cast<wchar_t>(kReplacement));
            ++i;
            continue;
        }
        std::size_t j = i + 1;
        bool ok = true;
        for (int k = 1; k < len; ++k, ++j) {
            const unsigned char lower = (k == 1) ? lo : 0x80;
            const unsigned char upper = (k == 1) ? hi : 0xBF;
            if (j >= n || p[j] < lower || p[j] > upper) {
                ok = false;
                break;
            }
            c = (c << 6) | (p[j] & 0x3F);
        }
        out.push_back(static_cast<wchar_t>(ok ? c : kReplacement));
        i = j;
    }
    return out;
}

std::wstring widen(std::string_view text) { return UTF8toDefaultWide(text); }
std::wstring dwiden(std::string_view text) { return UTF8toDefaultWide(text); }
std::string narrow(std::wstring_view text) { return DefaultWideToUTF8(text); }

}  // namespace qtxt
