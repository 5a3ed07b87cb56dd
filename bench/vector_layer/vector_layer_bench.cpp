// Every arithmetic element-wise operation of the vector layer beside the best loop that the compiler makes of
// it for the same instruction set.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "dsp/vector_primitives.h"
#include "dsp/vector_targets.h"
#include "operations.h"

namespace {

struct rival {
    const char* target; ///< of the layer
    const named_call* plain;
    const named_call* unrolled;
};

constexpr rival rivals[] = {
    {"scalar", sse2_plain::loops, sse2_unrolled::loops},
    {"SSE4", sse4_plain::loops, sse4_unrolled::loops},
    {"AVX2", avx2_plain::loops, avx2_unrolled::loops},
    {"AVX3", avx3_plain::loops, avx3_unrolled::loops},
};

/// A loop as a binary for several instruction sets must reach it, and as the layer reaches its own: through a
/// table in memory, looked up at every call. Where the operands alone fill the first cache, that counts.
struct dispatched_loop {
    const operation_call* entry;

    void operator()(const float* a, const float* b, float* d, float c, int n) const {
        (*entry)(a, b, d, c, n);
    }
};

/// Operands that no operation here drives towards infinity or denormals: every value, and every complex
/// value, is 1.
class operands {
public:
    explicit operands(int n, bool complex)
        : a_(qnl_make_buffer_32f(2 * n)),
          b_(qnl_make_buffer_32f(2 * n)),
          d_(qnl_make_buffer_32f(2 * n)),
          n_(n) {
        for (float* const block : {a_.get(), b_.get(), d_.get()})
            for (int i = 0; i < 2 * n; ++i)
                block[i] = complex && i % 2 != 0 ? 0.0F : 1.0F;
    }
    /// Nanoseconds per call, over enough calls to be measured.
    template <class Call>
    double time(Call call) const {
        constexpr int calls = 64;
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < calls; ++i) {
            call(a_.get(), b_.get(), d_.get(), 1.0F, n_);
            benchmark::ClobberMemory();
        }
        return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() /
               calls;
    }

private:
    qnl_buffer_32f a_;
    qnl_buffer_32f b_;
    qnl_buffer_32f d_;
    int n_;
};

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct result {
    std::string name;
    double percent; ///< of the best plain loop's speed
};

std::vector<result> results;

/// Index of the layer's target among the rivals, or -1 for one that has none.
int rival_of(int target) {
    for (std::size_t i = 0; i < std::size(rivals); ++i)
        if (std::strcmp(rivals[i].target, vector_target_name(target)) == 0)
            return static_cast<int>(i);
    return -1;
}

/// Arguments: target, operation, count. The three contenders take turns, so that whatever else the machine
/// does hits all of them alike.
void compare(benchmark::State& state) {
    constexpr int rounds = 801;
    const auto target = static_cast<int>(state.range(0));
    const auto operation = static_cast<std::size_t>(state.range(1));
    const auto n = static_cast<int>(state.range(2));
    const rival& against = rivals[rival_of(target)];
    const std::string name = std::string(against.target) + " " + layer_calls[operation].name;
    const operands data(n, name.find("complex_") != std::string::npos);
    select_vector_target(target);
    std::vector<double> layer_times;
    std::vector<double> plain_times;
    std::vector<double> unrolled_times;
    for (auto _ : state)
        for (int round = 0; round < rounds; ++round) {
            layer_times.push_back(data.time(layer_calls[operation].call));
            plain_times.push_back(data.time(dispatched_loop{&against.plain[operation].call}));
            unrolled_times.push_back(data.time(dispatched_loop{&against.unrolled[operation].call}));
        }
    const double layer = median(layer_times);
    const double loop = std::min(median(plain_times), median(unrolled_times));
    state.SetLabel(name);
    state.counters["layer_ns"] = layer;
    state.counters["loop_ns"] = loop;
    state.counters["percent"] = 100.0 * loop / layer;
    results.push_back({name + " " + std::to_string(n), 100.0 * loop / layer});
}

void every_comparison(benchmark::internal::Benchmark* registered) {
    for (int target = 0; target < vector_target_count(); ++target)
        for (int operation = 0; operation < operation_count && rival_of(target) >= 0; ++operation)
            for (const int n : {480, 2048})
                registered->Args({target, operation, n});
}
BENCHMARK(compare)->Apply(every_comparison)->ArgNames({"target", "operation", "n"})->Iterations(1);

void print_slowest() {
    constexpr std::size_t shown = 10;
    std::sort(results.begin(), results.end(),
              [](const result& a, const result& b) { return a.percent < b.percent; });
    std::printf("\nSlowest beside the compiler's best loop, of %zu comparisons:\n", results.size());
    for (std::size_t i = 0; i < std::min(shown, results.size()); ++i)
        std::printf("%6.1f%%  %s\n", results[i].percent, results[i].name.c_str());
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    print_slowest();
    return 0;
}
