// Costs of the Qt canvas view, headless (Qt's offscreen platform): building the scene of a large
// canvas, drawing a whole view of it, and one step of dragging a node.
//
// The canvases are grids of operators with two inputs and two outputs each, joined the way a
// model's chains are: every node feeds the next one in its row, and every other node also feeds
// the node below it.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <memory>
#include <string>
#include <vector>

#include "ZML/FlowGraphPart.h"
#include "ZMLQt/CanvasView.h"

namespace {

class BenchNode : public ZML::FlowGraphNodeEx {
public:
    BenchNode() = default;
};

class BenchPoint : public ZML::FlowGraphConnectionPointEx {
public:
    BenchPoint() = default;
};

constexpr int kColumns = 40;
constexpr int kViewWidth = 1280;
constexpr int kViewHeight = 800;

QApplication& Application() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    static int argc = 1;
    static char name[] = "bench_qtcanvas";
    static char* argv[] = {name, nullptr};
    // Never destroyed: Qt's own globals may be gone by the time static objects are destroyed.
    static QApplication* const application = std::make_unique<QApplication>(argc, argv).release();
    return *application;
}

std::shared_ptr<ZML::FlowGraphConnectionPointEx> PointOf(const ZML::FlowGraphNodeEx& node,
                                                         bool input, int which) {
    int seen = 0;
    for (const auto& point : node.GetFlowConnectionPoints()) {
        if (point->IsInput() == input && seen++ == which) {
            return point;
        }
    }
    return nullptr;
}

// A canvas of `nodes` operators and up to `connections` connections.
std::shared_ptr<ZML::FlowGraphPart> MakeCanvas(int nodes, int connections) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>("bench");
    std::vector<std::shared_ptr<BenchNode>> made;
    for (int i = 0; i < nodes; ++i) {
        auto node = std::make_shared<BenchNode>();
        node->SetCaption(L"Operator " + std::to_wstring(i));
        node->SetIcon(L"OpCategory_Arithmetic.ico");
        node->SetColor(0xE6F2EA);
        node->SetOutlineColor(0x58A873);
        node->SetLocation((i % kColumns) * 160, (i / kColumns) * 110);
        for (int p = 0; p < 4; ++p) {
            auto point = std::make_shared<BenchPoint>();
            p < 2 ? point->SetInput() : point->SetOutput();
            point->SetCaption(p < 2 ? L"Input" + std::to_wstring(p + 1) : L"Output");
            node->AddConnectionPoint(point);
        }
        if (i % 7 == 0) {
            node->SetState(ZML::FlowGraphNodeEx::Running);
            node->SetProgress(40);
        }
        canvas->AddNode(node);
        made.push_back(node);
    }
    int added = 0;
    auto join = [&](int from, int to, int input) {
        if (added >= connections || to >= nodes) {
            return;
        }
        auto connection = std::make_shared<ZML::FlowGraphConnectionEx>();
        connection->SetOutputPoint(PointOf(*made[from], false, input));
        connection->SetInputPoint(PointOf(*made[to], true, input));
        canvas->AddConnection(connection);
        ++added;
    };
    for (int i = 0; i < nodes; ++i) {
        if ((i + 1) % kColumns != 0) {
            join(i, i + 1, 0);
        }
        if (i % 2 == 0) {
            join(i, i + kColumns, 1);
        }
    }
    return canvas;
}

void BM_BuildScene(benchmark::State& state) {
    Application();
    auto canvas = MakeCanvas(1000, 1500);
    for (auto _ : state) {
        auto view = std::make_unique<ZML::Qt6::CanvasView>(canvas);
        benchmark::DoNotOptimize(view->scene()->items().size());
        state.PauseTiming();
        view.reset();
        state.ResumeTiming();
    }
    state.counters["nodes"] = static_cast<double>(canvas->GetNodeCount());
    state.counters["connections"] = static_cast<double>(canvas->GetConnectionCount());
}
BENCHMARK(BM_BuildScene)->Unit(benchmark::kMillisecond);

// A full redraw of the view into an image of its size: zoomed to fit (every node in sight) and at
// scale 1 (texts drawn).
void BM_FullRedraw(benchmark::State& state) {
    Application();
    auto canvas = MakeCanvas(1000, 1500);
    ZML::Qt6::CanvasView view(canvas);
    view.resize(kViewWidth, kViewHeight);
    view.show();
    QCoreApplication::processEvents();
    if (state.range(0) == 0) {
        view.ZoomToFit();
    } else {
        canvas->SetFlowGraphDisplayInfo({1.0, 0, 0});
    }
    QImage image(view.viewport()->size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&image);
        view.viewport()->render(&painter);
    }
    state.counters["scale"] = canvas->GetFlowGraphDisplayInfo().scale;
    state.SetLabel(state.range(0) == 0 ? "zoomed to fit" : "scale 1");
}
BENCHMARK(BM_FullRedraw)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// One mouse move of a drag that moves a connected node in a canvas of 5,000 nodes, the repaint of
// what changed included.
void BM_DragStep(benchmark::State& state) {
    Application();
    auto canvas = MakeCanvas(5000, 7500);
    ZML::Qt6::CanvasView view(canvas);
    view.resize(kViewWidth, kViewHeight);
    view.show();
    canvas->SetFlowGraphDisplayInfo({1.0, 0, 0});
    QCoreApplication::processEvents();
    const auto node = canvas->GetNodes()[kColumns + 1];
    const auto box = node->GetBounds();
    QWidget* viewport = view.viewport();
    const QPoint start = view.ViewPosition(box.x + box.width / 2.0, box.y + 8);
    auto send = [viewport](QEvent::Type type, QPoint at, Qt::MouseButtons buttons) {
        QMouseEvent event(type, at, viewport->mapToGlobal(at), Qt::LeftButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(viewport, &event);
    };
    send(QEvent::MouseButtonPress, start, Qt::LeftButton);
    int step = 0;
    for (auto _ : state) {
        // Back and forth, so that the node stays in the same neighbourhood.
        const QPoint at = start + QPoint((step % 2) ? 0 : 5, (step % 2) ? 0 : 3);
        ++step;
        send(QEvent::MouseMove, at, Qt::LeftButton);
        QCoreApplication::processEvents();
    }
    send(QEvent::MouseButtonRelease, start, Qt::NoButton);
    state.counters["nodes"] = static_cast<double>(canvas->GetNodeCount());
    state.counters["connections"] = static_cast<double>(canvas->GetConnectionCount());
}
BENCHMARK(BM_DragStep)->Unit(benchmark::kMicrosecond);

}  // namespace
