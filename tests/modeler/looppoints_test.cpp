// Loops in the model editor: their Body and Test points, the saved links drawn at them, and the
// edits a user makes there, driven headless through the window and the canvas's gestures.

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "EditorHost.h"
#include "LattixBasic/ConditionalProcess.h"
#include "MainWindow.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphNodeEx.h"
#include "ZML/FlowGraphPart.h"
#include "ZMLQt/CanvasView.h"
#include "modelerkit.h"
#include "modelgui/BodyConnectionPoint.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/TestConnectionPoint.h"
#include "modelgui/UndoRedoManager.h"

namespace {

using lattix::modeler::MainWindow;
namespace lx = Velmar::Lattix;
namespace mg = quarn::modelgui;
using Conditional = LattixBasic::ConditionalProcess;

const QString kLoopExample = QStringLiteral(LATTIX_SOURCE_DIR "/examples/loop.gmdx");

using modelertest::Text;

using modelertest::OperatorOfType;

std::vector<std::wstring> TypeNames(const std::vector<std::shared_ptr<lx::Operator>>& operators) {
    std::vector<std::wstring> names;
    for (const auto& op : operators) names.push_back(op ? op->GetOperatorName() : L"(gone)");
    return names;
}

class LoopPointsTest : public modelertest::WindowTest {
protected:
    std::shared_ptr<Conditional> Loop() {
        return std::dynamic_pointer_cast<Conditional>(OperatorOfType(Host().GetModel(), L"Loop"));
    }
    std::shared_ptr<mg::PortDescriptionConnectionPoint> OutputPoint(
        const std::shared_ptr<lx::Operator>& op) {
        return mg::GUIUtils::FindPortDescriptionPoint(Canvas(), op, op->GetPort(L"Output"));
    }
    QPoint At(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& point) const {
        const auto at = point->GetNode()->GetPointPosition(point);
        return window->View()->ViewPosition(at.x, at.y);
    }
    // The operators at the input ends of the connections that leave `point`.
    std::vector<std::shared_ptr<lx::Operator>> Fed(
        const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& point) {
        std::vector<std::shared_ptr<lx::Operator>> operators;
        for (const auto& connection : Canvas()->GetConnections(point)) {
            const auto node =
                std::dynamic_pointer_cast<mg::OperatorNode>(connection->GetInputPoint()->GetNode());
            operators.push_back(node ? node->GetOperator() : nullptr);
        }
        return operators;
    }
};

// The saved loop shows one Body and one Test point; the body links run from Body to each body
// operator's Previous point and the test link from the comparison's output to Test. Drawing them
// is no edit: the model stays unmodified, with nothing to undo and the text it was read with.
TEST_F(LoopPointsTest, TheLoopExampleShowsItsBodyAndTestLinks) {
    ASSERT_TRUE(window->OpenFile(kLoopExample));
    const auto loop = Loop();
    ASSERT_NE(loop, nullptr);
    const auto node = mg::GUIUtils::FindOperatorNode(Canvas(), loop);
    ASSERT_NE(node, nullptr);
    int bodies = 0;
    int tests = 0;
    for (const auto& point : node->GetFlowConnectionPoints()) {
        bodies += std::dynamic_pointer_cast<mg::BodyConnectionPoint>(point) ? 1 : 0;
        tests += std::dynamic_pointer_cast<mg::TestConnectionPoint>(point) ? 1 : 0;
    }
    EXPECT_EQ(bodies, 1);
    EXPECT_EQ(tests, 1);

    const auto body = mg::GUIUtils::FindBodyPoint(Canvas(), loop);
    ASSERT_NE(body, nullptr);
    EXPECT_TRUE(body->IsOutput());
    EXPECT_EQ(TypeNames(Fed(body)), (std::vector<std::wstring>{L"Counter", L"ScalarOutput"}));
    for (const auto& connection : Canvas()->GetConnections(body)) {
        const auto node =
            std::dynamic_pointer_cast<mg::OperatorNode>(connection->GetInputPoint()->GetNode());
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(connection->GetInputPoint(),
                  mg::GUIUtils::FindPrevPoint(Canvas(), node->GetOperator()));
    }
    // The flow link between the two body operators shows now that both have flow points.
    const auto counter = OperatorOfType(Host().GetModel(), L"Counter");
    EXPECT_EQ(TypeNames(Fed(mg::GUIUtils::FindNextPoint(Canvas(), counter))),
              (std::vector<std::wstring>{L"ScalarOutput"}));

    const auto test = mg::GUIUtils::FindTestPoint(Canvas(), loop);
    ASSERT_NE(test, nullptr);
    const auto testLinks = Canvas()->GetConnections(test);
    ASSERT_EQ(testLinks.size(), 1u);
    const auto lessThan = OperatorOfType(Host().GetModel(), L"LessThan");
    EXPECT_EQ(testLinks.front()->GetOutputPoint(), OutputPoint(lessThan));

    EXPECT_FALSE(Host().IsModified());
    EXPECT_FALSE(Host().GetUndoRedoManager()->CanUndo());
    EXPECT_TRUE(Host().GetGestureErrors().empty());
    EXPECT_EQ(Text(Host().GetModel()),
              Text(lx::ModelFormatFactory::Open(kLoopExample.toStdWString())));

    // A redraw gives the same points once each, not a second set.
    Host().RedrawModel();
    EXPECT_EQ(Canvas()->GetConnections(mg::GUIUtils::FindBodyPoint(Canvas(), Loop())).size(), 2u);
    EXPECT_FALSE(Host().GetUndoRedoManager()->CanUndo());
}

// If operators keep their branch points and get no loop points.
TEST_F(LoopPointsTest, IfOperatorsGetNoLoopPoints) {
    ASSERT_TRUE(window->OpenFile(QStringLiteral(LATTIX_SOURCE_DIR "/examples/if-else.gmdx")));
    int conditionals = 0;
    for (const auto& op : Host().GetModel()->GetOperators()) {
        if (!std::dynamic_pointer_cast<Conditional>(op)) continue;
        ++conditionals;
        EXPECT_EQ(mg::GUIUtils::FindBodyPoint(Canvas(), op), nullptr);
        EXPECT_EQ(mg::GUIUtils::FindTestPoint(Canvas(), op), nullptr);
        EXPECT_NE(mg::GUIUtils::FindTrueFalsePoint(Canvas(), op, true), nullptr);
    }
    EXPECT_GT(conditionals, 0);
}

// A mouse drag from Body to another operator's Previous point puts that operator in the loop's
// body, as one undo step.
TEST_F(LoopPointsTest, DraggingFromBodyToPreviousMakesABodyOperator) {
    ASSERT_TRUE(window->OpenFile(kLoopExample));
    window->Screenshot(QSize(1100, 720));
    window->View()->Canvas()->SetFlowGraphDisplayInfo({1.0, 0.0, 0.0});
    const auto before = Text(Host().GetModel());
    const auto input = OperatorOfType(Host().GetModel(), L"ScalarInput");
    ASSERT_NE(input, nullptr);
    mg::GUIUtils::AddFlowControl(Canvas(), input);
    const auto previous = mg::GUIUtils::FindPrevPoint(Canvas(), input);
    const auto body = mg::GUIUtils::FindBodyPoint(Canvas(), Loop());
    ASSERT_NE(previous, nullptr);
    ASSERT_NE(body, nullptr);

    const QPoint from = At(body);
    const QPoint to = At(previous);
    auto* viewport = window->View()->viewport();
    ASSERT_TRUE(viewport->rect().contains(from));
    ASSERT_TRUE(viewport->rect().contains(to));
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, from);
    for (int i = 1; i <= 5; ++i) QTest::mouseMove(viewport, from + (to - from) * i / 5);
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, to);

    ASSERT_NE(Canvas()->FindConnection(previous, body), nullptr) << "the drag drew no connection";
    EXPECT_TRUE(Host().GetGestureErrors().empty());
    EXPECT_EQ(TypeNames(Loop()->GetBody()),
              (std::vector<std::wstring>{L"Counter", L"ScalarOutput", L"ScalarInput"}));
    EXPECT_TRUE(Host().IsModified());

    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), before);
    EXPECT_EQ(TypeNames(Loop()->GetBody()),
              (std::vector<std::wstring>{L"Counter", L"ScalarOutput"}));
    EXPECT_EQ(TypeNames(Fed(mg::GUIUtils::FindBodyPoint(Canvas(), Loop()))),
              (std::vector<std::wstring>{L"Counter", L"ScalarOutput"}));
    ASSERT_TRUE(Host().Redo());
    EXPECT_EQ(TypeNames(Loop()->GetBody()),
              (std::vector<std::wstring>{L"Counter", L"ScalarOutput", L"ScalarInput"}));
    EXPECT_EQ(Fed(mg::GUIUtils::FindBodyPoint(Canvas(), Loop())).size(), 3u)
        << "the redrawn body link of the restored model";
}

// Removing a body connection takes the operator out of the body, as one undo step.
TEST_F(LoopPointsTest, RemovingABodyConnectionTakesTheOperatorOutOfTheBody) {
    ASSERT_TRUE(window->OpenFile(kLoopExample));
    const auto before = Text(Host().GetModel());
    const auto body = mg::GUIUtils::FindBodyPoint(Canvas(), Loop());
    const auto output = OperatorOfType(Host().GetModel(), L"ScalarOutput");
    const auto link = Canvas()->FindConnection(mg::GUIUtils::FindPrevPoint(Canvas(), output), body);
    ASSERT_NE(link, nullptr);
    ASSERT_TRUE(Canvas()->UserRemoveConnection(link));
    EXPECT_EQ(TypeNames(Loop()->GetBody()), (std::vector<std::wstring>{L"Counter"}));
    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), before);
}

// Connecting a boolean output to Test makes it the loop's test; a non-boolean output is refused;
// deleting the connection clears the test. Each is one undo step.
TEST_F(LoopPointsTest, ABooleanOutputConnectedToTestBecomesTheTest) {
    const auto added = Host().AddOperator(lx::ObjectName(L"TAMARIN", L"Loop"), 40, 100);
    const auto lessThan = Host().AddOperator(lx::ObjectName(L"TAMARIN", L"LessThan"), 300, 100);
    const auto counter = Host().AddOperator(lx::ObjectName(L"TAMARIN", L"Counter"), 300, 250);
    const auto loop = std::dynamic_pointer_cast<Conditional>(added);
    ASSERT_NE(loop, nullptr);
    ASSERT_NE(lessThan, nullptr);
    const auto test = mg::GUIUtils::FindTestPoint(Canvas(), loop);
    ASSERT_NE(test, nullptr);
    ASSERT_NE(mg::GUIUtils::FindBodyPoint(Canvas(), loop), nullptr);
    const auto withoutTest = Text(Host().GetModel());

    EXPECT_EQ(Canvas()->UserConnect(OutputPoint(counter), test), nullptr)
        << "a counter's output is no boolean";
    const auto link = Canvas()->UserConnect(OutputPoint(lessThan), test);
    ASSERT_NE(link, nullptr);
    EXPECT_TRUE(Host().GetGestureErrors().empty());
    EXPECT_EQ(loop->GetTestOperator(), lessThan);
    ASSERT_NE(loop->GetTestPort(), nullptr);
    EXPECT_EQ(loop->GetTestPort()->GetName(), L"Output");
    const auto withTest = Text(Host().GetModel());

    ASSERT_TRUE(Canvas()->UserRemoveConnection(link));
    EXPECT_EQ(loop->GetTestOperator(), nullptr);
    EXPECT_EQ(Text(Host().GetModel()), withoutTest);

    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), withTest);
    EXPECT_EQ(Loop()->GetTestOperator(), OperatorOfType(Host().GetModel(), L"LessThan"));
    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), withoutTest);
    EXPECT_EQ(Loop()->GetTestOperator(), nullptr);
    EXPECT_TRUE(Canvas()->GetConnections(mg::GUIUtils::FindTestPoint(Canvas(), Loop())).empty());
}

// Body and test drawn on the canvas are saved with the model and drawn again when it is reopened.
TEST_F(LoopPointsTest, BodyAndTestSurviveSavingAndReopening) {
    const auto loop = std::dynamic_pointer_cast<Conditional>(
        Host().AddOperator(lx::ObjectName(L"TAMARIN", L"Loop"), 40, 100));
    const auto counter = Host().AddOperator(lx::ObjectName(L"TAMARIN", L"Counter"), 300, 40);
    const auto lessThan = Host().AddOperator(lx::ObjectName(L"TAMARIN", L"LessThan"), 300, 200);
    ASSERT_NE(loop, nullptr);
    mg::GUIUtils::AddFlowControl(Canvas(), counter);
    ASSERT_NE(Canvas()->UserConnect(mg::GUIUtils::FindBodyPoint(Canvas(), loop),
                                    mg::GUIUtils::FindPrevPoint(Canvas(), counter)),
              nullptr);
    ASSERT_NE(
        Canvas()->UserConnect(OutputPoint(lessThan), mg::GUIUtils::FindTestPoint(Canvas(), loop)),
        nullptr);
    ASSERT_TRUE(Host().GetGestureErrors().empty());

    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString path = folder.filePath(QStringLiteral("counted.gmdx"));
    std::wstring error;
    ASSERT_TRUE(window->SaveAs(path, &error)) << QString::fromStdWString(error).toStdString();
    ASSERT_TRUE(window->OpenFile(path, &error)) << QString::fromStdWString(error).toStdString();

    const auto reopened = Loop();
    ASSERT_NE(reopened, nullptr);
    ASSERT_NE(reopened, loop);
    EXPECT_EQ(TypeNames(reopened->GetBody()), (std::vector<std::wstring>{L"Counter"}));
    ASSERT_NE(reopened->GetTestOperator(), nullptr);
    EXPECT_EQ(reopened->GetTestOperator()->GetOperatorName(), L"LessThan");
    EXPECT_EQ(TypeNames(Fed(mg::GUIUtils::FindBodyPoint(Canvas(), reopened))),
              (std::vector<std::wstring>{L"Counter"}));
    const auto testLinks =
        Canvas()->GetConnections(mg::GUIUtils::FindTestPoint(Canvas(), reopened));
    ASSERT_EQ(testLinks.size(), 1u);
    EXPECT_EQ(testLinks.front()->GetOutputPoint(),
              OutputPoint(OperatorOfType(Host().GetModel(), L"LessThan")));
}

}  // namespace
