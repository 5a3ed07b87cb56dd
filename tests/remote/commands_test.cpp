// Every command: what it answers, and what it has done as later commands see it.
#include "remote_room.h"

namespace {

using namespace testing;

std::string wave_header(char channels, int rate) {
    std::string header(44, '\0');
    header[22] = channels;
    for (size_t place = 0; place < 4; ++place)
        header[24 + place] = static_cast<char>(rate >> 8 * place);
    return header;
}

struct exchange {
    const char* command;
    const char* members; // behind the command
    const char* results; // of a success, as members too
    bool changed = false;
};

#define BOB R"(,"room_id":1,"participant_id":2)"

// In order: the later lines see what the earlier ones did. docs/remote_protocol.md holds the plain cases.
const exchange conversation[] = {
    {"custom_event", "", "", true},
    {"get_room_count", R"(,"room_id":"ignored","value":"none")", R"(,"room_count":1)"},
    {"get_participant_count", R"(,"room_id":true)", R"(,"participant_count":2)"},
    {"get_room_layout", R"(,"room_id":1.9)", R"(,"layout_id":1)"},
    {"set_participant_seat", BOB R"(,"seat_id":6)",
     R"(,"new_seat_id":6,"new_seat_x":20,"new_seat_y":0,"new_seat_z":5,"new_seat_azimuth_heading":-104,)"
     R"("new_seat_elevation_heading":0)",
     true},
    {"set_room_layout", R"(,"room_id":1,"layout_id":2)", "", true},
    {"set_participant_position", BOB R"(,"x":3,"y":-4,"z":5,"azimuth_heading":-90,"elevation_heading":45)",
     "", true},
    {"get_participant_position", BOB, R"(,"x":3,"y":-4,"z":5,"azimuth_heading":-90,"elevation_heading":45)"},
    {"set_participant_name", BOB R"(,"participant_name":"J\u00fcrgen")", "", true},
    {"get_participant_name", BOB, R"(,"name":"Jürgen")"},
    {"set_participant_state", BOB R"(,"control_to_edit":"qnl_control_device","value":"QNL_DEVICE_SPEAKER")",
     "", true},
    {"get_participant_state", BOB R"(,"control_to_edit":10)", R"(,"value":2)"},
    {"set_all_participants_state", R"(,"room_id":1,"control_to_edit":2,"value":true)", "", true},
    {"get_participant_state", BOB R"(,"control_to_edit":"QNL_CONTROL_MUTE_ENABLE")", R"(,"value":1)"},
    {"set_participant_state", BOB R"(,"control_to_edit":12,"value":"20 percent")", "", true},
    {"get_participant_state", BOB R"(,"control_to_edit":12)", R"(,"value":19)"},
    {"add_demo_participant",
     R"(,"participant_id":-7,"demo_name":"Demo","room_id":1,"sampling_rate":16000,"number_channels":1)", ""},
    {"get_participant_configuration", R"(,"room_id":1,"participant_id":-7)",
     R"(,"input_number_channels":1,"input_sampling_rate":16000,"type":2)"},
    {"remove_demo_participant", R"(,"participant_id":-7,"room_id":1)", ""},
    {"get_participant_count", R"(,"room_id":1)", R"(,"participant_count":2)"},
};

TEST_F(remote_room, does_what_a_request_says_and_marks_what_others_share) {
    for (const auto& [command, members, results, changes] : conversation) {
        bool changed = false;
        const std::string request = R"({"Command":")" + std::string(command) + '"' + members + '}';
        EXPECT_EQ(answer(request, &changed), json::parse(R"({"Status":"OK")" + std::string(results) + '}'))
            << request;
        EXPECT_EQ(changed, changes) << request;
    }
    EXPECT_EQ(answer(R"({"Command":"get_json_all_room_layouts"})")["room_layouts"], layouts_text_);
    EXPECT_EQ(answer_text(R"( {"b" : [1, 2], "Command" : "get_room_count"} )"),
              R"({"Request":{"Command":"get_room_count","b":[1,2]},"Status":"OK","room_count":1})");
}

TEST_F(remote_room, gives_names_of_up_to_199_bytes_whole_and_no_broken_text) {
    const std::string request = R"({"Command":"get_participant_name","room_id":1,"participant_id":1})";
    qnl_set_participant_name(handle_, 1, 1, std::string(199, 'n').c_str());
    EXPECT_EQ(answer(request)["name"], std::string(199, 'n'));
    qnl_set_participant_name(handle_, 1, 1, std::string(200, 'n').c_str());
    EXPECT_EQ(answer(request)["Error Code"], QNL_ERROR_DATA_LENGTH);
    qnl_set_participant_name(handle_, 1, 1, "\xff");
    EXPECT_EQ(answer(request),
              json::parse(R"({"Status":"ERROR","Error Code":-9990,"Error Description":)"
                          R"("[json.exception.type_error.316] invalid UTF-8 byte at index 0: 0xFF"})"));
}

TEST_F(remote_room, checks_audio_files_before_it_would_play_them) {
    answer(R"({"Command":"add_demo_participant","participant_id":-1,"demo_name":"","room_id":1,)"
           R"("sampling_rate":16000,"number_channels":1})");
    const auto play = [this](const std::string& bytes, int id) {
        const json request = {{"Command", "play_audio_file"},
                              {"participant_id", id},
                              {"room_id", 1},
                              {"file_path", files_.write("demo.wav", bytes)}};
        const json response = answer(request.dump());
        return response.value("Error Code", static_cast<int>(QNL_ERROR_NONE));
    };
    const std::string path = files_.path_of("demo.wav");
    test_kit::log_capture log;
    EXPECT_EQ(play(wave_header(1, 16000), -1), QNL_ERROR_NONE);
    EXPECT_EQ(play(wave_header(1, 16000), -2), QNL_ERROR_INVALID_PARTICIPANT_ID);
    log.take();
    EXPECT_EQ(play(wave_header(2, 80000), -1), QNL_ERROR_SAMPLE_RATE);
    EXPECT_EQ(play(wave_header(2, 16000), -1), QNL_ERROR_NUM_CHANNELS);
    EXPECT_EQ(play("RIFF", -1), QNL_ERROR_SAMPLE_RATE);
    testing::internal::CaptureStderr();
    EXPECT_EQ(server().play_demo_track(1, -1, "absent"), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: No such file or directory\n");
    const std::string rate = " but participant -1 requires a rate of 16000";
    EXPECT_THAT(log.take(), ElementsAre("ERROR: File " + path + " is sampled at 80000" + rate,
                                        "ERROR: The file " + path +
                                            " has 2 channels but participant -1 requies 1 channel input",
                                        "ERROR: File " + path + " is sampled at 0" + rate,
                                        "ERROR: The file absent does not exist"));
}

TEST_F(remote_room, stops_a_demo_participant_by_flushing_what_it_has_said) {
    answer(R"({"Command":"add_demo_participant","participant_id":-1,"demo_name":"","room_id":1,)"
           R"("sampling_rate":48000,"number_channels":1})");
    std::vector<float> block(960, 0.5F);
    EXPECT_EQ(qnl_input_audio_float(handle_, 1, -1, block.data(), 480), QNL_ERROR_NONE);
    EXPECT_EQ(answer(R"({"Command":"stop_audio_file","participant_id":-1,"room_id":1})")["Status"], "OK");
    EXPECT_EQ(qnl_output_audio_float(handle_, 1, 1, block.data()), QNL_ERROR_NO_INPUT_AUDIO);
}

} // namespace
