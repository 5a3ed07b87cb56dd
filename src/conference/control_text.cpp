#include "conference/control_text.h"

#include "frame/logger.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

constexpr std::array<const char*, 14> control_names = {
    "QNL_CONTROL_STEREO_BYPASS_ENABLE",
    "QNL_CONTROL_MUTE_ENABLE",
    "QNL_CONTROL_ANC_ENABLE",
    "QNL_CONTROL_AGC_ENABLE",
    "QNL_CONTROL_AUTO_EQ_ENABLE",
    "QNL_CONTROL_MIXING_3D_ENABLE",
    "QNL_CONTROL_MIXING_3D_ATTENUATION",
    "QNL_CONTROL_MIXING_3D_MAX_DISTANCE",
    "QNL_CONTROL_MIXING_3D_REVERB_ENABLE",
    "QNL_CONTROL_DEVICE",
    "QNL_CONTROL_HALF_SPAN_ANGLE",
    "QNL_CONTROL_MASTER_GAIN",
    "QNL_CONTROL_WHISPER_ROOM",
    "QNL_CONTROL_SIDEBAR_ROOM",
};

constexpr std::array<std::pair<const char*, int>, 6> value_names = {{
    {"QNL_DEVICE_HEADPHONE", QNL_DEVICE_HEADPHONE},
    {"QNL_DEVICE_SPEAKER", QNL_DEVICE_SPEAKER},
    {"QNL_ENABLE", 1},
    {"TRUE", 1},
    {"QNL_DISABLE", 0},
    {"FALSE", 0},
}};

// Plain ASCII, whatever the host's locale.
std::string to_upper_case(const char* text) {
    std::string upper(text);
    for (char& character : upper) {
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    }
    return upper;
}

int refuse_value(const char* text) {
    qnl_logger::get_logger().log(
        QNL_LOG_WARNING,
        "State value %s is invalid. You must enter an integer value, the string QNL_DEVICE_HEADPHONE, the "
        "string QNL_DEVICE_SPEAKER, the string QNL_ENABLE, or the string QNL_DISABLE ",
        text);
    return QNL_ERROR_INVALID_VALUE;
}

} // namespace

const char* audio_control_to_string(int control) {
    constexpr int first = QNL_CONTROL_STEREO_BYPASS_ENABLE;
    constexpr int last = QNL_CONTROL_SIDEBAR_ROOM;
    if (control >= first && control <= last)
        return control_names[static_cast<size_t>(control - first)];
    qnl_logger::get_logger().log(QNL_LOG_WARNING, "State %i is not valid, must be between %i and %i.",
                                 control, first, last);
    return "";
}

qnl_audio_control string_to_audio_control(const char* text) {
    const std::string upper = to_upper_case(text != nullptr ? text : "");
    const auto* const name = std::find(control_names.begin(), control_names.end(), upper);
    if (name != control_names.end())
        return static_cast<qnl_audio_control>(QNL_CONTROL_STEREO_BYPASS_ENABLE +
                                              (name - control_names.begin()));
    qnl_logger::get_logger().log(QNL_LOG_WARNING, "%s is not a valid control.", text != nullptr ? text : "");
    return unknown_control;
}

int string_to_participant_value(const char* text) {
    if (text == nullptr)
        return refuse_value("");
    const std::string upper = to_upper_case(text);
    for (const auto& [name, value] : value_names) {
        if (upper == name)
            return value;
    }
    try {
        return std::stoi(text);
    } catch (const std::logic_error&) { // no digits, or out of range
        return refuse_value(text);
    }
}
