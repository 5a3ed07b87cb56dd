// Seats, free positions and changes of layout.
#include "kit/host.h"

namespace {

using test_kit::log_capture;
using testing::ElementsAre;
using testing::FieldsAre;

/// Layouts 1 "seated" (default, four seats, default states in any case), 2 "open", 3 "empty" (no seats), 4 "two".
const char* const layouts = R"({"default":"seated","room_list":{
  "seated":{"id":1,"desc":"","allowParticipantStacking":false,"stackDelta":10,"openRoom":false,
    "centerPoint":{"x":0,"y":0,"z":0},"defaultStates":{"QNL_CONTROL_AGC_ENABLE":1,"qnl_control_anc_enable":1},
    "seats":[{"x":10,"y":0,"z":0},{"x":0,"y":0,"z":10},{"x":-10,"y":0,"z":0},{"x":0,"y":0,"z":-10}]},
  "open":{"id":2,"desc":"","allowParticipantStacking":true,"openRoom":true,
    "centerPoint":{"x":0,"y":0,"z":0},"seats":[{"x":1,"y":2,"z":3}]},
  "empty":{"id":3,"desc":"","allowParticipantStacking":true,"openRoom":false,
    "centerPoint":{"x":0,"y":0,"z":0},"seats":[]},
  "two":{"id":4,"desc":"","allowParticipantStacking":true,"openRoom":false,
    "centerPoint":{"x":0,"y":0,"z":0},"defaultStates":{"QNL_CONTROL_MASTER_GAIN":50},
    "seats":[{"x":7,"y":0,"z":0},{"x":8,"y":0,"z":0}]}}})";

/// Room 1 of an engine with these layouts.
class Seats : public testing::Test, public test_kit::engine {
protected:
    Seats() : engine({}, {48000, 480, 2, false, 1}, layouts) {}

    qnl_error_code move(int id, int seat) { return qnl_set_participant_seat(handle(), 1, id, seat); }
    qnl_error_code place(int id, qnl_position position, qnl_heading heading = {0, 0}) {
        return qnl_set_participant_position(handle(), 1, id, position, heading);
    }
    qnl_error_code change_layout(int layout) { return qnl_set_room_layout(handle(), 1, layout); }
    /// Moves somebody, and gives the seat he has then.
    int seat_after_move(int id, int seat_number) {
        EXPECT_EQ(move(id, seat_number), QNL_ERROR_NONE);
        return seat(id).id;
    }

    log_capture log_;
};
using Layouts = Seats;
using Positions = Seats;

TEST_F(Seats, FillFromOneUpwardAndStackInAFullRoom) {
    for (int id = 1; id <= 5; ++id) {
        EXPECT_EQ(add(id), QNL_ERROR_NONE);
        EXPECT_EQ(seat(id).id, id);
        EXPECT_EQ(get(id, QNL_CONTROL_ANC_ENABLE), 1);
    }
    EXPECT_THAT(seat(5).position, FieldsAre(10, 0, 10));
    qnl_remove_participant(handle(), 1, 2);
    add(6);
    EXPECT_EQ(seat(6).id, 2) << "a freed seat is taken again";
}

TEST_F(Seats, TakenMeanTheNextFreeLayer) {
    for (const int id : {1, 2, 3, 4, 5})
        add(id);
    EXPECT_EQ(seat_after_move(1, 1), 1);
    EXPECT_EQ(seat_after_move(5, 1), 5) << "it sits on entry 1 already";
    EXPECT_EQ(seat_after_move(1, 2), 6);
    EXPECT_EQ(seat_after_move(3, 2), 10);
    EXPECT_EQ(seat(3).position.z, 10 + 2 * 10);
    EXPECT_EQ(seat_after_move(3, 10), 14) << "a higher number counts as taken by oneself";
    EXPECT_EQ(seat_after_move(4, 0), 0);
    EXPECT_EQ(seat(4).position.z, 0);
    const int last = std::numeric_limits<int>::max();
    EXPECT_EQ(seat_after_move(4, last), last);
    EXPECT_LT(seat_after_move(5, last), 0) << "the next layer is beyond 32 bits";
}

TEST_F(Seats, RefuseNegativeNumbersBeforeUnknownPeople) {
    add(1);
    EXPECT_EQ(move(9, -1), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(move(9, 1), QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_THAT(log_.take(), ElementsAre("WARNING: seat index -1 does not exist in room layout 1.",
                                         "WARNING: The participant id 9 is not in room 1"));
    EXPECT_EQ(seat(1).id, 1);
}

TEST_F(Layouts, WithoutSeatsAreRefusedBeforeAnythingChanges) {
    ASSERT_EQ(change_layout(3), QNL_ERROR_NONE) << "nobody needs a seat";
    EXPECT_EQ(add(1), QNL_ERROR_INVALID_VALUE);
    EXPECT_THAT(log_.take(), ElementsAre("WARNING: Room layout 3 (empty) has no seats."));
    EXPECT_EQ(participant_count(), 0);

    change_layout(1);
    add(1);
    EXPECT_EQ(change_layout(3), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(seat(1).position.x, 10);
    move(1, 0);
    EXPECT_EQ(change_layout(3), QNL_ERROR_NONE) << "seat 0 is none of the layout's";
    EXPECT_EQ(move(1, 1), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(move(1, 0), QNL_ERROR_INVALID_VALUE);
}

TEST_F(Layouts, SeatEverybodyAndApplyDefaults) {
    change_layout(2);
    for (const int id : {1, 2, 3})
        add(id);
    EXPECT_EQ(seat(1).id, -1) << "an open room seats nobody";
    EXPECT_EQ(get(1, QNL_CONTROL_ANC_ENABLE), 0) << "and applies no defaults";
    EXPECT_EQ(seat_after_move(2, 1), -1) << "unseated counts as entry 1, so nothing moves";
    change_layout(4);
    for (const int id : {1, 2, 3})
        EXPECT_EQ(seat(id).id, id);
    EXPECT_EQ(seat(3).position.x, 7);
    EXPECT_EQ(get(3, QNL_CONTROL_MASTER_GAIN), 50);
    set(3, QNL_CONTROL_MASTER_GAIN, 100);
    EXPECT_EQ(change_layout(4), QNL_ERROR_NONE);
    EXPECT_EQ(get(3, QNL_CONTROL_MASTER_GAIN), 100) << "the same layout changes nothing";
    EXPECT_EQ(change_layout(1), QNL_ERROR_NONE);
    EXPECT_EQ(seat(3).id, 3) << "numbers are kept";
    EXPECT_EQ(seat(3).position.x, -10);
    EXPECT_EQ(change_layout(2), QNL_ERROR_NONE);
    EXPECT_EQ(seat(3).id, 3) << "also into an open layout";
    EXPECT_EQ(change_layout(99), QNL_ERROR_INVALID_VALUE);
    EXPECT_THAT(log_.take(), ElementsAre("WARNING: Room layout id 99 does not exist."));
}

TEST_F(Positions, AreForOpenRoomsOnly) {
    add(1);
    EXPECT_EQ(place(1, {4, 5, 6}), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(qnl_set_participant_position(handle(), 77, 1, {4, 5, 6}, {181, 0}), QNL_ERROR_INVALID_HEADING);
    EXPECT_THAT(
        log_.take(),
        ElementsAre("WARNING: You can only use set_position for an open room. Change room 1 to an open "
                    "room layout to use set_position",
                    "WARNING: You provided {181, 0} but your heading must have an azimuth between "
                    "-180 and 180 and an elevation between -90 and 90"));
    change_layout(2);
    EXPECT_EQ(place(1, {4, 5, 6}, {-180, 90}), QNL_ERROR_NONE);
    for (const qnl_heading bad : {qnl_heading{-181, 0}, {0, 91}, {0, -91}})
        EXPECT_EQ(place(1, {}, bad), QNL_ERROR_INVALID_HEADING);
    EXPECT_THAT(seat(1), FieldsAre(-1, FieldsAre(4, 5, 6), FieldsAre(-180, 90)));
}

TEST_F(Positions, AreHeardFromTheListenersNextOutput) {
    add(1); // at 10, 0, 0, facing -90
    add(2); // at 0, 0, 10, facing 180
    EXPECT_THAT(heard(1, 2), ElementsAre(0, 0, 0));
    pull(1);
    EXPECT_THAT(heard(1, 2), ElementsAre(45, 0, 14));
    EXPECT_THAT(heard(2, 1), ElementsAre(0, 0, 0)) << "each listener has its own pace";
    move(2, 3); // to -10, 0, 0
    EXPECT_THAT(heard(1, 2), ElementsAre(45, 0, 14));
    pull(1);
    pull(2);
    EXPECT_THAT(heard(1, 2), ElementsAre(0, 0, 20));
    EXPECT_THAT(heard(2, 1), ElementsAre(0, 0, 20));
    change_layout(4); // to 7, 0, 0 facing -90, and 7, 0, 0 again
    pull(1);
    EXPECT_THAT(heard(1, 2), ElementsAre(0, 0, 0));
}

TEST_F(Positions, OfFarSourcesReadBackWholeAndSomeReadersAreRefused) {
    change_layout(2);
    add(1);
    add(2);
    add(3, 1, QNL_PARTICIPANT_SOURCE_ONLY);
    place(2, {0, 0, 1000});
    pull(1);
    EXPECT_THAT(heard(1, 2), ElementsAre(0, 0, 1000));
    int unused = 0;
    const auto code_of = [&](int listener, int source) {
        return qnl_get_participant_spherical(handle(), 1, listener, source, &unused, &unused, &unused);
    };
    EXPECT_EQ(code_of(2, 2), QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_EQ(code_of(3, 1), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(code_of(9, 8), QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_EQ(code_of(3, 8), QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_THAT(
        log_.take(),
        ElementsAre("WARNING: You must use a different listener_id and source_id for "
                    "qnl_get_participant_spherical",
                    "WARNING: Participant 3 in room 1 is source only and therefore doesn't experience 3D",
                    "WARNING: The participant id 9 is not in room 1",
                    "WARNING: The participant id 8 is not in room 1"));
}

} // namespace
