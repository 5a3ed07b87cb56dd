/// A library instance with one room, for tests that drive the exported functions.
#pragma once

#include "kit/temporary_directory.h"
#include "quenlis.h"

#include <array>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace test_kit {

/// What an output call gave.
struct pulled_block {
    qnl_error_code code = QNL_ERROR_NONE;
    std::vector<float> samples; // as the host sees them: F frames of the output channels
};

/// Starts the library, creates room 1 and ends the library with itself.
class engine {
public:
    static constexpr int room = 1;

    /// @param channels     of regular participants 1, 2 and so on, who are in the room from the start
    /// @param layout_json  text of the room configuration file; empty for the fallback layout, an open room
    explicit engine(std::initializer_list<int> channels = {},
                    qnl_library_configuration configuration = {48000, 480, 2, false, 1},
                    const std::string& layout_json = {})
        : configuration_(configuration) {
        const temporary_directory directory;
        const std::string path = directory.write("layouts.json", layout_json);
        int code = 0;
        handle_ = qnl_initialize_library(layout_json.empty() ? nullptr : path.c_str(), nullptr, configuration,
                                         &code);
        EXPECT_EQ(code, QNL_ERROR_NONE);
        EXPECT_EQ(qnl_create_room(handle_, room), QNL_ERROR_NONE);
        int id = 0;
        for (const int count : channels)
            EXPECT_EQ(add(++id, count), QNL_ERROR_NONE);
    }
    ~engine() { qnl_destroy_library(handle_); }
    engine(const engine&) = delete;
    engine& operator=(const engine&) = delete;

    qnl_handle handle() const { return handle_; }

    qnl_error_code add(int id, int channels = 1, qnl_participant_type type = QNL_PARTICIPANT_REGULAR,
                       int rate = 48000, const char* name = "somebody") {
        return qnl_add_participant(handle_, room, id, name, {rate, channels, type});
    }
    int participant_count() {
        int count = -1;
        EXPECT_EQ(qnl_get_participant_count(handle_, room, &count), QNL_ERROR_NONE);
        return count;
    }
    qnl_error_code set(int id, qnl_audio_control control, int value) {
        return qnl_set_participant_state(handle_, room, id, control, value);
    }
    /// A control's value; fails the test when it cannot be read.
    int get(int id, qnl_audio_control control) {
        int value = -1;
        EXPECT_EQ(qnl_get_participant_state(handle_, room, id, control, &value), QNL_ERROR_NONE);
        return value;
    }
    /// A seat; fails the test when it cannot be read.
    qnl_seat seat(int id) {
        qnl_seat seat{};
        EXPECT_EQ(qnl_get_participant_seat(handle_, room, id, &seat), QNL_ERROR_NONE);
        return seat;
    }
    /// Where a listener hears a source: azimuth, elevation, distance; fails the test when it cannot be read.
    std::array<int, 3> heard(int listener, int source) {
        std::array<int, 3> at{};
        EXPECT_EQ(qnl_get_participant_spherical(handle_, room, listener, source, &at[0], &at[1], &at[2]),
                  QNL_ERROR_NONE);
        return at;
    }

    /// Pushes `frames` frames, or all samples as mono when `frames` is 0.
    qnl_error_code push(int id, const std::vector<float>& x, int frames = 0) {
        return qnl_input_audio_float(handle_, room, id, x.data(),
                                     frames != 0 ? frames : static_cast<int>(x.size()));
    }
    pulled_block pull(int id) {
        const int size = configuration_.output_number_frames * configuration_.output_number_channels;
        pulled_block block{QNL_ERROR_NONE, std::vector<float>(static_cast<size_t>(size), -99.0F)};
        block.code = qnl_output_audio_float(handle_, room, id, block.samples.data());
        return block;
    }

private:
    qnl_library_configuration configuration_;
    qnl_handle handle_;
};

/// The text of a room configuration file whose default layout has id 1 and `seats` seats in a row along x,
/// ten apart, around the centre 0, 0, 0; not open, stacked by 10.
/// @param extra  a further member of that layout, such as "\"defaultStates\":{}"
inline std::string row_layout(int seats, const std::string& extra = "\"desc\":\"a row\"") {
    std::string list;
    for (int seat = 0; seat < seats; ++seat)
        list += (seat > 0 ? R"(,{"x":)" : R"({"x":)") + std::to_string(10 * seat) + R"(,"y":0,"z":-5})";
    return R"({"default":"row","room_list":{"row":{"id":1,"desc":"a row","allowParticipantStacking":false,)"
           R"("stackDelta":10,"openRoom":false,"centerPoint":{"x":0,"y":0,"z":0},"seats":[)" +
           list + "]," + extra + "}}}";
}

} // namespace test_kit
