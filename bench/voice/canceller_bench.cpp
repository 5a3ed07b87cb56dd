// The noise canceller beside the time that it takes to read its weights, and beside its products alone by OpenBLAS.
#include "blas_products.h"
#include "canceller_layers.h"
#include "dsp/flush_to_zero.h"
#include "dsp/vector_primitives.h"
#include "timing.h"
#include "voice/neural/anc.h"
#include "voice_signal.h"

#include <benchmark/benchmark.h>

namespace {

/// Reads every weight once, and those of recurrent layers once more for each further frame.
void read_weights(int frames) {
    for (const canceller_layer& layer : canceller_layers)
        for (int times = 0; times < (layer.recurrent ? frames : 1); ++times)
            benchmark::DoNotOptimize(qnl_max(layer.weights, layer.inputs * layer.outputs));
}

/// Argument: samples of a block, 480 for two frames of the network, 960 for four.
void canceller(benchmark::State& state) {
    constexpr int rounds = 301;
    qnl_start_vector_layer();
    const flush_to_zero guard;
    const auto block = static_cast<int>(state.range(0));
    const int frames = block / 240;
    const std::vector<float> in = voice_signal(100 * static_cast<std::size_t>(block));
    std::vector<float> out(static_cast<std::size_t>(block));
    quenlis_anc anc(48000, 1, block);
    std::vector<double> own;
    std::vector<double> reading;
    std::vector<double> blas;
    const bool blas_there = has_blas();
    for (auto _ : state)
        for (int round = 0; round < rounds; ++round) {
            const float* const audio = in.data() + static_cast<std::ptrdiff_t>(round % 100) * block;
            own.push_back(nanoseconds([&] { anc.process(audio, out.data()); }, 4));
            reading.push_back(nanoseconds([&] { read_weights(frames); }, 4));
            if (blas_there)
                blas.push_back(nanoseconds([&] { run_blas_products(frames); }, 4));
        }
    state.counters["block_us"] = median(own) / 1000.0;
    state.counters["reading_us"] = median(reading) / 1000.0;
    state.counters["ratio"] = median(own) / median(reading);
    if (blas_there) {
        state.counters["blas_us"] = median(blas) / 1000.0;
        state.counters["of_blas"] = median(own) / median(blas);
    }
}
BENCHMARK(canceller)->Arg(480)->Arg(960)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
