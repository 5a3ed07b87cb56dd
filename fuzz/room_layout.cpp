/// Any bytes as a room configuration file: the library starts, and a room on any of its layouts works.
#include "frame/logger.h"
#include "quenlis.h"

#include <nlohmann/json.hpp>

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int room = 1;
constexpr int frames = 480;
constexpr std::array<int, 4> participants{1, 0, INT_MAX, INT_MIN};
constexpr std::array<int, 8> seats{1, 2, 0, 7, -1, 1000, INT_MAX, INT_MIN};

/// A file that lives in memory.
class memory_file {
public:
    memory_file(const std::uint8_t* bytes, std::size_t size) : descriptor_(memfd_create("room_layout", 0)) {
        if (descriptor_ < 0 || write(descriptor_, bytes, size) != static_cast<ssize_t>(size))
            std::abort();
    }
    ~memory_file() { close(descriptor_); }
    memory_file(const memory_file&) = delete;
    memory_file& operator=(const memory_file&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

/// Takes every line, so that their composition runs too, and prints none.
class silent_sink : public qnl_logger_handler {
public:
    void handle(qnl_log_level /*level*/, const char* message) override {
        length_ += std::string(message).size();
    }

private:
    std::size_t length_ = 0;
};

/// The ids in the library's own account of its layouts, and some more: layouts of a file that broke off
/// half-way are there too, but not in that account.
std::vector<int> layout_ids(qnl_handle handle) {
    std::vector<int> ids{0, 1, 2, 3, 7, INT_MIN};
    const auto document = nlohmann::json::parse(qnl_get_json_all_room_layouts(handle));
    for (const auto& layout : document.at("room_list")) {
        const auto id = layout.is_object() ? layout.find("id") : layout.end();
        if (id != layout.end() && id->is_number_integer())
            ids.push_back(static_cast<int>(id->get<std::int64_t>()));
    }
    return ids;
}

/// One block from the last to the first, whose pull brings the places of all others up to date.
void push_and_pull(qnl_handle handle) {
    const std::vector<float> talk(frames, 0.5F);
    std::vector<float> mix(std::size_t{2} * frames);
    qnl_input_audio_float(handle, room, participants.back(), talk.data(), frames);
    qnl_output_audio_float(handle, room, participants.front(), mix.data());
}

void walk_seats(qnl_handle handle) {
    for (const int participant : participants) {
        for (const int seat : seats)
            qnl_set_participant_seat(handle, room, participant, seat);
        qnl_seat place{};
        qnl_get_participant_seat(handle, room, participant, &place);
        qnl_set_participant_position(handle, room, participant, place.position, place.heading);
    }
    push_and_pull(handle);
    for (const int participant : participants) {
        int azimuth = 0;
        int elevation = 0;
        int distance = 0;
        qnl_get_participant_spherical(handle, room, participants.front(), participant, &azimuth, &elevation,
                                      &distance);
    }
}

void hold_conference(qnl_handle handle) {
    qnl_create_room(handle, room);
    for (const int participant : participants)
        qnl_add_participant(handle, room, participant, "guest", {48000, 1, QNL_PARTICIPANT_REGULAR});
    walk_seats(handle);
    std::vector<int> ids = layout_ids(handle);
    // A file of very many layouts is tried at both ends.
    constexpr std::size_t most = 16;
    if (ids.size() > most)
        ids.erase(ids.begin() + most / 2, ids.end() - most / 2);
    for (const int id : ids) {
        qnl_set_room_layout(handle, room, id);
        walk_seats(handle);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    static silent_sink sink;
    qnl_logger::get_logger().initialize(&sink);
    qnl_enable_logging(true);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const memory_file file(bytes, size);
    int code = 0;
    const qnl_handle handle =
        qnl_initialize_library(file.path().c_str(), nullptr, {48000, frames, 2, false, 1}, &code);
    if (handle == nullptr || code != QNL_ERROR_NONE)
        std::abort(); // a layout file never keeps the library from starting
    hold_conference(handle);
    qnl_destroy_library(handle);
    return 0;
}
