// Room configuration files: what is read, what is reported, what falls back.
#include "conference/room_layout.h"

#include "frame/sound_manager.h"
#include "kit/host.h"

#include <chrono>

namespace {

using nlohmann::json;
using test_kit::log_capture;
using namespace testing;

constexpr const char* fallback_line =
    "WARNING: The library will still function but it will use the fallback room layout";

json good_layout() {
    return json::parse(
        R"({"id":7,"desc":"four","allowParticipantStacking":false,"stackDelta":10,"openRoom":false,
        "centerPoint":{"x":0,"y":0,"z":0},
        "seats":[{"x":0,"y":0,"z":-5},{"x":5,"y":0,"z":0},{"x":0,"y":0,"z":5},{"x":-5,"y":0,"z":0}]})");
}

TEST(RoomLayout, ReadsSeatsThatLookAtTheCentreAndStacksThem) {
    log_capture log;
    const quenlis_room_layout layout("four", good_layout());
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(layout.id(), 7);
    EXPECT_FALSE(layout.open_room());
    const auto seat = [](int id, int x, int z, int azimuth) {
        return FieldsAre(id, FieldsAre(x, 0, z), FieldsAre(azimuth, 0));
    };
    EXPECT_THAT(layout.seats(),
                ElementsAre(seat(0, 0, -5, 0), seat(1, 5, 0, -90), seat(2, 0, 5, 180), seat(3, -5, 0, 90)))
        << "the layout's own ids count from 0";
    EXPECT_THAT(layout.get_seat(2), seat(2, 5, 0, -90));
    EXPECT_THAT(layout.get_seat(9), seat(9, 0, -5 + 2 * 10, 180)) << "raised past the centre, it looks back";
    for (const int none : {0, -1})
        EXPECT_THAT(layout.get_seat(none), seat(none, 0, 0, 0));

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
    EXPECT_THAT(read.get_seat(1).position, FieldsAre(-2, INT_MAX, INT_MIN));
    EXPECT_EQ(read.get_seat(6).position.z, 0 + 1);
    EXPECT_EQ(read.get_seat(INT_MAX).id, INT_MAX) << "stacked far beyond, without overflow";
}

TEST(RoomLayout, ReportsEverythingMissingBeforeItGivesUp) {
    const auto missing = [](const std::string& key) {
        return "ERROR: A Room in the Room Configuration file is missing its " + key + " property";
    };
    log_capture log;
    EXPECT_THAT(quenlis_room_layout("nothing", json("a text")).seats(), IsEmpty());
    EXPECT_THAT(log.take(),
                ElementsAre(missing("'id'"), missing("'desc'"), missing("'allowParticipantStacking'"),
                            missing("'openRoom'"), missing("'centerPoint'"), missing("'seats'"),
                            "ERROR: \n Failed to initialize room layout because: "
                            "[json.exception.type_error.304] cannot use at() with string."));

    const auto given_up = HasSubstr("Failed to initialize room layout because: [json.exception.");
    struct {
        const char* path;
        json value; // null to leave it out
        size_t seats;
        std::vector<Matcher<std::string>> lines;
    } const changes[] = {
        {"/centerPoint/z", nullptr, 0, {missing("'x','y','z' for the 'centerPoint'"), given_up}},
        {"/stackDelta", nullptr, 0, {missing("'stackDelta'"), given_up}},
        {"/seats", {{"x", 1}}, 0, {given_up}},
        {"/defaultStates", {{"2", "text"}}, 0, {"WARNING: 2 is not a valid control.", given_up}},
        {"/defaultStates", json::array({1}), 0, {given_up}},
        {"/defaultStates",
         {{"2", 1}},
         4,
         {"WARNING: 2 is not a valid control.",
          "ERROR: A Room in the Room Configuration file has an invalid default state of 2"}},
        {"/seats/1/y",
         nullptr,
         3,
         {"ERROR: A Seat in the Room Configuration file does not have all the 'x', 'y', and / or 'z' "
          "properties"}}};
    json layout;
    for (const auto& [path, value, seats, lines] : changes) {
        const json change = {{"op", value.is_null() ? "remove" : "add"}, {"path", path}, {"value", value}};
        layout = good_layout().patch(json::array({change}));
        EXPECT_EQ(quenlis_room_layout("changed", layout).seats().size(), seats) << change;
        EXPECT_THAT(log.take(), ElementsAreArray(lines)) << change;
    }
    EXPECT_EQ(quenlis_room_layout("gap", layout).get_seat(2).position.z, 5) << "closed up";
    layout.erase("seats");
    EXPECT_EQ(quenlis_room_layout("no seats", layout).id(), 7) << "what was read before stays";
}

/// What a start with this layout file logs; the engine must be usable after it.
std::vector<std::string> lines_of_start(const char* path) {
    const test_kit::temporary_directory directory;
    log_capture log;
    quenlis_sound_manager manager(path, directory.write("server.json", "{}").c_str(),
                                  {48000, 480, 2, false, 1});
    EXPECT_EQ(manager.create_room(1), QNL_ERROR_NONE);
    EXPECT_EQ(manager.add_participant(1, 1, "", {48000, 1, QNL_PARTICIPANT_REGULAR}), QNL_ERROR_NONE);
    EXPECT_FALSE(manager.room_layouts_text().empty());
    return log.take();
}

std::vector<std::string> lines_of_start_with(const std::string& bytes) {
    const test_kit::temporary_directory directory;
    return lines_of_start(directory.write("layouts.json", bytes).c_str());
}

TEST(RoomLayoutFile, FallsBackFromAnythingBroken) {
    const std::string good = test_kit::row_layout(2);
    EXPECT_THAT(lines_of_start_with(good), IsEmpty());
    for (const std::string& bytes :
         {std::string(), std::string("{"), good.substr(0, good.size() - 1), good + "x", good + '\0',
          std::string("{\"default\":\"\xff\",\"room_list\":{}}"), std::string("\0\0\0", 3),
          std::string(R"({"default":1,"room_list":{}})"), std::string(R"({"default":"0","room_list":[{}]})"),
          good + std::string(size_t{64} << 20, ' ')})
        EXPECT_THAT(lines_of_start_with(bytes), ElementsAre(fallback_line)) << bytes.substr(0, 40);

    for (const auto& [bytes, fault] : {std::pair{"{}", " is missing the 'room_list' property"},
                                       {R"({"room_list":{}})", " is missing its 'default' property"},
                                       {R"({"room_list":{},"default":"x"})",
                                        "'s 'default' property names no entry of its 'room_list' property"}})
        EXPECT_THAT(lines_of_start_with(bytes),
                    ElementsAre("WARNING: The Room Configuration file" + std::string(fault), fallback_line));
}

TEST(RoomLayoutFile, MayNest256LevelsDeep) {
    const auto nested = [](size_t levels) {
        return R"({"default":"fallback_layout","extra":)" + std::string(levels - 1, '[') +
               std::string(levels - 1, ']') + R"(,"room_list":{}})";
    };
    EXPECT_THAT(lines_of_start_with(nested(256)), Contains(HasSubstr("names no entry")));
    EXPECT_THAT(lines_of_start_with(nested(257)), ElementsAre(fallback_line));
}

/// The shortest of three starts with a file that holds that many places.
std::chrono::duration<double> time_of_start(int places) {
    std::string list = R"({"x":0,"y":0,"z":0})";
    for (int place = 1; place < places; ++place)
        list += R"(,{"x":1,"y":2,"z":3})";
    const std::string large =
        R"({"default":"row","room_list":{"row":)" + good_layout().dump() + R"(},"extra":[)" + list + "]}";
    std::chrono::duration<double> rounds[3];
    for (auto& round : rounds) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_THAT(lines_of_start_with(large), IsEmpty());
        round = std::chrono::steady_clock::now() - start;
    }
    return *std::min_element(std::begin(rounds), std::end(rounds));
}

TEST(RoomLayoutFile, OfManyPlacesIsReadInProportionalTime) {
    // Eight times the places take eight times as long; a walk over all of them for each takes sixty-four.
    EXPECT_LT(time_of_start(40000) / time_of_start(5000), 24.0);
}

TEST(RoomLayoutFile, NeedsAReadableFile) {
    const test_kit::temporary_directory directory;
    const std::string missing = directory.path_of("missing.json");
    EXPECT_THAT(lines_of_start(missing.c_str()),
                ElementsAre("WARNING: " + missing +
                                " does not exist. Please check the path to your room configuration file is "
                                "correct",
                            fallback_line));
    EXPECT_THAT(lines_of_start(directory.path().c_str()), ElementsAre(fallback_line));
    EXPECT_THAT(lines_of_start(nullptr),
                ElementsAre("WARNING: You disabled custom room layouts by using NULL "
                            "for the room layout file path.",
                            fallback_line));
}

TEST(RoomLayoutFile, KeepsTheLayoutsOfAFailedFirstAttempt) {
    const std::string row = good_layout().dump();
    test_kit::engine engine({}, {48000, 480, 2, false, 1},
                            R"({"default":"nowhere","room_list":{"row":)" + row + "}}");
    qnl_handle const handle = engine.handle();
    int layout = 0;
    qnl_get_room_layout(handle, 1, &layout);
    EXPECT_EQ(layout, 1) << "the fallback's";
    EXPECT_EQ(qnl_set_room_layout(handle, 1, 7), QNL_ERROR_NONE);
    EXPECT_EQ(qnl_set_room_layout(handle, 1, 2), QNL_ERROR_INVALID_VALUE);
    EXPECT_STREQ(
        qnl_get_json_all_room_layouts(handle),
        R"({"default":"fallback_layout","room_list":{"fallback_layout":{"allowParticipantStacking":true,)"
        R"("centerPoint":{"x":0,"y":0,"z":0},"desc":"This is the fallback room layout when your custom room )"
        R"(layout file is missing or corrupted","id":1,"openRoom":true,"seats":[{"x":0,"y":0,"z":0}]}}})");
}

} // namespace
