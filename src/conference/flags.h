/// A participant's controls, name and place.
#pragma once

#include "quenlis.h"

#include <cstdint>
#include <mutex>
#include <string>

/// The private groups that a participant is in; 0 is the main room.
struct participant_groups {
    int32_t whisper_room;
    int32_t sidebar_room;
};

/// Everything about a participant that may change while audio runs. Any thread; every operation holds the
/// object's own mutex, in which nothing else is locked but the logger, for its duration.
class quenlis_flags {
public:
    /// Checks and stores one control.
    ///
    /// @return QNL_ERROR_NONE; QNL_ERROR_INVALID_CONTROL for controls 6 to 9, whose good values are
    ///         stored all the same
    /// Raises QNL_ERROR_INVALID_CONTROL for an unknown control and QNL_ERROR_INVALID_VALUE for a bad value,
    /// with the stored value untouched.
    qnl_error_code set_state(qnl_audio_control control, int value);

    /// Reads one control; raises QNL_ERROR_INVALID_CONTROL for an unknown one.
    int get_state(qnl_audio_control control) const;

    /// Controls 13 and 14 in one read: the rule of who hears whom asks for them once a block and listener.
    participant_groups get_groups() const;

    /// Copies the text. @param name  not null
    qnl_error_code set_name(const char* name);

    /// The object's own text, valid until the next set_name. Only for callers that exclude one; others take
    /// copy_name.
    const char* get_name() const;
    /// A copy of the name, made under the mutex.
    std::string copy_name() const;

    qnl_seat get_seat() const;
    qnl_error_code set_seat(qnl_seat seat);
    qnl_error_code set_position(qnl_position position);
    qnl_error_code set_heading(qnl_heading heading);

private:
    struct control_rule;
    static const control_rule rules[14];

    mutable std::mutex mutex_;
    int32_t whisper_room_ = 0;
    int32_t sidebar_room_ = 0;
    int32_t stereo_bypass_ = 0;
    int32_t mute_ = 0;
    int32_t mixing_3d_ = 0;
    int32_t attenuation_ = 6;
    int32_t max_distance_ = 300;
    int32_t reverb_ = 1;
    int32_t noise_cancellation_ = 0;
    int32_t auto_eq_ = 0;
    int32_t automatic_gain_ = 0;
    int32_t device_ = QNL_DEVICE_HEADPHONE;
    int32_t half_span_angle_ = 15;
    float master_gain_ = 1.0F;
    std::string name_;
    qnl_seat seat_{-1, {0, 0, 0}, {0, 0}};
};
