/// A library with a control server and a room, seen as a remote client sees it.
#pragma once

#include "frame/sound_manager.h"
#include "kit/host.h"

#include <nlohmann/json.hpp>
#include <utility>

using nlohmann::json;

/// Room 1 with Ada, id 1, in mono and Bob, id 2, in stereo, both regular. Its layout 1 has three seats in a row;
/// layout 2 is the same as an open room.
class remote_room : public testing::Test, public qnl_broadcast_target {
protected:
    remote_room() {
        json layouts = json::parse(test_kit::row_layout(3));
        layouts["room_list"]["open"] = layouts["room_list"]["row"];
        layouts["room_list"]["open"].update({{"openRoom", true}, {"id", 2}});
        layouts_text_ = layouts.dump();
        handle_ = qnl_initialize_library(files_.write("layouts.json", layouts_text_).c_str(),
                                         files_.write("server.json", "{}").c_str(), {48000, 480, 2, false, 1},
                                         nullptr);
        qnl_create_room(handle_, 1);
        qnl_add_participant(handle_, 1, 1, "Ada", {48000, 1, QNL_PARTICIPANT_REGULAR});
        qnl_add_participant(handle_, 1, 2, "Bob", {48000, 2, QNL_PARTICIPANT_REGULAR});
    }
    ~remote_room() override { qnl_destroy_library(handle_); }

    qnl_websocket_server& server() { return *handle_->websocket_server(); }
    void send(const std::string& text) override { heard_.push_back(text); }
    /// The texts that were broadcast since the last call.
    std::vector<std::string> heard() { return std::exchange(heard_, {}); }

    /// The response as it is, for any bytes.
    std::string answer_text(const std::string& request, bool* changed = nullptr) {
        return server().parse_incoming_message(request, changed);
    }
    /// The response without its echo, which must be the request itself.
    json answer(const std::string& request, bool* changed = nullptr) {
        json response = json::parse(answer_text(request, changed));
        EXPECT_EQ(response["Request"], json::parse(request));
        response.erase("Request");
        return response;
    }

    test_kit::temporary_directory files_;
    std::string layouts_text_;
    qnl_handle handle_;

private:
    std::vector<std::string> heard_;
};
