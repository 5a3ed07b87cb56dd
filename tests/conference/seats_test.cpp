// Seats, free positions and changes of layout.
#include "kit/engine.h"
#include "kit/log_capture.h"
#include "quenlis.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

using test_kit::engine;
using test_kit::log_capture;
using testing::ElementsAre;

constexpr qnl_library_configuration library{48000, 480, 2, false, 1};

/// Layouts 1 "seated" (default, four seats, anc on by default), 2 "open", 3 "empty" (no seats), 4 "two".
const char* const layouts = R"({"default":"seated","room_list":{
  "seated":{"id":1,"desc":"","allowParticipantStacking":false,"stackDelta":10,"openRoom":false,
    "centerPoint":{"x":0,"y":0,"z":0},"defaultStates":{"QNL_CONTROL_ANC_ENABLE":1},
    "seats":[{"x":10,"y":0,"z":0},{"x":0,"y":0,"z":10},{"x":-10,"y":0,"z":0},{"x":0,"y":0,"z":-10}]},
  "open":{"id":2,"desc":"","allowParticipantStacking":true,"openRoom":true,
    "centerPoint":{"x":0,"y":0,"z":0},"seats":[{"x":1,"y":2,"z":3}]},
  "empty":{"id":3,"desc":"","allowParticipantStacking":true,"openRoom":false,
    "centerPoint":{"x":0,"y":0,"z":0},"seats":[]},
  "two":{"id":4,"desc":"","allowParticipantStacking":true,"openRoom":false,
    "centerPoint":{"x":0,"y":0,"z":0},"defaultStates":{"QNL_CONTROL_MASTER_GAIN":50},
    "seats":[{"x":7,"y":0,"z":0},{"x":8,"y":0,"z":0}]}}})";

qnl_error_code move(engine& engine, int id, int seat) {
    return qnl_set_participant_seat(engine.handle(), 1, id, seat);
}

qnl_error_code change_layout(engine& engine, int layout) {
    return qnl_set_room_layout(engine.handle(), 1, layout);
}

std::array<int, 3> heard(engine& engine, int listener, int source) {
    std::array<int, 3> place{};
    EXPECT_EQ(
        qnl_get_participant_spherical(engine.handle(), 1, listener, source, &place[0], &place[1], &place[2]),
        QNL_ERROR_NONE);
    return place;
}

TEST(Seats, FillFromOneUpwardAndStackInAFullRoom) {
    engine engine(library, layouts);
    for (int id = 1; id <= 5; ++id) {
        EXPECT_EQ(engine.add(id), QNL_ERROR_NONE);
        EXPECT_EQ(engine.seat(id).id, id);
        EXPECT_EQ(engine.get(id, QNL_CONTROL_ANC_ENABLE), 1);
    }
    EXPECT_EQ(engine.seat(5).position.x, 10);
    EXPECT_EQ(engine.seat(5).position.z, 10);
    qnl_remove_participant(engine.handle(), 1, 2);
    engine.add(6);
    EXPECT_EQ(engine.seat(6).id, 2) << "a freed seat is taken again";
}

TEST(Seats, TakenMeansTheNextFreeLayer) {
    engine engine(library, layouts);
    for (int id = 1; id <= 5; ++id)
        engine.add(id);
    EXPECT_EQ(move(engine, 1, 1), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(1).id, 1);
    EXPECT_EQ(move(engine, 5, 1), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(5).id, 5) << "it sits on entry 1 already";
    EXPECT_EQ(move(engine, 1, 2), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(1).id, 6);
    EXPECT_EQ(move(engine, 3, 2), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(3).id, 10);
    EXPECT_EQ(engine.seat(3).position.z, 10 + 2 * 10);
    EXPECT_EQ(move(engine, 3, 10), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(3).id, 14) << "a higher number counts as taken by oneself";
    EXPECT_EQ(move(engine, 4, 0), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(4).id, 0);
    EXPECT_EQ(engine.seat(4).position.z, 0);
    const int last = std::numeric_limits<int>::max();
    EXPECT_EQ(move(engine, 4, last), QNL_ERROR_NONE);
    EXPECT_EQ(move(engine, 5, last), QNL_ERROR_NONE) << "the next layer is beyond 32 bits";
    EXPECT_LT(engine.seat(5).id, 0);
}

TEST(Seats, RefuseNegativeNumbersAndUnknownPeople) {
    engine engine(library, layouts);
    engine.add(1);
    log_capture log(QNL_LOG_WARNING);
    EXPECT_EQ(move(engine, 9, -1), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(move(engine, 9, 1), QNL_ERROR_INVALID_PARTICIPANT_ID);
    const auto lines = log.take();
    EXPECT_EQ(lines[0].message, "seat index -1 does not exist in room layout 1.");
    EXPECT_EQ(lines[1].message, "The participant id 9 is not in room 1");
    EXPECT_EQ(engine.seat(1).id, 1);
}

TEST(Seats, ALayoutWithoutThemIsRefusedBeforeAnythingChanges) {
    engine engine(library, layouts);
    ASSERT_EQ(change_layout(engine, 3), QNL_ERROR_NONE) << "nobody needs a seat";
    log_capture log(QNL_LOG_WARNING);
    EXPECT_EQ(engine.add(1), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(log.take().back().message, "Room layout 3 (empty) has no seats.");
    int count = -1;
    qnl_get_participant_count(engine.handle(), 1, &count);
    EXPECT_EQ(count, 0);

    change_layout(engine, 1);
    engine.add(1);
    EXPECT_EQ(change_layout(engine, 3), QNL_ERROR_INVALID_VALUE);
    int layout = 0;
    qnl_get_room_layout(engine.handle(), 1, &layout);
    EXPECT_EQ(layout, 1);
    move(engine, 1, 0);
    EXPECT_EQ(change_layout(engine, 3), QNL_ERROR_NONE) << "seat 0 is none of the layout's";
    EXPECT_EQ(move(engine, 1, 1), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(move(engine, 1, 0), QNL_ERROR_INVALID_VALUE);
}

TEST(Layouts, ChangeSeatsEverybodyAndAppliesDefaults) {
    engine engine(library, layouts);
    change_layout(engine, 2);
    for (const int id : {1, 2, 3})
        engine.add(id);
    EXPECT_EQ(engine.seat(1).id, -1) << "an open room seats nobody";
    EXPECT_EQ(engine.get(1, QNL_CONTROL_ANC_ENABLE), 0) << "and applies no defaults";
    move(engine, 2, 1); // an open room does not refuse it; unseated counts as entry 1, so nothing moves
    EXPECT_EQ(engine.seat(2).id, -1);
    change_layout(engine, 4);
    EXPECT_EQ(engine.seat(1).id, 1);
    EXPECT_EQ(engine.seat(2).id, 2);
    EXPECT_EQ(engine.seat(3).id, 3);
    EXPECT_EQ(engine.seat(3).position.x, 7);
    EXPECT_EQ(engine.get(3, QNL_CONTROL_MASTER_GAIN), 50);
    engine.set(3, QNL_CONTROL_MASTER_GAIN, 100);
    EXPECT_EQ(change_layout(engine, 4), QNL_ERROR_NONE);
    EXPECT_EQ(engine.get(3, QNL_CONTROL_MASTER_GAIN), 100) << "the same layout changes nothing";
    EXPECT_EQ(change_layout(engine, 1), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(3).id, 3) << "numbers are kept";
    EXPECT_EQ(engine.seat(3).position.x, -10);
    EXPECT_EQ(change_layout(engine, 2), QNL_ERROR_NONE);
    EXPECT_EQ(engine.seat(3).id, 3) << "also into an open layout";
    EXPECT_EQ(change_layout(engine, 99), QNL_ERROR_INVALID_VALUE);
}

TEST(Positions, AreForOpenRoomsOnly) {
    engine engine(library, layouts);
    engine.add(1);
    const qnl_position here{4, 5, 6};
    log_capture log(QNL_LOG_WARNING);
    EXPECT_EQ(qnl_set_participant_position(engine.handle(), 1, 1, here, {0, 0}), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(qnl_set_participant_position(engine.handle(), 77, 1, here, {181, 0}),
              QNL_ERROR_INVALID_HEADING);
    EXPECT_EQ(log.take().back().message,
              "You provided {181, 0} but your heading must have an azimuth between -180 "
              "and 180 and an elevation between -90 and 90");
    change_layout(engine, 2);
    EXPECT_EQ(qnl_set_participant_position(engine.handle(), 1, 1, here, {-180, 90}), QNL_ERROR_NONE);
    const qnl_seat seat = engine.seat(1);
    EXPECT_EQ(seat.id, -1);
    EXPECT_EQ(seat.position.y, 5);
    EXPECT_EQ(seat.heading.azimuth_heading, -180);
    for (const qnl_heading bad : {qnl_heading{-181, 0}, {0, 91}, {0, -91}})
        EXPECT_EQ(qnl_set_participant_position(engine.handle(), 1, 1, {}, bad), QNL_ERROR_INVALID_HEADING);
    EXPECT_EQ(engine.seat(1).position.y, 5);
}

TEST(Positions, AreHeardFromTheListenersNextOutput) {
    engine engine(library, layouts);
    engine.add(1); // at 10, 0, 0, facing -90
    engine.add(2); // at 0, 0, 10, facing 180
    EXPECT_THAT(heard(engine, 1, 2), ElementsAre(0, 0, 0));
    engine.pull(1);
    EXPECT_THAT(heard(engine, 1, 2), ElementsAre(45, 0, 14));
    EXPECT_THAT(heard(engine, 2, 1), ElementsAre(0, 0, 0)) << "each listener has its own pace";
    move(engine, 2, 3); // to -10, 0, 0
    EXPECT_THAT(heard(engine, 1, 2), ElementsAre(45, 0, 14));
    engine.pull(1);
    engine.pull(2);
    EXPECT_THAT(heard(engine, 1, 2), ElementsAre(0, 0, 20));
    EXPECT_THAT(heard(engine, 2, 1), ElementsAre(0, 0, 20));
}

TEST(Positions, OfFarSourcesReadBackWhole) {
    engine engine(library, layouts);
    change_layout(engine, 2);
    engine.add(1);
    engine.add(2);
    engine.add(3, 1, QNL_PARTICIPANT_SOURCE_ONLY);
    for (const int distance : {299, 300, 1000}) {
        qnl_set_participant_position(engine.handle(), 1, 2, {0, 0, distance}, {0, 0});
        engine.pull(1);
        EXPECT_THAT(heard(engine, 1, 2), ElementsAre(0, 0, distance));
    }
    int azimuth = 5;
    int elevation = 5;
    int distance = 5;
    const auto spherical = [&](int listener, int source) {
        return qnl_get_participant_spherical(engine.handle(), 1, listener, source, &azimuth, &elevation,
                                             &distance);
    };
    log_capture log(QNL_LOG_WARNING);
    EXPECT_EQ(spherical(2, 2), QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_EQ(spherical(3, 1), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(azimuth + elevation + distance, 0);
    EXPECT_EQ(spherical(9, 8), QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_EQ(qnl_get_participant_spherical(engine.handle(), 1, 1, 2, nullptr, &elevation, &distance),
              QNL_ERROR_DATA_NULL);
    const auto lines = log.take();
    EXPECT_EQ(lines[0].message,
              "You must use a different listener_id and source_id for qnl_get_participant_spherical");
    EXPECT_EQ(lines[1].message, "Participant 3 in room 1 is source only and therefore doesn't experience 3D");
    EXPECT_EQ(lines[2].message, "The participant id 9 is not in room 1");
}

} // namespace
