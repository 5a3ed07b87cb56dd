#include "control_change.h"

#include "failure.h"

#include <sstream>
#include <utility>

namespace {

constexpr int first_control = QNL_CONTROL_STEREO_BYPASS_ENABLE;
constexpr int last_control = QNL_CONTROL_SIDEBAR_ROOM;
constexpr int no_value = -9990; // what qnl_string_to_participant_value gives for a text it cannot read

bool all_digits(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool starts_like_a_number(const std::string& text) {
    return text.find_first_of("+-0123456789 ") == 0;
}

bool is_integer(const std::string& text) {
    return all_digits(text[0] == '-' ? text.substr(1) : text);
}

int parse_value(const std::string& text) {
    // The engine takes the digits in front and drops the rest; here "5O" for 50 had better not mean 5.
    const bool readable = !text.empty() && (is_integer(text) || !starts_like_a_number(text));
    const int value = readable ? qnl_string_to_participant_value(text.c_str()) : no_value;
    if (value == no_value)
        throw usage_error("'" + text +
                          "' is no value for a control: use an integer, true, false, QNL_ENABLE, "
                          "QNL_DISABLE, QNL_DEVICE_HEADPHONE or QNL_DEVICE_SPEAKER");
    return value;
}

qnl_audio_control parse_control(const std::string& text) {
    const bool numbered = all_digits(text) && text.size() < 3;
    const int control = numbered ? std::stoi(text) : int{qnl_string_to_audio_control(text.c_str())};
    if (control < first_control || control > last_control)
        throw usage_error("'" + text + "' is no control: use a number from " + std::to_string(first_control) +
                          " to " + std::to_string(last_control) +
                          " or a name such as QNL_CONTROL_MASTER_GAIN");
    return static_cast<qnl_audio_control>(control);
}

/// Splits at the last `mark`, since names of participants may hold one too. Without a mark, the first half is
/// empty.
std::pair<std::string, std::string> split_at_last(const std::string& text, char mark) {
    const std::size_t place = text.rfind(mark);
    if (place == std::string::npos)
        return {"", text};
    return {text.substr(0, place), text.substr(place + 1)};
}

} // namespace

control_change parse_control_change(const std::string& text) {
    const auto [target, value] = split_at_last(text, '=');
    if (target.empty())
        throw usage_error("'" + text + "' sets no control: write [WHO:]CONTROL=VALUE");
    const auto [participant, control] = split_at_last(target, ':');
    return {participant, parse_control(control), parse_value(value)};
}

control_change parse_device(const std::string& text) {
    const auto [participant, device] = split_at_last(text, ':');
    if (device == "headphone")
        return {participant, QNL_CONTROL_DEVICE, QNL_DEVICE_HEADPHONE};
    if (device == "speaker")
        return {participant, QNL_CONTROL_DEVICE, QNL_DEVICE_SPEAKER};
    throw usage_error("'" + text + "' is no device: write [WHO:]headphone or [WHO:]speaker");
}

std::vector<control_change> parse_private_group(qnl_audio_control control, const std::string& text) {
    const auto [names, group] = split_at_last(text, '=');
    if (names.empty())
        throw usage_error("'" + text + "' is no private group: write WHO[,WHO...]=GROUP");
    std::vector<control_change> changes;
    std::istringstream list(names);
    for (std::string name; std::getline(list, name, ',');) {
        if (name.empty())
            throw usage_error("'" + text + "' names nobody between two commas");
        changes.push_back({name, control, parse_value(group)});
    }
    return changes;
}
