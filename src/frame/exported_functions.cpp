// The C door: a null test, then one operation of the manager.
#include "conference/control_text.h"
#include "frame/exception.h"
#include "frame/sound_manager.h"
#include "quenlis.h"

#include <cstring>
#include <string>

namespace {

qnl_error_code log_null_handle() {
    qnl_logger::get_logger().log(
        QNL_LOG_ERROR, "Your qnl_handle is null. Please use qnl_initialize_library to get a valid handle.");
    return QNL_ERROR_HANDLE_NULL;
}

/// Calls one operation of the manager behind a handle that may be null.
template <class... Parameters, class... Arguments>
qnl_error_code forward(qnl_handle handle, qnl_error_code (quenlis_sound_manager::*operation)(Parameters...),
                       Arguments... arguments) {
    return handle != nullptr ? (handle->*operation)(arguments...) : log_null_handle();
}

} // namespace

// ---- Lifetime and logging

qnl_handle qnl_initialize_library(const char* room_layout_path, const char* websocket_config_path,
                                  qnl_library_configuration configuration, int* error_code) {
    qnl_handle handle = nullptr;
    qnl_error_code code = QNL_ERROR_NONE;
    try {
        handle = new quenlis_sound_manager(room_layout_path, websocket_config_path, configuration);
    } catch (const quenlis_exception& failure) {
        code = failure.code();
    }
    if (error_code != nullptr)
        *error_code = code;
    return handle;
}

qnl_error_code qnl_destroy_library(qnl_handle handle) {
    if (handle == nullptr) {
        log_null_handle();
        return QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED; // unlike all other functions: this is wanted
    }
    delete handle;
    return QNL_ERROR_NONE;
}

const char* qnl_get_version() {
    return "v1.0.9";
}

qnl_error_code qnl_enable_logging(bool enable) {
    qnl_logger::get_logger().set_enabled(enable);
    return QNL_ERROR_NONE;
}

qnl_error_code qnl_set_log_level(qnl_log_level level) {
    if (level < QNL_LOG_VERBOSE || level > QNL_LOG_ERROR) {
        qnl_logger::get_logger().log(QNL_LOG_WARNING, "Valid log levels are between %i and %i",
                                     QNL_LOG_VERBOSE, QNL_LOG_ERROR);
        return QNL_ERROR_INVALID_VALUE;
    }
    qnl_logger::get_logger().set_log_level(level);
    return QNL_ERROR_NONE;
}

const char* qnl_error_code_to_string(int code) {
    static const char* const names[] = {
        "QNL_ERROR_NONE",
        "QNL_ERROR_HANDLE_NULL",
        "QNL_ERROR_DATA_NULL",
        "QNL_ERROR_DATA_LENGTH",
        "QNL_ERROR_NUM_CHANNELS",
        "QNL_ERROR_SAMPLE_RATE",
        "QNL_ERROR_SPATIAL_QUALITY",
        "QNL_ERROR_INVALID_ROOM_ID",
        "QNL_ERROR_INVALID_PARTICIPANT_ID",
        "QNL_ERROR_INVALID_CONTROL",
        "QNL_ERROR_INVALID_VALUE",
        "QNL_ERROR_INVALID_HEADING",
        "QNL_ERROR_NO_INPUT_AUDIO",
        "QNL_ERROR_PARTICIPANT_TYPE",
        "QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED",
    };
    const bool known = code >= QNL_ERROR_NONE && code <= QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED;
    return names[known ? code - QNL_ERROR_NONE : 0];
}

qnl_library_configuration qnl_get_library_configuration(qnl_handle handle) {
    if (handle != nullptr)
        return handle->configuration();
    log_null_handle();
    return {-1, -1, -1, false, -1};
}

// ---- Rooms and participants

qnl_error_code qnl_create_room(qnl_handle handle, int room_id) {
    return forward(handle, &quenlis_sound_manager::create_room, room_id);
}

qnl_error_code qnl_destroy_room(qnl_handle handle, int room_id) {
    return forward(handle, &quenlis_sound_manager::destroy_room, room_id);
}

qnl_error_code qnl_add_participant(qnl_handle handle, int room_id, int participant_id,
                                   const char* participant_name, qnl_participant_configuration config) {
    return forward(handle, &quenlis_sound_manager::add_participant, room_id, participant_id, participant_name,
                   config);
}

qnl_error_code qnl_remove_participant(qnl_handle handle, int room_id, int participant_id) {
    return forward(handle, &quenlis_sound_manager::remove_participant, room_id, participant_id);
}

// ---- Audio

qnl_error_code qnl_input_audio_short(qnl_handle handle, int room_id, int participant_id, const short* audio,
                                     int number_frames) {
    return forward(handle, &quenlis_sound_manager::input_audio_short, room_id, participant_id, audio,
                   number_frames);
}

qnl_error_code qnl_input_audio_float(qnl_handle handle, int room_id, int participant_id, const float* audio,
                                     int number_frames) {
    return forward(handle, &quenlis_sound_manager::input_audio_float, room_id, participant_id, audio,
                   number_frames);
}

qnl_error_code qnl_input_audio_double(qnl_handle handle, int room_id, int participant_id, const double* audio,
                                      int number_frames) {
    return forward(handle, &quenlis_sound_manager::input_audio_double, room_id, participant_id, audio,
                   number_frames);
}

qnl_error_code qnl_output_audio_short(qnl_handle handle, int room_id, int participant_id, short* output) {
    return forward(handle, &quenlis_sound_manager::output_audio_short, room_id, participant_id, output);
}

qnl_error_code qnl_output_audio_float(qnl_handle handle, int room_id, int participant_id, float* output) {
    return forward(handle, &quenlis_sound_manager::output_audio_float, room_id, participant_id, output);
}

qnl_error_code qnl_output_audio_double(qnl_handle handle, int room_id, int participant_id, double* output) {
    return forward(handle, &quenlis_sound_manager::output_audio_double, room_id, participant_id, output);
}

qnl_error_code qnl_flush_data(qnl_handle handle, int room_id, int participant_id) {
    return forward(handle, &quenlis_sound_manager::flush_audio, room_id, participant_id);
}

// ---- Controls

qnl_error_code qnl_set_participant_state(qnl_handle handle, int room_id, int participant_id,
                                         qnl_audio_control control, int value) {
    return forward(handle, &quenlis_sound_manager::set_participant_state, room_id, participant_id, control,
                   value);
}

qnl_error_code qnl_set_all_participants_state(qnl_handle handle, int room_id, qnl_audio_control control,
                                              int value) {
    return forward(handle, &quenlis_sound_manager::set_all_participants_state, room_id, control, value);
}

qnl_error_code qnl_get_participant_state(qnl_handle handle, int room_id, int participant_id,
                                         qnl_audio_control control, int* value) {
    return forward(handle, &quenlis_sound_manager::get_participant_state, room_id, participant_id, control,
                   value);
}

const char* qnl_audio_control_to_string(int control) {
    return audio_control_to_string(control);
}

qnl_audio_control qnl_string_to_audio_control(const char* text) {
    return string_to_audio_control(text);
}

int qnl_string_to_participant_value(const char* text) {
    return string_to_participant_value(text);
}

// ---- Names, seats, positions, layouts

qnl_error_code qnl_set_participant_name(qnl_handle handle, int room_id, int participant_id,
                                        const char* name) {
    return forward(handle, &quenlis_sound_manager::set_participant_name, room_id, participant_id, name);
}

qnl_error_code qnl_get_participant_name(qnl_handle handle, int room_id, int participant_id, char* name,
                                        int length) {
    if (handle == nullptr)
        return log_null_handle();
    if (name == nullptr) {
        qnl_logger::get_logger().log(QNL_LOG_ERROR,
                                     "Your value point is null. Please initialize the char array "
                                     "before passing to qnl_get_participant_name.");
        return QNL_ERROR_DATA_NULL;
    }
    const std::string found = handle->get_participant_name(room_id, participant_id);
    // `length` does not count the terminating zero: this is wanted.
    if (length < 0 || found.size() > static_cast<size_t>(length))
        return QNL_ERROR_DATA_LENGTH;
    std::memcpy(name, found.c_str(), found.size() + 1);
    return QNL_ERROR_NONE;
}

qnl_error_code qnl_set_participant_seat(qnl_handle handle, int room_id, int participant_id, int seat_index) {
    return forward(handle, &quenlis_sound_manager::set_participant_seat, room_id, participant_id, seat_index);
}

qnl_error_code qnl_get_participant_seat(qnl_handle handle, int room_id, int participant_id, qnl_seat* seat) {
    return forward(handle, &quenlis_sound_manager::get_participant_seat, room_id, participant_id, seat);
}

qnl_error_code qnl_set_participant_position(qnl_handle handle, int room_id, int participant_id,
                                            qnl_position position, qnl_heading heading) {
    return forward(handle, &quenlis_sound_manager::set_participant_position, room_id, participant_id,
                   position, heading);
}

qnl_error_code qnl_get_participant_position(qnl_handle handle, int room_id, int participant_id,
                                            qnl_position* position, qnl_heading* heading) {
    return forward(handle, &quenlis_sound_manager::get_participant_position, room_id, participant_id,
                   position, heading);
}

qnl_error_code qnl_get_participant_spherical(qnl_handle handle, int room_id, int listener_id, int source_id,
                                             int* azimuth, int* elevation, int* distance) {
    if (handle != nullptr && listener_id == source_id) {
        qnl_logger::get_logger().log(
            QNL_LOG_WARNING,
            "You must use a different listener_id and source_id for qnl_get_participant_spherical");
        return QNL_ERROR_INVALID_PARTICIPANT_ID;
    }
    return forward(handle, &quenlis_sound_manager::get_participant_spherical, room_id, listener_id, source_id,
                   azimuth, elevation, distance);
}

qnl_error_code qnl_set_room_layout(qnl_handle handle, int room_id, int layout_id) {
    return forward(handle, &quenlis_sound_manager::set_room_layout, room_id, layout_id);
}

qnl_error_code qnl_get_room_layout(qnl_handle handle, int room_id, int* layout_id) {
    return forward(handle, &quenlis_sound_manager::get_layout_of_room, room_id, layout_id);
}

const char* qnl_get_json_all_room_layouts(qnl_handle handle) {
    if (handle != nullptr)
        return handle->room_layouts_text().c_str();
    log_null_handle();
    return "{\"error_code\": \"QNL_ERROR_HANDLE_NULL\"}";
}

// ---- Queries

qnl_error_code qnl_get_room_count(qnl_handle handle, int* room_count) {
    return forward(handle, &quenlis_sound_manager::get_room_count, room_count);
}

qnl_error_code qnl_get_participant_count(qnl_handle handle, int room_id, int* participant_count) {
    return forward(handle, &quenlis_sound_manager::get_participant_count, room_id, participant_count);
}

qnl_error_code qnl_get_participant_configuration(qnl_handle handle, int room_id, int participant_id,
                                                 qnl_participant_configuration* config) {
    if (handle == nullptr && config != nullptr)
        *config = unknown_participant_configuration();
    return forward(handle, &quenlis_sound_manager::get_participant_configuration, room_id, participant_id,
                   config);
}

// ---- Observers and remote control

qnl_error_code qnl_add_event_manager(qnl_handle handle, qnl_event_manager* manager) {
    return forward(handle, &quenlis_sound_manager::add_event_manager, manager);
}

qnl_error_code qnl_enable_websockets(qnl_handle handle, bool enable) {
    return forward(handle, &quenlis_sound_manager::enable_websockets, enable);
}

qnl_error_code qnl_send_custom_websocket_event(qnl_handle handle, int room_id, const char* event) {
    return forward(handle, &quenlis_sound_manager::send_custom_websocket_event, room_id, event);
}
