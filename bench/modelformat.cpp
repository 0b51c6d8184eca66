// Saving and opening large models: the model format's writer and reader against pugixml alone
// parsing the same file.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <sstream>
#include <string>

#include <pugixml.hpp>

#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/Format/ModelFormat.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "qtxt/Text.h"

// Heap allocations are counted while `countAllocations` is set (this program only; single
// threaded), to report how many a model costs per operator.
namespace {
bool countAllocations = false;
std::size_t allocations = 0;
}  // namespace

void* operator new(std::size_t size) {
    if (countAllocations) ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

using namespace Velmar::Lattix;

namespace {

// A chain of Add operators, each fed by the one before and given a constant, with canvas
// positions; every tenth operator is a scalar input feeding the next one's second operand.
std::shared_ptr<Model> BuildModel(int count) {
    auto model = std::make_shared<Model>();
    std::shared_ptr<Operator> previous;
    for (int i = 0; i < count; ++i) {
        bool input = i % 10 == 0;
        auto op = OperatorFactory::Create(L"TAMARIN", input ? L"ScalarInput" : L"Add");
        op->SetAttribute(L"PositionX", std::make_shared<DoubleData>(40.0 * (i % 100)));
        op->SetAttribute(L"PositionY", std::make_shared<DoubleData>(60.0 * (i / 100)));
        model->AddOperator(op);
        if (input) {
            op->GetPort(L"Value")->SetData(std::make_shared<DoubleData>(i * 0.5));
        } else {
            op->GetPort(L"Input2")->SetData(std::make_shared<DoubleData>(i));
            if (previous)
                Operator::ConnectParent(op, previous, previous->GetPort(L"Output"),
                                        op->GetPort(L"Input1"));
        }
        previous = op;
    }
    return model;
}

std::wstring FileFor(int count) {
    auto folder = std::filesystem::temp_directory_path() / "lattix-bench-modelformat";
    std::filesystem::create_directories(folder);
    return qtxt::widen((folder / ("model-" + std::to_string(count) + ".gmdx")).string());
}

std::string ReadBytes(const std::wstring& path) {
    std::ifstream in(qtxt::narrow(path), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void BM_BuildModel(benchmark::State& state) {
    for (auto _ : state) {
        auto model = BuildModel(static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(model);
        state.PauseTiming();
        model.reset();
        state.ResumeTiming();
    }
}

void BM_SaveModelFile(benchmark::State& state) {
    auto model = BuildModel(static_cast<int>(state.range(0)));
    auto path = FileFor(static_cast<int>(state.range(0)));
    for (auto _ : state) ModelFormatFactory::Save(model, path, ModelFormatFactory::PlainFormatName);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * ReadBytes(path).size());
}

void BM_OpenModelFile(benchmark::State& state) {
    auto path = FileFor(static_cast<int>(state.range(0)));
    ModelFormatFactory::Save(BuildModel(static_cast<int>(state.range(0))), path);
    {
        // One counted open beside the timed ones.
        allocations = 0;
        countAllocations = true;
        auto model = ModelFormatFactory::Open(path);
        countAllocations = false;
        state.counters["allocations_per_operator"] =
            static_cast<double>(allocations) / static_cast<double>(state.range(0));
    }
    for (auto _ : state) {
        auto model = ModelFormatFactory::Open(path);
        benchmark::DoNotOptimize(model);
        // Freeing the model is not part of opening it.
        state.PauseTiming();
        model.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * ReadBytes(path).size());
}

// pugixml alone, on the same file (read from disk and parsed, like Open).
void BM_PugixmlParseSameFile(benchmark::State& state) {
    auto path = FileFor(static_cast<int>(state.range(0)));
    ModelFormatFactory::Save(BuildModel(static_cast<int>(state.range(0))), path);
    for (auto _ : state) {
        auto bytes = ReadBytes(path);
        pugi::xml_document document;
        benchmark::DoNotOptimize(document.load_buffer(bytes.data(), bytes.size()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * ReadBytes(path).size());
}

// Opening against pugixml alone parsing the same file, timed in turn in each iteration:
// "read_rate_vs_pugixml" is the rate of opening as a fraction of pugixml's (1 = as fast).
void BM_ReadRateAgainstPugixml(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    auto path = FileFor(static_cast<int>(state.range(0)));
    ModelFormatFactory::Save(BuildModel(static_cast<int>(state.range(0))), path);
    Clock::duration opening{};
    Clock::duration parsing{};
    for (auto _ : state) {
        auto start = Clock::now();
        auto model = ModelFormatFactory::Open(path);
        opening += Clock::now() - start;
        state.PauseTiming();
        model.reset();
        state.ResumeTiming();
        start = Clock::now();
        auto bytes = ReadBytes(path);
        pugi::xml_document document;
        benchmark::DoNotOptimize(document.load_buffer(bytes.data(), bytes.size()));
        parsing += Clock::now() - start;
    }
    state.counters["read_rate_vs_pugixml"] = std::chrono::duration<double>(parsing).count() /
                                             std::chrono::duration<double>(opening).count();
}

void BM_SaveToBuffer(benchmark::State& state) {
    auto model = BuildModel(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(
            ModelFormatFactory::SaveToBuffer(model, ModelFormatFactory::PlainFormatName));
}

// The writer alone: the model's bytes, without the file or the conversion to wide text.
void BM_WriteModelBytes(benchmark::State& state) {
    auto model = BuildModel(static_cast<int>(state.range(0)));
    auto format = ModelFormatFactory::GetFormat(ModelFormatFactory::PlainFormatName);
    std::size_t size = 0;
    for (auto _ : state) {
        auto bytes = format->Write(*model);
        size = bytes.size();
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}

}  // namespace

BENCHMARK(BM_BuildModel)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveModelFile)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SaveToBuffer)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteModelBytes)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OpenModelFile)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PugixmlParseSameFile)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadRateAgainstPugixml)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
