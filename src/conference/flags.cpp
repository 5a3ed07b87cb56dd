#include "conference/flags.h"

#include "frame/exception.h"

#include <limits>

/// What one control accepts and where it is kept.
struct quenlis_flags::control_rule {
    uint32_t lowest;
    uint32_t highest; // compared as unsigned, so that a negative value is above every range
    const char* refusal;
    int32_t quenlis_flags::*field; // null for the master gain, which is kept as a factor
    bool available;                // whether this edition acts on the control
};

namespace {

constexpr uint32_t any_non_negative = std::numeric_limits<int32_t>::max();

bool is_control(qnl_audio_control control) {
    return control >= QNL_CONTROL_STEREO_BYPASS_ENABLE && control <= QNL_CONTROL_SIDEBAR_ROOM;
}

} // namespace

// In order of control number, from 1. The half span angle is tested against 0 to 89 although its text speaks
// of 1 to 90: this is wanted.
const quenlis_flags::control_rule quenlis_flags::rules[14] = {
    {0, 1, "You must use a value of either 0 or 1 for stereo bypass control", &quenlis_flags::stereo_bypass_,
     true},
    {0, 1, "You must use a value of either 0 or 1 for mute control", &quenlis_flags::mute_, true},
    {0, 1, "You must use a value of either 0 or 1 for noise cancellation control",
     &quenlis_flags::noise_cancellation_, true},
    {0, 1, "You must use a value of either 0 or 1 for automatic gain control",
     &quenlis_flags::automatic_gain_, true},
    {0, 1, "You must use a value of either 0 or 1 for auto EQ control", &quenlis_flags::auto_eq_, true},
    {0, 1, "You must use a value of either 0 or 1 for 3d mixing control", &quenlis_flags::mixing_3d_, false},
    {0, 40, "You must use a value of between 0 and 40 dB for distance attenuation",
     &quenlis_flags::attenuation_, false},
    {0, any_non_negative, "You must use a value of 0 or greater for max distance",
     &quenlis_flags::max_distance_, false},
    {0, 1, "You must use a value of either 0 or 1 for reverb control", &quenlis_flags::reverb_, false},
    {1, 2, "You must use a valid qnl_device_types value to change the device", &quenlis_flags::device_, true},
    {0, 89, "You must use a value of between 1 and 90 for half span angle control",
     &quenlis_flags::half_span_angle_, true},
    {0, 100, "You must use a value of between 0 and 100 for master gain control", nullptr, true},
    {0, 100, "You must use a value of between 0 and 100 for whisper room control",
     &quenlis_flags::whisper_room_, true},
    {0, 100, "You must use a value of between 0 and 100 for sidebar room control",
     &quenlis_flags::sidebar_room_, true},
};

static_assert(QNL_CONTROL_STEREO_BYPASS_ENABLE == 1 && QNL_CONTROL_SIDEBAR_ROOM == 14);

qnl_error_code quenlis_flags::set_state(qnl_audio_control control, int value) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!is_control(control))
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_CONTROL,
                                "You must use a valid control to edit from the qnl_audio_control list");
    const control_rule& rule = rules[control - 1];
    const auto magnitude = static_cast<uint32_t>(value);
    if (magnitude < rule.lowest || magnitude > rule.highest)
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE, "%s", rule.refusal);

    if (rule.field != nullptr)
        this->*rule.field = value;
    else
        master_gain_ = static_cast<float>(value) * 0.01F;

    if (rule.available)
        return QNL_ERROR_NONE;
    // Stored and refused: what was asked for can be read back, although nothing acts on it.
    qnl_logger::get_logger().log(
        QNL_LOG_WARNING, "3D Mixing is not available in the client side version of the Quenlis libraries");
    return QNL_ERROR_INVALID_CONTROL;
}

int quenlis_flags::get_state(qnl_audio_control control) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!is_control(control))
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_CONTROL,
                                "You did not input a valid control to edit");
    const control_rule& rule = rules[control - 1];
    // The gain comes back truncated, so that some values read one lower: the output stage applies what is
    // read.
    return rule.field != nullptr ? this->*rule.field : static_cast<int>(master_gain_ * 100.0F);
}

participant_groups quenlis_flags::get_groups() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return {whisper_room_, sidebar_room_};
}

qnl_error_code quenlis_flags::set_name(const char* name) {
    const std::lock_guard<std::mutex> lock(mutex_);
    name_ = name;
    return QNL_ERROR_NONE;
}

const char* quenlis_flags::get_name() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return name_.c_str();
}

std::string quenlis_flags::copy_name() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return name_;
}

qnl_seat quenlis_flags::get_seat() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return seat_;
}

qnl_error_code quenlis_flags::set_seat(qnl_seat seat) {
    const std::lock_guard<std::mutex> lock(mutex_);
    seat_ = seat;
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_flags::set_position(qnl_position position) {
    const std::lock_guard<std::mutex> lock(mutex_);
    seat_.position = position;
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_flags::set_heading(qnl_heading heading) {
    const std::lock_guard<std::mutex> lock(mutex_);
    seat_.heading = heading;
    return QNL_ERROR_NONE;
}
