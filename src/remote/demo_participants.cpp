// Participants that a remote client brings: sources without a listener's side, told apart by ids below 0.
#include "frame/logger.h"
#include "remote/audio_file.h"
#include "remote/commands.h"

namespace {

/// Carries a command out if its participant may be one of a demonstration.
template <class Operation>
command_result for_demo_participant(const command_call& call, Operation operation) {
    const nlohmann::json& id = call.member("participant_id");
    if (!id.is_number_integer() || read_integer(id) >= 0)
        return {QNL_ERROR_INVALID_PARTICIPANT_ID,
                {},
                "You must use a negative integer as your demo participant ID"};
    return {operation()};
}

} // namespace

// Added and removed participants are told to the server's clients directly, and once more by a server that is an
// observer as well: this is wanted.

command_result add_demo_participant(const command_call& call) {
    return for_demo_participant(call, [&call] {
        const std::string name = call.text("demo_name");
        const auto [room, id, rate, channels] =
            call.integers("room_id", "participant_id", "sampling_rate", "number_channels");
        const qnl_participant_configuration format{rate, channels, QNL_PARTICIPANT_SOURCE_ONLY};
        const qnl_error_code code = qnl_add_participant(call.handle(), room, id, name.c_str(), format);
        if (code == QNL_ERROR_NONE)
            call.server().add_participant_event(room, id, name.c_str(), format);
        return code;
    });
}

command_result remove_demo_participant(const command_call& call) {
    return for_demo_participant(call, [&call] {
        const auto [id, room] = call.integers("participant_id", "room_id");
        const qnl_error_code code = qnl_remove_participant(call.handle(), room, id);
        if (code == QNL_ERROR_NONE)
            call.server().remove_participant_event(room, id);
        return code;
    });
}

command_result play_audio_file(const command_call& call) {
    return for_demo_participant(call, [&call] {
        const auto [id, room] = call.integers("participant_id", "room_id");
        return call.server().play_demo_track(room, id, call.text("file_path"));
    });
}

command_result stop_audio_file(const command_call& call) {
    return for_demo_participant(call, [&call] {
        const auto [id, room] = call.integers("participant_id", "room_id");
        return qnl_flush_data(call.handle(), room, id);
    });
}

qnl_error_code qnl_websocket_server::play_demo_track(int room_id, int participant_id,
                                                     const std::string& path) {
    qnl_logger& logger = qnl_logger::get_logger();
    quenlis_audio_file file;
    if (!file.load(path)) {
        logger.log(QNL_LOG_ERROR, "The file %s does not exist", path.c_str());
        return QNL_ERROR_INVALID_VALUE;
    }
    qnl_participant_configuration input{};
    const qnl_error_code code =
        qnl_get_participant_configuration(sound_manager_, room_id, participant_id, &input);
    if (code != QNL_ERROR_NONE)
        return code;
    if (file.sampling_rate() != input.input_sampling_rate) {
        logger.log(QNL_LOG_ERROR, "File %s is sampled at %i but participant %i requires a rate of %i",
                   path.c_str(), file.sampling_rate(), participant_id, input.input_sampling_rate);
        return QNL_ERROR_SAMPLE_RATE;
    }
    if (file.number_channels() != input.input_number_channels) {
        logger.log(QNL_LOG_ERROR, "The file %s has %i channels but participant %i requies %i channel input",
                   path.c_str(), file.number_channels(), participant_id, input.input_number_channels);
        return QNL_ERROR_NUM_CHANNELS;
    }
    return QNL_ERROR_NONE;
}
