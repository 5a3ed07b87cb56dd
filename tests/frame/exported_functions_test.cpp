// Every exported function with bad input: a code and a line, never more.
#include "kit/host.h"

#include <cstring>
#include <functional>

namespace {

using namespace test_kit;
using namespace testing;

const std::string null_handle_line =
    "ERROR: Your qnl_handle is null. Please use qnl_initialize_library to get a valid handle.";

std::vector<float> floats(960);
std::vector<short> shorts(960);
std::vector<double> doubles(960);
int number, azimuth, elevation, distance;
char text[16];
qnl_seat seat;
qnl_position position;
qnl_heading heading;
qnl_participant_configuration configuration;
constexpr qnl_participant_configuration regular{48000, 1, QNL_PARTICIPANT_REGULAR};
constexpr qnl_audio_control mute = QNL_CONTROL_MUTE_ENABLE;

/// One exported function, called with good arguments but for those given.
struct door {
    const char* name;
    std::function<qnl_error_code(qnl_handle, int room, int participant)> call;
    bool names_participant;
};

/// A function that takes a room and a participant before `arguments`.
template <class Function, class... Arguments>
door of_person(const char* name, Function function, Arguments... arguments) {
    return {name, [=](qnl_handle h, int room, int id) { return function(h, room, id, arguments...); }, true};
}

/// A function that takes a room before `arguments`.
template <class Function, class... Arguments>
door of_room(const char* name, Function function, Arguments... arguments) {
    return {name, [=](qnl_handle h, int room, int) { return function(h, room, arguments...); }, false};
}

const std::vector<door> doors = {
    of_room("destroy_room", qnl_destroy_room),
    of_room("add_participant", qnl_add_participant, 3, "", regular),
    of_room("set_all", qnl_set_all_participants_state, mute, 1),
    of_room("set_layout", qnl_set_room_layout, 1),
    of_room("get_layout", qnl_get_room_layout, &number),
    of_room("participant_count", qnl_get_participant_count, &number),
    of_person("remove_participant", qnl_remove_participant),
    of_person("input_short", qnl_input_audio_short, shorts.data(), 480),
    of_person("input_float", qnl_input_audio_float, floats.data(), 480),
    of_person("input_double", qnl_input_audio_double, doubles.data(), 480),
    of_person("output_short", qnl_output_audio_short, shorts.data()),
    of_person("output_float", qnl_output_audio_float, floats.data()),
    of_person("output_double", qnl_output_audio_double, doubles.data()),
    of_person("flush", qnl_flush_data),
    of_person("set_state", qnl_set_participant_state, mute, 1),
    of_person("get_state", qnl_get_participant_state, mute, &number),
    of_person("set_name", qnl_set_participant_name, "x"),
    of_person("set_seat", qnl_set_participant_seat, 2),
    of_person("get_seat", qnl_get_participant_seat, &seat),
    of_person("set_position", qnl_set_participant_position, qnl_position{}, qnl_heading{}),
    of_person("get_position", qnl_get_participant_position, &position, &heading),
    of_person("spherical", qnl_get_participant_spherical, 2, &azimuth, &elevation, &distance),
    of_person("configuration", qnl_get_participant_configuration, &configuration),
};

TEST(ExportedFunctions, RefuseANullHandleWithItsLine) {
    std::vector<door> all = doors;
    all.push_back(of_room("create_room", qnl_create_room));
    all.push_back(of_person("get_name", qnl_get_participant_name, text, 15));
    all.push_back({"room_count", [](auto h, int, int) { return qnl_get_room_count(h, &number); }, false});
    all.push_back({"observers", [](auto h, int, int) { return qnl_add_event_manager(h, nullptr); }, false});
    all.push_back({"websockets", [](auto h, int, int) { return qnl_enable_websockets(h, true); }, false});
    all.push_back(of_room("custom_event", qnl_send_custom_websocket_event, nullptr));
    all.push_back(of_person("of oneself", qnl_get_participant_spherical, 1, &azimuth, &elevation, &distance));
    all.push_back(of_person("no configuration", qnl_get_participant_configuration, nullptr));
    log_capture log;
    for (const door& function : all) {
        EXPECT_EQ(function.call(nullptr, 1, 1), QNL_ERROR_HANDLE_NULL) << function.name;
        EXPECT_THAT(log.take(), ElementsAre(null_handle_line)) << function.name;
    }
    EXPECT_THAT(configuration, FieldsAre(-1, -1, 4));
    EXPECT_EQ(qnl_destroy_library(nullptr), QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED);
    EXPECT_EQ(qnl_get_library_configuration(nullptr).spatial_quality, -1);
    EXPECT_STREQ(qnl_get_json_all_room_layouts(nullptr), "{\"error_code\": \"QNL_ERROR_HANDLE_NULL\"}");
    EXPECT_THAT(log.take(), ElementsAre(null_handle_line, null_handle_line, null_handle_line));
}

TEST(ExportedFunctions, RefuseUnknownRoomsAndPeople) {
    engine engine({1, 1});
    log_capture log;
    for (const int unknown : {0, -1, 9, INT_MIN, INT_MAX}) {
        const std::string id = std::to_string(unknown);
        for (const door& function : doors) {
            EXPECT_EQ(function.call(engine.handle(), unknown, 1), QNL_ERROR_INVALID_ROOM_ID) << function.name;
            EXPECT_THAT(log.take(), ElementsAre("WARNING: Room " + id + " does not exist.")) << function.name;
            if (!function.names_participant)
                continue;
            EXPECT_EQ(function.call(engine.handle(), 1, unknown), QNL_ERROR_INVALID_PARTICIPANT_ID);
            EXPECT_THAT(log.take(), ElementsAre("WARNING: The participant id " + id + " is not in room 1"))
                << function.name;
        }
    }
    EXPECT_EQ(engine.participant_count(), 2);
}

TEST(ExportedFunctions, WriteNeutralValuesOnAFailure) {
    engine engine;
    number = azimuth = elevation = distance = 9;
    configuration = {};
    heading = {7, 7};
    position = {7, 7, 7};
    seat = {7, {7, 7, 7}, {7, 7}};
    for (const door& function : doors)
        if (function.names_participant)
            function.call(engine.handle(), 1, 8);
    EXPECT_THAT(seat, FieldsAre(0, FieldsAre(0, 0, 0), FieldsAre(0, 0)));
    EXPECT_THAT(position, FieldsAre(0, 0, 0));
    EXPECT_THAT((std::array{azimuth, elevation, distance}), Each(0));
    EXPECT_THAT(heading, FieldsAre(7, 7)) << "the heading is left as it was";
    EXPECT_THAT(configuration, FieldsAre(-1, -1, 4));
    EXPECT_EQ(number, 0) << "of a control";
    number = 9;
    qnl_get_room_layout(engine.handle(), 8, &number);
    EXPECT_EQ(number, 0);
}

TEST(ExportedFunctions, RefuseNullPointersBeforeAnythingElse) {
    engine engine;
    qnl_handle const handle = engine.handle();
    log_capture log;
    constexpr int unknown = 77;
    const qnl_error_code codes[] = {
        qnl_get_room_count(handle, nullptr),
        qnl_get_participant_count(handle, unknown, nullptr),
        qnl_get_participant_configuration(handle, unknown, 1, nullptr),
        qnl_add_event_manager(handle, nullptr),
        qnl_set_participant_name(handle, unknown, 1, nullptr),
        qnl_get_participant_name(handle, unknown, 1, nullptr, 5),
        // The others say nothing.
        qnl_get_participant_state(handle, unknown, 1, mute, nullptr),
        qnl_get_participant_seat(handle, unknown, 1, nullptr),
        qnl_get_participant_position(handle, unknown, 1, &position, nullptr),
        qnl_get_participant_position(handle, unknown, 1, nullptr, &heading),
        qnl_get_participant_spherical(handle, unknown, 1, 2, nullptr, &elevation, &distance),
        qnl_get_participant_spherical(handle, unknown, 1, 2, &azimuth, nullptr, &distance),
        qnl_get_participant_spherical(handle, unknown, 1, 2, &azimuth, &elevation, nullptr),
        qnl_get_room_layout(handle, unknown, nullptr),
    };
    EXPECT_THAT(codes, Each(QNL_ERROR_DATA_NULL));
    EXPECT_THAT(log.take(), ElementsAre("ERROR: Your room_count pointer is null. Please initialize "
                                        "room_count before passing to qnl_get_room_count.",
                                        "ERROR: Your participant_count variable was NULL",
                                        "ERROR: Your config variable was NULL",
                                        "ERROR: The event manager provided was NULL",
                                        "ERROR: Your name variable was NULL",
                                        "ERROR: Your value point is null. Please initialize the char array "
                                        "before passing to qnl_get_participant_name."));
}

TEST(ExportedFunctions, CopyNamesByTheirOwnCountOfLetters) {
    engine engine;
    engine.add(1, 1, QNL_PARTICIPANT_REGULAR, 48000, "Grace");
    std::memset(text, '#', sizeof text);
    EXPECT_EQ(qnl_get_participant_name(engine.handle(), 1, 1, text, 5), QNL_ERROR_NONE);
    EXPECT_EQ(std::string(text, 7), std::string("Grace\0#", 7)) << "length + 1 bytes are written";
    for (const int too_short : {4, -1})
        EXPECT_EQ(qnl_get_participant_name(engine.handle(), 1, 1, text, too_short), QNL_ERROR_DATA_LENGTH);
    EXPECT_STREQ(text, "Grace");
    for (const auto& [room, id] : {std::pair{1, 9}, {9, 1}}) {
        text[0] = '#';
        EXPECT_EQ(qnl_get_participant_name(engine.handle(), room, id, text, 0), QNL_ERROR_NONE);
        EXPECT_STREQ(text, "");
    }
}

TEST(ExportedFunctions, NameTheirCodes) {
    EXPECT_STREQ(qnl_error_code_to_string(-9999), "QNL_ERROR_HANDLE_NULL");
    EXPECT_STREQ(qnl_error_code_to_string(-9986), "QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED");
    for (const int none : {-10000, 0, -9985, INT_MIN, INT_MAX})
        EXPECT_STREQ(qnl_error_code_to_string(none), "QNL_ERROR_NONE");
}

TEST(ExportedFunctions, RefuseTheMissingTransport) {
    const engine engine;
    log_capture log;
    EXPECT_EQ(qnl_enable_websockets(engine.handle(), false), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(qnl_send_custom_websocket_event(engine.handle(), 99, nullptr), QNL_ERROR_INVALID_CONTROL);
    EXPECT_THAT(log.take(), Each("WARNING: Websocket server is not available for the client side, windows, "
                                 "or mac versions of the library"));
}

} // namespace
