// How a sound manager starts: the configuration is checked, room layouts and control server are read.
#include "dsp/vector_primitives.h"
#include "frame/exception.h"
#include "frame/integers.h"
#include "frame/nested_json.h"
#include "frame/sound_manager.h"

#include <algorithm>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>

using nlohmann::json;

namespace {

template <class... Values>
bool is_one_of(int32_t value, Values... accepted) {
    return ((value == accepted) || ...);
}

void start_vector_layer_once() {
    static std::mutex mutex;
    static bool started = false;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!started)
        qnl_start_vector_layer();
    started = true;
}

/// The bytes of a file. Raises std::length_error above 64 MiB, which an endless device would pass as well.
std::string read_whole(std::istream& file) {
    constexpr size_t longest = size_t{64} << 20;
    std::string text;
    char piece[65536];
    while (file.read(piece, sizeof piece), file.gcount() > 0) {
        text.append(piece, static_cast<size_t>(file.gcount()));
        if (text.size() > longest)
            throw std::length_error("the file is longer than 64 MiB");
    }
    return text;
}

json fallback_document() {
    const json origin = {{"x", 0}, {"y", 0}, {"z", 0}};
    const json layout = {{"id", 1},
                         {"desc",
                          "This is the fallback room layout when your custom room layout file is missing "
                          "or corrupted"},
                         {"allowParticipantStacking", true},
                         {"openRoom", true},
                         {"centerPoint", origin},
                         {"seats", json::array({origin})}};
    return {{"default", "fallback_layout"}, {"room_list", {{"fallback_layout", layout}}}};
}

} // namespace

quenlis_sound_manager::quenlis_sound_manager(const char* room_layout_path, const char* websocket_config_path,
                                             qnl_library_configuration configuration) {
    validate(configuration);
    load_room_layouts(room_layout_path);
    start_websocket_server(websocket_config_path);
    start_vector_layer_once();
    common_ = quenlis_common_object::derive(configuration);
}

void quenlis_sound_manager::validate(const qnl_library_configuration& configuration) {
    const int32_t rate = configuration.output_sampling_rate;
    const int32_t frames = configuration.output_number_frames;
    if (!is_one_of(rate, 8000, 16000, 24000, 32000, 48000))
        throw quenlis_exception(
            QNL_LOG_ERROR, QNL_ERROR_SAMPLE_RATE,
            "You provided %i but you must choose a sampling rate of either 8000, 16000, 24000, "
            "32000, or 48000",
            rate);
    // The text speaks of 10 and 20 milliseconds only, and block lengths of a power of two pass: this is
    // wanted.
    if (!is_one_of(engine_frames_of(configuration), 480, 512, 960, 1024))
        throw quenlis_exception(
            QNL_LOG_ERROR, QNL_ERROR_DATA_LENGTH,
            "You provided %i must choose an output number of frames of either 10 or 20 "
            "milliseconds. Based on your chosen sampling rate of %i this would be either %i "
            "frames or %i frames.",
            frames, rate, saturating_truncate(rate * 0.01), saturating_truncate(rate * 0.02));
    if (!is_one_of(configuration.output_number_channels, 1, 2))
        throw quenlis_exception(
            QNL_LOG_ERROR, QNL_ERROR_NUM_CHANNELS,
            "You provided %i but you must choose either 1 or 2 for output number of channels",
            configuration.output_number_channels);
    if (!is_one_of(configuration.spatial_quality, 1, 2, 3, 4, 5))
        throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_SPATIAL_QUALITY,
                                "You provided %i but you must choose a spatial quality between 1 and 5",
                                configuration.spatial_quality);
}

void quenlis_sound_manager::load_room_layouts(const char* path) {
    try {
        read_room_layouts(path);
    } catch (const std::exception&) {
        // Layouts that the file has brought so far stay in the list.
        room_layouts_document_ = fallback_document();
        init_room_layouts();
        qnl_logger::get_logger().log(
            QNL_LOG_WARNING, "The library will still function but it will use the fallback room layout");
    }
}

void quenlis_sound_manager::read_room_layouts(const char* path) {
    if (path == nullptr)
        throw quenlis_exception(
            QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE,
            "You disabled custom room layouts by using NULL for the room layout file path.");
    std::ifstream file(path);
    if (!file)
        throw quenlis_exception(
            QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE,
            "%s does not exist. Please check the path to your room configuration file is correct", path);
    room_layouts_document_ = parse_nested_json(read_whole(file));
    init_room_layouts();
}

void quenlis_sound_manager::init_room_layouts() {
    if (!room_layouts_document_.contains("room_list"))
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_DATA_NULL,
                                "The Room Configuration file is missing the 'room_list' property");
    if (!room_layouts_document_.contains("default"))
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_DATA_NULL,
                                "The Room Configuration file is missing its 'default' property");
    const auto default_name = room_layouts_document_.at("default").get<std::string>();
    default_room_layout_ = nullptr;
    for (const auto& [name, layout] :
         room_layouts_document_.at("room_list").get_ref<const json::object_t&>()) {
        room_layouts_.push_back(std::make_unique<quenlis_room_layout>(name, layout));
        if (name == default_name)
            default_room_layout_ = room_layouts_.back().get();
    }
    if (default_room_layout_ == nullptr)
        throw quenlis_exception(
            QNL_LOG_WARNING, QNL_ERROR_DATA_NULL,
            "The Room Configuration file's 'default' property names no entry of its 'room_list' property");
    room_layouts_text_ = room_layouts_document_.dump();
}

const quenlis_room_layout* quenlis_sound_manager::get_room_layout(int32_t layout_id) const {
    const auto found = std::find_if(room_layouts_.begin(), room_layouts_.end(),
                                    [layout_id](const auto& layout) { return layout->id() == layout_id; });
    return found != room_layouts_.end() ? found->get() : nullptr;
}

void quenlis_sound_manager::start_websocket_server(const char* path) {
    try {
        websocket_server_.reset(new qnl_websocket_server(path));
        websocket_server_->set_sound_manager(this);
    } catch (const std::exception&) {
        qnl_logger::get_logger().log(QNL_LOG_WARNING,
                                     "The library will work properly except qnl_enable_websockets and "
                                     "qnl_send_custom_websocket_event");
    }
}
