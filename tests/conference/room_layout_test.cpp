// Room configuration files: what is read, what is reported, what falls back.
#include "conference/participant.h"
#include "conference/room_layout.h"
#include "frame/exception.h"
#include "frame/sound_manager.h"
#include "kit/engine.h"
#include "kit/log_capture.h"
#include "kit/temporary_directory.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using nlohmann::json;
using test_kit::log_capture;
using test_kit::log_entry;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* fallback_line =
    "The library will still function but it will use the fallback room layout";

json good_layout() {
    return json::parse(
        R"({"id":7,"desc":"four","allowParticipantStacking":false,"stackDelta":10,"openRoom":false,
        "centerPoint":{"x":0,"y":0,"z":0},
        "seats":[{"x":0,"y":0,"z":-5},{"x":5,"y":0,"z":0},{"x":0,"y":0,"z":5},{"x":-5,"y":0,"z":0}]})");
}

std::vector<std::string> messages(log_capture& log) {
    std::vector<std::string> texts;
    for (const log_entry& entry : log.take())
        texts.push_back(entry.message);
    return texts;
}

TEST(RoomLayout, ReadsSeatsThatLookAtTheCentreAndStacksThem) {
    log_capture log;
    const quenlis_room_layout layout("four", good_layout());
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(layout.id(), 7);
    EXPECT_FALSE(layout.open_room());
    ASSERT_EQ(layout.seats().size(), 4U);
    EXPECT_EQ(layout.seats()[2].id, 2) << "the layout's own ids count from 0";
    EXPECT_EQ(layout.get_seat(2).heading.azimuth_heading, -90);

    const qnl_seat ninth = layout.get_seat(9);
    EXPECT_EQ(ninth.id, 9);
    EXPECT_EQ(ninth.position.z, -5 + 2 * 10);
    EXPECT_EQ(ninth.heading.azimuth_heading, 180) << "raised past the centre, it looks back";
    for (const int none : {0, -1}) {
        const qnl_seat seat = layout.get_seat(none);
        EXPECT_EQ(seat.id, none);
        EXPECT_EQ(seat.position.z, 0);
    }

    json stacking = good_layout();
    stacking["allowParticipantStacking"] = true;
    stacking.erase("stackDelta");
    EXPECT_EQ(quenlis_room_layout("stack", stacking).get_seat(9).position.z, -5);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(RoomLayout, CutsNumbersTo32Bits) {
    json layout = good_layout();
    layout["id"] = 4294967298;        // wraps
    layout["stackDelta"] = true;      // a boolean counts as a number
    layout["centerPoint"]["x"] = 2.9; // cut towards zero
    layout["seats"][0] = {{"x", -2.9}, {"y", 1e300}, {"z", -1e300}};
    const quenlis_room_layout read("numbers", layout);
    EXPECT_EQ(read.id(), 2);
    const qnl_position first = read.get_seat(1).position;
    EXPECT_EQ(first.x, -2);
    EXPECT_EQ(first.y, 2147483647);
    EXPECT_EQ(first.z, -2147483647 - 1);
    EXPECT_EQ(read.get_seat(6).position.z, 0 + 1);
    EXPECT_EQ(read.get_seat(2147483647).id, 2147483647) << "stacked far beyond, without overflow";
}

TEST(RoomLayout, ReportsEverythingMissingBeforeItGivesUp) {
    log_capture log;
    EXPECT_THAT(quenlis_room_layout("nothing", json("a text")).seats(), IsEmpty());
    EXPECT_THAT(
        log.take(),
        ElementsAre(
            log_entry{QNL_LOG_ERROR, "A Room in the Room Configuration file is missing its 'id' property"},
            log_entry{QNL_LOG_ERROR, "A Room in the Room Configuration file is missing its 'desc' property"},
            log_entry{QNL_LOG_ERROR, "A Room in the Room Configuration file is missing its "
                                     "'allowParticipantStacking' property"},
            log_entry{QNL_LOG_ERROR,
                      "A Room in the Room Configuration file is missing its 'openRoom' property"},
            log_entry{QNL_LOG_ERROR,
                      "A Room in the Room Configuration file is missing its 'centerPoint' property"},
            log_entry{QNL_LOG_ERROR, "A Room in the Room Configuration file is missing its 'seats' property"},
            log_entry{QNL_LOG_ERROR, "\n Failed to initialize room layout because: "
                                     "[json.exception.type_error.304] cannot use at() with string."}));

    json no_centre_z = good_layout();
    no_centre_z["centerPoint"].erase("z");
    EXPECT_EQ(quenlis_room_layout("centre", no_centre_z).id(), 7) << "what was read before stays";
    EXPECT_THAT(
        messages(log),
        ElementsAre(
            "A Room in the Room Configuration file is missing its 'x','y','z' for the "
            "'centerPoint' property",
            HasSubstr("Failed to initialize room layout because: [json.exception.out_of_range.403]")));

    json no_delta = good_layout();
    no_delta.erase("stackDelta");
    EXPECT_THAT(quenlis_room_layout("delta", no_delta).seats(), IsEmpty());
    EXPECT_THAT(messages(log),
                ElementsAre("A Room in the Room Configuration file is missing its 'stackDelta' property",
                            HasSubstr("Failed to initialize room layout because:")));
}

TEST(RoomLayout, ClosesUpSeatsBehindABadEntry) {
    json layout = good_layout();
    layout["seats"][1].erase("y");
    log_capture log;
    const quenlis_room_layout read("gap", layout);
    EXPECT_EQ(read.seats().size(), 3U);
    EXPECT_EQ(read.get_seat(2).position.z, 5);
    EXPECT_THAT(messages(log),
                ElementsAre("A Seat in the Room Configuration file does not have all the 'x', 'y', "
                            "and / or 'z' properties"));
    layout["seats"] = {{"x", 1}};
    EXPECT_THAT(quenlis_room_layout("object", layout).seats(), IsEmpty());
    EXPECT_THAT(messages(log), ElementsAre(HasSubstr("Failed to initialize room layout because:")));
}

TEST(RoomLayout, ReadsDefaultStatesInAnyCase) {
    json layout = good_layout();
    layout["defaultStates"] = {{"qnl_control_anc_enable", 1}, {"QNL_CONTROL_DEVICE", 2}, {"no_control", 1}};
    log_capture log;
    const quenlis_room_layout read("states", layout);
    EXPECT_EQ(read.default_states().size(), 2U);
    EXPECT_EQ(read.default_states().at(QNL_CONTROL_ANC_ENABLE), 1);
    EXPECT_EQ(read.seats().size(), 4U);
    EXPECT_THAT(
        messages(log),
        ElementsAre("no_control is not a valid control.",
                    "A Room in the Room Configuration file has an invalid default state of no_control"));

    layout["defaultStates"] = {{"a", "text"}};
    EXPECT_THAT(quenlis_room_layout("bad value", layout).seats(), IsEmpty());
    layout["defaultStates"] = json::array({1});
    EXPECT_THAT(quenlis_room_layout("bad type", layout).seats(), IsEmpty());
}

TEST(RoomLayout, RefusesASeatItDoesNotHave) {
    json layout = good_layout();
    layout["seats"] = json::array();
    const quenlis_room_layout empty("bare", layout);
    log_capture log;
    try {
        empty.get_seat(1);
        ADD_FAILURE() << "a seat of a layout without seats";
    } catch (const quenlis_exception& refusal) {
        EXPECT_EQ(refusal.code(), QNL_ERROR_INVALID_VALUE);
    }
    EXPECT_THAT(log.take(), ElementsAre(log_entry{QNL_LOG_WARNING, "Room layout 7 (bare) has no seats."}));
    EXPECT_EQ(empty.get_seat(0).id, 0);
}

/// What a start with these bytes as the layout file logs; the engine must be usable after it.
std::vector<std::string> lines_of_start_with(const std::string& bytes) {
    const test_kit::temporary_directory directory;
    const std::string path = directory.write("layouts.json", bytes);
    log_capture log(QNL_LOG_WARNING);
    quenlis_sound_manager manager(path.c_str(), {48000, 480, 2, false, 1});
    std::vector<std::string> lines = messages(log);
    EXPECT_EQ(manager.create_room(1), QNL_ERROR_NONE);
    EXPECT_EQ(manager.add_participant(1, 1, "", {48000, 1, QNL_PARTICIPANT_REGULAR}), QNL_ERROR_NONE);
    EXPECT_FALSE(manager.room_layouts_text().empty());
    return lines;
}

TEST(RoomLayoutFile, FallsBackFromAnythingBroken) {
    const std::string good = test_kit::row_layout(2);
    const std::string deep(300, '[');
    for (const std::string& bytes :
         {std::string(), std::string("{"), good.substr(0, good.size() - 1), good + "x", good + '\0',
          deep + std::string(300, ']'), std::string("{\"default\":\"\xff\",\"room_list\":{}}"),
          std::string("\0\0\0", 3), std::string(R"({"default":1,"room_list":{}})"),
          std::string(R"({"default":"0","room_list":[{}]})")})
        EXPECT_THAT(lines_of_start_with(bytes), ElementsAre(fallback_line)) << bytes.substr(0, 40);

    EXPECT_THAT(
        lines_of_start_with("{}"),
        ElementsAre("The Room Configuration file is missing the 'room_list' property", fallback_line));
    EXPECT_THAT(lines_of_start_with(R"({"room_list":{}})"),
                ElementsAre("The Room Configuration file is missing its 'default' property", fallback_line));
    EXPECT_THAT(lines_of_start_with(R"({"room_list":{},"default":"x"})"),
                ElementsAre(HasSubstr("'default' property names no entry"), fallback_line));
    EXPECT_THAT(lines_of_start_with(good), IsEmpty());
}

TEST(RoomLayoutFile, CountsTheLevelsOfNesting) {
    const auto nested = [](size_t levels) {
        return R"({"default":"fallback_layout","extra":)" + std::string(levels - 1, '[') +
               std::string(levels - 1, ']') + R"(,"room_list":{}})";
    };
    EXPECT_THAT(lines_of_start_with(nested(256)), Contains(HasSubstr("names no entry")))
        << "256 levels parse";
    EXPECT_THAT(lines_of_start_with(nested(257)), ElementsAre(fallback_line));
}

TEST(RoomLayoutFile, OfAnySizeIsReadInProportionalTime) {
    std::string seats = R"({"x":0,"y":0,"z":0})";
    for (int seat = 0; seat < 80000; ++seat)
        seats += R"(,{"x":1,"y":2,"z":3})";
    const std::string layout = good_layout().dump();
    const std::string large =
        R"({"default":"row","room_list":{"row":)" + layout + R"(},"extra":[)" + seats + "]}";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(lines_of_start_with(large), IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5))
        << "squared, it takes minutes";
    EXPECT_THAT(lines_of_start_with(std::string((size_t{64} << 20) + 1, ' ')), ElementsAre(fallback_line));
}

TEST(RoomLayoutFile, NeedsAReadableFile) {
    const test_kit::temporary_directory directory;
    const std::string missing = directory.path_of("missing.json");
    log_capture log(QNL_LOG_WARNING);
    const qnl_library_configuration configuration{48000, 480, 2, false, 1};
    const quenlis_sound_manager without(missing.c_str(), configuration);
    EXPECT_THAT(messages(log),
                ElementsAre(missing +
                                " does not exist. Please check the path to your room configuration file is "
                                "correct",
                            fallback_line));
    const quenlis_sound_manager of_directory(directory.path().c_str(), configuration);
    EXPECT_THAT(messages(log), ElementsAre(fallback_line));
    const quenlis_sound_manager null(nullptr, configuration);
    EXPECT_THAT(messages(log),
                ElementsAre("You disabled custom room layouts by using NULL for the room layout file path.",
                            fallback_line));
}

TEST(RoomLayoutFile, KeepsTheLayoutsOfAFailedFirstAttempt) {
    const test_kit::temporary_directory directory;
    const std::string path = directory.write("layouts.json", R"({"default":"nowhere","room_list":{"row":)" +
                                                                 good_layout().dump() + "}}");
    quenlis_sound_manager manager(path.c_str(), {48000, 480, 2, false, 1});
    ASSERT_NE(manager.get_room_layout(7), nullptr);
    ASSERT_NE(manager.get_room_layout(1), nullptr);
    EXPECT_EQ(manager.get_room_layout(1)->name(), "fallback_layout");
    EXPECT_EQ(manager.get_room_layout(2), nullptr);
    int layout = 0;
    manager.create_room(1);
    manager.get_layout_of_room(1, &layout);
    EXPECT_EQ(layout, 1);
    EXPECT_EQ(manager.set_room_layout(1, 7), QNL_ERROR_NONE);
    EXPECT_EQ(json::parse(manager.room_layouts_text())["room_list"].size(), 1U)
        << "the text is the fallback's";
}

} // namespace
