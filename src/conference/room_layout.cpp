#include "conference/room_layout.h"

#include "conference/control_text.h"
#include "conference/geometry.h"
#include "conference/participant.h"
#include "frame/exception.h"
#include "frame/integers.h"

#include <utility>

using nlohmann::json;

namespace {

void log_error(const char* message) {
    qnl_logger::get_logger().log(QNL_LOG_ERROR, "%s", message);
}

// Any number or boolean. Integers beyond 32 bits wrap, fractions saturate.
int32_t read_number(const json& value) {
    if (value.is_number_float())
        return saturating_truncate(value.get<double>());
    return value.get<int32_t>();
}

bool has_place(const json& value) {
    return value.contains("x") && value.contains("y") && value.contains("z");
}

} // namespace

quenlis_room_layout::quenlis_room_layout(std::string name, json config)
    : name_(std::move(name)), config_(std::move(config)) {
    try {
        init_room_config();
    } catch (const std::exception& failure) {
        qnl_logger::get_logger().log(QNL_LOG_ERROR, "\n Failed to initialize room layout because: %s.",
                                     failure.what());
    }
}

void quenlis_room_layout::init_room_config() {
    report_missing_properties();
    if (config_.contains("defaultStates"))
        read_default_states();

    id_ = read_number(config_.at("id"));
    description_ = config_.at("desc").get<std::string>();
    const json& centre = config_.at("centerPoint");
    centre_point_.x = read_number(centre.at("x"));
    centre_point_.y = read_number(centre.at("y"));
    centre_point_.z = read_number(centre.at("z"));
    read_stacking();
    open_room_ = config_.at("openRoom").get<bool>();
    read_seats();
}

void quenlis_room_layout::report_missing_properties() const {
    for (const char* const key : {"id", "desc", "allowParticipantStacking", "openRoom", "centerPoint"}) {
        if (!config_.contains(key))
            qnl_logger::get_logger().log(
                QNL_LOG_ERROR, "A Room in the Room Configuration file is missing its '%s' property", key);
    }
    if (config_.contains("centerPoint") && !has_place(config_.at("centerPoint")))
        log_error("A Room in the Room Configuration file is missing its 'x','y','z' for the 'centerPoint' "
                  "property");
    if (!config_.contains("seats"))
        log_error("A Room in the Room Configuration file is missing its 'seats' property");
}

void quenlis_room_layout::read_default_states() {
    for (const auto& [key, value] : config_.at("defaultStates").get_ref<const json::object_t&>()) {
        const qnl_audio_control control = string_to_audio_control(key.c_str());
        const int32_t state = read_number(value);
        if (control != unknown_control)
            default_states_.insert({control, state});
        else
            qnl_logger::get_logger().log(
                QNL_LOG_ERROR, "A Room in the Room Configuration file has an invalid default state of %s",
                key.c_str());
    }
}

void quenlis_room_layout::read_stacking() {
    allow_stacking_ = config_.at("allowParticipantStacking").get<bool>();
    if (allow_stacking_)
        return;
    if (!config_.contains("stackDelta"))
        log_error("A Room in the Room Configuration file is missing its 'stackDelta' property");
    stack_delta_ = read_number(config_.at("stackDelta"));
}

void quenlis_room_layout::read_seats() {
    for (const json& entry : config_.at("seats").get_ref<const json::array_t&>()) {
        if (!has_place(entry)) {
            log_error("A Seat in the Room Configuration file does not have all the 'x', 'y', and / or 'z' "
                      "properties");
            continue;
        }
        const qnl_position position{read_number(entry.at("x")), read_number(entry.at("y")),
                                    read_number(entry.at("z"))};
        seats_.push_back({static_cast<int32_t>(seats_.size()), position, get_seat_heading(position)});
    }
}

void quenlis_room_layout::require_seats() const {
    if (seats_.empty())
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE, "Room layout %i (%s) has no seats.",
                                id_, name_.c_str());
}

qnl_seat quenlis_room_layout::get_seat(int seat_id) const {
    qnl_seat seat{seat_id, {0, 0, 0}, {0, 0}};
    if (seat_id < 1)
        return seat;
    require_seats();
    const auto index = static_cast<size_t>(seat_id) - 1;
    const qnl_seat& entry = seats_[index % seats_.size()];
    seat.position = entry.position;
    seat.heading = entry.heading;
    const auto layer = static_cast<int32_t>(index / seats_.size());
    if (layer > 0) {
        if (!allow_stacking_)
            seat.position.z = wrapping_add(seat.position.z, wrapping_multiply(layer, stack_delta_));
        seat.heading = get_seat_heading(seat.position);
    }
    return seat;
}

qnl_heading quenlis_room_layout::get_seat_heading(qnl_position position) const {
    return heading_towards(position, centre_point_);
}

void quenlis_room_layout::apply_default_states(quenlis_participant* participant) const {
    for (const auto& [control, value] : default_states_)
        participant->set_state(control, value);
}
