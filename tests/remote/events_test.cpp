// What the clients of a transport are told of every change.
#include "remote_room.h"

namespace {

using namespace testing;

TEST_F(remote_room, broadcasts_each_change_as_one_line) {
    qnl_add_event_manager(handle_, &server());
    qnl_create_room(handle_, 8); // nobody takes it
    server().set_broadcast_target(this);

    qnl_create_room(handle_, 4);
    qnl_set_participant_seat(handle_, 1, 2, 3);
    qnl_set_room_layout(handle_, 1, 2);
    qnl_set_participant_position(handle_, 1, 2, {1, -2, 3}, {4, 5});
    qnl_set_participant_state(handle_, 1, 2, QNL_CONTROL_MIXING_3D_ENABLE, 1); // stored and refused
    qnl_set_participant_state(handle_, 1, 2, QNL_CONTROL_MIXING_3D_ENABLE, 2);
    qnl_set_all_participants_state(handle_, 1, QNL_CONTROL_MASTER_GAIN, 15);
    qnl_set_participant_name(handle_, 1, 2, "a\"\xff");
    server().custom_event(7, "hello");
    server().custom_event(7, nullptr);
    qnl_remove_participant(handle_, 1, 2);
    qnl_destroy_room(handle_, 4);
    EXPECT_THAT(
        heard(),
        ElementsAre(
            R"({"Event":"create_room","room_id":4})",
            R"({"Event":"move_participant_event","azimuth_heading":-75,"elevation_heading":0,"participant_id":2,)"
            R"("room_id":1,"seat":3,"x":20,"y":0,"z":-5})",
            R"({"Event":"set_room_layout","room_config_id":2,"room_id":1})",
            R"({"Event":"set_participant_position","azimuth_heading":4,"elevation_heading":5,"participant_id":2,)"
            R"("room_id":1,"x":1,"y":-2,"z":3})",
            R"({"Event":"set_participant_state","control_to_edit":"QNL_CONTROL_MIXING_3D_ENABLE",)"
            R"("participant_id":2,"room_id":1,"value":1})",
            R"({"Event":"set_all_participants_state","control_to_edit":"QNL_CONTROL_MASTER_GAIN","room_id":1,)"
            R"("value":15})",
            "{\"Event\":\"set_name\",\"name\":\"a\\\"\xef\xbf\xbd\",\"participant_id\":2,\"room_id\":1}",
            R"({"Event":"custom_event","message":"hello","room_id":7})",
            R"({"Event":"custom_event","message":"","room_id":7})",
            R"({"Event":"remove_participant","participant_id":2,"room_id":1})",
            R"({"Event":"destroy_room","room_id":4})"));
}

TEST_F(remote_room, broadcasts_newcomers_with_seat_and_controls_and_demo_participants_by_itself) {
    server().set_broadcast_target(this);
    const std::string add =
        R"({"Command":"add_demo_participant","participant_id":-3,"demo_name":"Demo","room_id":1,)"
        R"("sampling_rate":44100,"number_channels":2})";
    answer(add);
    const std::string event =
        R"({"Event":"add_participant","QNL_CONTROL_AGC_ENABLE":0,"QNL_CONTROL_ANC_ENABLE":0,)"
        R"("QNL_CONTROL_AUTO_EQ_ENABLE":0,"QNL_CONTROL_DEVICE":1,"QNL_CONTROL_HALF_SPAN_ANGLE":15,)"
        R"("QNL_CONTROL_MASTER_GAIN":100,"QNL_CONTROL_MIXING_3D_ATTENUATION":6,"QNL_CONTROL_MIXING_3D_ENABLE":0,)"
        R"("QNL_CONTROL_MIXING_3D_MAX_DISTANCE":300,"QNL_CONTROL_MIXING_3D_REVERB_ENABLE":1,)"
        R"("QNL_CONTROL_MUTE_ENABLE":0,"QNL_CONTROL_SIDEBAR_ROOM":0,"QNL_CONTROL_STEREO_BYPASS_ENABLE":0,)"
        R"("QNL_CONTROL_WHISPER_ROOM":0,"azimuth_heading":-75,"elevation_heading":0,"input_number_channels":2,)"
        R"("input_sampling_rate":44100,"participant_id":-3,"participant_name":"Demo","room_id":1,"seat_id":3,)"
        R"("seat_x":20,"seat_y":0,"seat_z":-5,"type":2})";
    const std::string gone = R"({"Event":"remove_participant","participant_id":-3,"room_id":1})";
    answer(R"({"Command":"remove_demo_participant","participant_id":-3,"room_id":1})");
    EXPECT_THAT(heard(), ElementsAre(event, gone));
    answer(R"({"Command":"remove_demo_participant","participant_id":-3,"room_id":1})");
    EXPECT_THAT(heard(), IsEmpty());

    qnl_add_event_manager(handle_, &server());
    answer(add);
    EXPECT_THAT(heard(), ElementsAre(event, event)) << "as observer and by the command";
}

} // namespace
