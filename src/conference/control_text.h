/// Names of controls and values, to numbers and back: what the exported functions of the like names answer.
#pragma once

#include "quenlis.h"

/// What qnl_string_to_audio_control gives for an unknown name; no control has this number.
constexpr qnl_audio_control unknown_control = static_cast<qnl_audio_control>(15);

/// The name of a control; empty, with a log line, for a number outside 1 to 14. The text is constant.
const char* audio_control_to_string(int control);

/// The control of that name in any mix of upper and lower case; unknown_control, with a log line, otherwise.
/// @param text  may be null, which names no control
qnl_audio_control string_to_audio_control(const char* text);

/// The value that a text stands for, by name or as the decimal integer at its start; -9990, with a log line,
/// otherwise. @param text  may be null, which stands for nothing
int string_to_participant_value(const char* text);
