// The whole road of one talker with every stage on, through the exported functions: while speaking, and in a minute of
// digital silence behind it. And what one participant takes of the heap.
#include "quenlis.h"
#include "timing.h"
#include "voice_signal.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

namespace {

constexpr int block = 480;
constexpr int room = 1;

/// A room with one talker, all of whose stages are on, and one listener.
class conference {
public:
    conference() {
        int code = 0;
        handle_ = qnl_initialize_library(nullptr, nullptr, {48000, block, 2, true, 1}, &code);
        qnl_create_room(handle_, room);
        for (const int id : {1, 2})
            qnl_add_participant(handle_, room, id, "somebody", {48000, 1, QNL_PARTICIPANT_REGULAR});
        for (const qnl_audio_control stage :
             {QNL_CONTROL_ANC_ENABLE, QNL_CONTROL_AGC_ENABLE, QNL_CONTROL_AUTO_EQ_ENABLE})
            qnl_set_participant_state(handle_, room, 1, stage, 1);
    }
    ~conference() { qnl_destroy_library(handle_); }
    conference(const conference&) = delete;
    conference& operator=(const conference&) = delete;

    /// @return nanoseconds of the push; the pull behind it keeps the queue short
    double talk(const float* audio) {
        const double time = nanoseconds([&] { qnl_input_audio_float(handle_, room, 1, audio, block); }, 1);
        float mix[2 * block];
        qnl_output_audio_float(handle_, room, 2, mix);
        return time;
    }

private:
    qnl_handle handle_;
};

void talker_with_everything_on(benchmark::State& state) {
    constexpr int blocks_of_a_minute = 6000;
    constexpr std::size_t blocks = 500;
    const std::vector<float> voice = voice_signal(blocks * block);
    const std::vector<float> silence(block);
    conference talk;
    std::vector<double> speaking;
    std::vector<double> silent;
    for (auto _ : state) {
        for (std::size_t i = 0; i < 2 * blocks; ++i)
            speaking.push_back(talk.talk(&voice[i % blocks * block]));
        for (int i = 0; i < blocks_of_a_minute; ++i)
            silent.push_back(talk.talk(silence.data()));
    }
    state.counters["block_us"] = median(speaking) / 1000.0;
    state.counters["silent_us"] = median(silent) / 1000.0;
    state.counters["talkers_per_core"] = 10000.0 / (median(speaking) / 1000.0);
}
BENCHMARK(talker_with_everything_on)->Iterations(1)->Unit(benchmark::kMillisecond);

/// Argument: the participant's type. Heap bytes of one more participant in a room of its own.
void memory_of_a_participant(benchmark::State& state) {
    int code = 0;
    qnl_handle const handle = qnl_initialize_library(nullptr, nullptr, {48000, block, 2, true, 1}, &code);
    qnl_create_room(handle, room);
    const auto type = static_cast<qnl_participant_type>(state.range(0));
    const auto in_use = [] {
        const struct mallinfo2 heap = mallinfo2();
        return static_cast<double>(heap.uordblks + heap.hblkhd);
    };
    for (auto _ : state) {
        const double before = in_use();
        qnl_add_participant(handle, room, 1, "somebody", {48000, 1, type});
        state.counters["kilobytes"] = (in_use() - before) / 1024.0;
    }
    qnl_destroy_library(handle);
}
BENCHMARK(memory_of_a_participant)
    ->Arg(QNL_PARTICIPANT_SOURCE_ONLY)
    ->Arg(QNL_PARTICIPANT_LISTENER_ONLY)
    ->Iterations(1);

} // namespace
