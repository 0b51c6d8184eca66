#include "ZML/EditText.h"

#include <algorithm>

namespace ZML {

struct editTextData {
    std::wstring hint;
    std::wstring text;
    int selectionStart = 0;
    int selectionEnd = 0;
    bool multiLine = false;
    bool readOnly = false;
};

EditText::EditText(std::string name)
    : Part(std::move(name)), editTextRecord(std::make_shared<editTextData>()) {}
EditText::~EditText() = default;

std::string EditText::Kind() const {
    return "edittext";
}

void EditText::SetHint(const std::wstring& hint) {
    editTextRecord->hint = hint;
    Refresh(PartChange::Content);
}
const std::wstring& EditText::Hint() const {
    return editTextRecord->hint;
}

std::wstring EditText::GetUnicodeText() const {
    return editTextRecord->text;
}

void EditText::SetUnicodeText(const std::wstring& text) {
    editTextRecord->text = text;
    editTextRecord->selectionStart = editTextRecord->selectionEnd = static_cast<int>(text.size());
    Refresh(PartChange::Value);
}

void EditText::SetSelection(int start, int end) {
    const int size = static_cast<int>(editTextRecord->text.size());
    start = std::clamp(start, 0, size);
    end = std::clamp(end, 0, size);
    editTextRecord->selectionStart = std::min(start, end);
    editTextRecord->selectionEnd = std::max(start, end);
    Refresh(PartChange::Value);
}
int EditText::SelectionStart() const {
    return editTextRecord->selectionStart;
}
int EditText::SelectionEnd() const {
    return editTextRecord->selectionEnd;
}

void EditText::MultiLineSet(bool multiLine) {
    editTextRecord->multiLine = multiLine;
    Refresh(PartChange::Content);
}
bool EditText::IsMultiLine() const {
    return editTextRecord->multiLine;
}
void EditText::ReadOnlySet(bool readOnly) {
    editTextRecord->readOnly = readOnly;
    Refresh(PartChange::Content);
}
bool EditText::IsReadOnly() const {
    return editTextRecord->readOnly;
}

bool EditText::UserType(const std::wstring& text) {
    if (!IsEffectivelyEnabled() || editTextRecord->readOnly) {
        return false;
    }
    auto self = weak_from_this().lock();
    auto record = editTextRecord;
    for (wchar_t c : text) {
        if (c == L'\n' && !record->multiLine) {
            continue;
        }
        auto start = static_cast<std::size_t>(record->selectionStart);
        auto end = static_cast<std::size_t>(record->selectionEnd);
        record->text.replace(start, end - start, 1, c);
        record->selectionStart = record->selectionEnd = static_cast<int>(start + 1);
        Refresh(PartChange::Value);
        Event typed;
        typed.key = static_cast<int>(c);
        typed.text = std::wstring(1, c);
        Fire("charinput", typed);
        // A handler may have replaced the text; keep the caret inside it.
        const int size = static_cast<int>(record->text.size());
        record->selectionStart = std::min(record->selectionStart, size);
        record->selectionEnd = std::min(record->selectionEnd, size);
    }
    Event changed;
    changed.text = record->text;
    Fire("input", changed);
    Fire("valuechanged", changed);
    return true;
}

}  // namespace ZML
