// The model editor window over the example models, driven headless with real input events.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QFile>
#include <QFileInfo>
#include <QGraphicsItem>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>

#include "EditorHost.h"
#include "MainWindow.h"
#include "PortValuesDialog.h"
#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/Issue.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphNodeEx.h"
#include "ZML/FlowGraphPart.h"
#include "ZMLQt/CanvasView.h"
#include "modelerkit.h"
#include "modelgui/GUIUtils.h"
#include "modelgui/MessageManager.h"
#include "modelgui/OperatorNode.h"

namespace {

using lattix::modeler::MainWindow;
namespace lx = Velmar::Lattix;
namespace mg = quarn::modelgui;

using modelertest::Text;

bool StoredPosition(const lx::Operator& op, int& x, int& y) {
    const auto px = op.GetAttribute(L"PositionX");
    const auto py = op.GetAttribute(L"PositionY");
    if (!px || !py) return false;
    x = static_cast<int>(std::stod(px->ToString()));
    y = static_cast<int>(std::stod(py->ToString()));
    return true;
}

QPoint Inside(const ZML::Qt6::CanvasView& view, const ZML::FlowGraphNodeEx& node) {
    const auto box = node.GetBounds();
    return view.ViewPosition(box.x + box.width / 2.0, box.y + 10);
}

void Drag(QWidget* viewport, QPoint from, QPoint to, int steps = 4) {
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, from);
    for (int i = 1; i <= steps; ++i) QTest::mouseMove(viewport, from + (to - from) * i / steps);
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, to);
}

// Answers the next message box with `button`, remembering its text.
void AnswerNextMessageBox(QMessageBox::StandardButton button, QString& text) {
    QTimer::singleShot(0, [button, &text] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        text = box->text();
        box->button(button)->click();
    });
}

class EditorTest : public modelertest::WindowTest {
protected:
    std::shared_ptr<mg::OperatorNode> NodeOf(const std::shared_ptr<lx::Operator>& op) {
        return mg::GUIUtils::FindOperatorNode(Canvas(), op);
    }
};

// Every example opens without error messages, and its picture shows each operator where the
// model stores it: the node and its scene item stand at the stored position, and the picture is
// not background at the node's middle.
TEST_F(EditorTest, EveryExampleIsDrawnWithItsOperatorsAtTheirStoredPositions) {
    const auto examples = modelertest::ExampleModels();
    ASSERT_GE(examples.size(), 4);
    for (const QString& path : examples) {
        SCOPED_TRACE(path.toStdString());
        std::wstring error;
        ASSERT_TRUE(window->OpenFile(path, &error)) << QString::fromStdWString(error).toStdString();
        const QImage picture = window->Screenshot(QSize(1100, 720));
        ASSERT_FALSE(picture.isNull());
        for (const auto& message : Host().GetMessageManager()->GetMessages()) {
            EXPECT_NE(message->GetSeverity(), lx::Issue::Severity::Error)
                << QString::fromStdWString(message->GetText()).toStdString();
        }
        const auto* view = window->View();
        const QColor background = picture.pixelColor(
            view->viewport()->mapTo(window.get(), QPoint(2, view->viewport()->height() - 3)));
        int positioned = 0;
        for (const auto& op : Host().GetModel()->GetOperators()) {
            int x = 0;
            int y = 0;
            if (!StoredPosition(*op, x, y)) continue;
            ++positioned;
            const auto node = NodeOf(op);
            ASSERT_NE(node, nullptr);
            EXPECT_EQ(node->GetLocation(), (ZML::FlowGraphLocation{x, y}));
            const auto* item = view->ItemFor(node);
            ASSERT_NE(item, nullptr);
            EXPECT_EQ(item->pos(), QPointF(x, y));
            const auto box = node->GetBounds();
            const QPoint middle = view->viewport()->mapTo(
                window.get(),
                view->ViewPosition(box.x + box.width / 2.0, box.y + box.height / 2.0));
            ASSERT_TRUE(picture.rect().contains(middle));
            EXPECT_NE(picture.pixelColor(middle), background)
                << "nothing drawn at the middle of "
                << QString::fromStdWString(op->GetOperatorName()).toStdString();
        }
        EXPECT_GT(positioned, 0);
    }
}

// Dragging a node with the mouse is one change; undo gives back the model as it was.
TEST_F(EditorTest, UndoAfterAMouseDragRestoresThePreviousModel) {
    ASSERT_TRUE(
        window->OpenFile(QStringLiteral(LATTIX_SOURCE_DIR "/examples/raster-expression.gmdx")));
    window->Screenshot(QSize(1100, 720));
    auto* view = window->View();
    view->Canvas()->SetFlowGraphDisplayInfo({1.0, 0.0, 0.0});
    const auto before = Text(Host().GetModel());
    const auto op = Host().GetModel()->GetOperators().front();
    const auto node = NodeOf(op);
    ASSERT_NE(node, nullptr);
    const auto start = node->GetLocation();

    const QPoint from = Inside(*view, *node);
    Drag(view->viewport(), from, from + QPoint(60, 40), 5);

    int x = 0;
    int y = 0;
    ASSERT_TRUE(StoredPosition(*op, x, y));
    EXPECT_EQ(x, start.x + 60);
    EXPECT_EQ(y, start.y + 40);
    EXPECT_TRUE(Host().IsModified());
    EXPECT_TRUE(window->isWindowModified());

    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), before) << "one drag is one undo step";
    ASSERT_TRUE(Host().Redo());
    const auto redone = Host().GetModel()->FindOperators(
        op->GetDisplayName().empty() ? op->GetOperatorName() : op->GetDisplayName());
    ASSERT_FALSE(redone.empty());
    ASSERT_TRUE(StoredPosition(*redone.front(), x, y));
    EXPECT_EQ(x, start.x + 60);
}

// Clicks on the canvas reach the control's mouse-event table with the canvas's own codes.
TEST_F(EditorTest, CanvasClicksReachTheMouseEventTable) {
    ASSERT_TRUE(window->OpenFile(QStringLiteral(LATTIX_SOURCE_DIR "/examples/if-else.gmdx")));
    window->Screenshot(QSize(1100, 720));
    std::vector<std::uint32_t> codes;
    int owner = 0;
    mg::SolutionBuilderControl::AddMouseEventCB(&owner,
                                                [&](std::uint32_t code) { codes.push_back(code); });
    const auto node = NodeOf(Host().GetModel()->GetOperators().front());
    QTest::mouseClick(window->View()->viewport(), Qt::LeftButton, Qt::NoModifier,
                      Inside(*window->View(), *node));
    mg::SolutionBuilderControl::RemoveMouseEventCB(&owner);
    ASSERT_EQ(codes.size(), 2u) << "mousedown and mouseup";
    EXPECT_EQ(Canvas()->GetSelectedNodes().size(), 1u);
}

// Deleting a selection with the key removes operators and their links as one change.
TEST_F(EditorTest, DeleteKeyIsOneUndoableChange) {
    ASSERT_TRUE(
        window->OpenFile(QStringLiteral(LATTIX_SOURCE_DIR "/examples/raster-expression.gmdx")));
    window->Screenshot(QSize(1100, 720));
    const auto before = Text(Host().GetModel());
    const auto count = Host().GetModel()->GetOperators().size();
    const auto canvas = Canvas();
    canvas->ClearSelection();
    canvas->AddNodeToSelection(NodeOf(Host().GetModel()->GetOperators()[1]));
    QTest::keyClick(window->View(), Qt::Key_Delete);
    EXPECT_EQ(Host().GetModel()->GetOperators().size(), count - 1);
    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), before);
}

// Palette drops, text annotations and the properties dialog each make one undo step.
TEST_F(EditorTest, AddedOperatorsTextsAndPortValuesAreUndoable) {
    const auto empty = Text(Host().GetModel());
    const auto op = Host().AddOperator(lx::ObjectName(L"TAMARIN", L"Expression"), 300, 200);
    ASSERT_NE(op, nullptr);
    ASSERT_NE(NodeOf(op), nullptr);
    EXPECT_EQ(NodeOf(op)->GetLocation(), (ZML::FlowGraphLocation{300, 200}));
    const auto withOperator = Text(Host().GetModel());

    Host().AddTextAnnotation(L"Notes", 40, 30);
    EXPECT_EQ(Host().GetModel()->GetTextAnnotations()->Size(), 1u);
    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), withOperator);
    ASSERT_TRUE(Host().Undo());
    EXPECT_EQ(Text(Host().GetModel()), empty);
    EXPECT_THROW(Host().AddOperator(lx::ObjectName(L"TAMARIN", L"NoSuchOperator"), 0, 0),
                 std::exception);
}

TEST_F(EditorTest, PortValuesDialogWritesChangedFieldsAndNamesRefusals) {
    const auto op = Host().AddOperator(lx::ObjectName(L"TAMARIN", L"Expression"), 10, 10);
    ASSERT_NE(op, nullptr);
    std::vector<std::shared_ptr<lx::Port>> ports;
    for (const auto& port : op->GetPorts()) {
        if (port->IsInput() && !port->IsPrivate()) ports.push_back(port);
    }
    const auto expression = op->GetPort(L"Expression");
    ASSERT_NE(expression, nullptr);
    lattix::modeler::PortValuesDialog dialog(L"Expression", ports);
    auto* field = dialog.FieldOf(L"Expression");
    ASSERT_NE(field, nullptr);
    field->setText(QStringLiteral("$a + 1"));
    EXPECT_TRUE(dialog.Apply().empty());
    EXPECT_TRUE(dialog.Changed());
    ASSERT_NE(expression->GetData(), nullptr);
    EXPECT_NE(expression->GetData()->ToString().find(L"$a + 1"), std::wstring::npos);
    field->setText(QString());
    EXPECT_TRUE(dialog.Apply().empty());
    EXPECT_EQ(expression->GetData(), nullptr) << "an emptied field clears the value";
}

// Save As writes the model, reopening gives the same text, and the file joins the recent list.
TEST_F(EditorTest, OpenSaveRoundTrip) {
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    for (const QString& path : modelertest::ExampleModels()) {
        SCOPED_TRACE(path.toStdString());
        ASSERT_TRUE(window->OpenFile(path));
        EXPECT_FALSE(Host().IsModified());
        const auto opened = Text(Host().GetModel());
        const QString copy = folder.filePath(QFileInfo(path).fileName());
        std::wstring error;
        ASSERT_TRUE(window->SaveAs(copy, &error)) << QString::fromStdWString(error).toStdString();
        EXPECT_EQ(Host().GetPath(), copy.toStdWString());
        ASSERT_TRUE(window->OpenFile(copy));
        EXPECT_EQ(Text(Host().GetModel()), opened);
        EXPECT_EQ(MainWindow::RecentFiles().value(0), QFileInfo(copy).absoluteFilePath());
    }
}

// Closing with unsaved changes asks first: Cancel keeps the window, Discard lets it close.
TEST_F(EditorTest, ClosingWithChangesAsksToSaveThem) {
    window->show();
    EXPECT_TRUE(window->MaybeSave()) << "nothing to ask about yet";
    Host().AddTextAnnotation(L"Unsaved", 10, 10);
    ASSERT_TRUE(Host().IsModified());
    QString asked;
    AnswerNextMessageBox(QMessageBox::Cancel, asked);
    EXPECT_FALSE(window->close());
    EXPECT_EQ(asked, QStringLiteral("Save changes?"));
    EXPECT_TRUE(window->isVisible());
    asked.clear();
    AnswerNextMessageBox(QMessageBox::Discard, asked);
    EXPECT_TRUE(window->close());
    EXPECT_EQ(asked, QStringLiteral("Save changes?"));
}

TEST_F(EditorTest, AFileThatCannotBeOpenedLeavesTheModelShown) {
    ASSERT_TRUE(window->OpenFile(QStringLiteral(LATTIX_SOURCE_DIR "/examples/loop.gmdx")));
    const auto shown = Host().GetModel();
    QTemporaryDir folder;
    const QString damaged = folder.filePath("damaged.gmdx");
    {
        QFile file(damaged);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<LattixModel formatVersion=\"1\"><Model");
    }
    for (const QString& path : {folder.filePath("missing.gmdx"), damaged}) {
        std::wstring error;
        EXPECT_FALSE(window->OpenFile(path, &error));
        EXPECT_NE(QString::fromStdWString(error).indexOf(QFileInfo(path).fileName()), -1)
            << QString::fromStdWString(error).toStdString();
        EXPECT_EQ(Host().GetModel(), shown);
    }
}

}  // namespace
