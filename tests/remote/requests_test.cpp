// Requests that are not well: one answer of the same shape each, and nothing done.
#include "remote_room.h"

#include <atomic>
#include <future>
#include <tuple>

namespace {

using namespace testing;

const std::string type_error = "[json.exception.type_error.302] type must be ";

const std::string demo_rule = "You must use a negative integer as your demo participant ID";
#define DEMO R"("demo_name":"","room_id":1,"sampling_rate":48000)"

// What comes first is what is reported. docs/remote_protocol.md holds the plain cases.
const std::tuple<const char*, int, std::string> refusals[] = {
    {R"({"Command":" get_version"})", -9990, "QNL_ERROR_INVALID_VALUE"},
    {R"({"Command":"get_version\u0000"})", -9990, "QNL_ERROR_INVALID_VALUE"},
    {R"({"Command":7,"value":null})", -9990, type_error + "string, but is number"},
    {R"({"Command":"nothing","control_to_edit":true,"value":1.5})", -9990,
     type_error + "string, but is boolean"},
    {R"({"Command":"get_version","control_to_edit":2.0})", -9990, type_error + "string, but is number"},
    {R"({"Command":"add_demo_participant","participant_id":5,"value":[]})", -9990,
     type_error + "string, but is array"},
    {R"({"Command":"stop_audio_file","participant_id":-1.0,"room_id":1})", -9992, demo_rule},
    {R"({"Command":"play_audio_file","room_id":99})", -9992, demo_rule},
    {R"({"Command":"add_demo_participant","participant_id":-5,"room_id":"x"})", -9990,
     type_error + "string, but is null"},
    {R"({"Command":"add_demo_participant","participant_id":-5,"number_channels":3,)" DEMO "}", -9996,
     "QNL_ERROR_NUM_CHANNELS"},
    {R"({"Command":"add_demo_participant","participant_id":-4294967295,"number_channels":1,)" DEMO "}", -9990,
     "the number -4294967295 is beyond 32 bits"},
    {R"({"Command":"remove_demo_participant","participant_id":-5,"room_id":1})", -9992,
     "QNL_ERROR_INVALID_PARTICIPANT_ID"},
    {R"({"Command":"get_room_layout","room_id":1e300})", -9990, "the number 1e+300 is beyond 32 bits"},
    {R"({"Command":"get_room_layout","room_id":18446744073709551615})", -9990,
     "the number 18446744073709551615 is beyond 32 bits"},
    {R"({"Command":"get_room_layout"})", -9990, type_error + "number, but is null"},
    {R"({"Command":"get_room_layout","room_id":1,"room_id":9})", -9993, "QNL_ERROR_INVALID_ROOM_ID"},
    {R"({"Command":"get_participant_spherical","room_id":1,"listener_id":1,"source_id":1})", -9992,
     "QNL_ERROR_INVALID_PARTICIPANT_ID"},
    {R"({"Command":"set_participant_state","room_id":1,"participant_id":1,"value":0})", -9991,
     "QNL_ERROR_INVALID_CONTROL"},
};

TEST_F(remote_room, refuses_with_the_first_reason_and_leaves_everything_as_it_was) {
    qnl_add_event_manager(handle_, &server());
    server().set_broadcast_target(this);
    for (const auto& [request, code, description] : refusals) {
        bool changed = false;
        const json expected = {{"Status", "ERROR"}, {"Error Code", code}, {"Error Description", description}};
        EXPECT_EQ(answer(request, &changed), expected) << request;
        EXPECT_FALSE(changed) << request;
    }
    EXPECT_THAT(heard(), IsEmpty());
}

std::string nested(size_t levels) {
    return R"({"Command":"get_version","x":)" + std::string(levels - 1, '[') + std::string(levels - 1, ']') +
           '}';
}

TEST_F(remote_room, answers_what_is_no_json_with_the_parsers_text) {
    const std::string whole = R"({"Command":"get_version","x":"\u00e4"})";
    std::vector<std::string> broken = {
        "{} {}",   std::string("\0", 1),      "{\"Command\":\"\xff\"}",  "\xff\xfe",
        "[1e999]", std::string(3000000, '['), std::string(3000000, '"'), "{\"a\":\"\xc3"};
    for (size_t length = 0; length < whole.size(); ++length)
        broken.push_back(whole.substr(0, length));
    broken.push_back(nested(257));
    broken.push_back(nested(100000));
    for (const std::string& text : broken) {
        json response = json::parse(answer_text(text));
        EXPECT_THAT(response["Error Description"],
                    AnyOf(StartsWith("[json.exception."), HasSubstr("deeper than 256 levels")));
        response.erase("Error Description");
        EXPECT_EQ(response, json::parse(R"({"Status":"ERROR","Error Code":-9990,"Request":null})"));
    }
    EXPECT_EQ(answer(nested(256))["Status"], "OK");
}

TEST_F(remote_room, gives_back_all_memory_of_a_request) {
    const std::string name(2000000, 'n');
    const std::string requests[] = {
        nested(256),
        nested(257),
        "{\"Command\":\"\xff",
        R"({"Command":"get_version","value":[1,{"a":2}]})",
        R"({"Command":"get_participant_name","room_id":1,"participant_id":1})",
        R"({"Command":"set_participant_seat","room_id":1,"participant_id":"1","seat_id":1})",
        R"({"Command":"set_participant_name","participant_name":")" + name +
            R"(","room_id":9,"participant_id":1})"};
    for (const std::string& request : requests) {
        answer_text(request); // what is allocated once
        const test_kit::allocation_counter heap;
        answer_text(request);
        EXPECT_EQ(heap.allocations(), heap.releases()) << request.substr(0, 80);
    }
}

TEST_F(remote_room, takes_requests_on_several_threads_beside_audio) {
    std::atomic<bool> stop{false};
    std::vector<std::future<void>> clients;
    for (const char* const request :
         {R"({"Command":"get_participant_state","room_id":1,"participant_id":1,"control_to_edit":2})",
          R"({"Command":"set_participant_seat","room_id":1,"participant_id":2,"seat_id":3})",
          R"({"Command":"set_room_layout","room_id":1,"layout_id":1})"})
        clients.push_back(std::async(std::launch::async, [&stop, request, this] {
            while (!stop)
                EXPECT_EQ(answer(request)["Status"], "OK");
        }));
    std::vector<float> block(960);
    for (int period = 0; period < 200; ++period) {
        EXPECT_EQ(qnl_input_audio_float(handle_, 1, 2, block.data(), 480), QNL_ERROR_NONE);
        EXPECT_EQ(qnl_output_audio_float(handle_, 1, 1, block.data()), QNL_ERROR_NONE);
    }
    stop = true;
}

} // namespace
