// Wide/UTF-8 conversions on the texts the suite converts all the time: short names and whole
// saved models, in mixed scripts.
#include <benchmark/benchmark.h>

#include <string>

#include "qtxt/Text.h"

namespace {

// ASCII, accented Latin, Greek, CJK and characters outside the basic plane.
const std::wstring kMixed =
    L"Raster caf\u00e9 \u03bb\u03af\u03bc\u03bd\u03b7 \u6a21\u578b\U0001F600 ";

std::wstring Repeat(const std::wstring& piece, std::size_t length) {
    std::wstring out;
    while (out.size() < length) out += piece;
    out.resize(length);
    return out;
}

void WideToUtf8(benchmark::State& state) {
    const std::wstring text = Repeat(kMixed, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(qtxt::DefaultWideToUTF8(text));
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void Utf8ToWide(benchmark::State& state) {
    const std::string text =
        qtxt::DefaultWideToUTF8(Repeat(kMixed, static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(qtxt::UTF8toDefaultWide(text));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void Utf8ToWideMalformed(benchmark::State& state) {
    std::string text;
    while (text.size() < static_cast<std::size_t>(state.range(0)))
        text += "ok\xc3(\xff\xed\xa0\x80";
    for (auto _ : state) benchmark::DoNotOptimize(qtxt::UTF8toDefaultWide(text));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

}  // namespace

// 24 characters: an operator name; 1 MiCh: a large model saved to a buffer.
BENCHMARK(WideToUtf8)->Arg(24)->Arg(1 << 20);
BENCHMARK(Utf8ToWide)->Arg(24)->Arg(1 << 20);
BENCHMARK(Utf8ToWideMalformed)->Arg(1 << 20);
