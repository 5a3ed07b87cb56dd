// A room describes itself as JSON.
#include "conference/room.h"
#include "frame/exception.h"
#include "kit/host.h"

namespace {

using nlohmann::json;

class Snapshots : public testing::Test {
protected:
    const quenlis_common_object common_ = quenlis_common_object::derive({48000, 480, 2, false, 1});
    const quenlis_room_layout layout_{
        "row", json::parse(R"({"id":3,"desc":"","allowParticipantStacking":true,"openRoom":false,
            "centerPoint":{"x":0,"y":0,"z":0},"seats":[{"x":0,"y":0,"z":-5}]})")};
    quenlis_room room_{&common_, 8, &layout_};
};

TEST_F(Snapshots, OfARoomHoldEverythingSortedWithoutWhitespace) {
    EXPECT_EQ(room_.get_json().dump(), R"({"allowParticipantStacking":"true","id":8,"openRoom":"false",)"
                                       R"("participants":[],"roomConfigId":3})");
    room_.add_participant({48000, 2, QNL_PARTICIPANT_REGULAR}, 5, "\"Zo\u00eb\"");
    room_.set_participant_state(5, QNL_CONTROL_MASTER_GAIN, 5);
    EXPECT_EQ(
        room_.get_json()["participants"].dump(),
        R"([{"QNL_CONTROL_AGC_ENABLE":0,"QNL_CONTROL_ANC_ENABLE":0,"QNL_CONTROL_AUTO_EQ_ENABLE":0,)"
        R"("QNL_CONTROL_DEVICE":1,"QNL_CONTROL_HALF_SPAN_ANGLE":15,"QNL_CONTROL_MASTER_GAIN":4,)"
        R"("QNL_CONTROL_MIXING_3D_ATTENUATION":6,"QNL_CONTROL_MIXING_3D_ENABLE":0,)"
        R"("QNL_CONTROL_MIXING_3D_MAX_DISTANCE":300,"QNL_CONTROL_MIXING_3D_REVERB_ENABLE":1,)"
        R"("QNL_CONTROL_MUTE_ENABLE":0,"QNL_CONTROL_SIDEBAR_ROOM":0,"QNL_CONTROL_STEREO_BYPASS_ENABLE":0,)"
        R"("QNL_CONTROL_WHISPER_ROOM":0,"azimuth_heading":0,"elevation_heading":0,"input_number_channels":2,)"
        R"("input_sampling_rate":48000,"participantId":5,"participantName":"\"Zoë\"","seatId":1,"type":1,)"
        R"("x":0,"y":0,"z":-5}])");
}

TEST_F(Snapshots, OfAControlListItAcrossTheRoom) {
    room_.add_participant({48000, 1, QNL_PARTICIPANT_REGULAR}, 5, "a");
    room_.add_participant({48000, 1, QNL_PARTICIPANT_LISTENER_ONLY}, 2, "b");
    room_.set_participant_state(2, QNL_CONTROL_DEVICE, 2);
    EXPECT_EQ(room_.get_all_participants_state(QNL_CONTROL_DEVICE),
              R"({"control_to_edit":"QNL_CONTROL_DEVICE","participants":[{"id":5,"name":"a","value":1},)"
              R"({"id":2,"name":"b","value":2}],"room_id":8})");
}

TEST_F(Snapshots, RaiseForAnUnknownControlAndANameThatIsNotUtf8) {
    const auto unknown = static_cast<qnl_audio_control>(15);
    test_kit::log_capture log;
    EXPECT_EQ(room_.get_all_participants_state(unknown), R"({"control_to_edit":"","room_id":8})");
    EXPECT_EQ(log.take().front(), "WARNING: State 15 is not valid, must be between 1 and 14.");
    room_.add_participant({48000, 1, QNL_PARTICIPANT_REGULAR}, 5, "\xff");
    EXPECT_THROW(room_.get_all_participants_state(unknown), quenlis_exception);
    EXPECT_THROW(room_.get_json().dump(), json::type_error);
    EXPECT_EQ(room_.set_name(5, "fine"), QNL_ERROR_NONE) << "the locks are released";
}

} // namespace
