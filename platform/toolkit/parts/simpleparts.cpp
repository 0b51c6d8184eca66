#include "ZML/Button.h"
#include "ZML/Label.h"
#include "qzml/Icons.h"

namespace ZML {

struct labelData {
    bool wrap = false;
};

Label::Label(std::string name)
    : Part(std::move(name)), labelRecord(std::make_shared<labelData>()) {}
Label::~Label() = default;
std::string Label::Kind() const {
    return "label";
}
void Label::WrapTextSet(bool wrap) {
    labelRecord->wrap = wrap;
    Refresh(PartChange::Content);
}
bool Label::IsWrapText() const {
    return labelRecord->wrap;
}

struct buttonData {
    std::shared_ptr<Icon> icon;
};

Button::Button(std::string name)
    : Part(std::move(name)), buttonRecord(std::make_shared<buttonData>()) {}
Button::~Button() = default;
std::string Button::Kind() const {
    return "button";
}

void Button::IconSet(std::shared_ptr<Icon> icon) {
    buttonRecord->icon = std::move(icon);
    Refresh(PartChange::Content);
}
void Button::IconSet(const std::wstring& iconName) {
    IconSet(qzml_IconCreateFromFile(iconName));
}
std::shared_ptr<Icon> Button::GetIcon() const {
    return buttonRecord->icon;
}

bool Button::Press() {
    Event press;
    press.button = MouseButton::Left;
    if (!IsEffectivelyEnabled()) {
        return false;
    }
    // A "mousedown" handler may close the dialog and drop the last other hold on this button.
    auto self = weak_from_this().lock();
    Fire("mousedown", press);
    Fire("mouseup", press);
    return true;
}

}  // namespace ZML
