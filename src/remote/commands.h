/// The commands of the control protocol. Each ends in one exported function, with that function's checks, locks
/// and codes.
#pragma once

#include "remote/protocol_json.h"
#include "remote/websocket_server.h"

#include <array>
#include <string>

/// What came of a command.
struct command_result {
    qnl_error_code code;
    nlohmann::json results{};  ///< members of the response on success; null for none
    std::string description{}; ///< of a failure; empty for the name of the code
};

/// A command with its members and what it works on.
class command_call {
public:
    /// Reads `control_to_edit` and `value`, which fail any command when they have a bad type.
    /// @param request  an object that outlives the call
    command_call(qnl_websocket_server& server, qnl_handle handle, const nlohmann::json& request);

    qnl_websocket_server& server() const { return server_; }
    qnl_handle handle() const { return handle_; }
    qnl_audio_control control() const { return control_; } ///< 15, which is none, when the member is missing
    int value() const { return value_; } ///< -10000, which no control takes, when the member is missing

    /// The member's value, null when it is missing.
    const nlohmann::json& member(const char* key) const;
    std::string text(const char* key) const { return member(key).get<std::string>(); }
    /// Members by read_int32. The first bad one, in the order given, is the one that is reported.
    template <class... Keys>
    std::array<int, sizeof...(Keys)> integers(Keys... keys) const {
        return {read_int32(member(keys))...};
    }

private:
    qnl_websocket_server& server_;
    qnl_handle handle_;
    const nlohmann::json& request_;
    qnl_audio_control control_;
    int value_;
};

/// Carries out the command of that very name. Raises the JSON library's type_error for members that are missing
/// or of the wrong type and std::out_of_range for numbers beyond 32 bits, with nothing changed.
/// @param changed  set to true after a success that changes what clients share; may be null
/// @return QNL_ERROR_INVALID_VALUE for an unknown name
command_result carry_out(const std::string& name, const command_call& call, bool* changed);

// The commands of demo participants, whose ids are below 0.
command_result add_demo_participant(const command_call& call);
command_result remove_demo_participant(const command_call& call);
command_result play_audio_file(const command_call& call);
command_result stop_audio_file(const command_call& call);
