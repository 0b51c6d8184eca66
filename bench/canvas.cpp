// Canvas costs: building a large canvas as a model drawing does, and automatic layout compared
// with the dot program on the same graph.
//
// Layout is compared in wall-clock time with `dot -Tplain` run on the graph that Layout hands to
// Graphviz (FlowGraphPart::GetLayoutGraph), written to a file: the counters dot_ms and
// vs_dot (Layout's time over the program's) come from the same run.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ZML/FlowGraphPart.h"

namespace {

class BenchNode : public ZML::FlowGraphNodeEx {
public:
    BenchNode() = default;
};

class BenchPoint : public ZML::FlowGraphConnectionPointEx {
public:
    BenchPoint() = default;
};

std::shared_ptr<BenchNode> MakeNode(int index, int inputs, int outputs) {
    auto node = std::make_shared<BenchNode>();
    node->SetCaption(L"Operator " + std::to_wstring(index));
    node->SetColor(0xE6F2EA);
    node->SetOutlineColor(0x58A873);
    node->SetLocation((index % 100) * 150, (index / 100) * 80);
    for (int i = 0; i < inputs; ++i) {
        auto point = std::make_shared<BenchPoint>();
        point->SetInput();
        point->SetCaption(L"Input" + std::to_wstring(i));
        point->SetMaxConnections(1);
        node->AddConnectionPoint(point);
    }
    for (int i = 0; i < outputs; ++i) {
        auto point = std::make_shared<BenchPoint>();
        point->SetOutput();
        point->SetCaption(L"Result");
        node->AddConnectionPoint(point);
    }
    return node;
}

// A node and its points, kept as a drawer keeps them while it draws.
struct Drawn {
    std::shared_ptr<ZML::FlowGraphNodeEx> node;
    std::vector<std::shared_ptr<ZML::FlowGraphConnectionPointEx>> points;
};

Drawn Draw(ZML::FlowGraphPart& canvas, int index) {
    Drawn drawn;
    drawn.node = MakeNode(index, 2, 2);
    drawn.points = drawn.node->GetFlowConnectionPoints();
    canvas.AddNode(drawn.node);
    return drawn;
}

void Join(ZML::FlowGraphPart& canvas, const Drawn& from, std::size_t output, const Drawn& to,
          std::size_t input) {
    auto connection = std::make_shared<ZML::FlowGraphConnectionEx>();
    connection->SetOutputPoint(from.points[2 + output]);
    connection->SetInputPoint(to.points[input]);
    canvas.AddConnection(connection);
}

// 10,000 nodes with two inputs and two outputs, and 20,000 connections: each node feeds the next
// one and one half-way round.
void BM_AddNodesAndConnections(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        auto canvas = std::make_shared<ZML::FlowGraphPart>();
        std::vector<Drawn> nodes;
        nodes.reserve(count);
        for (int i = 0; i < count; ++i) {
            nodes.push_back(Draw(*canvas, i));
        }
        for (int i = 0; i < count; ++i) {
            Join(*canvas, nodes[i], 0, nodes[(i + 1) % count], 0);
            Join(*canvas, nodes[i], 1, nodes[(i + count / 2 + 1) % count], 1);
        }
        benchmark::DoNotOptimize(canvas->GetConnectionCount());
        state.PauseTiming();
        canvas.reset();
        nodes.clear();
        state.ResumeTiming();
    }
    state.counters["nodes"] = count;
    state.counters["connections"] = 2.0 * count;
}
BENCHMARK(BM_AddNodesAndConnections)->Arg(10000)->Unit(benchmark::kMillisecond);

// The same elements made but never put on a canvas: the part of the figure above that is the
// making of nodes, points and connections rather than the canvas's own work.
void BM_MakeElementsOnly(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        std::vector<std::shared_ptr<BenchNode>> nodes;
        std::vector<std::shared_ptr<ZML::FlowGraphConnectionEx>> connections;
        nodes.reserve(count);
        connections.reserve(2 * count);
        for (int i = 0; i < count; ++i) {
            nodes.push_back(MakeNode(i, 2, 2));
        }
        for (int i = 0; i < 2 * count; ++i) {
            connections.push_back(std::make_shared<ZML::FlowGraphConnectionEx>());
        }
        benchmark::DoNotOptimize(connections.data());
        state.PauseTiming();
        nodes.clear();
        connections.clear();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_MakeElementsOnly)->Arg(10000)->Unit(benchmark::kMillisecond);

// A model-like graph: every node after the first few takes one or two inputs from earlier nodes.
std::shared_ptr<ZML::FlowGraphPart> ModelLikeCanvas(int count) {
    auto canvas = std::make_shared<ZML::FlowGraphPart>();
    std::mt19937 random(42);
    std::vector<Drawn> nodes;
    for (int i = 0; i < count; ++i) {
        nodes.push_back(Draw(*canvas, i));
        if (i < 3) {
            continue;
        }
        const int window = std::min(i, 12);
        std::uniform_int_distribution<int> back(1, window);
        Join(*canvas, nodes[i - back(random)], 0, nodes[i], 0);
        if (random() % 2 == 0) {
            Join(*canvas, nodes[i - back(random)], 1, nodes[i], 1);
        }
    }
    return canvas;
}

double TimeDotProgram(const std::string& graph, int runs) {
    const auto file = std::filesystem::temp_directory_path() /
                      ("lattix-bench-layout-" + std::to_string(::getpid()) + ".dot");
    std::ofstream(file) << graph;
    const std::string command = "dot -Tplain -o /dev/null '" + file.string() + "'";
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        if (std::system(command.c_str()) != 0) {
            std::filesystem::remove(file);
            return -1;
        }
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count());
    }
    std::filesystem::remove(file);
    return best;
}

void BM_Layout(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    auto canvas = ModelLikeCanvas(count);
    canvas->Layout();  // Graphviz's context is made once per process, not per layout
    double best = 1e300;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        canvas->Layout();
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count());
    }
    const double dot = TimeDotProgram(canvas->GetLayoutGraph(), 5);
    state.counters["nodes"] = count;
    state.counters["connections"] = static_cast<double>(canvas->GetConnectionCount());
    state.counters["best_ms"] = best;
    state.counters["dot_ms"] = dot;
    state.counters["vs_dot"] = dot > 0 ? best / dot : -1;
}
BENCHMARK(BM_Layout)
    ->Arg(100)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MinTime(2.0);

}  // namespace
