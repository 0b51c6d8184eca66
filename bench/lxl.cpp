// Parsing speed of long expressions: the Expression Editor validates the whole text on every
// change, so a long generated formula must still parse in a few milliseconds.
#include <benchmark/benchmark.h>

#include <string>

#include "Velmar/Lattix/Lxl/Parser.h"

namespace {

using namespace Velmar::Lattix::Lxl;

// A realistic mix: weighted port terms, calls with options, comparisons and conditionals, about
// `terms` terms joined by "+".
std::wstring LongExpression(int terms) {
    std::wstring text = L"$band0";
    for (int i = 1; i < terms; ++i) {
        text += L" + ";
        switch (i % 4) {
            case 0:
                text += L"$band" + std::to_wstring(i % 64) + L" * 0." + std::to_wstring(i);
                break;
            case 1:
                text += L"Sqrt(Abs($band" + std::to_wstring(i % 64) + L" - 273.15))";
                break;
            case 2:
                text += L"FocalMean($dem, 3, IGNORE_VALUE {-9999, " + std::to_wstring(i) + L"})";
                break;
            default:
                text += L"($slope > " + std::to_wstring(i) + L" ? 1 : -1.5e-3)";
                break;
        }
    }
    return text;
}

void BM_ParseLongExpression(benchmark::State& state) {
    const std::wstring text = LongExpression(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        auto tree = Parse(text);
        benchmark::DoNotOptimize(tree);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(text.size() * sizeof(wchar_t)));
    state.counters["chars"] = static_cast<double>(text.size());
}
BENCHMARK(BM_ParseLongExpression)->Arg(100)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_ReferencedPorts(benchmark::State& state) {
    const auto tree = Parse(LongExpression(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        auto ports = ReferencedPorts(*tree);
        benchmark::DoNotOptimize(ports);
    }
}
BENCHMARK(BM_ReferencedPorts)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_ToText(benchmark::State& state) {
    const auto tree = Parse(LongExpression(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        auto text = ToText(*tree);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_ToText)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
