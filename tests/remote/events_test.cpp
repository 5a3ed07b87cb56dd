// What the clients of a transport are told of every change.
#include "remote_room.h"

namespace {

using namespace testing;

TEST_F(remote_room, broadcasts_every_change_once_it_is_asked_to) {
    const std::string add = R"({"Command":"add_demo_participant","participant_id":-3,"demo_name":"Demo",)"
                            R"("room_id":1,"sampling_rate":48000,"number_channels":1})";
    const std::string remove = R"({"Command":"remove_demo_participant","participant_id":-3,"room_id":1})";
    answer(add); // nobody takes it
    server().set_broadcast_target(this);
    answer(remove);
    answer(remove);
    qnl_set_participant_name(handle_, 1, 1, "unheard");
    EXPECT_THAT(heard(), ElementsAre(R"({"Event":"remove_participant","participant_id":-3,"room_id":1})"));

    qnl_add_event_manager(handle_, &server());
    qnl_set_participant_state(handle_, 1, 2, QNL_CONTROL_MIXING_3D_ENABLE, 1); // stored and refused
    qnl_set_participant_state(handle_, 1, 2, QNL_CONTROL_MIXING_3D_ENABLE, 2);
    qnl_set_participant_name(handle_, 1, 2, "a\"\xff");
    server().custom_event(7, nullptr);
    EXPECT_THAT(
        heard(),
        ElementsAre(R"({"Event":"set_participant_state","control_to_edit":"QNL_CONTROL_MIXING_3D_ENABLE",)"
                    R"("participant_id":2,"room_id":1,"value":1})",
                    "{\"Event\":\"set_name\",\"name\":\"a\\\"\xef\xbf\xbd\",\"participant_id\":2,"
                    "\"room_id\":1}",
                    R"({"Event":"custom_event","message":"","room_id":7})"));

    for (int control = 1; control <= 14; ++control) // what an add_participant event reads back
        qnl_set_participant_state(handle_, 1, 1, static_cast<qnl_audio_control>(control),
                                  control == 10 ? 2 : 1);
    heard();
    server().add_participant_event(1, 1, "Ada", {44100, 2, QNL_PARTICIPANT_REGULAR});
    const json event = json::parse(heard().at(0));
    for (int control = 1; control <= 14; ++control)
        EXPECT_EQ(event[qnl_audio_control_to_string(control)], control == 10 ? 2 : 1) << control;
    EXPECT_EQ(event["seat_z"], -5);
}

} // namespace
