#include <algorithm>

#include "QuarnLog/Exception.h"
#include "ZML/Filename.h"
#include "ZML/PopupList.h"
#include "ZML/ScrollList.h"

namespace ZML {

struct popupListData {
    std::vector<std::wstring> values;
    int selected = -1;
};

PopupList::PopupList(std::string name)
    : Part(std::move(name)), popupListRecord(std::make_shared<popupListData>()) {}
PopupList::~PopupList() = default;
std::string PopupList::Kind() const {
    return "popuplist";
}

void PopupList::ValueListSet(const std::vector<std::wstring>& values) {
    std::wstring current = Value();
    popupListRecord->values = values;
    popupListRecord->selected = -1;
    auto it = std::find(values.begin(), values.end(), current);
    if (it != values.end() && !current.empty()) {
        popupListRecord->selected = static_cast<int>(it - values.begin());
    }
    Refresh(PartChange::Content);
}
std::vector<std::wstring> PopupList::ValueList() const {
    return popupListRecord->values;
}

bool PopupList::SetValue(const std::wstring& value) {
    const auto& values = popupListRecord->values;
    auto it = std::find(values.begin(), values.end(), value);
    if (it == values.end()) {
        return false;
    }
    return SelectByPos(static_cast<int>(it - values.begin()));
}

std::wstring PopupList::Value() const {
    int pos = popupListRecord->selected;
    return pos < 0 ? std::wstring{} : popupListRecord->values[static_cast<std::size_t>(pos)];
}
int PopupList::SelectedPos() const {
    return popupListRecord->selected;
}

bool PopupList::SelectByPos(int pos) {
    if (pos < -1 || pos >= static_cast<int>(popupListRecord->values.size())) {
        return false;
    }
    popupListRecord->selected = pos;
    Refresh(PartChange::Value);
    return true;
}

bool PopupList::UserChoose(int pos) {
    if (!IsEffectivelyEnabled() || !SelectByPos(pos)) {
        return false;
    }
    auto self = weak_from_this().lock();
    Event changed;
    changed.text = Value();
    Fire("valuechanged", changed);
    return true;
}

struct filenameData {
    int mode = FilenameInput;
    std::vector<FilenameTypeDef> types;
    std::wstring path;
    bool shortForm = false;
};

Filename::Filename(std::string name)
    : Part(std::move(name)), filenameRecord(std::make_shared<filenameData>()) {}
Filename::~Filename() = default;
std::string Filename::Kind() const {
    return "filename";
}

void Filename::ModeSet(int mode) {
    if (mode != FilenameInput && mode != FilenameOutput) {
        QUARN_THROW("File name mode " + std::to_string(mode) + " of part \"" + Name() +
                    "\" is neither input (0) nor output (1).");
    }
    filenameRecord->mode = mode;
    Refresh(PartChange::Content);
}
int Filename::Mode() const {
    return filenameRecord->mode;
}

void Filename::TypeDefAdd(const std::wstring& typeName) {
    FilenameTypeDef type;
    type.typeName = typeName;
    filenameRecord->types.push_back(std::move(type));
    Refresh(PartChange::Content);
}

void Filename::TypeDefAdd(const std::wstring& typeName, std::shared_ptr<Part> optionsPart,
                          int flag1, int flag2, int flag3, int flag4, int flag5) {
    FilenameTypeDef type;
    type.typeName = typeName;
    type.optionsPart = std::move(optionsPart);
    type.flags = {flag1, flag2, flag3, flag4, flag5};
    type.hasFlags = true;
    filenameRecord->types.push_back(std::move(type));
    Refresh(PartChange::Content);
}

std::vector<FilenameTypeDef> Filename::TypeDefs() const {
    return filenameRecord->types;
}

void Filename::Select(const std::wstring& path) {
    filenameRecord->path = path;
    Refresh(PartChange::Value);
}
std::wstring Filename::GetPath() const {
    return filenameRecord->path;
}

void Filename::SetShortForm(bool shortForm) {
    filenameRecord->shortForm = shortForm;
    Refresh(PartChange::Content);
}
bool Filename::IsShortForm() const {
    return filenameRecord->shortForm;
}

bool Filename::UserSelect(const std::wstring& path) {
    if (!IsEffectivelyEnabled()) {
        return false;
    }
    Select(path);
    auto self = weak_from_this().lock();
    Event changed;
    changed.text = path;
    Fire("valuechanged", changed);
    return true;
}

struct scrollListData {
    std::vector<ScrollListRow> rows;
    int selected = -1;
};

ScrollList::ScrollList(std::string name)
    : Part(std::move(name)), scrollListRecord(std::make_shared<scrollListData>()) {}
ScrollList::~ScrollList() = default;
std::string ScrollList::Kind() const {
    return "scrolllist";
}

void ScrollList::AddRow(const std::wstring& text, std::shared_ptr<Icon> icon) {
    scrollListRecord->rows.push_back(ScrollListRow{text, std::move(icon)});
    Refresh(PartChange::Content);
}

void ScrollList::SetRows(std::vector<ScrollListRow> rows) {
    scrollListRecord->rows = std::move(rows);
    if (scrollListRecord->selected >= static_cast<int>(scrollListRecord->rows.size())) {
        scrollListRecord->selected = -1;
    }
    Refresh(PartChange::Content);
}

void ScrollList::ClearRows() {
    scrollListRecord->rows.clear();
    scrollListRecord->selected = -1;
    Refresh(PartChange::Content);
}

std::vector<ScrollListRow> ScrollList::Rows() const {
    return scrollListRecord->rows;
}
int ScrollList::RowCount() const {
    return static_cast<int>(scrollListRecord->rows.size());
}

bool ScrollList::SelectByPos(int pos) {
    if (pos < -1 || pos >= RowCount()) {
        return false;
    }
    scrollListRecord->selected = pos;
    Refresh(PartChange::Value);
    return true;
}
int ScrollList::GetSelectedPos() const {
    return scrollListRecord->selected;
}

bool ScrollList::UserClick(int pos) {
    if (!IsEffectivelyEnabled() || pos < -1 || pos >= RowCount()) {
        return false;
    }
    auto self = weak_from_this().lock();
    bool changed = scrollListRecord->selected != pos;
    SelectByPos(pos);
    Event click;
    click.button = MouseButton::Left;
    click.y = pos * 18;
    click.detail = pos;
    Fire("mousedown", click);
    if (changed) {
        Fire("SelectionChanged", click);
    }
    return true;
}

bool ScrollList::UserDoubleClick(int pos) {
    if (!IsEffectivelyEnabled() || pos < 0 || pos >= RowCount()) {
        return false;
    }
    auto self = weak_from_this().lock();
    SelectByPos(pos);
    Event click;
    click.button = MouseButton::Left;
    click.detail = pos;
    Fire("doubleclick", click);
    return true;
}

}  // namespace ZML
