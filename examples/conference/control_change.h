#pragma once

#include <quenlis.h>

#include <string>
#include <vector>

/// One control that is set before the audio starts.
struct control_change {
    std::string participant; ///< name or number; empty means everybody
    qnl_audio_control control;
    int value;
};

/// Reads "[WHO:]CONTROL=VALUE": the control by name or number, the value as an integer or by its name.
/// Throws a usage_error. Whether the engine takes the value is only known when it is set.
control_change parse_control_change(const std::string& text);

/// Reads "[WHO:]headphone" or "[WHO:]speaker". Throws a usage_error.
control_change parse_device(const std::string& text);

/// Reads "WHO[,WHO...]=GROUP", one change for each WHO. Throws a usage_error.
/// @param control  QNL_CONTROL_WHISPER_ROOM or QNL_CONTROL_SIDEBAR_ROOM
std::vector<control_change> parse_private_group(qnl_audio_control control, const std::string& text);
