#include "format/xmlemitter.h"

#include <array>
#include <charconv>
#include <cstring>

#include "QuarnLog/Exception.h"

namespace Velmar::Lattix::format {

namespace {

constexpr unsigned LineBreak = 1;
constexpr unsigned Indentation = 2;

constexpr std::string_view Declaration = "<?xml version=\"1.0\"?>\n";
constexpr std::size_t IndentWidth = 2;

// Which ASCII characters are escaped where.
constexpr unsigned char InText = 1;
constexpr unsigned char InAttribute = 2;

constexpr std::array<unsigned char, 128> MakeEscapes() {
    std::array<unsigned char, 128> escapes{};
    // NUL ends a value; the other control characters become character references.
    for (unsigned c = 0; c < 32; ++c) escapes[c] = InText | InAttribute;
    // Tabs and line breaks survive in texts; a reader turns them into spaces in attributes.
    escapes['\t'] = escapes['\n'] = escapes['\r'] = InAttribute;
    escapes['&'] = escapes['<'] = InText | InAttribute;
    escapes['>'] = InText;
    escapes['"'] = InAttribute;
    return escapes;
}

constexpr std::array<unsigned char, 128> Escapes = MakeEscapes();

// Writes the escape of an ASCII character at `to`; answers its length.
std::size_t PutEscape(char* to, unsigned c) {
    auto put = [to](std::string_view text) {
        std::memcpy(to, text.data(), text.size());
        return text.size();
    };
    switch (c) {
        case '&':
            return put("&amp;");
        case '<':
            return put("&lt;");
        case '>':
            return put("&gt;");
        case '"':
            return put("&quot;");
        default:
            // Control characters, all below 32: two decimal digits.
            to[0] = '&';
            to[1] = '#';
            to[2] = static_cast<char>('0' + c / 10);
            to[3] = static_cast<char>('0' + c % 10);
            to[4] = ';';
            return 5;
    }
}

// UTF-8 of one wide character; what is not a Unicode scalar value becomes U+FFFD, as in
// qtxt::DefaultWideToUTF8. Answers the length written at `to`.
std::size_t PutUtf8(char* to, std::uint32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
    if (c < 0x80) {
        to[0] = static_cast<char>(c);
        return 1;
    }
    if (c < 0x800) {
        to[0] = static_cast<char>(0xC0 | (c >> 6));
        to[1] = static_cast<char>(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        to[0] = static_cast<char>(0xE0 | (c >> 12));
        to[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        to[2] = static_cast<char>(0x80 | (c & 0x3F));
        return 3;
    }
    to[0] = static_cast<char>(0xF0 | (c >> 18));
    to[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    to[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    to[3] = static_cast<char>(0x80 | (c & 0x3F));
    return 4;
}

void AppendEscaped(std::string& out, std::string_view text, unsigned char where) {
    const char* run = text.data();
    const char* end = text.data() + text.size();
    char escape[8];
    for (const char* p = run; p != end; ++p) {
        auto c = static_cast<unsigned char>(*p);
        if (c >= 128 || !(Escapes[c] & where)) continue;
        out.append(run, p);
        if (c == 0) return;
        out.append(escape, PutEscape(escape, c));
        run = p + 1;
    }
    out.append(run, end);
}

// Converts and escapes in one pass, through a small buffer: names and texts are short, and most
// are plain ASCII.
void AppendEscaped(std::string& out, std::wstring_view text, unsigned char where) {
    constexpr std::size_t Capacity = 256;
    // The longest a character can become: "&quot;".
    constexpr std::size_t Longest = 6;
    char buffer[Capacity];
    std::size_t used = 0;
    for (wchar_t w : text) {
        if (used > Capacity - Longest) {
            out.append(buffer, used);
            used = 0;
        }
        auto c = static_cast<std::uint32_t>(w);
        if (c >= 128)
            used += PutUtf8(buffer + used, c);
        else if (!(Escapes[c] & where))
            buffer[used++] = static_cast<char>(c);
        else if (c == 0)
            break;
        else
            used += PutEscape(buffer + used, c);
    }
    out.append(buffer, used);
}

}  // namespace

XmlEmitter::XmlEmitter(std::size_t expectedSize) : layout(Indentation) {
    out.reserve(Declaration.size() + expectedSize);
    out.append(Declaration);
}

void XmlEmitter::CloseStartTag() {
    if (!startTagOpen) return;
    out.push_back('>');
    startTagOpen = false;
}

void XmlEmitter::StartElement(const char* name) {
    CloseStartTag();
    if (layout & LineBreak) out.push_back('\n');
    if (layout & Indentation) out.append(IndentWidth * open.size(), ' ');
    out.push_back('<');
    out.append(name);
    open.push_back(name);
    startTagOpen = true;
    layout = LineBreak | Indentation;
}

void XmlEmitter::OpenAttribute(const char* name) {
    if (!startTagOpen)
        QUARN_THROW(std::string("XML attribute \"") + name +
                    "\" comes after the content of its element.");
    out.push_back(' ');
    out.append(name);
    out.append("=\"");
}

void XmlEmitter::Attribute(const char* name, std::string_view utf8) {
    OpenAttribute(name);
    AppendEscaped(out, utf8, InAttribute);
    out.push_back('"');
}

void XmlEmitter::Attribute(const char* name, std::wstring_view text) {
    OpenAttribute(name);
    AppendEscaped(out, text, InAttribute);
    out.push_back('"');
}

void XmlEmitter::Attribute(const char* name, std::int64_t value) {
    char digits[24];
    auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    Attribute(name, std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

void XmlEmitter::Text(std::string_view utf8) {
    CloseStartTag();
    AppendEscaped(out, utf8, InText);
    layout = 0;
}

void XmlEmitter::Text(std::wstring_view text) {
    CloseStartTag();
    AppendEscaped(out, text, InText);
    layout = 0;
}

void XmlEmitter::EndElement() {
    if (open.empty()) QUARN_THROW("An XML element is ended that was never started.");
    const char* name = open.back();
    open.pop_back();
    if (startTagOpen) {
        out.append(" />");
        startTagOpen = false;
    } else {
        if (layout & LineBreak) out.push_back('\n');
        if (layout & Indentation) out.append(IndentWidth * open.size(), ' ');
        out.append("</");
        out.append(name);
        out.push_back('>');
    }
    layout = LineBreak | Indentation;
}

XmlEmitter::Mark XmlEmitter::GetMark() const {
    return Mark{out.size(), open.size(), layout, startTagOpen};
}

void XmlEmitter::Restore(const Mark& mark) {
    if (mark.size > out.size() || mark.depth > open.size())
        QUARN_THROW("An XML mark is restored after the elements it was taken in were ended.");
    out.resize(mark.size);
    open.resize(mark.depth);
    layout = mark.layout;
    startTagOpen = mark.startTagOpen;
}

std::string XmlEmitter::Finish() {
    if (!open.empty())
        QUARN_THROW(std::string("XML element \"") + open.back() + "\" is never ended.");
    if (layout & LineBreak) out.push_back('\n');
    return std::move(out);
}

}  // namespace Velmar::Lattix::format
