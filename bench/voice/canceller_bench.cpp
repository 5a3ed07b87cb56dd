// The noise canceller beside the time that it takes to read its weights, both from memory and as they lie in the caches,
// and beside its products alone by OpenBLAS.
#include "blas_products.h"
#include "canceller_layers.h"
#include "dsp/flush_to_zero.h"
#include "dsp/vector_primitives.h"
#include "timing.h"
#include "voice/neural/anc.h"
#include "voice/neural/dtln_model.h"
#include "voice_signal.h"

#include <benchmark/benchmark.h>

namespace {

void read(const float* x, int count) {
    benchmark::DoNotOptimize(qnl_max(x, count));
}

/// How often a block of so many frames has to read a layer: each further frame reads those of recurrent layers again.
int readings_of(const canceller_layer& layer, int frames) {
    return layer.recurrent ? frames : 1;
}

void read_weights(int frames) {
    for (const canceller_layer& layer : canceller_layers)
        for (int times = 0; times < readings_of(layer, frames); ++times)
            read(layer.weights, layer.inputs * layer.outputs);
}

/// Nanoseconds for as many floats at the rate at which one core streams a quarter of a gigabyte from memory.
double streaming_time(int frames) {
    int count = 0;
    for (const canceller_layer& layer : canceller_layers)
        count += readings_of(layer, frames) * layer.inputs * layer.outputs;
    const std::vector<float> much(std::size_t{1} << 26, 1.0F);
    std::vector<double> times(11);
    for (double& time : times)
        time = nanoseconds([&] { read(much.data(), static_cast<int>(much.size())); }, 1);
    return median(times) * count / static_cast<double>(much.size());
}

/// Times `work`, which gets a number and takes in so many frames, beside its bounds in the same rounds.
template <class Work>
void compare(benchmark::State& state, int frames, Work work) {
    constexpr std::size_t rounds = 301;
    const flush_to_zero guard;
    std::vector<double> own;
    std::vector<double> reading;
    std::vector<double> blas;
    const bool blas_there = has_blas();
    for (auto _ : state)
        for (std::size_t round = 0; round < rounds; ++round) {
            own.push_back(nanoseconds([&] { work(round); }, 4));
            reading.push_back(nanoseconds([&] { read_weights(frames); }, 4));
            if (blas_there)
                blas.push_back(nanoseconds([&] { run_blas_products(frames); }, 4));
        }
    const double streaming = streaming_time(frames);
    state.counters["own_us"] = median(own) / 1000.0;
    state.counters["streaming_us"] = streaming / 1000.0;
    state.counters["of_streaming"] = median(own) / streaming;
    state.counters["cached_us"] = median(reading) / 1000.0;
    state.counters["of_cached"] = median(own) / median(reading);
    if (blas_there) {
        state.counters["blas_us"] = median(blas) / 1000.0;
        state.counters["of_blas"] = median(own) / median(blas);
    }
}

constexpr std::size_t audio_blocks = 100;

/// One frame through the network.
void canceller_pass(benchmark::State& state) {
    constexpr std::size_t frame = 480;
    qnl_start_vector_layer();
    const std::vector<float> in = voice_signal(audio_blocks * frame);
    std::vector<float> out(frame);
    dtln_model model(0);
    compare(state, 1,
            [&](std::size_t round) { model.process(&in[round % audio_blocks * frame], out.data()); });
}

/// Argument: samples of a block, 480 for two frames of the network, 960 for four.
void canceller_block(benchmark::State& state) {
    qnl_start_vector_layer();
    const auto block = static_cast<std::size_t>(state.range(0));
    const std::vector<float> in = voice_signal(audio_blocks * block);
    std::vector<float> out(block);
    quenlis_anc anc(48000, 1, static_cast<int>(block));
    compare(state, static_cast<int>(block / 240),
            [&](std::size_t round) { anc.process(&in[round % audio_blocks * block], out.data()); });
}

BENCHMARK(canceller_pass)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(canceller_block)->Arg(480)->Arg(960)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
