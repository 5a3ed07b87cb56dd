#include "remote/commands.h"

#include <algorithm>

using nlohmann::json;

namespace {

/// The value of `control_to_edit` that names no control.
constexpr auto no_control = static_cast<qnl_audio_control>(15);
constexpr int no_value = -10000;
/// The longest name that is read back.
constexpr int longest_name = 199;

qnl_audio_control read_control(const json& member) {
    if (member.is_number_integer())
        return static_cast<qnl_audio_control>(read_int32(member));
    return qnl_string_to_audio_control(member.get<std::string>().c_str());
}

int read_value(const json& member) {
    if (member.is_number_integer() || member.is_boolean())
        return read_int32(member);
    return qnl_string_to_participant_value(member.get<std::string>().c_str());
}

json seat_members(const std::string& prefix, const qnl_seat& seat) {
    return {{prefix + "id", seat.id},
            {prefix + "x", seat.position.x},
            {prefix + "y", seat.position.y},
            {prefix + "z", seat.position.z},
            {prefix + "azimuth_heading", seat.heading.azimuth_heading},
            {prefix + "elevation_heading", seat.heading.elevation_heading}};
}

// ---- The library

command_result custom_event(const command_call& /*call*/) {
    return {QNL_ERROR_NONE};
}

command_result get_version(const command_call& /*call*/) {
    return {QNL_ERROR_NONE, {{"version", qnl_get_version()}}};
}

command_result get_library_configuration(const command_call& call) {
    const qnl_library_configuration format = qnl_get_library_configuration(call.handle());
    return {QNL_ERROR_NONE,
            {{"interleaved", format.interleaved},
             {"output_number_channels", format.output_number_channels},
             {"output_number_frames", format.output_number_frames},
             {"output_sampling_rate", format.output_sampling_rate},
             {"spatial_quality", format.spatial_quality}}};
}

command_result get_json_all_room_layouts(const command_call& call) {
    return {QNL_ERROR_NONE, {{"room_layouts", qnl_get_json_all_room_layouts(call.handle())}}};
}

// ---- Rooms

command_result get_room_count(const command_call& call) {
    int count = 0;
    const qnl_error_code code = qnl_get_room_count(call.handle(), &count);
    return {code, {{"room_count", count}}};
}

command_result get_participant_count(const command_call& call) {
    const auto [room] = call.integers("room_id");
    int count = 0;
    const qnl_error_code code = qnl_get_participant_count(call.handle(), room, &count);
    return {code, {{"participant_count", count}}};
}

command_result get_room_layout(const command_call& call) {
    const auto [room] = call.integers("room_id");
    int layout = 0;
    const qnl_error_code code = qnl_get_room_layout(call.handle(), room, &layout);
    return {code, {{"layout_id", layout}}};
}

command_result set_room_layout(const command_call& call) {
    const auto [room, layout] = call.integers("room_id", "layout_id");
    return {qnl_set_room_layout(call.handle(), room, layout)};
}

// ---- Places

command_result get_participant_position(const command_call& call) {
    const auto [room, id] = call.integers("room_id", "participant_id");
    qnl_position position{};
    qnl_heading heading{};
    const qnl_error_code code = qnl_get_participant_position(call.handle(), room, id, &position, &heading);
    return {code,
            {{"x", position.x},
             {"y", position.y},
             {"z", position.z},
             {"azimuth_heading", heading.azimuth_heading},
             {"elevation_heading", heading.elevation_heading}}};
}

command_result set_participant_position(const command_call& call) {
    const auto [room, id, x, y, z, azimuth, elevation] =
        call.integers("room_id", "participant_id", "x", "y", "z", "azimuth_heading", "elevation_heading");
    return {qnl_set_participant_position(call.handle(), room, id, {x, y, z}, {azimuth, elevation})};
}

command_result get_participant_seat(const command_call& call) {
    const auto [room, id] = call.integers("room_id", "participant_id");
    qnl_seat seat{};
    const qnl_error_code code = qnl_get_participant_seat(call.handle(), room, id, &seat);
    return {code, seat_members("seat_", seat)};
}

command_result set_participant_seat(const command_call& call) {
    const auto [room, id, asked] = call.integers("room_id", "participant_id", "seat_id");
    qnl_seat seat{};
    qnl_error_code code = qnl_set_participant_seat(call.handle(), room, id, asked);
    if (code == QNL_ERROR_NONE)
        code = qnl_get_participant_seat(call.handle(), room, id, &seat);
    return {code, seat_members("new_seat_", seat)};
}

command_result get_participant_spherical(const command_call& call) {
    const auto [room, listener, source] = call.integers("room_id", "listener_id", "source_id");
    int azimuth = 0;
    int elevation = 0;
    int distance = 0;
    const qnl_error_code code =
        qnl_get_participant_spherical(call.handle(), room, listener, source, &azimuth, &elevation, &distance);
    return {code, {{"azimuth", azimuth}, {"elevation", elevation}, {"distance", distance}}};
}

// ---- Participants

command_result get_participant_name(const command_call& call) {
    const auto [room, id] = call.integers("room_id", "participant_id");
    std::array<char, longest_name + 1> name{};
    const qnl_error_code code = qnl_get_participant_name(call.handle(), room, id, name.data(), longest_name);
    return {code, {{"name", name.data()}}};
}

command_result set_participant_name(const command_call& call) {
    const std::string name = call.text("participant_name");
    const auto [room, id] = call.integers("room_id", "participant_id");
    return {qnl_set_participant_name(call.handle(), room, id, name.c_str())};
}

command_result get_participant_configuration(const command_call& call) {
    const auto [room, id] = call.integers("room_id", "participant_id");
    qnl_participant_configuration input{};
    const qnl_error_code code = qnl_get_participant_configuration(call.handle(), room, id, &input);
    return {code,
            {{"input_number_channels", input.input_number_channels},
             {"input_sampling_rate", input.input_sampling_rate},
             {"type", static_cast<int>(input.type)}}};
}

command_result get_participant_state(const command_call& call) {
    const auto [room, id] = call.integers("room_id", "participant_id");
    int value = 0;
    const qnl_error_code code = qnl_get_participant_state(call.handle(), room, id, call.control(), &value);
    return {code, {{"value", value}}};
}

command_result set_participant_state(const command_call& call) {
    const auto [room, id] = call.integers("room_id", "participant_id");
    return {qnl_set_participant_state(call.handle(), room, id, call.control(), call.value())};
}

command_result set_all_participants_state(const command_call& call) {
    const auto [room] = call.integers("room_id");
    return {qnl_set_all_participants_state(call.handle(), room, call.control(), call.value())};
}

struct command {
    const char* name;
    command_result (*carry_out)(const command_call&);
    bool changes; // what the clients share
};

constexpr command commands[] = {
    {"custom_event", custom_event, true},
    {"get_version", get_version, false},
    {"get_library_configuration", get_library_configuration, false},
    {"get_json_all_room_layouts", get_json_all_room_layouts, false},
    {"get_room_layout", get_room_layout, false},
    {"add_demo_participant", add_demo_participant, false},
    {"remove_demo_participant", remove_demo_participant, false},
    {"play_audio_file", play_audio_file, false},
    {"stop_audio_file", stop_audio_file, false},
    {"get_room_count", get_room_count, false},
    {"get_participant_count", get_participant_count, false},
    {"get_participant_position", get_participant_position, false},
    {"set_participant_position", set_participant_position, true},
    {"set_participant_seat", set_participant_seat, true},
    {"get_participant_seat", get_participant_seat, false},
    {"set_room_layout", set_room_layout, true},
    {"get_participant_name", get_participant_name, false},
    {"set_participant_name", set_participant_name, true},
    {"get_participant_configuration", get_participant_configuration, false},
    {"set_all_participants_state", set_all_participants_state, true},
    {"get_participant_state", get_participant_state, false},
    {"set_participant_state", set_participant_state, true},
    {"get_participant_spherical", get_participant_spherical, false},
};

} // namespace

command_call::command_call(qnl_websocket_server& server, qnl_handle handle, const json& request)
    : server_(server),
      handle_(handle),
      request_(request),
      control_(request.contains("control_to_edit") ? read_control(request["control_to_edit"]) : no_control),
      value_(request.contains("value") ? read_value(request["value"]) : no_value) {}

const json& command_call::member(const char* key) const {
    static const json missing;
    const auto found = request_.find(key);
    return found != request_.end() ? *found : missing;
}

command_result carry_out(const std::string& name, const command_call& call, bool* changed) {
    const auto* const meant = std::find_if(std::begin(commands), std::end(commands),
                                           [&name](const command& known) { return name == known.name; });
    if (meant == std::end(commands))
        return {QNL_ERROR_INVALID_VALUE};
    command_result result = meant->carry_out(call);
    if (result.code == QNL_ERROR_NONE && meant->changes && changed != nullptr)
        *changed = true;
    return result;
}
