// Import of small, medium and large documents beside the floor: time, and the memory held at the peak.

#include <benchmark/benchmark.h>

#include "bench/Floor.h"
#include "bench/HeapMeter.h"
#include "bench/Import.h"
#include "bench/SampleDocument.h"

namespace {

template <void (*Work)(const std::filesystem::path&)>
void Measure(benchmark::State& state) {
    const bench::SampleDocument document(static_cast<int>(state.range(0)));
    Work(document.Path());  // what is made once a process is not the document's
    const std::size_t peak = bench::HeapPeakOf([&] { Work(document.Path()); });
    for (auto _ : state) Work(document.Path());
    state.counters["peak_bytes"] = static_cast<double>(peak);
}

BENCHMARK(Measure<bench::RunFloor>)->Name("floor")->Arg(30)->Arg(3000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Measure<bench::RunImport>)->Name("import")->Arg(30)->Arg(3000)->Arg(100000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
