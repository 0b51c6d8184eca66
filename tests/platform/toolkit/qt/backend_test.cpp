#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>
#include <functional>

#include "QuarnLog/ErrorContext.h"
#include "ZML/Button.h"
#include "ZML/Dialog.h"
#include "ZML/EditText.h"
#include "ZML/FlowGraphPart.h"
#include "ZML/Group.h"
#include "ZML/Label.h"
#include "ZML/Number.h"
#include "ZML/PopupList.h"
#include "ZML/ScrollGroup.h"
#include "ZML/ScrollList.h"
#include "ZML/SplitPanel.h"
#include "ZML/TreeView.h"
#include "ZML/TreeViewNode.h"
#include "ZMLQt/CanvasView.h"
#include "ZMLQt/QtBackend.h"
#include "qttestkit.h"
#include "qzml/Dialogs.h"
#include "qzml/Help.h"

using ZML::Qt6::WidgetOf;

namespace {

// A dialog with one part of each common kind, its OK button bound to the OK step.
std::shared_ptr<ZML::Dialog> MakeDialog() {
    auto dialog = std::make_shared<ZML::Dialog>("settings");
    dialog->TitleSet(L"Settings");
    dialog->GeometrySet(0, 0, 400, 300);
    auto add = [&dialog](std::shared_ptr<ZML::Part> part, int x, int y, int w, int h) {
        part->GeometrySet(x, y, w, h);
        dialog->Add(part);
        return part;
    };
    add(std::make_shared<ZML::Label>("caption"), 10, 10, 200, 20)->TitleSet(L"Name:");
    add(std::make_shared<ZML::EditText>("name"), 10, 40, 200, 24);
    add(std::make_shared<ZML::Number>("count"), 10, 70, 100, 24);
    auto popup = std::make_shared<ZML::PopupList>("choice");
    popup->ValueListSet({L"red", L"green", L"blue"});
    add(popup, 10, 100, 100, 24);
    auto rows = std::make_shared<ZML::ScrollList>("rows");
    rows->AddRow(L"first");
    rows->AddRow(L"second");
    add(rows, 220, 10, 150, 80);
    auto group = std::make_shared<ZML::Group>("box");
    group->BackgroundTypeSet(ZML::BackgroundFramed);
    add(group, 220, 100, 150, 80)->TitleSet(L"Box");
    auto inner = std::make_shared<ZML::Label>("inner");
    inner->GeometrySet(5, 20, 100, 20);
    group->Add(inner);
    add(std::make_shared<ZML::FlowGraphPart>("canvas"), 10, 190, 200, 100);
    auto ok = add(std::make_shared<ZML::Button>("ok_button"), 300, 260, 80, 28);
    ok->TitleSet(L"OK");
    std::weak_ptr<ZML::Dialog> weak = dialog;
    ok->OnMessage("mousedown", [weak](const ZML::Event&) {
        if (auto held = weak.lock()) {
            held->Okay();
        }
    });
    return dialog;
}

// Runs `act` on the modal window that opens next, from the event loop that runs it.
void WhenModalOpens(std::function<void(QWidget*)> act) {
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            timer->stop();
            timer->deleteLater();
            act(modal);
        }
    });
    timer->start(5);
}

class BackendTest : public ::testing::Test {
protected:
    void SetUp() override { ZML::Qt6::InstallBackend(*qApp); }
    void TearDown() override {
        ZML::Qt6::UninstallBackend();
        qttest::FlushDeletes();
    }
};

}  // namespace

TEST_F(BackendTest, EveryPartBecomesAWidgetOfItsKindWhereThePartSays) {
    auto dialog = MakeDialog();
    QWidget* window = WidgetOf(dialog);
    ASSERT_NE(qobject_cast<QDialog*>(window), nullptr);
    EXPECT_EQ(window->windowTitle(), "Settings");

    struct Case {
        const char* name;
        std::function<bool(QWidget*)> isKind;
    };
    const std::vector<Case> cases{
        {"caption", [](QWidget* w) { return qobject_cast<QLabel*>(w) != nullptr; }},
        {"name", [](QWidget* w) { return qobject_cast<QLineEdit*>(w) != nullptr; }},
        {"count", [](QWidget* w) { return qobject_cast<QAbstractSpinBox*>(w) != nullptr; }},
        {"choice", [](QWidget* w) { return qobject_cast<QComboBox*>(w) != nullptr; }},
        {"rows", [](QWidget* w) { return qobject_cast<QListWidget*>(w) != nullptr; }},
        {"canvas", [](QWidget* w) { return qobject_cast<ZML::Qt6::CanvasView*>(w) != nullptr; }},
        {"ok_button", [](QWidget* w) { return qobject_cast<QPushButton*>(w) != nullptr; }},
        {"inner", [](QWidget* w) { return qobject_cast<QLabel*>(w) != nullptr; }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto* widget = window->findChild<QWidget*>(c.name);
        ASSERT_NE(widget, nullptr);
        EXPECT_TRUE(c.isKind(widget));
        const auto at = dialog->FindPart(c.name)->Geometry();
        EXPECT_EQ(widget->geometry(), QRect(at.x, at.y, at.width, at.height));
    }
    EXPECT_EQ(window->findChild<QComboBox*>("choice")->count(), 3);
    EXPECT_EQ(window->findChild<QListWidget*>("rows")->count(), 2);
}

TEST_F(BackendTest, PartChangesReachTheWidgets) {
    auto dialog = MakeDialog();
    QWidget* window = WidgetOf(dialog);
    auto label = dialog->Find<ZML::Label>("caption");
    auto button = dialog->Find<ZML::Button>("ok_button");
    auto edit = dialog->Find<ZML::EditText>("name");
    auto popup = dialog->Find<ZML::PopupList>("choice");
    auto number = dialog->Find<ZML::Number>("count");

    label->TitleSet(L"Full name:");
    button->Disable();
    button->InfoSet(L"Keeps the settings");
    edit->SetUnicodeText(L"Ada");
    popup->SetValue(L"blue");
    number->SetValue(42);
    label->GeometrySet(15, 12, 180, 22);

    EXPECT_EQ(window->findChild<QLabel*>("caption")->text(), "Full name:");
    EXPECT_EQ(window->findChild<QLabel*>("caption")->geometry(), QRect(15, 12, 180, 22));
    EXPECT_FALSE(window->findChild<QPushButton*>("ok_button")->isEnabled());
    EXPECT_EQ(window->findChild<QPushButton*>("ok_button")->toolTip(), "Keeps the settings");
    EXPECT_EQ(window->findChild<QLineEdit*>("name")->text(), "Ada");
    EXPECT_EQ(window->findChild<QComboBox*>("choice")->currentIndex(), 2);
    EXPECT_EQ(window->findChild<QAbstractSpinBox*>("count")->text(),
              QString::fromStdWString(number->Text()));
}

TEST_F(BackendTest, UserInputReachesTheParts) {
    auto dialog = MakeDialog();
    QWidget* window = WidgetOf(dialog);
    window->show();
    auto edit = dialog->Find<ZML::EditText>("name");
    auto number = dialog->Find<ZML::Number>("count");
    number->LimitsSet(0, 100);
    auto popup = dialog->Find<ZML::PopupList>("choice");
    int changes = 0;
    edit->OnMessage("valuechanged", [&changes](const ZML::Event&) { ++changes; });

    QTest::keyClicks(window->findChild<QLineEdit*>("name"), "Lovelace");
    EXPECT_EQ(edit->GetUnicodeText(), L"Lovelace");
    EXPECT_EQ(changes, 8) << "one change per character typed";

    struct Entry {
        const char* typed;
        double expected;
    };
    auto* field = window->findChild<QAbstractSpinBox*>("count");
    for (const Entry& entry :
         {Entry{"12", 12}, Entry{"5000", 12}, Entry{"abc", 12}, Entry{"7", 7}}) {
        SCOPED_TRACE(entry.typed);
        field->selectAll();
        QTest::keyClicks(field, entry.typed);
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_EQ(number->Value(), entry.expected);
        EXPECT_EQ(field->text(), QString::fromStdWString(number->Text()))
            << "refused entries revert";
    }

    emit window->findChild<QComboBox*>("choice")->activated(1);
    EXPECT_EQ(popup->Value(), L"green");
    window->findChild<QListWidget*>("rows")->clicked(
        window->findChild<QListWidget*>("rows")->model()->index(1, 0));
    EXPECT_EQ(dialog->Find<ZML::ScrollList>("rows")->GetSelectedPos(), 1);
}

TEST_F(BackendTest, FramesRunAsRealModalDialogs) {
    struct Case {
        const char* name;
        std::function<void(QWidget*)> user;
        int expected;
    };
    const std::vector<Case> cases{
        {"OK pressed",
         [](QWidget* modal) {
             QTest::mouseClick(modal->findChild<QPushButton*>("ok_button"), Qt::LeftButton);
         },
         ZML::ResultOk},
        {"window closed with Escape",
         [](QWidget* modal) { QTest::keyClick(modal, Qt::Key_Escape); }, ZML::ResultCancel},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto dialog = MakeDialog();
        int displays = 0;
        int closes = 0;
        dialog->OnMessage("display", [&displays](const ZML::Event&) { ++displays; });
        dialog->OnMessage("close", [&closes](const ZML::Event&) { ++closes; });
        WhenModalOpens(c.user);
        EXPECT_EQ(dialog->ShowModal(), c.expected);
        EXPECT_EQ(displays, 1);
        EXPECT_EQ(closes, 1);
        EXPECT_FALSE(dialog->IsOpen());
        EXPECT_FALSE(WidgetOf(dialog)->isVisible());
    }
}

TEST_F(BackendTest, MessageBoxesAreQtDialogs) {
    WhenModalOpens([](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->text(), "Replace the file?");
        box->button(QMessageBox::No)->click();
    });
    EXPECT_FALSE(qzml_DialogYesNo(L"Replace the file?", L"Save"));

    WhenModalOpens([](QWidget* modal) {
        qobject_cast<QMessageBox*>(modal)->button(QMessageBox::Cancel)->click();
    });
    EXPECT_EQ(qzml_DialogYesNoCancel(L"Save changes?"), ZML::Answer::Cancel);

    WhenModalOpens([](QWidget* modal) {
        auto* input = qobject_cast<QInputDialog*>(modal);
        ASSERT_NE(input, nullptr);
        EXPECT_EQ(input->textValue(), "old");
        input->setTextValue("new name");
        input->accept();
    });
    EXPECT_EQ(qzml_DialogEditText(L"Name:", L"old"), std::optional<std::wstring>(L"new name"));
}

TEST_F(BackendTest, TreeViewShowsNodesAndTakesClicks) {
    auto dialog = std::make_shared<ZML::Frame>("palette");
    auto tree = std::make_shared<ZML::TreeView>("tree");
    tree->GeometrySet(0, 0, 200, 300);
    dialog->Add(tree);
    auto category = std::make_shared<ZML::TreeViewNode>(L"Arithmetic");
    auto add = category->AddChild(std::make_shared<ZML::TreeViewNode>(L"Add"));
    category->AddChild(std::make_shared<ZML::TreeViewNode>(L"Subtract"));
    tree->AddNode(category);
    tree->Expand(category);

    auto* widget = WidgetOf(dialog)->findChild<QTreeWidget*>("tree");
    ASSERT_NE(widget, nullptr);
    ASSERT_EQ(widget->topLevelItemCount(), 1);
    QTreeWidgetItem* top = widget->topLevelItem(0);
    EXPECT_EQ(top->text(0), "Arithmetic");
    EXPECT_EQ(top->childCount(), 2);
    EXPECT_TRUE(top->isExpanded());

    emit widget->itemPressed(top->child(0), 0);
    EXPECT_EQ(tree->GetSelectedNodes(), std::vector<std::shared_ptr<ZML::TreeViewNode>>{add});
    EXPECT_TRUE(top->child(0)->isSelected());

    top->setExpanded(false);
    EXPECT_FALSE(category->IsExpanded()) << "closing the item closes the node";
    tree->AddNode(std::make_shared<ZML::TreeViewNode>(L"Focal"));
    tree->ComputeSizeAndRedraw();
    EXPECT_EQ(widget->topLevelItemCount(), 2);
}

TEST_F(BackendTest, ContainersTitlesAndLocksLayOutTheWindow) {
    auto frame = std::make_shared<ZML::Frame>("layout");
    frame->GeometrySet(0, 0, 400, 300);
    frame->ResizableSet(true);
    auto split = std::make_shared<ZML::SplitPanel>("split");
    split->GeometrySet(0, 0, 200, 150);
    split->Add(std::make_shared<ZML::Label>("first"));
    split->Add(std::make_shared<ZML::Label>("second"));
    frame->Add(split);
    auto scroll = std::make_shared<ZML::ScrollGroup>("scroll");
    scroll->GeometrySet(0, 160, 200, 100);
    auto far = std::make_shared<ZML::Label>("far");
    far->GeometrySet(10, 500, 50, 20);
    scroll->Add(far);
    frame->Add(scroll);
    auto edit = std::make_shared<ZML::EditText>("path");
    edit->GeometrySet(260, 20, 100, 24);
    edit->TitleSet(L"Path:");
    edit->TitleWhereSet(ZML::TitleLeft);
    edit->TitleOffsetSet(6);
    edit->LockSet(ZML::LockRight | ZML::LockTop);
    frame->Add(edit);

    QWidget* window = WidgetOf(frame);
    auto* splitter = window->findChild<QSplitter*>("split");
    ASSERT_NE(splitter, nullptr);
    EXPECT_EQ(splitter->count(), 2);
    auto* area = window->findChild<QScrollArea*>("scroll");
    ASSERT_NE(area, nullptr);
    EXPECT_EQ(area->widget()->findChild<QLabel*>("far")->parentWidget(), area->widget());
    EXPECT_GE(area->widget()->height(), 520) << "the scrolled area holds every child";

    auto* field = window->findChild<QLineEdit*>("path");
    QLabel* title = nullptr;
    for (auto* label : window->findChildren<QLabel*>()) {
        if (label->text() == "Path:") {
            title = label;
        }
    }
    ASSERT_NE(title, nullptr);
    EXPECT_EQ(title->geometry().right() + 1 + 6, field->geometry().left()) << "left of the field";

    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    window->resize(500, 300);
    EXPECT_EQ(edit->Geometry().x, 360) << "locked right, it keeps its distance to the right edge";
    EXPECT_EQ(field->geometry().x(), 360);
    EXPECT_EQ(title->geometry().right() + 1 + 6, 360) << "the title follows";
}

TEST_F(BackendTest, HelpPagesOpenWithTheDesktopServices) {
    // A text browser stands in for the desktop's viewer: its setSource slot receives the address.
    QTextBrowser viewer;
    QDesktopServices::setUrlHandler("file", &viewer, "setSource");
    struct Case {
        const wchar_t* key;
        const char* page;
        bool found;
    };
    for (const Case& c : {Case{L"index", "/LXL/index.html", true},
                          Case{L"tamarin_focalmean", "/LXL/tamarin_focalmean.html", true},
                          Case{L"no_such_topic", "/LXL/missing.html", false}}) {
        SCOPED_TRACE(c.page);
        QuarnLog::ErrorContext errors("open help");
        EXPECT_EQ(qzml_LXHelp(L"LXL", c.key, L"", errors) != 0, c.found);
        EXPECT_EQ(errors.HasErrors(), !c.found);
        EXPECT_TRUE(viewer.source().path().endsWith(c.page))
            << viewer.source().toString().toStdString();
    }
    QDesktopServices::unsetUrlHandler("file");
}
