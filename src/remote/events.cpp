// What the clients of a transport are told. The keys are spelled as they stand: the same thing is called by
// different names in events, commands and snapshots.
#include "remote/protocol_json.h"
#include "remote/websocket_server.h"

#include <utility>

using nlohmann::json;

namespace {

/// Builds the text of an event once and hands it on.
void broadcast(qnl_websocket_server& server, const char* event, int room_id, json members) {
    members["Event"] = event;
    members["room_id"] = room_id;
    server.broadcast_message(to_lenient_text(members));
}

void add_place(json& members, const qnl_position& position, const qnl_heading& heading) {
    members["x"] = position.x;
    members["y"] = position.y;
    members["z"] = position.z;
    members["azimuth_heading"] = heading.azimuth_heading;
    members["elevation_heading"] = heading.elevation_heading;
}

const char* or_empty(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

void qnl_websocket_server::create_room_event(int room_id) {
    broadcast(*this, "create_room", room_id, {});
}

void qnl_websocket_server::destroy_room_event(int room_id) {
    broadcast(*this, "destroy_room", room_id, {});
}

void qnl_websocket_server::add_participant_event(int room_id, int participant_id,
                                                 const char* participant_name,
                                                 qnl_participant_configuration configuration) {
    // What cannot be read any more is 0.
    qnl_seat seat{};
    qnl_get_participant_seat(sound_manager_, room_id, participant_id, &seat);
    json members = {{"participant_id", participant_id},
                    {"participant_name", or_empty(participant_name)},
                    {"input_number_channels", configuration.input_number_channels},
                    {"input_sampling_rate", configuration.input_sampling_rate},
                    {"type", static_cast<int>(configuration.type)},
                    {"seat_id", seat.id},
                    {"seat_x", seat.position.x},
                    {"seat_y", seat.position.y},
                    {"seat_z", seat.position.z},
                    {"azimuth_heading", seat.heading.azimuth_heading},
                    {"elevation_heading", seat.heading.elevation_heading}};
    for (int number = QNL_CONTROL_STEREO_BYPASS_ENABLE; number <= QNL_CONTROL_SIDEBAR_ROOM; ++number) {
        int value = 0;
        qnl_get_participant_state(sound_manager_, room_id, participant_id,
                                  static_cast<qnl_audio_control>(number), &value);
        members[qnl_audio_control_to_string(number)] = value;
    }
    broadcast(*this, "add_participant", room_id, std::move(members));
}

void qnl_websocket_server::remove_participant_event(int room_id, int participant_id) {
    broadcast(*this, "remove_participant", room_id, {{"participant_id", participant_id}});
}

void qnl_websocket_server::set_participant_seat_event(int room_id, int participant_id, qnl_seat seat) {
    json members = {{"participant_id", participant_id}, {"seat", seat.id}};
    add_place(members, seat.position, seat.heading);
    broadcast(*this, "move_participant_event", room_id, std::move(members));
}

void qnl_websocket_server::set_participant_position_event(int room_id, int participant_id,
                                                          qnl_position position, qnl_heading heading) {
    json members = {{"participant_id", participant_id}};
    add_place(members, position, heading);
    broadcast(*this, "set_participant_position", room_id, std::move(members));
}

void qnl_websocket_server::set_participant_state_event(int room_id, int participant_id,
                                                       qnl_audio_control control, int value) {
    broadcast(*this, "set_participant_state", room_id,
              {{"participant_id", participant_id},
               {"control_to_edit", qnl_audio_control_to_string(control)},
               {"value", value}});
}

void qnl_websocket_server::set_all_participants_state_event(int room_id, qnl_audio_control control,
                                                            int value) {
    broadcast(*this, "set_all_participants_state", room_id,
              {{"control_to_edit", qnl_audio_control_to_string(control)}, {"value", value}});
}

void qnl_websocket_server::set_room_layout_event(int room_id, int layout_id) {
    broadcast(*this, "set_room_layout", room_id, {{"room_config_id", layout_id}});
}

void qnl_websocket_server::set_name_event(int room_id, int participant_id, const char* name) {
    broadcast(*this, "set_name", room_id, {{"participant_id", participant_id}, {"name", or_empty(name)}});
}

void qnl_websocket_server::custom_event(int room_id, const char* message) {
    broadcast(*this, "custom_event", room_id, {{"message", or_empty(message)}});
}
