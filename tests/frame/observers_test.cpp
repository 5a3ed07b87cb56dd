// What observers hear, in which order, and what they may do.
#include "frame/exception.h"
#include "kit/host.h"

namespace {

using test_kit::engine;
using namespace testing;

struct observer : qnl_event_manager {
    MOCK_METHOD(void, create_room_event, (int room), (override));
    MOCK_METHOD(void, destroy_room_event, (int room), (override));
    MOCK_METHOD(void, add_participant_event, (int room, int id, const char*, qnl_participant_configuration),
                (override));
    MOCK_METHOD(void, remove_participant_event, (int room, int id), (override));
    MOCK_METHOD(void, set_participant_seat_event, (int room, int id, qnl_seat), (override));
    MOCK_METHOD(void, set_participant_position_event, (int room, int id, qnl_position, qnl_heading),
                (override));
    MOCK_METHOD(void, set_participant_state_event, (int room, int id, qnl_audio_control, int), (override));
    MOCK_METHOD(void, set_all_participants_state_event, (int room, qnl_audio_control, int), (override));
    MOCK_METHOD(void, set_room_layout_event, (int room, int layout), (override));
    MOCK_METHOD(void, set_name_event, (int room, int id, const char*), (override));
};

TEST(Observers, HearEveryChangeAndTheLogWritesItDown) {
    StrictMock<observer> heard;
    const InSequence in_this_order;
    EXPECT_CALL(heard, create_room_event(4));
    EXPECT_CALL(heard, add_participant_event(4, 5, StrEq(""), FieldsAre(48000, 2, 2)));
    EXPECT_CALL(heard, set_participant_position_event(4, 5, FieldsAre(1, 2, 3), FieldsAre(4, 5)));
    EXPECT_CALL(heard, set_participant_seat_event(4, 5, FieldsAre(-1, FieldsAre(1, 2, 3), _)));
    EXPECT_CALL(heard, set_participant_state_event(4, 5, QNL_CONTROL_MUTE_ENABLE, 1));
    EXPECT_CALL(heard, set_participant_state_event(4, 5, QNL_CONTROL_MIXING_3D_ENABLE, 1));
    EXPECT_CALL(heard, set_all_participants_state_event(4, QNL_CONTROL_DEVICE, 2));
    EXPECT_CALL(heard, set_room_layout_event(4, 1));
    EXPECT_CALL(heard, set_name_event(4, 5, StrEq("Ada")));
    EXPECT_CALL(heard, remove_participant_event(4, 5));
    EXPECT_CALL(heard, destroy_room_event(4));
    engine engine;
    qnl_handle const handle = engine.handle();
    qnl_add_event_manager(handle, &heard);
    test_kit::log_capture log(QNL_LOG_INFO);

    qnl_create_room(handle, 4);
    qnl_add_participant(handle, 4, 5, nullptr, {48000, 2, QNL_PARTICIPANT_SOURCE_ONLY});
    qnl_set_participant_position(handle, 4, 5, {1, 2, 3}, {4, 5});
    qnl_set_participant_seat(handle, 4, 5, 1);
    qnl_set_participant_state(handle, 4, 5, QNL_CONTROL_MUTE_ENABLE, 1);
    qnl_set_participant_state(handle, 4, 5, QNL_CONTROL_MIXING_3D_ENABLE, 1); // stored and refused
    qnl_set_all_participants_state(handle, 4, QNL_CONTROL_DEVICE, 2);
    qnl_set_room_layout(handle, 4, 1);
    qnl_set_participant_name(handle, 4, 5, "Ada");
    qnl_remove_participant(handle, 4, 5);
    qnl_destroy_room(handle, 4);
    EXPECT_THAT(
        log.take(),
        ElementsAre("INFO: A new room with id 4 was created",
                    "INFO: A new participant with id 5 has been added to room 4",
                    "INFO: Participant 5 in room 4 has changed position to {1, 2, 3} and heading {4, 5}",
                    "INFO: Participant 5 in room 4 has moved to seat 1",
                    "INFO: Participant 5 in room 4 set QNL_CONTROL_MUTE_ENABLE to 1",
                    "WARNING: 3D Mixing is not available in the client side version of the Quenlis libraries",
                    "INFO: Participant 5 in room 4 set QNL_CONTROL_MIXING_3D_ENABLE to 1",
                    "INFO: Set all participant's QNL_CONTROL_DEVICE in room 4 to 2",
                    "INFO: Room 4 has changed to layout 1", "INFO: Set participant 5 in room 4 name to Ada",
                    "INFO: Participant 5 has been removed from room 4", "INFO: Room 4 was destroyed"));
}

TEST(Observers, AreCalledInTheOrderOfRegistrationAndNotForARaisedRefusal) {
    StrictMock<observer> first;
    StrictMock<observer> second;
    engine engine({1});
    qnl_handle const handle = engine.handle();
    for (observer* const added : {&first, &second, &second})
        EXPECT_EQ(qnl_add_event_manager(handle, added), QNL_ERROR_NONE);
    for (const qnl_error_code refused :
         {qnl_create_room(handle, 1), engine.add(1), engine.set(1, QNL_CONTROL_MIXING_3D_ENABLE, 2),
          qnl_set_participant_seat(handle, 1, 1, -3), qnl_set_room_layout(handle, 1, 77),
          qnl_set_participant_name(handle, 1, 1, nullptr), qnl_remove_participant(handle, 1, 9),
          qnl_destroy_room(handle, 9)})
        EXPECT_NE(refused, QNL_ERROR_NONE);
    const InSequence in_this_order;
    EXPECT_CALL(first, create_room_event(2));
    EXPECT_CALL(second, create_room_event(2)).Times(2);
    qnl_create_room(handle, 2);
}

TEST(Observers, MayAskAndMustNotRebuild) {
    StrictMock<observer> meddler;
    engine engine({1});
    qnl_handle const handle = engine.handle();
    qnl_add_event_manager(handle, &meddler);
    EXPECT_CALL(meddler, create_room_event(2)).WillOnce([&](int room) {
        int count = -1;
        EXPECT_EQ(qnl_get_participant_count(handle, room, &count), QNL_ERROR_NONE) << "in an exclusive call";
        EXPECT_EQ(count, 0);
        EXPECT_EQ(qnl_create_room(handle, 9), QNL_ERROR_INVALID_CONTROL) << "instead of waiting for itself";
        EXPECT_EQ(qnl_add_event_manager(handle, &meddler), QNL_ERROR_INVALID_CONTROL);
    });
    EXPECT_EQ(qnl_create_room(handle, 2), QNL_ERROR_NONE);
    EXPECT_CALL(meddler, set_name_event).WillOnce([&] { EXPECT_EQ(engine.seat(1).id, -1); });
    EXPECT_EQ(qnl_set_participant_name(handle, 1, 1, "x"), QNL_ERROR_NONE);
    EXPECT_CALL(meddler, remove_participant_event)
        .WillOnce(Throw(quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_HEADING, "its own failure")));
    EXPECT_EQ(qnl_remove_participant(handle, 1, 1), QNL_ERROR_INVALID_HEADING);
    EXPECT_EQ(engine.participant_count(), 0) << "the change stands";
}

} // namespace
