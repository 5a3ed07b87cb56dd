// Requests a second on one core, and what a flood of them from another thread does to the audio of a running
// room: the times of single audio calls, in rounds with and without the flood that take turns.
#include "frame/sound_manager.h"
#include "quenlis.h"

#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using steady_clock = std::chrono::steady_clock;
using requests = std::vector<std::string>;

constexpr int frames = 480;
constexpr int talkers = 8;

const requests reads = {
    R"({"Command":"get_participant_state","room_id":1,"participant_id":3,"control_to_edit":"QNL_CONTROL_MUTE_ENABLE"})"};
const requests controls = {
    reads.front(),
    R"({"Command":"set_participant_state","room_id":1,"participant_id":3,"control_to_edit":"QNL_CONTROL_DEVICE","value":1})"};
const requests moves = {
    R"({"Command":"set_participant_position","room_id":1,"participant_id":3,"x":10,"y":0,"z":5,"azimuth_heading":90,"elevation_heading":0})"};
const requests none = {};

qnl_handle start_library() {
    std::string path = "/tmp/quenlis_bench_XXXXXX";
    close(mkstemp(path.data()));
    std::ofstream(path) << "{}";
    const qnl_handle handle =
        qnl_initialize_library(nullptr, path.c_str(), {48000, frames, 2, false, 1}, nullptr);
    unlink(path.c_str());
    return handle;
}

/// A room of mono talkers with stereo bypass on, so that the audio calls are short, and a client.
class conference {
public:
    conference() : handle_(start_library()) {
        qnl_create_room(handle_, 1);
        for (int id = 1; id <= talkers; ++id)
            qnl_add_participant(handle_, 1, id, "talker", {48000, 1, QNL_PARTICIPANT_REGULAR});
        qnl_set_all_participants_state(handle_, 1, QNL_CONTROL_STEREO_BYPASS_ENABLE, 1);
    }
    ~conference() { qnl_destroy_library(handle_); }
    conference(const conference&) = delete;
    conference& operator=(const conference&) = delete;

    std::string answer(const std::string& request) {
        bool changed = false;
        return handle_->websocket_server()->parse_incoming_message(request, &changed);
    }

    /// One period of the room. @param times  the microseconds of each call are appended
    void run_period(std::vector<double>& times) {
        for (int id = 1; id <= talkers; ++id)
            times.push_back(timed([&] { qnl_input_audio_float(handle_, 1, id, capture_.data(), frames); }));
        for (int id = 1; id <= talkers; ++id)
            times.push_back(timed([&] { qnl_output_audio_float(handle_, 1, id, mix_.data()); }));
    }

private:
    template <class Call>
    static double timed(Call call) {
        const auto start = steady_clock::now();
        call();
        return std::chrono::duration<double, std::micro>(steady_clock::now() - start).count();
    }

    qnl_handle handle_;
    std::vector<float> capture_ = std::vector<float>(frames, 0.01F);
    std::vector<float> mix_ = std::vector<float>(2 * frames);
};

void request(benchmark::State& state, const requests& asked) {
    conference room;
    size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(room.answer(asked[next++ % asked.size()]));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(request, get_participant_state, reads);
BENCHMARK_CAPTURE(request, set_participant_position, moves);

/// What one kind of flood did, over all rounds.
struct trial {
    const char* name;
    const requests& flood;
    std::vector<double> call_times{}; // microseconds
    long answered = 0;
    double seconds = 0;
};

/// A tenth of a second of audio, period after period without a pause, beside the flood.
void run_round(conference& room, trial& what) {
    std::atomic<bool> stop{false};
    std::thread client([&] {
        for (size_t next = 0; !stop && !what.flood.empty(); ++what.answered)
            benchmark::DoNotOptimize(room.answer(what.flood[next++ % what.flood.size()]));
    });
    const auto start = steady_clock::now();
    std::chrono::duration<double> spent{};
    while (spent = steady_clock::now() - start, spent.count() < 0.1)
        room.run_period(what.call_times);
    what.seconds += spent.count();
    stop = true;
    client.join();
}

double share(std::vector<double>& sorted, double part) {
    return sorted[static_cast<size_t>(part * static_cast<double>(sorted.size() - 1))];
}

void print_audio_beside_floods() {
    trial trials[] = {{"no commands", none},
                      {"get_participant_state", reads},
                      {"reading and setting a control", controls},
                      {"set_participant_position", moves}};
    conference room;
    for (int round = 0; round < 50; ++round)
        for (trial& what : trials)
            run_round(room, what);
    std::printf("\nOne audio call in a room of %d, in microseconds, beside a flood from another thread\n"
                "%-30s  requests/s  median   99.9%%\n",
                talkers, "flood");
    for (trial& what : trials) {
        std::sort(what.call_times.begin(), what.call_times.end());
        std::printf("%-30s  %10.0f  %6.2f  %6.1f\n", what.name,
                    static_cast<double>(what.answered) / what.seconds, share(what.call_times, 0.5),
                    share(what.call_times, 0.999));
    }
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    print_audio_beside_floods();
    benchmark::Shutdown();
}
