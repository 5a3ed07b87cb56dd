// Loudspeaker rendering beside the fourteen complex transforms of 2048 points that each frame of 1024 needs,
// done by FFTW.

#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "conference/flags.h"
#include "dsp/flush_to_zero.h"
#include "dsp/vector_primitives.h"
#include "fftw_transform.h"
#include "render/crosstalk.h"
#include "timing.h"

namespace {

std::vector<float> noise(int samples) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> uniform(-0.5F, 0.5F);
    std::vector<float> values(static_cast<std::size_t>(samples));
    for (float& value : values)
        value = uniform(random);
    return values;
}

/// Argument: frames per channel of a block. The times are means over as many blocks as make whole frames, in
/// turns with the transforms.
void rendering(benchmark::State& state) {
    constexpr int rounds = 501;
    constexpr int frame = 1024;
    const auto block = static_cast<int>(state.range(0));
    const flush_to_zero guard;
    quenlis_flags flags;
    quenlis_xtc renderer(block, &flags, nullptr, nullptr, nullptr, nullptr);
    const std::vector<float> in = noise(2 * block);
    std::vector<float> out(in.size());
    const auto peer = fftw_transform::make(transform_kind::complex_forward, 2 * frame);
    if (peer)
        qnl_zero(peer->in(), 2 * frame);
    std::vector<double> times;
    std::vector<double> peer_times;
    std::vector<double> construction_times;
    for (auto _ : state)
        for (int round = 0; round < rounds; ++round) {
            times.push_back(
                nanoseconds([&] { renderer.process(in.data(), out.data()); }, block == frame ? 4 : 32));
            if (peer)
                peer_times.push_back(14.0 * block / frame * nanoseconds([&] { peer->run(); }, 28));
            construction_times.push_back(nanoseconds(
                [&] { quenlis_xtc another(block, &flags, nullptr, nullptr, nullptr, nullptr); }, 1));
        }
    state.counters["block_us"] = median(times) / 1000.0;
    state.counters["construction_us"] = median(construction_times) / 1000.0;
    if (peer) {
        state.counters["fftw_us"] = median(peer_times) / 1000.0;
        state.counters["ratio"] = median(times) / median(peer_times);
    }
}
BENCHMARK(rendering)->Arg(480)->Arg(1024)->ArgName("block")->Iterations(1);

} // namespace

int main(int argc, char** argv) {
    qnl_start_vector_layer();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
