// Message list costs: AddMessage with a list that already holds many messages, where one report in
// a hundred repeats an earlier one. The counter per_call is the time of one AddMessage.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Velmar/Lattix/Issue.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "modelgui/MessageManager.h"

namespace {

using quarn::modelgui::MessageManager;
using Velmar::Lattix::Operator;
using Velmar::Lattix::Port;
using Velmar::Lattix::PortDirection;
using Severity = Velmar::Lattix::Issue::Severity;

struct report {
    std::shared_ptr<Operator> op;
    std::shared_ptr<Port> port;
    std::wstring text;
    Severity severity;
};

// The reports of `operators` operators with two ports each. With `sharedText` every operator
// reports the same few texts (as when every input of a model misses its file), otherwise each
// report has its own text. Every hundredth report repeats a random earlier one.
class reportSource {
public:
    reportSource(int operators, bool sharedText) : sharedText(sharedText) {
        for (int i = 0; i < operators; ++i) {
            auto op = std::make_shared<Operator>(L"TAMARIN", L"Op" + std::to_wstring(i));
            ports.push_back(op->AddPort(L"Input1", PortDirection::Input));
            ports.push_back(op->AddPort(L"Input2", PortDirection::Input));
            ops.push_back(std::move(op));
        }
    }

    std::vector<report> Make(std::size_t count, std::size_t first, std::mt19937& random) {
        std::vector<report> reports;
        reports.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            if (i % 100 == 99) {
                std::uniform_int_distribution<std::size_t> pick(0, reports.size() - 1);
                reports.push_back(reports[pick(random)]);
                continue;
            }
            const std::size_t n = first + i;
            const std::size_t opIndex = n % ops.size();
            const auto text = sharedText ? L"File not found" + std::to_wstring(n / ops.size() % 4)
                                         : L"Value out of range in step " + std::to_wstring(n);
            reports.push_back(report{ops[opIndex], ports[2 * opIndex + n % 2], text,
                                     n % 3 == 0 ? Severity::Warning : Severity::Error});
        }
        return reports;
    }

private:
    bool sharedText;
    std::vector<std::shared_ptr<Operator>> ops;
    std::vector<std::shared_ptr<Port>> ports;
};

void Add(MessageManager& manager, const std::vector<report>& reports) {
    for (const auto& r : reports) manager.AddMessage(r.op, r.port, r.text, L"help", r.severity);
}

// range(0): messages held before the timed calls; range(1): timed calls; range(2): 1 when all
// operators report the same texts. Each iteration starts from a new manager holding range(0)
// messages, so the list holds between range(0) and range(0) + range(1) during the timed calls.
void AddMessage(benchmark::State& state) {
    const auto held = static_cast<std::size_t>(state.range(0));
    const auto calls = static_cast<std::size_t>(state.range(1));
    std::mt19937 random(7);
    reportSource source(10000, state.range(2) == 1);
    const auto prefill = source.Make(held, 0, random);
    const auto timed = source.Make(calls, held, random);
    std::size_t finalSize = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto manager = std::make_unique<MessageManager>();
        auto token = manager->AddMessagesChangedCB([] {});
        Add(*manager, prefill);
        state.ResumeTiming();
        Add(*manager, timed);
        state.PauseTiming();
        finalSize = manager->GetMessages().size();
        token.reset();
        manager.reset();
        state.ResumeTiming();
    }
    // Seconds per timed call (printed with an SI prefix: "412n" is 412 ns).
    state.counters["per_call"] = benchmark::Counter(
        static_cast<double>(calls),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["held_after"] = static_cast<double>(finalSize);
}

// A display refresh: copying the list of 10,000 messages.
void GetMessages(benchmark::State& state) {
    std::mt19937 random(7);
    reportSource source(1000, false);
    MessageManager manager;
    Add(manager, source.Make(static_cast<std::size_t>(state.range(0)), 0, random));
    for (auto _ : state) benchmark::DoNotOptimize(manager.GetMessages());
}

}  // namespace

// The workload of a long run: 100,000 reports into an empty list (it ends near 100,000 held).
// Then the list at about 10,000 held: 1,000 reports into a list of 10,000, with distinct texts and
// with every operator reporting the same few texts.
BENCHMARK(AddMessage)
    ->ArgNames({"held", "calls", "shared_text"})
    ->Args({0, 100000, 0})
    ->Args({10000, 1000, 0})
    ->Args({10000, 1000, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(GetMessages)->Arg(10000)->Unit(benchmark::kMicrosecond);
