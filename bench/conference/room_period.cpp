// One 10 ms period of a room: every participant pushes a block and pulls its mix, through the exported
// functions, with stereo bypass on. Beside it, in the same run, stands the bound: the same number of block
// copies, vector adds and heap blocks made and freed, in the same order, by the library's own vector layer
// and the plain heap, without a conference around them.
#include "dsp/vector_primitives.h"
#include "quenlis.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int frames = 480;
constexpr size_t block_bytes = frames * sizeof(float);
constexpr float mono_gain = 0.70710677F;

/// A library with one room of mono talkers that are heard in stereo.
class conference {
public:
    explicit conference(int talkers)
        : handle_(qnl_initialize_library(nullptr, nullptr, {48000, frames, 2, false, 3}, nullptr)),
          talkers_(talkers),
          capture_(frames, 0.01F),
          mix_(2 * frames) {
        qnl_create_room(handle_, 1);
        for (int id = 0; id < talkers_; ++id)
            qnl_add_participant(handle_, 1, id, "talker", {48000, 1, QNL_PARTICIPANT_REGULAR});
        qnl_set_all_participants_state(handle_, 1, QNL_CONTROL_STEREO_BYPASS_ENABLE, 1);
    }
    ~conference() { qnl_destroy_library(handle_); }
    conference(const conference&) = delete;
    conference& operator=(const conference&) = delete;

    void run_period() {
        for (int id = 0; id < talkers_; ++id)
            qnl_input_audio_float(handle_, 1, id, capture_.data(), frames);
        for (int id = 0; id < talkers_; ++id) {
            qnl_output_audio_float(handle_, 1, id, mix_.data());
            benchmark::DoNotOptimize(mix_.data());
        }
    }

private:
    qnl_handle handle_;
    int talkers_;
    std::vector<float> capture_;
    std::vector<float> mix_;
};

/// The same work without a conference.
class bound {
public:
    explicit bound(int talkers)
        : talkers_(static_cast<size_t>(talkers)),
          queues_(talkers_ * talkers_),
          capture_(frames, 0.01F),
          talker_block_(frames),
          working_(frames),
          accumulator_(2 * frames),
          out_(2 * frames),
          mix_(2 * frames) {}

    void run_period() {
        for (size_t talker = 0; talker < talkers_; ++talker)
            push(talker);
        for (size_t listener = 0; listener < talkers_; ++listener)
            pull(listener);
    }

private:
    void push(size_t talker) {
        qnl_copy(capture_.data(), talker_block_.data(), frames);
        for (size_t listener = 0; listener < talkers_; ++listener) {
            if (listener == talker)
                continue;
            auto* const block = static_cast<float*>(std::malloc(block_bytes));
            qnl_copy(talker_block_.data(), block, frames);
            queues_[listener * talkers_ + talker] = block;
        }
    }

    void pull(size_t listener) {
        qnl_zero(accumulator_.data(), 2 * frames);
        qnl_zero(out_.data(), 2 * frames);
        for (size_t talker = 0; talker < talkers_; ++talker) {
            if (listener == talker)
                continue;
            float* const block = queues_[listener * talkers_ + talker];
            qnl_copy(block, working_.data(), frames);
            std::free(block);
            qnl_multiplyC_I(working_.data(), mono_gain, frames);
            qnl_add_I(working_.data(), accumulator_.data(), frames);
            qnl_add_I(working_.data(), accumulator_.data() + frames, frames);
        }
        qnl_copy(accumulator_.data(), out_.data(), 2 * frames);
        qnl_copy(out_.data(), mix_.data(), 2 * frames);
    }

    size_t talkers_;
    std::vector<float*> queues_;
    std::vector<float> capture_;
    std::vector<float> talker_block_;
    std::vector<float> working_;
    std::vector<float> accumulator_;
    std::vector<float> out_;
    std::vector<float> mix_;
};

template <class Subject>
void period(benchmark::State& state) {
    Subject subject(static_cast<int>(state.range(0)));
    for (auto _ : state)
        subject.run_period();
}
BENCHMARK_TEMPLATE(period, conference)
    ->Name("conference")
    ->ArgName("talkers")
    ->RangeMultiplier(2)
    ->Range(8, 128);
BENCHMARK_TEMPLATE(period, bound)->Name("bound")->ArgName("talkers")->RangeMultiplier(2)->Range(8, 128);

using steady_clock = std::chrono::steady_clock;

template <class Subject>
double microseconds_of_period(Subject& subject) {
    const auto start = steady_clock::now();
    subject.run_period();
    return std::chrono::duration<double, std::micro>(steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

/// Runs both in turn, so that a change of the machine's speed meets both alike.
void print_ratio(int talkers) {
    conference engine(talkers);
    bound least(talkers);
    std::vector<double> engine_times;
    std::vector<double> bound_times;
    std::vector<double> ratios;
    for (int round = 0; round < 40000 / talkers; ++round) {
        bound_times.push_back(microseconds_of_period(least));
        engine_times.push_back(microseconds_of_period(engine));
        ratios.push_back(engine_times.back() / bound_times.back());
    }
    std::printf("%7d  %12.1f  %12.1f  %6.2f\n", talkers, median(engine_times), median(bound_times),
                median(ratios));
}

} // namespace

int main(int argc, char** argv) {
    qnl_start_vector_layer();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::printf("\nOne 10 ms period of a room of mono talkers, medians of interleaved runs\n"
                "talkers  conference us      bound us   ratio\n");
    for (const int talkers : {8, 16, 32, 64, 128})
        print_ratio(talkers);
    benchmark::Shutdown();
}
