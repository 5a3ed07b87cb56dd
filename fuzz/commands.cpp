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

class event_reader : public qnl_broadcast_target {
public:
    void send(const std::string& text) override { expect(json::parse(text).at("Event").is_string()); }
};

/// A library whose control server has a default configuration.
qnl_handle start_library() {
    std::array<int, 2> ends{};
    expect(pipe(ends.data()) == 0 && write(ends[1], "{}", 2) == 2 && close(ends[1]) == 0);
    const std::string path = "/proc/self/fd/" + std::to_string(ends[0]);
    const qnl_handle handle =
        qnl_initialize_library(nullptr, path.c_str(), {48000, frames, 2, false, 1}, nullptr);
    close(ends[0]);
    expect(handle != nullptr && handle->websocket_server() != nullptr);
    static event_reader reader;
    handle->websocket_server()->set_broadcast_target(&reader);
    expect(qnl_add_event_manager(handle, handle->websocket_server()) == QNL_ERROR_NONE);
    return handle;
}

void open_room(qnl_handle handle) {
    expect(qnl_create_room(handle, room) == QNL_ERROR_NONE);
    for (const int id : {1, 2, -1})
        expect(qnl_add_participant(handle, room, id, "somebody", {48000, 1, QNL_PARTICIPANT_REGULAR}) ==
               QNL_ERROR_NONE);
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
    static const qnl_handle handle = start_library();
    open_room(handle);
    std::istringstream requests(std::string(data, data + size));
    for (std::string request; std::getline(requests, request);) {
        bool changed = false;
        check_response(handle->websocket_server()->parse_incoming_message(request, &changed), changed);
        run_a_period(handle);
    }
    expect(qnl_destroy_room(handle, room) == QNL_ERROR_NONE);
    return 0;
}
