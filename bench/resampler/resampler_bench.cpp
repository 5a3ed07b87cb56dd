// 10 ms of one channel from each rate to the engine's and back, beside other resamplers at their best quality;
// and what joining an empty room costs, where the filters are designed under the room's lock.
#include "contenders.h"
#include "dsp/vector_primitives.h"
#include "quenlis.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int engine_rate = 48000;
constexpr int library_rates[] = {8000, 16000, 24000, 32000, 48000};
constexpr int input_rates[] = {8000, 16000, 24000, 32000, 44100, 48000};

using steady_clock = std::chrono::steady_clock;
using microseconds = std::chrono::duration<double, std::micro>;
using maker = std::unique_ptr<contender> (*)(int, int);

/// A contender with a block to work on.
class track {
public:
    track(maker make, int input_rate, int output_rate)
        : contender_(make(input_rate, output_rate)),
          in_(static_cast<size_t>(input_rate / 100)),
          out_(static_cast<size_t>(2 * (output_rate / 100))) {
        for (size_t i = 0; i < in_.size(); ++i)
            in_[i] = 0.3F * std::sin(0.1F * static_cast<float>(i));
    }
    bool is_there() const { return contender_ != nullptr; }
    void run() {
        contender_->process(in_.data(), out_.data());
        benchmark::DoNotOptimize(out_.data());
        benchmark::ClobberMemory();
    }

private:
    std::unique_ptr<contender> contender_;
    std::vector<float> in_;
    std::vector<float> out_;
};

void block(benchmark::State& state, maker make) {
    track subject(make, static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    if (!subject.is_there())
        state.SkipWithError("not installed");
    for (auto _ : state)
        subject.run();
}

void every_pair(benchmark::internal::Benchmark* registered) {
    for (const int rate : input_rates) {
        if (rate == engine_rate)
            continue;
        registered->Args({rate, engine_rate});
        registered->Args({engine_rate, rate});
    }
    registered->ArgNames({"from", "to"});
}
BENCHMARK_CAPTURE(block, quenlis, make_quenlis)->Apply(every_pair);
BENCHMARK_CAPTURE(block, soxr, make_soxr)->Apply(every_pair);
BENCHMARK_CAPTURE(block, speexdsp, make_speexdsp)->Apply(every_pair);

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double time_of_block(track& subject) {
    constexpr int blocks = 16;
    const auto start = steady_clock::now();
    for (int i = 0; i < blocks; ++i)
        subject.run();
    return microseconds(steady_clock::now() - start).count() / blocks;
}

/// Prints a peer's time, and how often ours goes into it; a dash where it is missing.
void print_beside(double ours, std::vector<double>& times) {
    if (times.empty())
        std::printf("%10s %7s", "-", "-");
    else
        std::printf("%10.2f %7.2f", median(times), median(times) / ours);
}

/// The contenders take turns, so that whatever else the machine does hits all of them alike.
void print_pair(int input_rate, int output_rate) {
    constexpr int rounds = 501;
    track tracks[] = {{make_quenlis, input_rate, output_rate},
                      {make_soxr, input_rate, output_rate},
                      {make_speexdsp, input_rate, output_rate}};
    std::vector<double> times[std::size(tracks)];
    for (int round = 0; round < rounds; ++round)
        for (size_t i = 0; i < std::size(tracks); ++i)
            if (tracks[i].is_there())
                times[i].push_back(time_of_block(tracks[i]));
    const double ours = median(times[0]);
    std::printf("%6d %6d %9.2f", input_rate, output_rate, ours);
    print_beside(ours, times[1]);
    print_beside(ours, times[2]);
    std::printf("\n");
}

/// Microseconds of adding one stereo participant to an empty room.
double time_of_joining(const qnl_library_configuration& format, int input_rate) {
    constexpr int rounds = 101;
    qnl_handle const handle = qnl_initialize_library(nullptr, nullptr, format, nullptr);
    qnl_create_room(handle, 1);
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const auto start = steady_clock::now();
        qnl_add_participant(handle, 1, 1, "", {input_rate, 2, QNL_PARTICIPANT_REGULAR});
        times.push_back(microseconds(steady_clock::now() - start).count());
        qnl_remove_participant(handle, 1, 1);
    }
    qnl_destroy_library(handle);
    return median(times);
}

void print_costs_of_joining() {
    std::printf("\nJoining an empty room in stereo, us: library's rate downwards, participant's across\n%6s",
                "");
    for (const int input_rate : input_rates)
        std::printf("%9d", input_rate);
    for (const int rate : library_rates) {
        std::printf("\n%6d", rate);
        for (const int input_rate : input_rates)
            std::printf("%9.1f", time_of_joining({rate, rate / 100, 2, false, 3}, input_rate));
    }
    std::printf("\n");
}

} // namespace

int main(int argc, char** argv) {
    qnl_start_vector_layer();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::printf("\n10 ms of one channel in us, and how many times ours it is\n"
                "  from     to      ours      soxr   ratio  speexdsp   ratio\n");
    for (const int rate : input_rates) {
        if (rate == engine_rate)
            continue;
        print_pair(rate, engine_rate);
        print_pair(engine_rate, rate);
    }
    print_costs_of_joining();
    benchmark::Shutdown();
}
