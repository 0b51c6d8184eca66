#pragma once

#include <string>
#include <string_view>

// Conversions between the suite's wide strings (UTF-32 on this platform) and UTF-8, the default
// narrow encoding of files, the command line and the clipboard. They cover all of Unicode, never
// throw and never fail: malformed input (bad UTF-8 sequences, overlong forms, surrogates, values
// beyond U+10FFFF) becomes U+FFFD.
namespace qtxt {

std::string DefaultWideToUTF8(std::wstring_view text);
std::wstring UTF8toDefaultWide(std::string_view text);

// Narrow to wide; the narrow text is UTF-8, the default encoding here.
std::wstring widen(std::string_view text);
// Narrow to wide in the default encoding (the same as widen on this platform, where the default
// encoding is UTF-8; kept apart because callers name the default encoding on purpose).
std::wstring dwiden(std::string_view text);
// Wide to narrow UTF-8.
std::string narrow(std::wstring_view text);

}  // namespace qtxt
