// The editor's Flow-Control Points command: the Previous and Next points it gives and takes from
// the selected operators, their saved "FlowControl" attribute, undo, and the links drawn at them.

#include <gtest/gtest.h>

#include <QAction>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "EditorHost.h"
#include "LattixBasic/ConditionalProcess.h"
#include "MainWindow.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/Operator.h"
#include "ZML/FlowGraphPart.h"
#include "modelerkit.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/UndoRedoManager.h"

namespace {

using lattix::modeler::MainWindow;
namespace lx = Velmar::Lattix;
namespace mg = quarn::modelgui;

using modelertest::Text;

using modelertest::OperatorOfType;

// The saved "FlowControl" attribute: absent reads as false, as the drawing reads it.
bool SavedFlowControl(const std::shared_ptr<lx::Operator>& op) {
    const auto value = std::dynamic_pointer_cast<lx::BoolData>(op->GetAttribute(L"FlowControl"));
    return value && value->GetValue();
}

// How the window names an operator in its messages.
QString Caption(const std::shared_ptr<lx::Operator>& op) {
    return QString::fromStdWString(op->GetDisplayName().empty() ? op->GetOperatorName()
                                                                : op->GetDisplayName());
}

class FlowControlTest : public modelertest::WindowTest {
protected:
    std::shared_ptr<lx::Operator> Add(const std::wstring& type, int x, int y) {
        auto op = Host().AddOperator(lx::ObjectName(L"TAMARIN", type), x, y);
        EXPECT_NE(op, nullptr) << "no operator type "
                               << QString::fromStdWString(type).toStdString();
        return op;
    }
    // Makes exactly `operators` the selection.
    void Select(const std::vector<std::shared_ptr<lx::Operator>>& operators) {
        Canvas()->ClearSelection();
        for (const auto& op : operators) {
            const auto node = mg::GUIUtils::FindOperatorNode(Canvas(), op);
            ASSERT_NE(node, nullptr);
            Canvas()->AddNodeToSelection(node);
        }
    }
    bool Shows(const std::shared_ptr<lx::Operator>& op) {
        return mg::GUIUtils::FindPrevPoint(Canvas(), op) != nullptr &&
               mg::GUIUtils::FindNextPoint(Canvas(), op) != nullptr;
    }
    QAction* Command() const {
        return window->findChild<QAction*>(QStringLiteral("flowControlPoints"));
    }
    // Runs the command as the menu does, collecting the operators that kept their points.
    QStringList Toggle() {
        QStringList kept;
        window->ToggleFlowControlPoints(&kept);
        return kept;
    }
};

// The command follows the selection: disabled with no operator selected, enabled and unchecked
// for an operator without the points, checked once it has them.
TEST_F(FlowControlTest, TheCommandFollowsTheSelection) {
    const auto counter = Add(L"Counter", 40, 40);
    auto* command = Command();
    ASSERT_NE(command, nullptr);
    EXPECT_TRUE(command->isCheckable());
    Canvas()->ClearSelection();
    window->RefreshFlowControlAction();
    EXPECT_FALSE(command->isEnabled());
    Select({counter});
    window->RefreshFlowControlAction();
    EXPECT_TRUE(command->isEnabled());
    EXPECT_FALSE(command->isChecked());
    EXPECT_TRUE(Toggle().isEmpty());
    EXPECT_TRUE(command->isChecked());
}

// Points given to a plain operator are saved as its "FlowControl" attribute, in one undo step
// that takes both away again; redo brings both back.
TEST_F(FlowControlTest, AddingPointsIsOneUndoStep) {
    const auto counter = Add(L"Counter", 40, 40);
    ASSERT_FALSE(Shows(counter));
    const auto before = Text(Host().GetModel());
    Select({counter});
    EXPECT_TRUE(Toggle().isEmpty());
    EXPECT_TRUE(Shows(counter));
    EXPECT_TRUE(SavedFlowControl(counter));
    EXPECT_TRUE(Host().SelectionShowsFlowControl());
    EXPECT_TRUE(Host().IsModified());
    const auto after = Text(Host().GetModel());
    EXPECT_NE(after, before);

    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), before);
    const auto undone = OperatorOfType(Host().GetModel(), L"Counter");
    ASSERT_NE(undone, nullptr);
    EXPECT_FALSE(SavedFlowControl(undone));
    EXPECT_FALSE(Shows(undone));

    ASSERT_TRUE(Host().Redo());
    EXPECT_EQ(Text(Host().GetModel()), after);
    const auto redone = OperatorOfType(Host().GetModel(), L"Counter");
    ASSERT_NE(redone, nullptr);
    EXPECT_TRUE(SavedFlowControl(redone));
    EXPECT_TRUE(Shows(redone));
}

// With points on both, Next of one drawn to Previous of the other makes the first the flow parent
// of the second.
TEST_F(FlowControlTest, NextToPreviousMakesAFlowParent) {
    const auto first = Add(L"Counter", 40, 40);
    const auto second = Add(L"LessThan", 300, 40);
    Select({first, second});
    EXPECT_TRUE(Toggle().isEmpty());
    ASSERT_TRUE(Shows(first));
    ASSERT_TRUE(Shows(second));
    ASSERT_NE(Canvas()->UserConnect(mg::GUIUtils::FindNextPoint(Canvas(), first),
                                    mg::GUIUtils::FindPrevPoint(Canvas(), second)),
              nullptr);
    EXPECT_TRUE(Host().GetGestureErrors().empty());
    EXPECT_TRUE(second->IsParent(first));
    EXPECT_FALSE(first->IsParent(second));
}

// An operator given the points joins a loop's body when Body is drawn to its Previous point.
TEST_F(FlowControlTest, PointsLetAnOperatorJoinALoopBody) {
    const auto loop =
        std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(Add(L"Loop", 40, 100));
    const auto counter = Add(L"Counter", 300, 40);
    ASSERT_NE(loop, nullptr);
    Select({counter});
    EXPECT_TRUE(Toggle().isEmpty());
    ASSERT_NE(Canvas()->UserConnect(mg::GUIUtils::FindBodyPoint(Canvas(), loop),
                                    mg::GUIUtils::FindPrevPoint(Canvas(), counter)),
              nullptr);
    EXPECT_TRUE(Host().GetGestureErrors().empty());
    EXPECT_EQ(loop->GetBody(), (std::vector<std::shared_ptr<lx::Operator>>{counter}));
}

// Taking the points away spares an operator with a link at them, names it, and takes them from
// the others in one undo step.
TEST_F(FlowControlTest, RemovingPointsSparesOperatorsWithLinks) {
    const auto first = Add(L"Counter", 40, 40);
    const auto second = Add(L"LessThan", 300, 40);
    const auto free = Add(L"ScalarOutput", 40, 250);
    Select({first, second, free});
    EXPECT_TRUE(Toggle().isEmpty());
    const auto link = Canvas()->UserConnect(mg::GUIUtils::FindNextPoint(Canvas(), first),
                                            mg::GUIUtils::FindPrevPoint(Canvas(), second));
    ASSERT_NE(link, nullptr);
    const auto linked = Text(Host().GetModel());

    Select({first, free});
    EXPECT_EQ(Toggle(), QStringList{Caption(first)});
    EXPECT_TRUE(Shows(first));
    EXPECT_TRUE(SavedFlowControl(first));
    EXPECT_NE(Canvas()->FindConnection(mg::GUIUtils::FindPrevPoint(Canvas(), second),
                                       mg::GUIUtils::FindNextPoint(Canvas(), first)),
              nullptr)
        << "the flow link went with the points";
    EXPECT_TRUE(second->IsParent(first));
    EXPECT_FALSE(Shows(free));
    EXPECT_FALSE(SavedFlowControl(free));
    EXPECT_FALSE(Host().SelectionShowsFlowControl());

    // The second end of the link is refused alone too, and nothing changes.
    Select({second});
    const auto spared = Text(Host().GetModel());
    EXPECT_EQ(Toggle(), QStringList{Caption(second)});
    EXPECT_TRUE(Shows(second));
    EXPECT_EQ(Text(Host().GetModel()), spared);

    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), linked);
    const auto restored = OperatorOfType(Host().GetModel(), L"ScalarOutput");
    ASSERT_NE(restored, nullptr);
    EXPECT_TRUE(Shows(restored));
}

// The points are saved with the model and shown again when it is reopened.
TEST_F(FlowControlTest, PointsSurviveSavingAndReopening) {
    const auto counter = Add(L"Counter", 40, 40);
    const auto plain = Add(L"LessThan", 300, 40);
    Select({counter});
    EXPECT_TRUE(Toggle().isEmpty());

    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString path = folder.filePath(QStringLiteral("flowed.gmdx"));
    std::wstring error;
    ASSERT_TRUE(window->SaveAs(path, &error)) << QString::fromStdWString(error).toStdString();
    ASSERT_TRUE(window->OpenFile(path, &error)) << QString::fromStdWString(error).toStdString();

    const auto reopened = OperatorOfType(Host().GetModel(), L"Counter");
    ASSERT_NE(reopened, nullptr);
    ASSERT_NE(reopened, counter);
    EXPECT_TRUE(SavedFlowControl(reopened));
    EXPECT_TRUE(Shows(reopened));
    const auto other = OperatorOfType(Host().GetModel(), L"LessThan");
    ASSERT_NE(other, nullptr);
    EXPECT_FALSE(Shows(other));
}

}  // namespace
