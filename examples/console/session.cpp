#include "session.h"

#include "conference/failure.h"

#include <frame/sound_manager.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <unistd.h>
#include <utility>

namespace {

constexpr qnl_library_configuration format{48000, 480, 2, true, 1};

/// A configuration file that asks for nothing, while it lives.
class default_server_file {
public:
    default_server_file()
        : path_((std::filesystem::temp_directory_path() / "quenlis_console_XXXXXX").string()) {
        const int descriptor = mkstemp(path_.data());
        if (descriptor < 0 || write(descriptor, "{}", 2) != 2)
            throw failure(path_ + ": cannot write the configuration of the control server");
        close(descriptor);
    }
    ~default_server_file() { unlink(path_.c_str()); }
    default_server_file(const default_server_file&) = delete;
    default_server_file& operator=(const default_server_file&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

} // namespace

log_printer::log_printer() {
    qnl_logger::get_logger().initialize(this);
}

log_printer::~log_printer() {
    qnl_logger::get_logger().initialize(nullptr);
}

void log_printer::handle(qnl_log_level level, const char* message) {
    std::cerr << '[' << qnl_logger::to_string(level) << "]: " << message << '\n';
}

session::session(options chosen) : chosen_(std::move(chosen)) {
    if (chosen_.log_level) {
        qnl_enable_logging(true);
        qnl_set_log_level(*chosen_.log_level);
    }
    start_engine();
    server_ = engine_->websocket_server();
    if (server_ == nullptr)
        throw failure(chosen_.server_file +
                      ": not a usable configuration of the control server (--log warning shows the reason)");
    if (chosen_.events) {
        server_->set_broadcast_target(this);
        require_success(qnl_add_event_manager(engine_.get(), server_), "register for events");
    }
    for (int room_id = 1; room_id <= chosen_.rooms; ++room_id)
        open_room(room_id);
}

session::~session() {
    for (int room_id = 1; room_id <= chosen_.rooms; ++room_id)
        qnl_destroy_room(engine_.get(), room_id);
}

void session::start_engine() {
    std::optional<default_server_file> made_up;
    if (chosen_.server_file.empty())
        made_up.emplace();
    const std::string& server = made_up ? made_up->path() : chosen_.server_file;
    const char* layouts = chosen_.layout_file.empty() ? nullptr : chosen_.layout_file.c_str();
    int code = QNL_ERROR_NONE;
    engine_.reset(qnl_initialize_library(layouts, server.c_str(), format, &code));
    require_success(code, "start the engine");
}

void session::open_room(int room_id) {
    require_success(qnl_create_room(engine_.get(), room_id), "create room " + std::to_string(room_id));
    for (int id = 1; id <= chosen_.people; ++id) {
        const std::string name = "person" + std::to_string(id);
        require_success(qnl_add_participant(engine_.get(), room_id, id, name.c_str(),
                                            {format.output_sampling_rate, 1, QNL_PARTICIPANT_REGULAR}),
                        "add " + name);
    }
}

std::string session::answer(const std::string& request) {
    bool changed = false;
    std::string response = server_->parse_incoming_message(request, &changed);
    if (changed)
        forward(request);
    pull_a_block();
    return response;
}

/// Other changes reach the clients as events of the library, which does nothing about this one.
void session::forward(const std::string& request) {
    const auto members = nlohmann::json::parse(request);
    const auto room_id = members.value("room_id", nlohmann::json());
    const auto message = members.value("message", nlohmann::json());
    if (members.at("Command") == "custom_event" && room_id.is_number_integer() && message.is_string())
        server_->custom_event(room_id.get<int>(), message.get<std::string>().c_str());
}

/// Where somebody hears the others is known from the latest block on.
void session::pull_a_block() {
    std::array<float, format.output_number_frames * format.output_number_channels> block{};
    for (int room_id = 1; room_id <= chosen_.rooms; ++room_id)
        for (int id = 1; id <= chosen_.people; ++id)
            qnl_output_audio_float(engine_.get(), room_id, id, block.data());
}

void session::send(const std::string& text) {
    std::cerr << text << '\n';
}
