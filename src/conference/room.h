/// A set of participants that hear each other.
#pragma once

#include "conference/participant.h"
#include "conference/room_layout.h"
#include "frame/shared_lock.h"
#include "quenlis.h"

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// The gain at which a listener hears a talker, by type, whisper room and sidebar; 0 for not at all.
float valid_to_add_source(const quenlis_participant& talker, const quenlis_participant& listener);

/// Where a listener hears a source, from the seat records of both.
void cartesian_to_spherical(const quenlis_participant* source, const quenlis_participant* listener,
                            int* azimuth, int* elevation, int* distance);

/// Membership, who hears whom, seats and snapshots. Any thread; the locks are the room's own.
///
/// Operations raise quenlis_exception for what they refuse; an id that is not in the room is refused with
/// QNL_ERROR_INVALID_PARTICIPANT_ID. What is refused changes nothing unless a line says otherwise.
class quenlis_room {
public:
    /// @param common, layout  not null; must outlive the room
    quenlis_room(const quenlis_common_object* common, int32_t id, const quenlis_room_layout* layout);

    int32_t id() const { return id_; }

    /// Adds a participant and wires it with all others. Unless the layout is an open room it gets the lowest
    /// free seat and the layout's default states; when those are refused it stays in the list, seated,
    /// without sources. @param name  not null
    qnl_error_code add_participant(qnl_participant_configuration config, int32_t id, const char* name);
    qnl_error_code remove_participant(int32_t id);
    int32_t get_participant_count();
    qnl_participant_configuration get_participant_configuration(int32_t id);

    /// The caller holds the room's lock, here and for get_participant, which raises when there is none.
    bool participant_exists(int32_t id) const;
    quenlis_participant* get_participant(int32_t id) const;

    /// One talker's block, to every listener that may hear it. @param frames  the participant's input_frames
    qnl_error_code input(const void* audio, int32_t frames, int32_t participant_id, quenlis_data_type type);
    /// One listener's mix; see quenlis_participant::process_output.
    qnl_error_code output(void* audio, int32_t participant_id, quenlis_data_type type);
    /// Drops the queued blocks of this talker and of this listener.
    qnl_error_code flush(int32_t participant_id);

    qnl_error_code set_participant_state(int32_t id, qnl_audio_control control, int value);
    /// In list order; an exception stops the walk there.
    qnl_error_code set_all_participants_state(qnl_audio_control control, int value);
    int get_participant_state(qnl_audio_control control, int32_t id);
    /// @param name  not null
    qnl_error_code set_name(int32_t id, const char* name);
    std::string get_name(int32_t id);

    /// The lowest seat number that nobody holds. The caller holds both locks.
    qnl_seat get_next_available_seat_no_lock() const;
    /// True for a negative number and for one that nobody holds. The caller holds the room's lock.
    bool seat_available(int32_t seat_id) const;
    /// Moves a participant to a seat or, when it is taken, to the next free layer of it.
    qnl_error_code set_participant_seat(int32_t id, int32_t seat_id);
    /// Seats everybody anew and applies the layout's default states; an exception from those leaves the
    /// layout changed and the walk where it was. @param layout  not null; must outlive the room
    qnl_error_code set_room_layout(const quenlis_room_layout* layout);
    /// Places a participant in an open room.
    qnl_error_code set_position(int32_t id, qnl_position position, qnl_heading heading);
    qnl_seat get_participant_seat(int32_t id);
    qnl_position get_participant_position(int32_t id);
    qnl_heading get_participant_heading(int32_t id);
    int32_t get_room_layout();
    /// As of the listener's latest output. Raises QNL_ERROR_INVALID_VALUE for a source-only listener.
    qnl_error_code get_participant_spherical(int32_t listener_id, int32_t source_id, int* azimuth,
                                             int* elevation, int* distance);
    /// Queues the source's place for the listener's mix.
    static void update_spherical_position(quenlis_participant* listener, const quenlis_participant* source);

    /// The room with all its participants.
    nlohmann::json get_json();
    /// One control across the room, as text without whitespace.
    std::string get_all_participants_state(qnl_audio_control control);

private:
    void take_first_seat(quenlis_participant* newcomer);
    void wire(quenlis_participant* newcomer);
    void update_all_positions(quenlis_participant* mover);

    const int32_t id_;
    nestable_shared_mutex participants_mutex_;
    nestable_shared_mutex layout_mutex_;
    const quenlis_common_object* const common_;
    std::vector<std::unique_ptr<quenlis_participant>> participants_; // in order of joining
    const quenlis_room_layout* layout_;
};
