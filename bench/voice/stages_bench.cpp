// Each stage of a talker's road by itself: microseconds for a block of 10 ms.
#include "dsp/flush_to_zero.h"
#include "dsp/vector_primitives.h"
#include "timing.h"
#include "voice/agc.h"
#include "voice/auto_eq.h"
#include "voice/deesser.h"
#include "voice/limiter.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/network.h"
#include "voice/recurrent/rnn.h"
#include "voice_signal.h"

#include <algorithm>
#include <benchmark/benchmark.h>

namespace {

constexpr int block = 480;

/// Runs `stage` over blocks of a voice and puts down the median.
template <class Stage>
void measure(benchmark::State& state, Stage stage) {
    constexpr std::size_t blocks = 200;
    qnl_start_vector_layer();
    const flush_to_zero guard;
    const std::vector<float> in = voice_signal(blocks * block);
    std::vector<float> x(2 * block);
    std::vector<double> times;
    for (auto _ : state)
        for (std::size_t i = 0; i < 5 * blocks; ++i) {
            std::copy_n(&in[i % blocks * block], block, x.begin());
            times.push_back(nanoseconds([&] { stage(x.data()); }, 1));
        }
    state.counters["block_us"] = median(times) / 1000.0;
}

void recurrent_denoiser(benchmark::State& state) {
    quenlis_rnn denoiser(block, 1);
    measure(state, [&](float* x) { denoiser.process(x, x); });
}

void recurrent_layers_alone(benchmark::State& state) {
    float vad[largest_rnn_layer] = {};
    float noise[largest_rnn_layer] = {};
    float denoise[largest_rnn_layer] = {};
    float gains[largest_rnn_layer] = {};
    measure(state, [&](float* x) { compute_rnn(rnnoise_model_orig, {vad, noise, denoise}, gains, x); });
}

void gain_control(benchmark::State& state) {
    quenlis_agc agc(1, block);
    measure(state, [&](float* x) { agc.process(x, 0.9F); });
}

void equaliser_while_learning(benchmark::State& state) {
    quenlis_auto_EQ equaliser(48000, 1, block);
    measure(state, [&](float* x) { equaliser.process(x, x, 0.9F, 140); });
}

void equaliser_between_words(benchmark::State& state) {
    quenlis_auto_EQ equaliser(48000, 1, block);
    measure(state, [&](float* x) { equaliser.process(x, x, 0.1F, 140); });
}

void deesser(benchmark::State& state) {
    quenlis_deesser stage(48000, 1, block);
    measure(state, [&](float* x) { stage.process(x, x); });
}

void limiter(benchmark::State& state) {
    quenlis_limiter stage(-0.2F, 0.2F, 48000, 2, block);
    measure(state, [&](float* x) { stage.process(x, x); });
}

BENCHMARK(recurrent_denoiser)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(recurrent_layers_alone)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(gain_control)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(equaliser_while_learning)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(equaliser_between_words)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(deesser)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(limiter)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
