/// A library instance with one room, for tests that drive the exported functions.
#pragma once

#include "quenlis.h"

#include <array>
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
                    const std::string& layout_json = {});
    ~engine();
    engine(const engine&) = delete;
    engine& operator=(const engine&) = delete;

    qnl_handle handle() const { return handle_; }

    qnl_error_code add(int id, int channels = 1, qnl_participant_type type = QNL_PARTICIPANT_REGULAR,
                       int rate = 48000, const char* name = "somebody");
    int participant_count();
    qnl_error_code set(int id, qnl_audio_control control, int value);
    /// A control's value; fails the test when it cannot be read.
    int get(int id, qnl_audio_control control);
    /// A seat; fails the test when it cannot be read.
    qnl_seat seat(int id);
    /// Where a listener hears a source: azimuth, elevation, distance; fails the test when it cannot be read.
    std::array<int, 3> heard(int listener, int source);

    /// Pushes `frames` frames, or all samples as mono when `frames` is 0.
    qnl_error_code push(int id, const std::vector<float>& x, int frames = 0);
    pulled_block pull(int id);

private:
    qnl_library_configuration configuration_;
    qnl_handle handle_;
};

/// The text of a room configuration file whose default layout has id 1 and `seats` seats in a row along x,
/// ten apart, around the centre 0, 0, 0; not open, stacked by 10.
/// @param extra  a further member of that layout, such as "\"defaultStates\":{}"
std::string row_layout(int seats, const std::string& extra = "\"desc\":\"a row\"");

} // namespace test_kit
