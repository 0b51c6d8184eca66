#pragma once

#include <QAbstractSpinBox>
#include <memory>

#include "ZML/Number.h"

namespace ZML::Qt6 {

// The widget of a number part: the part's text in an edit field, with spin arrows, the Up and Down
// keys and (while it has the focus) the mouse wheel stepping the value. The part stays the only
// keeper of the value: typed text goes to Number::UserEnter when editing finishes (a refusal puts
// the part's text back), a step goes to Number::UserStep, and the arrows follow the part's limits.
class NumberSpinBox : public QAbstractSpinBox {
public:
    // `number` is observed, not owned.
    NumberSpinBox(std::weak_ptr<ZML::Number> number, QWidget* parent);

    // Shows `text` without handing it back to the part (the peer copying the part's state).
    void ShowText(const QString& text);

    void stepBy(int steps) override;

protected:
    StepEnabled stepEnabled() const override;
    void wheelEvent(QWheelEvent* event) override;

private:
    // The part, or null when it is gone or its peer is writing into the widget.
    std::shared_ptr<ZML::Number> Held() const;
    // Hands typed text that differs from the part's to the part; false when the part refused it
    // (the field then shows the part's text again).
    bool CommitTyped(ZML::Number& held);

    std::weak_ptr<ZML::Number> number;
};

}  // namespace ZML::Qt6
