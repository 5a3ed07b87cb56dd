/// Any sequence of calls of the exported functions, with any numbers, samples and null pointers: every call
/// answers with one of the codes, and nothing breaks.
#include "quenlis.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using bytes = FuzzedDataProvider;

struct session {
    bytes& input;
    qnl_handle handle;
    qnl_library_configuration format;
};

void expect_code(int code) {
    if (code < QNL_ERROR_NONE || code > QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED)
        std::abort();
}

/// Mostly the room that is there from the start, so that calls meet; sometimes any.
int any_room(bytes& input) {
    const int id = input.ConsumeIntegralInRange(0, 15);
    return id < 13 ? 0 : id < 15 ? id : input.ConsumeIntegral<int>();
}

/// Mostly one of the four that are there from the start; sometimes any.
int any_participant(bytes& input) {
    const int id = input.ConsumeIntegralInRange(0, 15);
    return id < 15 ? id % 5 : input.ConsumeIntegral<int>();
}

int any_number(bytes& input) {
    constexpr std::array<int, 10> edges{0, 1, 2, -1, 100, 101, 48000, INT_MAX, INT_MIN, 480};
    return input.ConsumeBool() ? input.PickValueInArray(edges) : input.ConsumeIntegral<int>();
}

qnl_audio_control any_control(bytes& input) {
    return static_cast<qnl_audio_control>(input.ConsumeBool() ? input.ConsumeIntegralInRange(0, 15)
                                                              : input.ConsumeIntegral<int>());
}

/// `pointer`, or null one time in eight.
template <typename Value>
Value* or_null(bytes& input, Value* pointer) {
    return input.ConsumeIntegralInRange(0, 7) == 0 ? nullptr : pointer;
}

/// Exactly `count` samples of a short pattern of any bits, infinities and NaN among them.
template <typename Sample>
std::vector<Sample> any_samples(bytes& input, std::size_t count) {
    std::array<Sample, 3> pattern{};
    const std::vector<std::uint8_t> bits = input.ConsumeBytes<std::uint8_t>(sizeof(pattern));
    if (!bits.empty())
        std::memcpy(pattern.data(), bits.data(), bits.size());
    std::vector<Sample> samples(count);
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = pattern[i % pattern.size()];
    return samples;
}

template <typename Sample>
using push_function = qnl_error_code (*)(qnl_handle, int, int, const Sample*, int);
template <typename Sample>
using pull_function = qnl_error_code (*)(qnl_handle, int, int, Sample*);

/// Pushes a block in a buffer of exactly its length, for the sanitizer to watch both ends.
template <typename Sample>
void push(session& s, push_function<Sample> function) {
    const int room = any_room(s.input);
    const int participant = any_participant(s.input);
    qnl_participant_configuration talker{};
    qnl_get_participant_configuration(s.handle, room, participant, &talker);
    std::size_t samples = 0;
    int frames = any_number(s.input);
    if (talker.input_sampling_rate > 0) {
        const std::int64_t right = std::int64_t{talker.input_sampling_rate} * s.format.output_number_frames /
                                   s.format.output_sampling_rate;
        samples = static_cast<std::size_t>(right * talker.input_number_channels);
        frames = s.input.ConsumeIntegralInRange(0, 7) > 0 ? static_cast<int>(right) : frames;
    }
    const std::vector<Sample> block = any_samples<Sample>(s.input, samples);
    expect_code(function(s.handle, room, participant, or_null(s.input, block.data()), frames));
}

template <typename Sample>
void pull(session& s, pull_function<Sample> function) {
    std::vector<Sample> block(static_cast<std::size_t>(s.format.output_number_frames) *
                              static_cast<std::size_t>(s.format.output_number_channels));
    const int room = any_room(s.input);
    const int participant = any_participant(s.input);
    expect_code(function(s.handle, room, participant, or_null(s.input, block.data())));
}

void move_audio(session& s) {
    switch (s.input.ConsumeIntegralInRange(0, 6)) {
    case 0:
        return push<short>(s, qnl_input_audio_short);
    case 1:
        return push<float>(s, qnl_input_audio_float);
    case 2:
        return push<double>(s, qnl_input_audio_double);
    case 3:
        return pull<short>(s, qnl_output_audio_short);
    case 4:
        return pull<float>(s, qnl_output_audio_float);
    case 5:
        return pull<double>(s, qnl_output_audio_double);
    default:
        expect_code(qnl_flush_data(s.handle, any_room(s.input), any_participant(s.input)));
    }
}

void come_and_go(session& s) {
    const int room = any_room(s.input);
    const int participant = any_participant(s.input);
    switch (s.input.ConsumeIntegralInRange(0, 5)) {
    case 0:
        return expect_code(qnl_create_room(s.handle, room));
    case 1:
        return expect_code(qnl_destroy_room(s.handle, room));
    case 2:
        return expect_code(qnl_remove_participant(s.handle, room, participant));
    default:
        const std::string name = s.input.ConsumeRandomLengthString(40);
        const int rate = s.input.ConsumeBool() ? 48000 : any_number(s.input);
        const int channels = s.input.ConsumeIntegralInRange(0, 3);
        const auto type = static_cast<qnl_participant_type>(s.input.ConsumeIntegralInRange(0, 4));
        expect_code(qnl_add_participant(s.handle, room, participant, or_null(s.input, name.c_str()),
                                        {rate, channels, type}));
    }
}

void steer(session& s) {
    const int room = any_room(s.input);
    const int participant = any_participant(s.input);
    const qnl_audio_control control = any_control(s.input);
    const std::string text = s.input.ConsumeRandomLengthString(40);
    int value = any_number(s.input);
    switch (s.input.ConsumeIntegralInRange(0, 4)) {
    case 0:
        return expect_code(qnl_set_participant_state(s.handle, room, participant, control, value));
    case 1:
        return expect_code(qnl_set_all_participants_state(s.handle, room, control, value));
    case 2:
        return expect_code(
            qnl_get_participant_state(s.handle, room, participant, control, or_null(s.input, &value)));
    case 3:
        qnl_string_to_audio_control(or_null(s.input, text.c_str()));
        qnl_audio_control_to_string(control);
        return;
    default:
        qnl_string_to_participant_value(or_null(s.input, text.c_str()));
        qnl_error_code_to_string(value);
    }
}

void place(session& s) {
    const int room = any_room(s.input);
    const int participant = any_participant(s.input);
    qnl_position position{any_number(s.input), any_number(s.input), any_number(s.input)};
    qnl_heading heading{s.input.ConsumeIntegralInRange(-181, 181), s.input.ConsumeIntegralInRange(-91, 91)};
    qnl_seat seat{};
    int number = any_number(s.input);
    switch (s.input.ConsumeIntegralInRange(0, 6)) {
    case 0:
        return expect_code(qnl_set_participant_seat(s.handle, room, participant, number));
    case 1:
        return expect_code(qnl_set_participant_position(s.handle, room, participant, position, heading));
    case 2:
        return expect_code(qnl_set_room_layout(s.handle, room, number));
    case 3:
        return expect_code(qnl_get_room_layout(s.handle, room, or_null(s.input, &number)));
    case 4:
        return expect_code(qnl_get_participant_seat(s.handle, room, participant, or_null(s.input, &seat)));
    case 5:
        return expect_code(qnl_get_participant_position(
            s.handle, room, participant, or_null(s.input, &position), or_null(s.input, &heading)));
    default:
        expect_code(qnl_get_participant_spherical(
            s.handle, room, participant, any_participant(s.input), or_null(s.input, &position.x),
            or_null(s.input, &position.y), or_null(s.input, &position.z)));
    }
}

void ask(session& s) {
    const int room = any_room(s.input);
    const int participant = any_participant(s.input);
    int number = 0;
    qnl_participant_configuration configuration{};
    const std::string name = s.input.ConsumeRandomLengthString(40);
    std::vector<char> answer(31);
    switch (s.input.ConsumeIntegralInRange(0, 5)) {
    case 0:
        return expect_code(qnl_get_room_count(s.handle, or_null(s.input, &number)));
    case 1:
        return expect_code(qnl_get_participant_count(s.handle, room, or_null(s.input, &number)));
    case 2:
        return expect_code(
            qnl_get_participant_configuration(s.handle, room, participant, or_null(s.input, &configuration)));
    case 3:
        return expect_code(
            qnl_set_participant_name(s.handle, room, participant, or_null(s.input, name.c_str())));
    case 4:
        return expect_code(qnl_get_participant_name(s.handle, room, participant,
                                                    or_null(s.input, answer.data()),
                                                    s.input.ConsumeIntegralInRange(-2, 30)));
    default:
        expect_code(qnl_enable_websockets(s.handle, s.input.ConsumeBool()));
        expect_code(qnl_send_custom_websocket_event(s.handle, room, or_null(s.input, name.c_str())));
    }
}

qnl_library_configuration any_format(bytes& input) {
    constexpr std::array<std::array<int, 2>, 8> legal{{{8000, 80},
                                                       {16000, 320},
                                                       {24000, 256},
                                                       {32000, 683},
                                                       {48000, 480},
                                                       {48000, 512},
                                                       {48000, 960},
                                                       {48000, 1024}}};
    std::array<int, 2> rate_and_frames = input.PickValueInArray(legal);
    if (input.ConsumeIntegralInRange(0, 15) == 0)
        rate_and_frames = {any_number(input), any_number(input)};
    return {rate_and_frames[0], rate_and_frames[1], input.ConsumeIntegralInRange(1, 2), input.ConsumeBool(),
            input.ConsumeIntegralInRange(1, 2)};
}

/// A room with two talkers, one of them in stereo, a listener and a source.
void open_conference(qnl_handle handle) {
    expect_code(qnl_create_room(handle, 0));
    expect_code(qnl_add_participant(handle, 0, 0, "mono", {48000, 1, QNL_PARTICIPANT_REGULAR}));
    expect_code(qnl_add_participant(handle, 0, 1, "stereo", {48000, 2, QNL_PARTICIPANT_REGULAR}));
    expect_code(qnl_add_participant(handle, 0, 2, "listener", {48000, 1, QNL_PARTICIPANT_LISTENER_ONLY}));
    expect_code(qnl_add_participant(handle, 0, 3, "source", {48000, 2, QNL_PARTICIPANT_SOURCE_ONLY}));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    bytes input(data, size);
    const qnl_library_configuration format = any_format(input);
    int code = 0;
    const qnl_handle handle = qnl_initialize_library(nullptr, nullptr, format, or_null(input, &code));
    if (handle == nullptr)
        return 0;
    open_conference(handle);
    session s{input, handle, format};
    constexpr std::array<void (*)(session&), 7> calls{move_audio, move_audio, move_audio, come_and_go,
                                                      steer,      place,      ask};
    while (input.remaining_bytes() > 0)
        input.PickValueInArray(calls)(s);
    expect_code(qnl_destroy_library(handle));
    return 0;
}
