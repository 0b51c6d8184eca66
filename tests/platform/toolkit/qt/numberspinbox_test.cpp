#include <QAbstractSpinBox>
#include <QApplication>
#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QTest>
#include <QWheelEvent>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ZML/Frame.h"
#include "ZML/Number.h"
#include "ZMLQt/QtBackend.h"
#include "qttestkit.h"

using ZML::Qt6::WidgetOf;

namespace {

struct Field {
    bool whole;
    double min;
    double max;
    double step;  // 0: the part's default
    const char* format;
};

const Field wholeField{true, 0, 10, 0, "6.0"};
const Field realField{false, -1, 1, 0.25, "8.2"};

// A window holding one number part named "n", shown so that keys, clicks and focus behave as on
// a desktop.
class NumberFieldTest : public ::testing::Test {
protected:
    void SetUp() override { ZML::Qt6::InstallBackend(*qApp); }
    void TearDown() override {
        frame.reset();
        number.reset();
        ZML::Qt6::UninstallBackend();
        qttest::FlushDeletes();
    }

    QAbstractSpinBox* Show(const Field& field, double start) {
        frame = std::make_shared<ZML::Frame>("form");
        frame->GeometrySet(0, 0, 240, 80);
        number = std::make_shared<ZML::Number>("n");
        number->GeometrySet(10, 10, 120, 26);
        if (field.whole) {
            number->Properties().Set(L"WholeNumber", L"Yes");
        }
        number->LimitsSet(field.min, field.max);
        if (field.step > 0) {
            number->StepSet(field.step);
        }
        number->FormatSet(field.format);
        number->SetValue(start);
        frame->Add(number);
        number->OnMessage("valuechanged",
                          [this](const ZML::Event& e) { announced.push_back(e.text); });
        QWidget* window = WidgetOf(frame);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window));
        return window->findChild<QAbstractSpinBox*>("n");
    }

    std::shared_ptr<ZML::Frame> frame;
    std::shared_ptr<ZML::Number> number;
    std::vector<std::wstring> announced;
};

QString Shown(const ZML::Number& number) {
    return QString::fromStdWString(number.Text());
}

// The middle of the spin box's up or down arrow, where the style puts it.
QPoint ArrowAt(QAbstractSpinBox* spin, bool up) {
    QStyleOptionSpinBox option;
    option.initFrom(spin);
    option.rect = spin->rect();
    option.subControls = QStyle::SC_SpinBoxFrame | QStyle::SC_SpinBoxEditField |
                         QStyle::SC_SpinBoxUp | QStyle::SC_SpinBoxDown;
    option.buttonSymbols = spin->buttonSymbols();
    option.frame = spin->hasFrame();
    return spin->style()
        ->subControlRect(QStyle::CC_SpinBox, &option,
                         up ? QStyle::SC_SpinBoxUp : QStyle::SC_SpinBoxDown, spin)
        .center();
}

// Whether the spin box takes a press on its up or down arrow: a disabled arrow lets the press
// go by.
bool ArrowTakesPress(QAbstractSpinBox* spin, bool up) {
    const QPoint at = ArrowAt(spin, up);
    QMouseEvent press(QEvent::MouseButtonPress, at, spin->mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(spin, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, at, spin->mapToGlobal(at), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(spin, &release);
    return press.isAccepted();
}

void Type(QAbstractSpinBox* spin, const char* text) {
    spin->selectAll();
    QTest::keyClicks(spin, text);
}

void Enter(QAbstractSpinBox* spin) {
    QTest::keyClick(spin, Qt::Key_Return);
}

}  // namespace

TEST_F(NumberFieldTest, ArrowsKeysAndTypingGoThroughThePart) {
    struct Case {
        const char* name;
        const Field& field;
        double start;
        std::function<void(QAbstractSpinBox*)> user;
        double value;
        int changes;
    };
    const auto keys = [](std::vector<Qt::Key> pressed) {
        return [pressed](QAbstractSpinBox* spin) {
            for (Qt::Key key : pressed) {
                QTest::keyClick(spin, key);
            }
        };
    };
    const auto stepBy = [](int steps) {
        return [steps](QAbstractSpinBox* spin) { spin->stepBy(steps); };
    };
    const auto typed = [](const char* text) {
        return [text](QAbstractSpinBox* spin) {
            Type(spin, text);
            Enter(spin);
        };
    };
    const std::vector<Case> cases{
        {"whole: Up", wholeField, 5, keys({Qt::Key_Up}), 6, 1},
        {"whole: Down twice", wholeField, 5, keys({Qt::Key_Down, Qt::Key_Down}), 3, 2},
        {"whole: Up stops at the top", wholeField, 9, keys({Qt::Key_Up, Qt::Key_Up}), 10, 1},
        {"whole: Down stops at the bottom", wholeField, 1, keys({Qt::Key_Down, Qt::Key_Down}), 0,
         1},
        {"whole: stepBy 3", wholeField, 5, stepBy(3), 8, 1},
        {"whole: stepBy clamps", wholeField, 5, stepBy(20), 10, 1},
        {"whole: stepBy against the limit", wholeField, 0, stepBy(-1), 0, 0},
        {"whole: up arrow clicked", wholeField, 5,
         [](QAbstractSpinBox* spin) {
             QTest::mouseClick(spin, Qt::LeftButton, Qt::NoModifier, ArrowAt(spin, true));
         },
         6, 1},
        {"whole: typed", wholeField, 5, typed("7"), 7, 1},
        {"whole: typed fraction refused", wholeField, 5, typed("7.5"), 5, 0},
        {"whole: typed word refused", wholeField, 5, typed("seven"), 5, 0},
        {"whole: typed beyond the limit refused", wholeField, 5, typed("11"), 5, 0},
        {"whole: typed then Up", wholeField, 5,
         [](QAbstractSpinBox* spin) {
             Type(spin, "2");
             QTest::keyClick(spin, Qt::Key_Up);
         },
         3, 2},
        {"whole: refused text then Up", wholeField, 5,
         [](QAbstractSpinBox* spin) {
             Type(spin, "x");
             QTest::keyClick(spin, Qt::Key_Up);
         },
         5, 0},
        {"real: Up", realField, 0.5, keys({Qt::Key_Up}), 0.75, 1},
        {"real: Down three times", realField, 0.5, keys({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down}),
         -0.25, 3},
        {"real: Up at the top", realField, 1, keys({Qt::Key_Up}), 1, 0},
        {"real: stepBy clamps", realField, 0.5, stepBy(-10), -1, 1},
        {"real: typed", realField, 0.5, typed("0.3"), 0.3, 1},
        {"real: typed beyond the limit refused", realField, 0.5, typed("2"), 0.5, 0},
        {"real: typed blank refused", realField, 0.5, typed(""), 0.5, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        announced.clear();
        QAbstractSpinBox* spin = Show(c.field, c.start);
        ASSERT_NE(spin, nullptr);
        c.user(spin);
        EXPECT_DOUBLE_EQ(number->Value(), c.value);
        EXPECT_EQ(spin->text(), Shown(*number)) << "the field shows the part's text";
        EXPECT_EQ(static_cast<int>(announced.size()), c.changes);
        if (!announced.empty()) {
            EXPECT_EQ(announced.back(), number->Text());
        }
    }
}

TEST_F(NumberFieldTest, ArrowsAreDisabledAtTheLimits) {
    struct Case {
        const char* name;
        const Field& field;
        double start;
        bool up;
        bool down;
    };
    for (const Case& c : {Case{"whole at the bottom", wholeField, 0, true, false},
                          Case{"whole inside", wholeField, 4, true, true},
                          Case{"whole at the top", wholeField, 10, false, true},
                          Case{"real at the bottom", realField, -1, true, false},
                          Case{"real at the top", realField, 1, false, true}}) {
        SCOPED_TRACE(c.name);
        QAbstractSpinBox* spin = Show(c.field, c.start);
        ASSERT_NE(spin, nullptr);
        // A press on an arrow that is taken steps the value; each arrow is tried from the start.
        EXPECT_EQ(ArrowTakesPress(spin, true), c.up);
        EXPECT_EQ(number->Value(), c.up ? c.start + number->Step() : c.start);
        number->SetValue(c.start);
        EXPECT_EQ(ArrowTakesPress(spin, false), c.down);
        EXPECT_EQ(number->Value(), c.down ? c.start - number->Step() : c.start);
        EXPECT_EQ(static_cast<int>(announced.size()), int{c.up} + int{c.down})
            << "a press on a disabled arrow changes nothing";
        announced.clear();
    }
}

TEST_F(NumberFieldTest, PartChangesReachTheFieldAndItsArrows) {
    QAbstractSpinBox* spin = Show(realField, 0);
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(spin->text(), "0.00");

    number->SetValue(1);
    EXPECT_EQ(spin->text(), "1.00");
    EXPECT_FALSE(ArrowTakesPress(spin, true)) << "the value reached the top";

    number->LimitsSet(-1, 5);
    EXPECT_TRUE(ArrowTakesPress(spin, true)) << "the limit moved away";
    EXPECT_EQ(number->Value(), 1.25) << "the press stepped";
    EXPECT_EQ(spin->text(), "1.25");

    number->FormatSet("8.3");
    EXPECT_EQ(spin->text(), "1.250");

    number->Disable();
    EXPECT_FALSE(spin->isEnabled());
    spin->stepBy(1);
    EXPECT_EQ(number->Value(), 1.25) << "a disabled part takes no steps";
    EXPECT_EQ(announced.size(), 1u);
}

TEST_F(NumberFieldTest, TheWheelStepsOnlyAFocusedField) {
    QAbstractSpinBox* spin = Show(wholeField, 5);
    ASSERT_NE(spin, nullptr);
    const auto wheel = [spin](int notches) {
        const QPointF at = spin->rect().center();
        QWheelEvent event(at, spin->mapToGlobal(at), QPoint(), QPoint(0, 120 * notches),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(spin, &event);
    };
    // Showing the window may have given its only field the focus.
    spin->clearFocus();
    ASSERT_FALSE(spin->hasFocus());
    wheel(1);
    EXPECT_EQ(number->Value(), 5) << "the wheel passes over a field without the focus";

    QWidget* window = spin->window();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    spin->setFocus();
    ASSERT_TRUE(spin->hasFocus());
    wheel(1);
    EXPECT_EQ(number->Value(), 6);
    wheel(-2);
    EXPECT_EQ(number->Value(), 4);
    EXPECT_EQ(spin->text(), "4");
    EXPECT_EQ(announced.size(), 2u);
}
