#pragma once

// Indented XML written straight into one string (not installed). The layout is the one model
// files have always had: the version declaration on a line of its own, every element on a new line
// indented by two spaces per level, texts inline between their tags, "<Name />" for an element
// without content, "<Name></Name>" for an empty text. Only what XML requires is escaped: & and <
// everywhere, > in texts, and in attribute values also quotes, tabs and line breaks (a reader
// would otherwise fold those to spaces). Control characters are written as two-digit character
// references; a NUL ends a value, as XML cannot hold one.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Velmar::Lattix::format {

class XmlEmitter {
public:
    // Where the output stood. Restore takes back everything written since, as long as every
    // element open at the mark is still open.
    struct Mark {
        std::size_t size = 0;
        std::size_t depth = 0;
        unsigned layout = 0;
        bool startTagOpen = false;
    };

    // expectedSize: a guess of the document's size, reserved at once so that the text is not
    // copied while it grows.
    explicit XmlEmitter(std::size_t expectedSize);

    // Element and attribute names are written as given: the format's own names need no escaping.
    void StartElement(const char* name);
    // Attributes belong to the element started last, before its first text or child.
    void Attribute(const char* name, std::string_view utf8);
    void Attribute(const char* name, std::wstring_view text);
    void Attribute(const char* name, std::int64_t value);
    void Text(std::string_view utf8);
    void Text(std::wstring_view text);
    void EndElement();

    // Bytes written so far.
    std::size_t Size() const { return out.size(); }
    Mark GetMark() const;
    void Restore(const Mark& mark);

    // The document; every element must have been ended.
    std::string Finish();

private:
    void CloseStartTag();
    // Writes ` name="`; raises when the element's content has begun.
    void OpenAttribute(const char* name);

    std::string out;
    // The elements started and not yet ended, innermost last.
    std::vector<const char*> open;
    // What goes before the next tag: a line break, an indentation, both or neither (after a text).
    unsigned layout;
    bool startTagOpen = false;
};

}  // namespace Velmar::Lattix::format
