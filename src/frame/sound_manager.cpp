#include "frame/sound_manager.h"

#include "conference/control_text.h"
#include "dsp/flush_to_zero.h"
#include "frame/exception.h"

#include <algorithm>

namespace {

qnl_logger& logger() {
    return qnl_logger::get_logger();
}

bool is_heading(qnl_heading heading) {
    return heading.azimuth_heading >= -180 && heading.azimuth_heading <= 180 &&
           heading.elevation_heading >= -90 && heading.elevation_heading <= 90;
}

} // namespace

// ---- The shape of an operation

/// Runs an operation under the shared lock; a failure becomes its result.
template <class Operation>
qnl_error_code quenlis_sound_manager::under_shared_lock(Operation operation) {
    try {
        const nestable_shared_mutex::shared_guard lock(manager_mutex_);
        return operation();
    } catch (const quenlis_exception& failure) {
        return failure.code();
    }
}

/// The same under the exclusive lock. From inside an observer it would wait for itself, so it is refused
/// there.
template <class Operation>
qnl_error_code quenlis_sound_manager::under_exclusive_lock(Operation operation) {
    try {
        if (manager_mutex_.held_by_this_thread())
            throw quenlis_exception(
                QNL_LOG_WARNING, QNL_ERROR_INVALID_CONTROL,
                "An event manager must not create or destroy rooms or change room layouts");
        const nestable_shared_mutex::exclusive_guard lock(manager_mutex_);
        return operation();
    } catch (const quenlis_exception& failure) {
        return failure.code();
    }
}

template <class Event>
void quenlis_sound_manager::notify(Event event) {
    for (qnl_event_manager* const manager : event_managers_)
        event(*manager);
}

quenlis_sound_manager::room_list::iterator quenlis_sound_manager::find_room(int32_t room_id) {
    return std::find_if(rooms_.begin(), rooms_.end(),
                        [room_id](const auto& r) { return r->id() == room_id; });
}

quenlis_sound_manager::room_list::iterator quenlis_sound_manager::find_existing_room(int32_t room_id) {
    const auto found = find_room(room_id);
    if (found == rooms_.end())
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_ROOM_ID, "Room %d does not exist.",
                                room_id);
    return found;
}

// ---- Rooms and participants

qnl_error_code quenlis_sound_manager::create_room(int32_t room_id) {
    return under_exclusive_lock([&] {
        if (find_room(room_id) != rooms_.end())
            throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_ROOM_ID, "Room %i already exists",
                                    room_id);
        rooms_.push_back(std::make_unique<quenlis_room>(&common_, room_id, default_room_layout_));
        notify([&](qnl_event_manager& observer) { observer.create_room_event(room_id); });
        logger().log(QNL_LOG_INFO, "A new room with id %i was created", room_id);
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::destroy_room(int32_t room_id) {
    return under_exclusive_lock([&] {
        rooms_.erase(find_existing_room(room_id));
        notify([&](qnl_event_manager& observer) { observer.destroy_room_event(room_id); });
        logger().log(QNL_LOG_INFO, "Room %i was destroyed", room_id);
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::add_participant(int32_t room_id, int32_t participant_id,
                                                      const char* name,
                                                      qnl_participant_configuration config) {
    const char* const given_name = name != nullptr ? name : "";
    return under_shared_lock([&] {
        const qnl_error_code code = room(room_id).add_participant(config, participant_id, given_name);
        notify([&](qnl_event_manager& observer) {
            observer.add_participant_event(room_id, participant_id, given_name, config);
        });
        logger().log(QNL_LOG_INFO, "A new participant with id %i has been added to room %i", participant_id,
                     room_id);
        return code;
    });
}

qnl_error_code quenlis_sound_manager::remove_participant(int32_t room_id, int32_t participant_id) {
    return under_shared_lock([&] {
        const qnl_error_code code = room(room_id).remove_participant(participant_id);
        notify(
            [&](qnl_event_manager& observer) { observer.remove_participant_event(room_id, participant_id); });
        logger().log(QNL_LOG_INFO, "Participant %i has been removed from room %i", participant_id, room_id);
        return code;
    });
}

// ---- Audio

qnl_error_code quenlis_sound_manager::input_audio(int32_t room_id, int32_t participant_id, const void* audio,
                                                  int32_t frames, quenlis_data_type type) {
    const flush_to_zero guard;
    return under_shared_lock([&] { return room(room_id).input(audio, frames, participant_id, type); });
}

qnl_error_code quenlis_sound_manager::output_audio(int32_t room_id, int32_t participant_id, void* output,
                                                   quenlis_data_type type) {
    const flush_to_zero guard;
    return under_shared_lock([&] { return room(room_id).output(output, participant_id, type); });
}

qnl_error_code quenlis_sound_manager::input_audio_short(int32_t room_id, int32_t participant_id,
                                                        const short* audio, int32_t frames) {
    return input_audio(room_id, participant_id, audio, frames, QNL_DATA_SHORT);
}

qnl_error_code quenlis_sound_manager::input_audio_float(int32_t room_id, int32_t participant_id,
                                                        const float* audio, int32_t frames) {
    return input_audio(room_id, participant_id, audio, frames, QNL_DATA_FLOAT);
}

qnl_error_code quenlis_sound_manager::input_audio_double(int32_t room_id, int32_t participant_id,
                                                         const double* audio, int32_t frames) {
    return input_audio(room_id, participant_id, audio, frames, QNL_DATA_DOUBLE);
}

qnl_error_code quenlis_sound_manager::output_audio_short(int32_t room_id, int32_t participant_id,
                                                         short* output) {
    return output_audio(room_id, participant_id, output, QNL_DATA_SHORT);
}

qnl_error_code quenlis_sound_manager::output_audio_float(int32_t room_id, int32_t participant_id,
                                                         float* output) {
    return output_audio(room_id, participant_id, output, QNL_DATA_FLOAT);
}

qnl_error_code quenlis_sound_manager::output_audio_double(int32_t room_id, int32_t participant_id,
                                                          double* output) {
    return output_audio(room_id, participant_id, output, QNL_DATA_DOUBLE);
}

qnl_error_code quenlis_sound_manager::flush_audio(int32_t room_id, int32_t participant_id) {
    return under_shared_lock([&] { return room(room_id).flush(participant_id); });
}

// ---- Controls, names and places

qnl_error_code quenlis_sound_manager::set_participant_state(int32_t room_id, int32_t participant_id,
                                                            qnl_audio_control control, int32_t value) {
    return under_shared_lock([&] {
        // Observers and log hear of a returned refusal as well: the value has been stored.
        const qnl_error_code code = room(room_id).set_participant_state(participant_id, control, value);
        notify([&](qnl_event_manager& observer) {
            observer.set_participant_state_event(room_id, participant_id, control, value);
        });
        logger().log(QNL_LOG_INFO, "Participant %i in room %i set %s to %i", participant_id, room_id,
                     audio_control_to_string(control), value);
        return code;
    });
}

qnl_error_code quenlis_sound_manager::set_all_participants_state(int32_t room_id, qnl_audio_control control,
                                                                 int32_t value) {
    return under_shared_lock([&] {
        const qnl_error_code code = room(room_id).set_all_participants_state(control, value);
        notify([&](qnl_event_manager& observer) {
            observer.set_all_participants_state_event(room_id, control, value);
        });
        logger().log(QNL_LOG_INFO, "Set all participant's %s in room %i to %i",
                     audio_control_to_string(control), room_id, value);
        return code;
    });
}

qnl_error_code quenlis_sound_manager::set_room_layout(int32_t room_id, int32_t layout_id) {
    return under_exclusive_lock([&] {
        quenlis_room& changed = room(room_id);
        const quenlis_room_layout* const layout = get_room_layout(layout_id);
        if (layout == nullptr)
            throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE,
                                    "Room layout id %d does not exist.", layout_id);
        const qnl_error_code code = changed.set_room_layout(layout);
        notify([&](qnl_event_manager& observer) { observer.set_room_layout_event(room_id, layout_id); });
        logger().log(QNL_LOG_INFO, "Room %i has changed to layout %i", room_id, layout_id);
        return code;
    });
}

qnl_error_code quenlis_sound_manager::set_participant_seat(int32_t room_id, int32_t participant_id,
                                                           int32_t seat_index) {
    return under_shared_lock([&] {
        quenlis_room& seated = room(room_id);
        const qnl_error_code code = seated.set_participant_seat(participant_id, seat_index);
        const qnl_seat seat = seated.get_participant_seat(participant_id);
        notify([&](qnl_event_manager& observer) {
            observer.set_participant_seat_event(room_id, participant_id, seat);
        });
        logger().log(QNL_LOG_INFO, "Participant %i in room %i has moved to seat %i", participant_id, room_id,
                     seat_index);
        return code;
    });
}

qnl_error_code quenlis_sound_manager::set_participant_position(int32_t room_id, int32_t participant_id,
                                                               qnl_position position, qnl_heading heading) {
    return under_shared_lock([&] {
        if (!is_heading(heading))
            throw quenlis_exception(
                QNL_LOG_WARNING, QNL_ERROR_INVALID_HEADING,
                "You provided {%i, %i} but your heading must have an azimuth between -180 and "
                "180 and an elevation between -90 and 90",
                heading.azimuth_heading, heading.elevation_heading);
        const qnl_error_code code = room(room_id).set_position(participant_id, position, heading);
        notify([&](qnl_event_manager& observer) {
            observer.set_participant_position_event(room_id, participant_id, position, heading);
        });
        logger().log(QNL_LOG_INFO,
                     "Participant %i in room %i has changed position to {%i, %i, %i} and heading {%i, %i}",
                     participant_id, room_id, position.x, position.y, position.z, heading.azimuth_heading,
                     heading.elevation_heading);
        return code;
    });
}

qnl_error_code quenlis_sound_manager::set_participant_name(int32_t room_id, int32_t participant_id,
                                                           const char* name) {
    return under_shared_lock([&] {
        if (name == nullptr)
            throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_DATA_NULL, "Your name variable was NULL");
        const qnl_error_code code = room(room_id).set_name(participant_id, name);
        notify([&](qnl_event_manager& observer) { observer.set_name_event(room_id, participant_id, name); });
        logger().log(QNL_LOG_INFO, "Set participant %i in room %i name to %s", participant_id, room_id, name);
        return code;
    });
}

// ---- Observers and remote control

qnl_error_code quenlis_sound_manager::add_event_manager(void* event_manager) {
    if (event_manager == nullptr) {
        logger().log(QNL_LOG_ERROR, "The event manager provided was NULL");
        return QNL_ERROR_DATA_NULL;
    }
    if (manager_mutex_.held_by_this_thread()) {
        logger().log(QNL_LOG_WARNING, "An event manager must not add event managers");
        return QNL_ERROR_INVALID_CONTROL;
    }
    event_managers_.push_back(static_cast<qnl_event_manager*>(event_manager));
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_sound_manager::refuse_websockets() {
    logger().log(
        QNL_LOG_WARNING,
        "Websocket server is not available for the client side, windows, or mac versions of the library");
    return QNL_ERROR_INVALID_CONTROL;
}

qnl_error_code quenlis_sound_manager::enable_websockets(bool) {
    return refuse_websockets();
}

qnl_error_code quenlis_sound_manager::send_custom_websocket_event(int32_t, const char*) {
    return refuse_websockets();
}

// ---- Queries: the neutral value stands in the out pointers until the room has answered

qnl_error_code quenlis_sound_manager::get_participant_state(int32_t room_id, int32_t participant_id,
                                                            qnl_audio_control control, int* value) {
    if (value == nullptr)
        return QNL_ERROR_DATA_NULL;
    *value = 0;
    return under_shared_lock([&] {
        *value = room(room_id).get_participant_state(control, participant_id);
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::get_room_count(int* room_count) {
    if (room_count == nullptr) {
        logger().log(QNL_LOG_ERROR,
                     "Your room_count pointer is null. Please initialize room_count before passing "
                     "to qnl_get_room_count.");
        return QNL_ERROR_DATA_NULL;
    }
    return under_shared_lock([&] {
        *room_count = static_cast<int>(rooms_.size());
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::get_participant_count(int32_t room_id, int* participant_count) {
    return under_shared_lock([&] {
        if (participant_count == nullptr)
            throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_DATA_NULL,
                                    "Your participant_count variable was NULL");
        *participant_count = room(room_id).get_participant_count();
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::get_layout_of_room(int32_t room_id, int* layout_id) {
    if (layout_id == nullptr)
        return QNL_ERROR_DATA_NULL;
    *layout_id = 0;
    return under_shared_lock([&] {
        *layout_id = room(room_id).get_room_layout();
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::get_participant_configuration(int32_t room_id, int32_t participant_id,
                                                                    qnl_participant_configuration* config) {
    return under_shared_lock([&] {
        if (config == nullptr)
            throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_DATA_NULL, "Your config variable was NULL");
        *config = unknown_participant_configuration();
        *config = room(room_id).get_participant_configuration(participant_id);
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::get_participant_seat(int32_t room_id, int32_t participant_id,
                                                           qnl_seat* seat) {
    if (seat == nullptr)
        return QNL_ERROR_DATA_NULL;
    *seat = {};
    return under_shared_lock([&] {
        *seat = room(room_id).get_participant_seat(participant_id);
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::get_participant_position(int32_t room_id, int32_t participant_id,
                                                               qnl_position* position, qnl_heading* heading) {
    if (position == nullptr || heading == nullptr)
        return QNL_ERROR_DATA_NULL;
    *position = {};
    return under_shared_lock([&] {
        const qnl_seat seat = room(room_id).get_participant_seat(participant_id);
        *position = seat.position;
        *heading = seat.heading;
        return QNL_ERROR_NONE;
    });
}

qnl_error_code quenlis_sound_manager::get_participant_spherical(int32_t room_id, int32_t listener_id,
                                                                int32_t source_id, int* azimuth,
                                                                int* elevation, int* distance) {
    if (azimuth == nullptr || elevation == nullptr || distance == nullptr)
        return QNL_ERROR_DATA_NULL;
    *azimuth = *elevation = *distance = 0;
    return under_shared_lock([&] {
        return room(room_id).get_participant_spherical(listener_id, source_id, azimuth, elevation, distance);
    });
}

std::string quenlis_sound_manager::get_participant_name(int32_t room_id, int32_t participant_id) {
    std::string name;
    under_shared_lock([&] {
        name = room(room_id).get_name(participant_id);
        return QNL_ERROR_NONE;
    });
    return name;
}
