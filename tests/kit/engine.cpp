#include "kit/engine.h"

#include "kit/temporary_directory.h"

#include <gtest/gtest.h>

namespace test_kit {

engine::engine(std::initializer_list<int> channels, qnl_library_configuration configuration,
               const std::string& layout_json)
    : configuration_(configuration) {
    const temporary_directory directory;
    const std::string path = directory.write("layouts.json", layout_json);
    int code = 0;
    handle_ =
        qnl_initialize_library(layout_json.empty() ? nullptr : path.c_str(), nullptr, configuration, &code);
    EXPECT_EQ(code, QNL_ERROR_NONE);
    EXPECT_EQ(qnl_create_room(handle_, room), QNL_ERROR_NONE);
    int id = 0;
    for (const int count : channels)
        EXPECT_EQ(add(++id, count), QNL_ERROR_NONE);
}

engine::~engine() {
    qnl_destroy_library(handle_);
}

qnl_error_code engine::add(int id, int channels, qnl_participant_type type, int rate, const char* name) {
    return qnl_add_participant(handle_, room, id, name, {rate, channels, type});
}

int engine::participant_count() {
    int count = -1;
    EXPECT_EQ(qnl_get_participant_count(handle_, room, &count), QNL_ERROR_NONE);
    return count;
}

qnl_error_code engine::set(int id, qnl_audio_control control, int value) {
    return qnl_set_participant_state(handle_, room, id, control, value);
}

int engine::get(int id, qnl_audio_control control) {
    int value = -1;
    EXPECT_EQ(qnl_get_participant_state(handle_, room, id, control, &value), QNL_ERROR_NONE);
    return value;
}

qnl_seat engine::seat(int id) {
    qnl_seat seat{};
    EXPECT_EQ(qnl_get_participant_seat(handle_, room, id, &seat), QNL_ERROR_NONE);
    return seat;
}

std::array<int, 3> engine::heard(int listener, int source) {
    std::array<int, 3> place{};
    EXPECT_EQ(qnl_get_participant_spherical(handle_, room, listener, source, &place[0], &place[1], &place[2]),
              QNL_ERROR_NONE);
    return place;
}

qnl_error_code engine::push(int id, const std::vector<float>& x, int frames) {
    return qnl_input_audio_float(handle_, room, id, x.data(),
                                 frames != 0 ? frames : static_cast<int>(x.size()));
}

pulled_block engine::pull(int id) {
    const int size = configuration_.output_number_frames * configuration_.output_number_channels;
    pulled_block block{QNL_ERROR_NONE, std::vector<float>(static_cast<size_t>(size), -99.0F)};
    block.code = qnl_output_audio_float(handle_, room, id, block.samples.data());
    return block;
}

std::string row_layout(int seats, const std::string& extra) {
    std::string list;
    for (int seat = 0; seat < seats; ++seat)
        list += (seat > 0 ? R"(,{"x":)" : R"({"x":)") + std::to_string(10 * seat) + R"(,"y":0,"z":-5})";
    return R"({"default":"row","room_list":{"row":{"id":1,"desc":"a row","allowParticipantStacking":false,)"
           R"("stackDelta":10,"openRoom":false,"centerPoint":{"x":0,"y":0,"z":0},"seats":[)" +
           list + "]," + extra + "}}}";
}

} // namespace test_kit
