// Every exported function with bad input: a code and a line, never more.
#include "kit/engine.h"
#include "kit/log_capture.h"
#include "quenlis.h"

#include <climits>
#include <cstring>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using test_kit::engine;
using test_kit::log_capture;
using test_kit::log_entry;
using testing::ElementsAre;

const log_entry null_handle_line{
    QNL_LOG_ERROR, "Your qnl_handle is null. Please use qnl_initialize_library to get a valid handle."};

/// One exported function that names a room, called with good arguments but for handle, room and participant.
struct door {
    const char* name;
    std::function<qnl_error_code(qnl_handle, int room, int participant)> call;
    bool names_participant = true;
};

std::vector<float> samples(960);
std::vector<short> shorts(960);
std::vector<double> doubles(960);
int number = 0;
int other_number = 0;
int third_number = 0;
char text[16];
qnl_seat seat{};
qnl_position position{};
qnl_heading heading{};
qnl_participant_configuration configuration{};
constexpr qnl_participant_configuration regular{48000, 1, QNL_PARTICIPANT_REGULAR};

const std::vector<door> doors = {
    {"destroy_room", [](auto h, int r, int) { return qnl_destroy_room(h, r); }, false},
    {"add_participant", [](auto h, int r, int) { return qnl_add_participant(h, r, 3, "", regular); }, false},
    {"remove_participant", [](auto h, int r, int p) { return qnl_remove_participant(h, r, p); }},
    {"input_short", [](auto h, int r, int p) { return qnl_input_audio_short(h, r, p, shorts.data(), 480); }},
    {"input_float", [](auto h, int r, int p) { return qnl_input_audio_float(h, r, p, samples.data(), 480); }},
    {"input_double",
     [](auto h, int r, int p) { return qnl_input_audio_double(h, r, p, doubles.data(), 480); }},
    {"output_short", [](auto h, int r, int p) { return qnl_output_audio_short(h, r, p, shorts.data()); }},
    {"output_float", [](auto h, int r, int p) { return qnl_output_audio_float(h, r, p, samples.data()); }},
    {"output_double", [](auto h, int r, int p) { return qnl_output_audio_double(h, r, p, doubles.data()); }},
    {"flush", [](auto h, int r, int p) { return qnl_flush_data(h, r, p); }},
    {"set_state",
     [](auto h, int r, int p) { return qnl_set_participant_state(h, r, p, QNL_CONTROL_MUTE_ENABLE, 1); }},
    {"set_all",
     [](auto h, int r, int) { return qnl_set_all_participants_state(h, r, QNL_CONTROL_MUTE_ENABLE, 1); },
     false},
    {"get_state", [](auto h, int r,
                     int p) { return qnl_get_participant_state(h, r, p, QNL_CONTROL_MUTE_ENABLE, &number); }},
    {"set_name", [](auto h, int r, int p) { return qnl_set_participant_name(h, r, p, "x"); }},
    {"set_seat", [](auto h, int r, int p) { return qnl_set_participant_seat(h, r, p, 2); }},
    {"get_seat", [](auto h, int r, int p) { return qnl_get_participant_seat(h, r, p, &seat); }},
    {"set_position",
     [](auto h, int r, int p) {
         return qnl_set_participant_position(h, r, p, {0, 0, 0}, {0, 0});
     }},
    {"get_position",
     [](auto h, int r, int p) { return qnl_get_participant_position(h, r, p, &position, &heading); }},
    {"spherical",
     [](auto h, int r, int p) {
         return qnl_get_participant_spherical(h, r, p, 2, &number, &other_number, &third_number);
     }},
    {"set_layout", [](auto h, int r, int) { return qnl_set_room_layout(h, r, 1); }, false},
    {"get_layout", [](auto h, int r, int) { return qnl_get_room_layout(h, r, &number); }, false},
    {"participant_count", [](auto h, int r, int) { return qnl_get_participant_count(h, r, &number); }, false},
    {"configuration",
     [](auto h, int r, int p) { return qnl_get_participant_configuration(h, r, p, &configuration); }},
};

TEST(ExportedFunctions, RefuseANullHandleWithItsLine) {
    std::vector<door> all = doors;
    all.push_back({"create_room", [](auto h, int r, int) { return qnl_create_room(h, r); }});
    all.push_back(
        {"get_name", [](auto h, int r, int p) { return qnl_get_participant_name(h, r, p, text, 15); }});
    all.push_back({"room_count", [](auto h, int, int) { return qnl_get_room_count(h, &number); }});
    all.push_back({"add_event_manager", [](auto h, int, int) { return qnl_add_event_manager(h, nullptr); }});
    all.push_back({"enable_websockets", [](auto h, int, int) { return qnl_enable_websockets(h, true); }});
    all.push_back(
        {"custom_event", [](auto h, int, int) { return qnl_send_custom_websocket_event(h, 1, nullptr); }});
    log_capture log;
    for (const door& function : all) {
        EXPECT_EQ(function.call(nullptr, 1, 1), QNL_ERROR_HANDLE_NULL) << function.name;
        EXPECT_THAT(log.take(), ElementsAre(null_handle_line)) << function.name;
    }
    EXPECT_EQ(qnl_destroy_library(nullptr), QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED);
    EXPECT_EQ(qnl_get_library_configuration(nullptr).spatial_quality, -1);
    EXPECT_STREQ(qnl_get_json_all_room_layouts(nullptr), "{\"error_code\": \"QNL_ERROR_HANDLE_NULL\"}");
    EXPECT_EQ(qnl_get_participant_configuration(nullptr, 1, 1, &configuration), QNL_ERROR_HANDLE_NULL);
    EXPECT_EQ(configuration.input_sampling_rate, -1);
    EXPECT_EQ(configuration.type, 4);
    EXPECT_EQ(qnl_get_participant_configuration(nullptr, 1, 1, nullptr), QNL_ERROR_HANDLE_NULL);
    EXPECT_THAT(log.take(), testing::Each(null_handle_line));
}

TEST(ExportedFunctions, RefuseUnknownRoomsAndPeople) {
    engine engine;
    engine.add(1);
    engine.add(2);
    log_capture log(QNL_LOG_WARNING);
    for (const int unknown : {0, -1, 9, INT_MIN, INT_MAX}) {
        for (const door& function : doors) {
            EXPECT_EQ(function.call(engine.handle(), unknown, 1), QNL_ERROR_INVALID_ROOM_ID) << function.name;
            EXPECT_THAT(log.take(), ElementsAre(log_entry{QNL_LOG_WARNING, "Room " + std::to_string(unknown) +
                                                                               " does not exist."}))
                << function.name;
            if (!function.names_participant)
                continue;
            EXPECT_EQ(function.call(engine.handle(), 1, unknown), QNL_ERROR_INVALID_PARTICIPANT_ID)
                << function.name;
            EXPECT_THAT(log.take(), ElementsAre(log_entry{QNL_LOG_WARNING, "The participant id " +
                                                                               std::to_string(unknown) +
                                                                               " is not in room 1"}))
                << function.name;
        }
    }
    int count = 0;
    qnl_get_participant_count(engine.handle(), 1, &count);
    EXPECT_EQ(count, 2);
}

TEST(ExportedFunctions, WriteNeutralValuesOnAFailure) {
    engine engine;
    number = other_number = third_number = 9;
    heading = {7, 7};
    position = {7, 7, 7};
    seat = {7, {7, 7, 7}, {7, 7}};
    for (const door& function : doors) {
        if (function.names_participant)
            function.call(engine.handle(), 1, 8);
    }
    EXPECT_EQ(seat.id + seat.position.z + seat.heading.elevation_heading, 0);
    EXPECT_EQ(position.x + position.y + position.z, 0);
    EXPECT_EQ(heading.azimuth_heading, 7) << "the heading is left as it was";
    EXPECT_EQ(other_number + third_number, 0);
    EXPECT_EQ(configuration.input_number_channels, -1);
    EXPECT_EQ(configuration.type, 4);
    EXPECT_EQ(qnl_get_room_layout(engine.handle(), 8, &number), QNL_ERROR_INVALID_ROOM_ID);
    EXPECT_EQ(number, 0);
    number = 5;
    EXPECT_EQ(qnl_get_participant_state(engine.handle(), 1, 8, QNL_CONTROL_DEVICE, &number),
              QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_EQ(number, 0);
}

TEST(ExportedFunctions, RefuseNullPointersBeforeAnythingElse) {
    engine engine;
    engine.add(1);
    qnl_handle const handle = engine.handle();
    log_capture log(QNL_LOG_WARNING);
    const int unknown = 77;
    EXPECT_EQ(qnl_get_room_count(handle, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_get_participant_count(handle, unknown, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_get_participant_configuration(handle, unknown, 1, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_add_event_manager(handle, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_set_participant_name(handle, 1, 1, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_get_participant_name(handle, unknown, 1, nullptr, 5), QNL_ERROR_DATA_NULL);
    EXPECT_THAT(
        log.take(),
        ElementsAre(log_entry{QNL_LOG_ERROR, "Your room_count pointer is null. Please initialize room_count "
                                             "before passing to qnl_get_room_count."},
                    log_entry{QNL_LOG_ERROR, "Your participant_count variable was NULL"},
                    log_entry{QNL_LOG_ERROR, "Your config variable was NULL"},
                    log_entry{QNL_LOG_ERROR, "The event manager provided was NULL"},
                    log_entry{QNL_LOG_ERROR, "Your name variable was NULL"},
                    log_entry{QNL_LOG_ERROR, "Your value point is null. Please initialize the char array "
                                             "before passing to qnl_get_participant_name."}));
    EXPECT_EQ(qnl_get_participant_state(handle, unknown, 1, QNL_CONTROL_DEVICE, nullptr),
              QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_get_participant_seat(handle, unknown, 1, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_get_participant_position(handle, unknown, 1, &position, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_get_participant_position(handle, unknown, 1, nullptr, &heading), QNL_ERROR_DATA_NULL);
    EXPECT_EQ(qnl_get_room_layout(handle, unknown, nullptr), QNL_ERROR_DATA_NULL);
    EXPECT_THAT(log.take(), testing::IsEmpty()) << "these say nothing";
}

TEST(ExportedFunctions, CopyNamesByTheirOwnCountOfLetters) {
    engine engine;
    engine.add(1, 1, QNL_PARTICIPANT_REGULAR, 48000, "Grace");
    std::memset(text, '#', sizeof text);
    EXPECT_EQ(qnl_get_participant_name(engine.handle(), 1, 1, text, 5), QNL_ERROR_NONE);
    EXPECT_EQ(std::string(text, 7), std::string("Grace\0#", 7)) << "length + 1 bytes are written";
    EXPECT_EQ(qnl_get_participant_name(engine.handle(), 1, 1, text, 4), QNL_ERROR_DATA_LENGTH);
    EXPECT_EQ(qnl_get_participant_name(engine.handle(), 1, 1, text, -1), QNL_ERROR_DATA_LENGTH);
    EXPECT_STREQ(text, "Grace");
    for (const auto& [room, id] : {std::pair{1, 9}, std::pair{9, 1}}) {
        text[0] = '#';
        EXPECT_EQ(qnl_get_participant_name(engine.handle(), room, id, text, 0), QNL_ERROR_NONE);
        EXPECT_STREQ(text, "");
        EXPECT_EQ(qnl_get_participant_name(engine.handle(), room, id, text, -1), QNL_ERROR_DATA_LENGTH);
    }
}

TEST(ExportedFunctions, NameVersionAndCodes) {
    EXPECT_STREQ(qnl_get_version(), "v1.0.9");
    EXPECT_STREQ(qnl_error_code_to_string(-9999), "QNL_ERROR_HANDLE_NULL");
    EXPECT_STREQ(qnl_error_code_to_string(-9990), "QNL_ERROR_INVALID_VALUE");
    EXPECT_STREQ(qnl_error_code_to_string(-9986), "QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED");
    for (const int none : {-10000, 0, -9985, -10001, INT_MIN, INT_MAX})
        EXPECT_STREQ(qnl_error_code_to_string(none), "QNL_ERROR_NONE");
}

TEST(ExportedFunctions, RefuseTheMissingTransport) {
    engine engine;
    log_capture log;
    EXPECT_EQ(qnl_enable_websockets(engine.handle(), true), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(qnl_enable_websockets(engine.handle(), false), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(qnl_send_custom_websocket_event(engine.handle(), 99, nullptr), QNL_ERROR_INVALID_CONTROL);
    EXPECT_THAT(log.take(),
                testing::Each(log_entry{QNL_LOG_WARNING,
                                        "Websocket server is not available for the client side, windows, "
                                        "or mac versions of the library"}));
}

} // namespace
