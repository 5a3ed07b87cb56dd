// Every arithmetic element-wise operation of the vector layer beside the best loop that the compiler makes of
// it for the same instruction set.

#include <algorithm>
#include <array>
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

/// Operands that no operation here drives towards infinity or denormals: every value, and every complex
/// value, is 1.
class operands {
public:
    explicit operands(int n, bool complex)
        : m_a(qnl_make_buffer_32f(2 * n)),
          m_b(qnl_make_buffer_32f(2 * n)),
          m_d(qnl_make_buffer_32f(2 * n)),
          m_n(n) {
        for (float* const block : {m_a.get(), m_b.get(), m_d.get()})
            for (int i = 0; i < 2 * n; ++i)
                block[i] = complex && i % 2 != 0 ? 0.0F : 1.0F;
    }
    /// Nanoseconds per call, over enough calls to be measured.
    double time(operation_call call) const {
        constexpr int calls = 64;
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < calls; ++i) {
            call(m_a.get(), m_b.get(), m_d.get(), 1.0F, m_n);
            benchmark::ClobberMemory();
        }
        return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() /
               calls;
    }

private:
    qnl_buffer_32f m_a;
    qnl_buffer_32f m_b;
    qnl_buffer_32f m_d;
    int m_n;
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

/// The three contenders take turns, so that whatever else the machine does hits all of them alike.
void compare(benchmark::State& state, const std::string& name, const rival& against, int operation,
             int target, int n) {
    constexpr int rounds = 301;
    const bool complex = std::strstr(layer_calls[operation].name, "complex_") != nullptr;
    const operands data(n, complex);
    const std::array<operation_call, 3> contenders = {
        layer_calls[operation].call, against.plain[operation].call, against.unrolled[operation].call};
    select_vector_target(target);
    std::array<std::vector<double>, 3> times;
    for (auto _ : state) {
        for (int round = 0; round < rounds; ++round)
            for (std::size_t i = 0; i < contenders.size(); ++i)
                times[i].push_back(data.time(contenders[i]));
    }
    const double ours = median(times[0]);
    const double best = std::min(median(times[1]), median(times[2]));
    state.counters["layer_ns"] = ours;
    state.counters["loop_ns"] = best;
    state.counters["percent"] = 100.0 * best / ours;
    results.push_back({name, 100.0 * best / ours});
}

void register_comparisons(const rival& against, int target) {
    for (int operation = 0; operation < operation_count; ++operation)
        for (const int n : {480, 2048}) {
            const std::string name =
                std::string(against.target) + "/" + layer_calls[operation].name + "/" + std::to_string(n);
            benchmark::RegisterBenchmark(name.c_str(), [=, &against](benchmark::State& state) {
                compare(state, name, against, operation, target, n);
            })->Iterations(1);
        }
}

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
    for (int target = 0; target < vector_target_count(); ++target)
        for (const rival& against : rivals)
            if (std::strcmp(against.target, vector_target_name(target)) == 0)
                register_comparisons(against, target);
    benchmark::RunSpecifiedBenchmarks();
    print_slowest();
    return 0;
}
