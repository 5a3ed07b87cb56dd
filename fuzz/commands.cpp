/// Any bytes as requests, one a line, with a live room behind them: each is answered with one response of the
/// right shape, every event is a JSON object, and the audio runs on.
#include "frame/sound_manager.h"
#include "quenlis.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using nlohmann::json;

/// In place of the C library's: whatever path a request names, the console stays quiet.
extern "C" void perror(const char* /*prefix*/) {}

namespace {

constexpr int room = 1;
constexpr int frames = 480;

void expect(bool promise) {
    if (!promise)
        std::abort();
}

/// Reads every event and keeps the ids of those who joined.
class client : public qnl_broadcast_target {
public:
    void send(const std::string& text) override {
        const json event = json::parse(text);
        if (event.at("Event") == "add_participant")
            joined_.push_back(event.at("participant_id").get<int>());
    }
    std::vector<int> joined() { return std::exchange(joined_, {}); }

private:
    std::vector<int> joined_;
};

client listening;

/// A library whose control server has a default configuration.
qnl_handle start_library() {
    std::array<int, 2> ends{};
    expect(pipe(ends.data()) == 0 && write(ends[1], "{}", 2) == 2 && close(ends[1]) == 0);
    const std::string path = "/proc/self/fd/" + std::to_string(ends[0]);
    const qnl_handle handle =
        qnl_initialize_library(nullptr, path.c_str(), {48000, frames, 2, false, 1}, nullptr);
    close(ends[0]);
    expect(handle != nullptr && handle->websocket_server() != nullptr);
    handle->websocket_server()->set_broadcast_target(&listening);
    expect(qnl_add_event_manager(handle, handle->websocket_server()) == QNL_ERROR_NONE);
    return handle;
}

/// Two who stay for all inputs, since it takes long to build a participant.
qnl_handle open_room() {
    const qnl_handle handle = start_library();
    expect(qnl_create_room(handle, room) == QNL_ERROR_NONE);
    for (const int id : {1, 2})
        expect(qnl_add_participant(handle, room, id, "somebody", {48000, 1, QNL_PARTICIPANT_REGULAR}) ==
               QNL_ERROR_NONE);
    listening.joined();
    return handle;
}

/// What an input leaves behind must not decide what the next one does.
void tidy_up(qnl_handle handle) {
    constexpr std::array<int, 14> defaults{0, 0, 0, 0, 0, 0, 6, 300, 1, 1, 15, 100, 0, 0};
    for (const int id : listening.joined())
        qnl_remove_participant(handle, room, id);
    for (std::size_t control = 0; control < defaults.size(); ++control)
        qnl_set_all_participants_state(handle, room, static_cast<qnl_audio_control>(control + 1),
                                       defaults[control]);
    for (const int id : {1, 2}) {
        qnl_set_participant_name(handle, room, id, "somebody");
        qnl_set_participant_seat(handle, room, id, 0);
    }
}

void check_response(const std::string& text, bool changed) {
    const json response = json::parse(text);
    expect(response.dump() == text && response.contains("Request"));
    const json& status = response.at("Status");
    expect(status == "OK" || (status == "ERROR" && response.size() == 4 && !changed &&
                              response.at("Error Code").get<int>() > QNL_ERROR_NONE &&
                              response.at("Error Description").is_string()));
}

/// The two whom no request can remove.
void run_a_period(qnl_handle handle) {
    std::array<float, 2 * frames> block{};
    for (const int id : {1, 2})
        expect(qnl_input_audio_float(handle, room, id, block.data(), frames) == QNL_ERROR_NONE);
    for (const int id : {1, 2})
        qnl_output_audio_float(handle, room, id, block.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const qnl_handle handle = open_room();
    std::istringstream requests(std::string(data, data + size));
    for (std::string request; std::getline(requests, request);) {
        bool changed = false;
        check_response(handle->websocket_server()->parse_incoming_message(request, &changed), changed);
        run_a_period(handle);
    }
    tidy_up(handle);
    return 0;
}
