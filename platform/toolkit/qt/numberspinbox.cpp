#include "numberspinbox.h"

#include <QLineEdit>
#include <QWheelEvent>

#include "guard.h"
#include "qtcolor.h"
#include "widgetpeer.h"

namespace ZML::Qt6 {

NumberSpinBox::NumberSpinBox(std::weak_ptr<ZML::Number> number, QWidget* parent)
    : QAbstractSpinBox(parent), number(std::move(number)) {
    // The wheel steps only a field the user chose, so that scrolling a form past it changes
    // nothing.
    setFocusPolicy(::Qt::StrongFocus);
    connect(this, &QAbstractSpinBox::editingFinished, this, [this] {
        if (auto held = Held()) {
            Guarded("ZML::Qt6::Number entry", [this, &held] { CommitTyped(*held); });
        }
    });
}

void NumberSpinBox::ShowText(const QString& text) {
    if (lineEdit()->text() != text) {
        lineEdit()->setText(text);
    }
    // The arrows are drawn from stepEnabled, which follows the value just shown.
    update();
}

void NumberSpinBox::stepBy(int steps) {
    auto held = Held();
    if (!held) {
        return;
    }
    Guarded("ZML::Qt6::Number step", [this, &held, steps] {
        // A step counts from what the field shows, so text typed but not yet entered goes first;
        // when the part refuses it, the field shows the part's text again and the step is dropped.
        if (CommitTyped(*held)) {
            held->UserStep(steps);
        }
    });
    // As with any spin box, typing after a step replaces the stepped value.
    selectAll();
    update();
}

QAbstractSpinBox::StepEnabled NumberSpinBox::stepEnabled() const {
    auto held = number.lock();
    if (!held || isReadOnly() || !held->IsEffectivelyEnabled()) {
        return StepNone;
    }
    if (held->IsBlank()) {
        return StepUpEnabled | StepDownEnabled;
    }
    StepEnabled enabled = StepNone;
    if (held->Value() < held->Max()) {
        enabled |= StepUpEnabled;
    }
    if (held->Value() > held->Min()) {
        enabled |= StepDownEnabled;
    }
    return enabled;
}

void NumberSpinBox::wheelEvent(QWheelEvent* event) {
    if (!hasFocus()) {
        event->ignore();
        return;
    }
    QAbstractSpinBox::wheelEvent(event);
}

std::shared_ptr<ZML::Number> NumberSpinBox::Held() const {
    auto held = number.lock();
    if (!held) {
        return nullptr;
    }
    auto peer = std::dynamic_pointer_cast<WidgetPeer>(held->Peer());
    if (peer && peer->Updating()) {
        return nullptr;
    }
    return held;
}

bool NumberSpinBox::CommitTyped(ZML::Number& held) {
    const std::wstring typed = ToWide(text());
    if (typed == held.Text()) {
        return true;
    }
    if (held.UserEnter(typed)) {
        return true;
    }
    ShowText(ToQString(held.Text()));
    return false;
}

}  // namespace ZML::Qt6
