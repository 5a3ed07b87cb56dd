/// How remote clients reach the library: the control protocol without a network. docs/remote_protocol.md says
/// what the texts look like and what a transport owes the engine.
#pragma once

#include "quenlis.h"
#include "remote/websocket_config.h"

#include <string>

/// Where a transport takes the event texts for its clients.
class qnl_broadcast_target {
public:
    virtual ~qnl_broadcast_target() = default;

    /// Takes one event text for all clients. Called on the thread that made the change, mostly inside the
    /// library's lock, and on several threads at once: it must neither block nor throw, nor create or destroy
    /// rooms or change layouts.
    virtual void send(const std::string& text) = 0;

protected:
    qnl_broadcast_target() = default;
    qnl_broadcast_target(const qnl_broadcast_target&) = default;
    qnl_broadcast_target& operator=(const qnl_broadcast_target&) = default;
};

/// The control server of one library instance. Starts no thread and opens no port. It is no observer of its own
/// accord: a host that wants events of its own changes registers it with qnl_add_event_manager.
class qnl_websocket_server : public qnl_event_manager {
public:
    /// Reads the configuration file; raises what qnl_websocket_config::read does.
    explicit qnl_websocket_server(const char* path);

    const qnl_websocket_config& config() const { return config_; }
    /// The instance that commands go to. Called once, before anything else.
    void set_sound_manager(qnl_handle sound_manager) { sound_manager_ = sound_manager; }
    /// Where event texts go from now on. Must be called while nothing else runs on the server or its library.
    /// @param target  borrowed; null for nowhere, as at the start
    void set_broadcast_target(qnl_broadcast_target* target) { transport_ = target; }

    /// Answers one request. Any thread, several at once.
    ///
    /// @param message  any bytes; one JSON object if the client is well
    /// @param changed  set to true when the request has changed what clients share, never to false; may be null
    /// @return one JSON object as one line. Only exhausted memory ever leaves the call as an exception.
    std::string parse_incoming_message(const std::string& message, bool* changed);

    /// Checks whether a participant could play an audio file. Nothing is played.
    /// @return QNL_ERROR_INVALID_VALUE for a file that cannot be opened; what
    ///         qnl_get_participant_configuration answers; QNL_ERROR_SAMPLE_RATE and QNL_ERROR_NUM_CHANNELS for
    ///         a file unlike the participant's input
    qnl_error_code play_demo_track(int room_id, int participant_id, const std::string& path);

    /// Sends a message of the host's own to all clients. @param message  null is an empty text
    void custom_event(int room_id, const char* message);
    /// Hands a text to the broadcast target, if there is one.
    void broadcast_message(const std::string& message);

    void create_room_event(int room_id) override;
    void destroy_room_event(int room_id) override;
    /// Reads seat and controls back through the exported functions.
    void add_participant_event(int room_id, int participant_id, const char* participant_name,
                               qnl_participant_configuration configuration) override;
    void remove_participant_event(int room_id, int participant_id) override;
    void set_participant_seat_event(int room_id, int participant_id, qnl_seat seat) override;
    void set_participant_position_event(int room_id, int participant_id, qnl_position position,
                                        qnl_heading heading) override;
    void set_participant_state_event(int room_id, int participant_id, qnl_audio_control control,
                                     int value) override;
    void set_all_participants_state_event(int room_id, qnl_audio_control control, int value) override;
    void set_room_layout_event(int room_id, int layout_id) override;
    void set_name_event(int room_id, int participant_id, const char* name) override;

    // What a transport would fill in: this edition has none, so these do nothing.
    void run() {}                   ///< serves until stop
    void run_threaded_function() {} ///< the body of the thread that serves
    void stop() {}                  ///< ends the service, also one that never ran
    void process_audio_file(int /*room_id*/, int /*participant_id*/, const std::string& /*path*/) {}

private:
    qnl_broadcast_target* transport_ = nullptr;
    qnl_handle sound_manager_ = nullptr;
    qnl_websocket_config config_;
};
