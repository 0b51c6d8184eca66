// Drawing whole models onto a headless canvas: models of 1,000 and 10,000 operators, each fed by
// two data links from the operators just before it, every operator at a stored position (so that
// no automatic layout runs). The counter us_per_operator shows how the cost grows with the model;
// a linear pass keeps it flat between the two sizes. The "flow" variant gives every operator its
// "Previous" and "Next" points as well, so that the flow link made with each data link is drawn
// too.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ObjectName.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "ZML/FlowGraphPart.h"
#include "modelgui/DrawGraph.h"

namespace {

namespace lx = Velmar::Lattix;

std::shared_ptr<lx::Model> MakeModel(int count, bool flowControl) {
    auto model = std::make_shared<lx::Model>();
    const lx::ObjectName intType(L"TAMARIN", L"Int");
    std::vector<std::shared_ptr<lx::Operator>> ops;
    ops.reserve(count);
    for (int i = 0; i < count; ++i) {
        auto op = std::make_shared<lx::Operator>(L"BENCH", L"Add");
        op->SetDisplayName(L"Add " + std::to_wstring(i));
        op->SetDisplayCategory(L"Arithmetic");
        op->SetDescription(L"Adds two numbers.");
        for (const auto* name : {L"First", L"Second"}) {
            op->AddPort(name, lx::PortDirection::Input)->SetSupportedTypes({intType});
        }
        op->AddPort(L"Sum", lx::PortDirection::Output)->SetSupportedTypes({intType});
        op->SetAttribute(L"PositionX", std::make_shared<lx::IntData>((i % 100) * 160));
        op->SetAttribute(L"PositionY", std::make_shared<lx::IntData>((i / 100) * 90));
        if (flowControl) {
            op->SetAttribute(L"FlowControl", std::make_shared<lx::BoolData>(true));
        }
        model->AddOperator(op);
        ops.push_back(op);
    }
    // Operator i is fed by operators i-1 and i-2 (wrapping round), two links each.
    for (int i = 0; i < count; ++i) {
        const auto& child = ops[i];
        const auto& one = ops[(i + count - 1) % count];
        const auto& two = ops[(i + count - 2) % count];
        lx::Operator::ConnectParent(child, one, one->GetPort(L"Sum"), child->GetPort(L"First"));
        lx::Operator::ConnectParent(child, two, two->GetPort(L"Sum"), child->GetPort(L"Second"));
    }
    return model;
}

void DrawModel(benchmark::State& state, bool flowControl) {
    const int count = static_cast<int>(state.range(0));
    const auto model = MakeModel(count, flowControl);
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    for (auto _ : state) {
        quarn::modelgui::DrawGraph::DrawProcess(canvas, model, nullptr, false, false, false);
        benchmark::DoNotOptimize(canvas->GetConnectionCount());
        // Emptying the canvas is part of the next pass, as it is when an editor redraws.
    }
    state.counters["operators"] = count;
    state.counters["connections"] = static_cast<double>(canvas->GetConnectionCount());
    state.counters["us_per_operator"] = benchmark::Counter(
        static_cast<double>(count) * 1e-6,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_DrawProcess(benchmark::State& state) {
    DrawModel(state, false);
}
BENCHMARK(BM_DrawProcess)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_DrawProcessWithFlowControl(benchmark::State& state) {
    DrawModel(state, true);
}
BENCHMARK(BM_DrawProcessWithFlowControl)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
