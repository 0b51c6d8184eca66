#pragma once

#include <memory>
#include <string>

#include "ZML/Part.h"

namespace ZML {

struct editTextData;

// A text field, one line or several. Positions are character offsets into the text.
class EditText : public Part {
public:
    explicit EditText(std::string name = {});
    ~EditText() override;

    std::string Kind() const override;

    // The grey text shown while the field is empty.
    void SetHint(const std::wstring& hint);
    const std::wstring& Hint() const;

    std::wstring GetUnicodeText() const;
    // Replaces the text without firing events; the caret goes to the end.
    void SetUnicodeText(const std::wstring& text);

    // Selects [start, end); both are clamped to the text and put in order. start == end is a
    // caret.
    void SetSelection(int start, int end);
    int SelectionStart() const;
    int SelectionEnd() const;

    void MultiLineSet(bool multiLine);
    bool IsMultiLine() const;
    void ReadOnlySet(bool readOnly);
    bool IsReadOnly() const;

    // A user typing `text`: it replaces the selection, one character at a time; each character
    // fires "charinput" (key and text hold it), and then "input" and "valuechanged" fire once.
    // Ignored (false) when the part is disabled or read-only.
    bool UserType(const std::wstring& text);

private:
    std::shared_ptr<editTextData> editTextRecord;
};

}  // namespace ZML
