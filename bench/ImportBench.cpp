// Import of small, medium and large documents of both markup formats beside the floor: time, and the memory held at the
// peak.

#include <benchmark/benchmark.h>

#include "bench/Floor.h"
#include "bench/HeapMeter.h"
#include "bench/Import.h"
#include "bench/SampleDocument.h"

namespace {

template <void (*Work)(const std::filesystem::path&)>
void Measure(benchmark::State& state) {
    const bench::SampleDocument document(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    Work(document.Path());  // what is made once a process is not the document's
    const std::size_t peak = bench::HeapPeakOf([&] { Work(document.Path()); });
    for (auto _ : state) Work(document.Path());
    state.counters["peak_bytes"] = static_cast<double>(peak);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgsProduct({{5, 4}, {30, 3000, 100000}})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Measure<bench::RunFloor>)->Name("floor")->Apply(Sizes);
BENCHMARK(Measure<bench::RunImport>)->Name("import")->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
