// The kernel random source as the undo manager uses it: one identifier per recorded step.
#include <benchmark/benchmark.h>

#include "quarn/os/Random.h"

namespace {

void RandomBytes(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(quarn::os::RandomBytes(count));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(count));
}

void NewUuidV4(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(quarn::os::NewUuidV4());
}

}  // namespace

BENCHMARK(RandomBytes)->Arg(16)->Arg(1 << 16);
BENCHMARK(NewUuidV4);
