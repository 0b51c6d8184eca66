#include <QFontMetricsF>
#include <QGraphicsItem>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <functional>
#include <set>

#include "ZML/TextMetrics.h"
#include "ZMLQt/CanvasFont.h"
#include "ZMLQt/CanvasView.h"
#include "ZMLQt/QtBackend.h"
#include "qttestkit.h"

using namespace qttest;
using ZML::FlowGraphConnectCheck;
using ZML::FlowGraphConnectionEx;
using ZML::FlowGraphNodeEx;
using ZML::FlowGraphPart;
using ZML::Qt6::CanvasView;

namespace {

// Two nodes side by side in a view at scale 1, scrolled to the canvas origin, with the host's
// callbacks counted.
class CanvasViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        canvas = std::make_shared<FlowGraphPart>("canvas");
        left = AddNode(*canvas, L"Left", 40, 40);
        right = AddNode(*canvas, L"Right", 300, 120);
        view = std::make_unique<CanvasView>(canvas);
        view->resize(800, 600);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        canvas->SetFlowGraphDisplayInfo({1.0, 0.0, 0.0});
        tokens.push_back(canvas->OnConnectionAdded(
            [this](const std::shared_ptr<FlowGraphConnectionEx>&) { ++connectionsAdded; }));
        tokens.push_back(canvas->OnNodeChanged(
            [this](const std::shared_ptr<FlowGraphNodeEx>&) { ++nodesChanged; }));
    }
    void TearDown() override {
        view.reset();
        FlushDeletes();
    }

    QPoint At(const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& point) const {
        const auto at = point->GetNode()->GetPointPosition(point);
        return view->ViewPosition(at.x, at.y);
    }
    QPoint Inside(const std::shared_ptr<FlowGraphNodeEx>& node) const {
        const auto box = node->GetBounds();
        return view->ViewPosition(box.x + box.width / 2.0, box.y + 10);
    }
    QWidget* Viewport() const { return view->viewport(); }
    // A left-button drag in `steps` moves, as a hand would make it.
    void Drag(QPoint from, QPoint to, int steps = 4,
              const std::function<void()>& beforeRelease = {}) {
        QTest::mousePress(Viewport(), Qt::LeftButton, Qt::NoModifier, from);
        for (int i = 1; i <= steps; ++i) {
            QTest::mouseMove(Viewport(), from + (to - from) * i / steps);
        }
        if (beforeRelease) {
            beforeRelease();
        }
        QTest::mouseRelease(Viewport(), Qt::LeftButton, Qt::NoModifier, to);
    }

    std::shared_ptr<FlowGraphPart> canvas;
    std::shared_ptr<Node> left;
    std::shared_ptr<Node> right;
    std::unique_ptr<CanvasView> view;
    std::vector<FlowGraphPart::Token> tokens;
    int connectionsAdded = 0;
    int nodesChanged = 0;
};

}  // namespace

TEST_F(CanvasViewTest, DraggingFromAnOutputToAnInputConnectsThem) {
    auto out = PointOf(left, false);
    auto in = PointOf(right, true);
    std::optional<FlowGraphConnectCheck> shown;
    Drag(At(out), At(in), 4, [&] { shown = view->PendingConnectCheck(); });

    EXPECT_EQ(shown, FlowGraphConnectCheck::Accepted) << "live feedback over the target";
    EXPECT_EQ(connectionsAdded, 1);
    auto connection = canvas->FindConnection(in, out);
    ASSERT_NE(connection, nullptr);
    EXPECT_NE(view->ItemFor(connection), nullptr) << "the scene follows the canvas";
    EXPECT_FALSE(view->PendingConnectCheck()) << "feedback ends with the gesture";
}

TEST_F(CanvasViewTest, DraggingOntoAPointThatRefusesChangesNothing) {
    struct Case {
        const char* name;
        std::function<void()> arrange;
        bool fromInput;
        FlowGraphConnectCheck expected;
    };
    const std::vector<Case> cases{
        {"the input's CanConnect says no", [this] { PointOf(right, true)->refuse = true; }, false,
         FlowGraphConnectCheck::Refused},
        {"dragged backwards, input to output, still asks the input",
         [this] { PointOf(right, true)->refuse = true; }, true, FlowGraphConnectCheck::Refused},
        {"read-only canvas", [this] { canvas->SetReadonly(true); }, false,
         FlowGraphConnectCheck::ReadOnly},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        PointOf(right, true)->refuse = false;
        canvas->SetReadonly(false);
        c.arrange();
        auto out = PointOf(left, false);
        auto in = PointOf(right, true);
        std::optional<FlowGraphConnectCheck> shown;
        const QPoint from = c.fromInput ? At(in) : At(out);
        const QPoint to = c.fromInput ? At(out) : At(in);
        Drag(from, to, 3, [&] { shown = view->PendingConnectCheck(); });
        EXPECT_EQ(shown, c.expected);
        EXPECT_EQ(connectionsAdded, 0);
        EXPECT_EQ(canvas->GetConnectionCount(), 0u);
    }
}

TEST_F(CanvasViewTest, MovingANodeWritesItsLocationBackThroughTheCanvas) {
    QSignalSpy started(view.get(), &CanvasView::moveStarted);
    QSignalSpy finished(view.get(), &CanvasView::moveFinished);
    auto in = PointOf(right, true);
    auto out = PointOf(left, false);
    auto connection = canvas->UserConnect(out, in);
    ASSERT_NE(connection, nullptr);
    const QRectF curveBefore = view->ItemFor(connection)->boundingRect();

    const QPoint from = Inside(right);
    Drag(from, from + QPoint(60, -45), 5);

    EXPECT_EQ(right->GetLocation(), (ZML::FlowGraphLocation{360, 75}));
    EXPECT_EQ(left->GetLocation(), (ZML::FlowGraphLocation{40, 40})) << "only the selection moves";
    EXPECT_GE(nodesChanged, 1);
    EXPECT_EQ(started.count(), 1);
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(view->ItemFor(right)->pos(), QPointF(360, 75));
    EXPECT_NE(view->ItemFor(connection)->boundingRect(), curveBefore) << "the curve follows";
    EXPECT_EQ(canvas->GetSelectedNodes(), std::vector<std::shared_ptr<FlowGraphNodeEx>>{right});
}

TEST_F(CanvasViewTest, SelectionByClickRubberBandAndDelete) {
    QTest::mouseClick(Viewport(), Qt::LeftButton, Qt::NoModifier, Inside(left));
    EXPECT_TRUE(left->IsSelected());
    QTest::mouseClick(Viewport(), Qt::LeftButton, Qt::ControlModifier, Inside(right));
    EXPECT_TRUE(left->IsSelected() && right->IsSelected()) << "Control adds";
    QTest::mouseClick(Viewport(), Qt::LeftButton, Qt::NoModifier, view->ViewPosition(600, 500));
    EXPECT_TRUE(canvas->GetSelectedNodes().empty()) << "a click on empty canvas clears";

    Drag(view->ViewPosition(250, 100), view->ViewPosition(500, 300));
    EXPECT_EQ(canvas->GetSelectedNodes(), std::vector<std::shared_ptr<FlowGraphNodeEx>>{right});

    QTest::keyClick(Viewport(), Qt::Key_Delete);
    EXPECT_FALSE(right->IsOnCanvas());
    EXPECT_EQ(view->ItemFor(right), nullptr);
    EXPECT_NE(view->ItemFor(left), nullptr);
}

TEST_F(CanvasViewTest, TheSceneFollowsProgrammaticChangesItemByItem) {
    QGraphicsItem* leftItem = view->ItemFor(left);
    ASSERT_NE(leftItem, nullptr);
    const int itemsBefore = view->scene()->items().size();

    auto added = AddNode(*canvas, L"Added", 500, 400);
    EXPECT_EQ(view->scene()->items().size(), itemsBefore + 1);
    left->SetColor(0x0000FF);
    left->SetCaption(L"A much longer caption than before");
    left->SetLocation(10, 20);
    EXPECT_EQ(view->ItemFor(left), leftItem) << "changes update the item, not replace it";
    EXPECT_EQ(leftItem->pos(), QPointF(10, 20));
    EXPECT_GE(leftItem->boundingRect().width(), left->GetBounds().width);

    auto connection = canvas->UserConnect(PointOf(added, false), PointOf(left, true));
    ASSERT_NE(view->ItemFor(connection), nullptr);
    canvas->RemoveConnection(connection);
    EXPECT_EQ(view->ItemFor(connection), nullptr);
    canvas->RemoveAllNodes();
    EXPECT_TRUE(view->scene()->items().isEmpty());
}

TEST_F(CanvasViewTest, DisplayInfoAndTheViewAgree) {
    struct Case {
        ZML::FlowGraphDisplayInfo info;
        double canvasX;
        double canvasY;
        QPoint expected;
    };
    const std::vector<Case> cases{
        {{1.0, 0, 0}, 100, 50, {100, 50}},
        {{2.0, 100, 50}, 100, 50, {0, 0}},
        {{2.0, 100, 50}, 110, 60, {20, 20}},
        {{0.5, -200, -100}, 0, 0, {100, 50}},
    };
    for (const auto& c : cases) {
        canvas->SetFlowGraphDisplayInfo(c.info);
        EXPECT_EQ(view->ViewPosition(c.canvasX, c.canvasY), c.expected)
            << "scale " << c.info.scale << " scroll " << c.info.scrollX << "," << c.info.scrollY;
    }

    canvas->SetFlowGraphDisplayInfo({1.0, 0, 0});
    view->horizontalScrollBar()->setValue(30);
    EXPECT_DOUBLE_EQ(canvas->GetFlowGraphDisplayInfo().scrollX, 30) << "scrolling is kept";

    view->ZoomToFit();
    const auto all = canvas->GetContentBounds();
    const QRect shown = view->viewport()->rect();
    EXPECT_TRUE(shown.contains(view->ViewPosition(all.x, all.y)));
    EXPECT_TRUE(shown.contains(view->ViewPosition(all.x + all.width, all.y + all.height)));
}

TEST_F(CanvasViewTest, TheWheelZoomsAboutThePointer) {
    const QPoint pointer(200, 150);
    const QPointF under = view->CanvasPosition(pointer);
    QWheelEvent wheel(pointer, Viewport()->mapToGlobal(pointer), QPoint(), QPoint(0, 240),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(Viewport(), &wheel);

    EXPECT_NEAR(canvas->GetFlowGraphDisplayInfo().scale, 1.44, 1e-9);
    const QPointF after = view->CanvasPosition(pointer);
    EXPECT_NEAR(after.x(), under.x(), 1.0);
    EXPECT_NEAR(after.y(), under.y(), 1.0);
}

TEST_F(CanvasViewTest, MouseEventsReachTheCanvasInCanvasUnits) {
    canvas->SetFlowGraphDisplayInfo({2.0, 10, 10});
    struct Seen {
        std::string name;
        int x;
        int y;
        ZML::FlowGraphHit hit;
    };
    std::vector<Seen> seen;
    for (const char* name : {"mousedown", "mouseup", "doubleclick"}) {
        canvas->OnMessage(name, [&seen, name](const ZML::Event& event) {
            seen.push_back(
                {name, event.x, event.y, std::any_cast<ZML::FlowGraphHit>(event.detail)});
        });
    }
    const QPoint pointer = Inside(left);
    const QPointF expected = view->CanvasPosition(pointer);
    QTest::mouseClick(Viewport(), Qt::LeftButton, Qt::NoModifier, pointer);
    QTest::mouseDClick(Viewport(), Qt::LeftButton, Qt::NoModifier, pointer);
    std::set<std::string> names;
    for (const auto& event : seen) {
        names.insert(event.name);
        EXPECT_EQ(event.hit.node, left) << event.name;
        EXPECT_NEAR(event.x, expected.x(), 1) << event.name;
        EXPECT_NEAR(event.y, expected.y(), 1) << event.name;
    }
    EXPECT_EQ(names, (std::set<std::string>{"mousedown", "mouseup", "doubleclick"}));
}

TEST_F(CanvasViewTest, ToolTipsWaitForTheCanvasDelay) {
    left->SetTooltip(L"Adds two rasters");
    canvas->SetTooltipDelay(150);
    // From outside the node first: a pointer already resting on it (left there by an earlier
    // test) would make no move.
    QTest::mouseMove(Viewport(), QPoint(1, 1));
    QTest::qWait(20);
    QTest::mouseMove(Viewport(), Inside(left));
    QTest::qWait(30);
    EXPECT_FALSE(QToolTip::isVisible()) << "not before the delay";
    for (int waited = 0; !QToolTip::isVisible() && waited < 2000; waited += 20) {
        QTest::qWait(20);
    }
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_EQ(QToolTip::text(), "Adds two rasters");
    QToolTip::hideText();
}

namespace {

// The Qt backend, and with it the measurer of canvas texts, for one test.
class BackendInstalled {
public:
    BackendInstalled() { ZML::Qt6::InstallBackend(*qApp); }
    ~BackendInstalled() { ZML::Qt6::UninstallBackend(); }
    BackendInstalled(const BackendInstalled&) = delete;
    BackendInstalled& operator=(const BackendInstalled&) = delete;
};

// The node's rectangle in scene coordinates, as the canvas has it.
QRectF SceneBox(const FlowGraphNodeEx& node) {
    const auto bounds = node.GetBounds();
    return QRectF(bounds.x, bounds.y, bounds.width, bounds.height);
}

}  // namespace

TEST(CanvasViewText, BoxesFitTheTextsTheViewDrawsInThem) {
    BackendInstalled backend;
    auto canvas = std::make_shared<FlowGraphPart>("canvas");
    auto note = std::make_shared<Node>();
    note->SetTextOnly(true);
    note->SetTextFont(L"", 28, true, false, false);
    const QString noteText = "WIDE BOLD ANNOTATION OVER THE MODEL\nand a second line, MMMMWWWW";
    note->SetCaption(noteText.toStdWString());
    note->SetLocation(20, 20);
    canvas->AddNode(note);
    const QString caption = "WWWWWWWWWW MMMMMMMMMM WWWWWWWWWW";
    auto box = AddNode(*canvas, caption.toStdWString(), 40, 200);
    PointOf(box, true)->SetCaption(L"WIDE INPUT CAPTION WWW");
    PointOf(box, false)->SetCaption(L"OUTPUT MMMM");

    CanvasView view(canvas);
    view.resize(1200, 600);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));

    // The annotation is drawn from 4 units in and 2 down, left and top aligned, in its own font.
    const QGraphicsItem* noteItem = view.ItemFor(note);
    ASSERT_NE(noteItem, nullptr);
    const QRectF noteBox = SceneBox(*note);
    EXPECT_EQ(noteItem->mapRectToScene(QRectF(0, 0, noteBox.width(), noteBox.height())), noteBox);
    const QRectF noteDrawn = noteItem->mapRectToScene(
        QFontMetricsF(ZML::Qt6::CanvasQFont(note->GetTextFont()))
            .boundingRect(QRectF(4, 2, noteBox.width() - 4, noteBox.height() - 2),
                          Qt::AlignLeft | Qt::AlignTop, noteText));
    EXPECT_TRUE(noteBox.contains(noteDrawn))
        << "text " << noteDrawn.width() << " x " << noteDrawn.height() << " at " << noteDrawn.x()
        << ", " << noteDrawn.y() << "; box " << noteBox.width() << " x " << noteBox.height();
    EXPECT_GT(noteDrawn.width(), 0.8 * (noteBox.width() - 8)) << "the box is not far too wide";

    // The caption is drawn in the header, 8 units in, vertically centred in 24 units.
    const QGraphicsItem* boxItem = view.ItemFor(box);
    ASSERT_NE(boxItem, nullptr);
    const QRectF nodeBox = SceneBox(*box);
    const QFontMetricsF captionMetrics(ZML::Qt6::CanvasQFont(ZML::CanvasCaptionFont()));
    const QRectF captionDrawn = boxItem->mapRectToScene(captionMetrics.boundingRect(
        QRectF(8, 0, nodeBox.width() - 8, 24), Qt::AlignLeft | Qt::AlignVCenter, caption));
    EXPECT_TRUE(nodeBox.contains(captionDrawn))
        << "caption " << captionDrawn.width() << " wide; box " << nodeBox.width();

    // Point captions: inputs from the left padding, outputs up to the right one, never meeting.
    const QFontMetricsF pointMetrics(ZML::Qt6::CanvasQFont(ZML::CanvasPointCaptionFont(false)));
    const QRectF row(8, 24, nodeBox.width() - 16, 18);
    const QRectF inDrawn = boxItem->mapRectToScene(
        pointMetrics.boundingRect(row, Qt::AlignLeft | Qt::AlignVCenter, "WIDE INPUT CAPTION WWW"));
    const QRectF outDrawn = boxItem->mapRectToScene(
        pointMetrics.boundingRect(row, Qt::AlignRight | Qt::AlignVCenter, "OUTPUT MMMM"));
    EXPECT_TRUE(nodeBox.contains(inDrawn));
    EXPECT_TRUE(nodeBox.contains(outDrawn));
    EXPECT_LT(inDrawn.right(), outDrawn.left());
}

TEST(CanvasViewText, WithoutTheBackendTheHeadlessWidthsStay) {
    auto canvas = std::make_shared<FlowGraphPart>("canvas");
    auto box = AddNode(*canvas, L"WWWWWWWWWW MMMMMMMMMM WWWWWWWWWW", 0, 0);
    const int headless = box->GetBounds().width;
    EXPECT_EQ(headless, 16 + 7 * 32);
    {
        BackendInstalled backend;
        EXPECT_GT(box->GetBounds().width, headless) << "capitals are wider than 7 pixels at 12";
    }
    EXPECT_EQ(box->GetBounds().width, headless);
}
