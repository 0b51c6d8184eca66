// Undo history costs on a large model: recording a step (the whole model saved to a new snapshot
// file) and undoing one (the previous snapshot read back as a new model).
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "modelgui/UndoRedoManager.h"

namespace {

using quarn::modelgui::UndoRedoManager;
using Velmar::Lattix::DoubleData;
using Velmar::Lattix::Model;
using Velmar::Lattix::Operator;
using Velmar::Lattix::OperatorFactory;

// `operators` Add operators placed on a grid, each fed by its two predecessors (two data links
// per operator), as an edited model looks.
std::shared_ptr<Model> LargeModel(int operators) {
    auto model = std::make_shared<Model>();
    model->SetProcessName(L"Large");
    std::shared_ptr<Operator> previous;
    std::shared_ptr<Operator> beforePrevious;
    for (int i = 0; i < operators; ++i) {
        auto op = OperatorFactory::Create(L"TAMARIN", L"Add");
        op->SetAttribute(L"PositionX", std::make_shared<DoubleData>((i % 100) * 150.0));
        op->SetAttribute(L"PositionY", std::make_shared<DoubleData>((i / 100) * 80.0));
        model->AddOperator(op);
        if (previous)
            Operator::ConnectParent(op, previous, previous->GetPort(L"Output"),
                                    op->GetPort(L"Input1"));
        if (beforePrevious)
            Operator::ConnectParent(op, beforePrevious, beforePrevious->GetPort(L"Output"),
                                    op->GetPort(L"Input2"));
        beforePrevious = previous;
        previous = op;
    }
    return model;
}

void ModelChanged(benchmark::State& state) {
    const auto model = LargeModel(static_cast<int>(state.range(0)));
    UndoRedoManager manager;
    int recorded = 0;
    for (auto _ : state) {
        manager.ModelChanged(model, nullptr);
        // Start over now and then so that the snapshots do not fill the temporary folder.
        if (++recorded % 16 == 0) {
            state.PauseTiming();
            manager.SetBaseline(std::make_shared<Model>());
            state.ResumeTiming();
        }
    }
}

void Undo(benchmark::State& state) {
    const auto model = LargeModel(static_cast<int>(state.range(0)));
    UndoRedoManager manager;
    manager.SetBaseline(model);
    manager.ModelChanged(model, nullptr);
    std::shared_ptr<Model> back;
    std::shared_ptr<UndoRedoManager::ModelState> modelState;
    for (auto _ : state) {
        manager.Undo(back, modelState);
        state.PauseTiming();
        manager.Redo(back, modelState);
        back.reset();  // the old model is freed outside the measured call, as the host swaps it
        state.ResumeTiming();
    }
}

}  // namespace

BENCHMARK(ModelChanged)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(Undo)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
