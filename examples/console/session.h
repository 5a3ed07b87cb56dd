#pragma once

#include "options.h"

#include <frame/logger.h>
#include <remote/websocket_server.h>

#include <memory>
#include <string>
#include <vector>

/// Prints the engine's log on standard error, since standard output belongs to the responses.
class log_printer : public qnl_logger_handler {
public:
    log_printer();
    ~log_printer() override;
    log_printer(const log_printer&) = delete;
    log_printer& operator=(const log_printer&) = delete;

    void handle(qnl_log_level level, const char* message) override;
};

/// Rooms with people in them, and a transport that knows one client: the person at the terminal.
class session : public qnl_broadcast_target {
public:
    /// Throws a failure.
    explicit session(options chosen);
    /// Takes the rooms down, which is an event for each.
    ~session() override;
    session(const session&) = delete;
    session& operator=(const session&) = delete;

    /// The response to one request.
    std::string answer(const std::string& request);
    /// Prints an event on standard error.
    void send(const std::string& text) override;

private:
    struct destroyer {
        void operator()(qnl_handle engine) const { qnl_destroy_library(engine); }
    };

    void start_engine();
    void open_room(int room_id);
    void pull_a_block();
    void forward(const std::string& request);

    options chosen_;
    log_printer log_;
    std::unique_ptr<quenlis_sound_manager, destroyer> engine_;
    qnl_websocket_server* server_ = nullptr;
};
