/// The engine behind a handle.
#pragma once

#include "conference/participant.h"
#include "conference/room.h"
#include "conference/room_layout.h"
#include "frame/common_object.h"
#include "frame/shared_lock.h"
#include "quenlis.h"
#include "remote/websocket_server.h"

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// What is told of a participant that cannot be found: -1 for the numbers, and the type 4, which is none.
inline qnl_participant_configuration unknown_participant_configuration() {
    return {-1, -1, static_cast<qnl_participant_type>(4)};
}

/// Owns rooms and layouts. Every operation locks the manager, finds the room, calls it, and after a change
/// tells the observers in order of registration and writes an info line, all under the lock. A
/// quenlis_exception on the way ends the operation and becomes its result; what was changed before stays.
/// Other exceptions pass to the caller, with the locks released.
///
/// Results, ranges and refusals are those of the exported functions of the same names in quenlis.h.
class quenlis_sound_manager {
public:
    /// Raises quenlis_exception at QNL_LOG_ERROR for a refused configuration. A bad layout file is logged and
    /// replaced by the fallback layout; with a bad control server configuration there is no control server, and
    /// the log says so. @param room_layout_path, websocket_config_path  may be null
    quenlis_sound_manager(const char* room_layout_path, const char* websocket_config_path,
                          qnl_library_configuration configuration);
    quenlis_sound_manager(const quenlis_sound_manager&) = delete;
    quenlis_sound_manager& operator=(const quenlis_sound_manager&) = delete;

    const qnl_library_configuration& configuration() const { return common_.configuration; }
    /// The first layout with that id, or null.
    const quenlis_room_layout* get_room_layout(int32_t layout_id) const;
    /// The document of all layouts as one line of JSON.
    const std::string& room_layouts_text() const { return room_layouts_text_; }
    /// Where remote clients come in, or null without a usable control server configuration. Lives as long as
    /// the manager and is none of its observers.
    qnl_websocket_server* websocket_server() const { return websocket_server_.get(); }

    qnl_error_code create_room(int32_t room_id);
    qnl_error_code destroy_room(int32_t room_id);
    /// @param name  null is an empty name
    qnl_error_code add_participant(int32_t room_id, int32_t participant_id, const char* name,
                                   qnl_participant_configuration config);
    qnl_error_code remove_participant(int32_t room_id, int32_t participant_id);

    qnl_error_code input_audio_short(int32_t room_id, int32_t participant_id, const short* audio,
                                     int32_t frames);
    qnl_error_code input_audio_float(int32_t room_id, int32_t participant_id, const float* audio,
                                     int32_t frames);
    qnl_error_code input_audio_double(int32_t room_id, int32_t participant_id, const double* audio,
                                      int32_t frames);
    qnl_error_code output_audio_short(int32_t room_id, int32_t participant_id, short* output);
    qnl_error_code output_audio_float(int32_t room_id, int32_t participant_id, float* output);
    qnl_error_code output_audio_double(int32_t room_id, int32_t participant_id, double* output);
    qnl_error_code flush_audio(int32_t room_id, int32_t participant_id);

    qnl_error_code set_participant_state(int32_t room_id, int32_t participant_id, qnl_audio_control control,
                                         int32_t value);
    qnl_error_code set_all_participants_state(int32_t room_id, qnl_audio_control control, int32_t value);
    qnl_error_code get_participant_state(int32_t room_id, int32_t participant_id, qnl_audio_control control,
                                         int* value);

    qnl_error_code set_room_layout(int32_t room_id, int32_t layout_id);
    qnl_error_code set_participant_seat(int32_t room_id, int32_t participant_id, int32_t seat_index);
    qnl_error_code set_participant_position(int32_t room_id, int32_t participant_id, qnl_position position,
                                            qnl_heading heading);
    qnl_error_code set_participant_name(int32_t room_id, int32_t participant_id, const char* name);

    qnl_error_code get_room_count(int* room_count);
    qnl_error_code get_participant_count(int32_t room_id, int* participant_count);
    qnl_error_code get_layout_of_room(int32_t room_id, int* layout_id);
    qnl_error_code get_participant_configuration(int32_t room_id, int32_t participant_id,
                                                 qnl_participant_configuration* config);
    qnl_error_code get_participant_seat(int32_t room_id, int32_t participant_id, qnl_seat* seat);
    qnl_error_code get_participant_position(int32_t room_id, int32_t participant_id, qnl_position* position,
                                            qnl_heading* heading);
    qnl_error_code get_participant_spherical(int32_t room_id, int32_t listener_id, int32_t source_id,
                                             int* azimuth, int* elevation, int* distance);
    /// The name, empty when there is no such room or participant.
    std::string get_participant_name(int32_t room_id, int32_t participant_id);

    /// Takes no lock; refused from inside an observer. @param event_manager  a qnl_event_manager, borrowed
    qnl_error_code add_event_manager(void* event_manager);
    qnl_error_code enable_websockets(bool enable);
    qnl_error_code send_custom_websocket_event(int32_t room_id, const char* event);

private:
    static void validate(const qnl_library_configuration& configuration);
    void load_room_layouts(const char* path);
    void read_room_layouts(const char* path);
    void init_room_layouts();
    void start_websocket_server(const char* path);

    using room_list = std::vector<std::unique_ptr<quenlis_room>>;
    room_list::iterator find_room(int32_t room_id);
    room_list::iterator find_existing_room(int32_t room_id);
    quenlis_room& room(int32_t room_id) { return **find_existing_room(room_id); }
    template <class Operation>
    qnl_error_code under_shared_lock(Operation operation);
    template <class Operation>
    qnl_error_code under_exclusive_lock(Operation operation);
    template <class Event>
    void notify(Event event);

    qnl_error_code input_audio(int32_t room_id, int32_t participant_id, const void* audio, int32_t frames,
                               quenlis_data_type type);
    qnl_error_code output_audio(int32_t room_id, int32_t participant_id, void* output,
                                quenlis_data_type type);
    static qnl_error_code refuse_websockets();

    struct stop_and_delete {
        void operator()(qnl_websocket_server* server) const {
            server->stop();
            delete server;
        }
    };

    std::vector<qnl_event_manager*> event_managers_; // in order of registration, not owned
    std::unique_ptr<qnl_websocket_server, stop_and_delete> websocket_server_; // ends after rooms and layouts
    std::vector<std::unique_ptr<quenlis_room_layout>> room_layouts_;
    const quenlis_room_layout* default_room_layout_ = nullptr;
    quenlis_common_object common_{}; // outlives the rooms, which point at it
    room_list rooms_;                // in order of creation
    nestable_shared_mutex manager_mutex_;
    nlohmann::json room_layouts_document_;
    std::string room_layouts_text_;
};
