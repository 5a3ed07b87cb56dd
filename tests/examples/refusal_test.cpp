#include "conference_runner.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <utility>

namespace {

using testing::HasSubstr;

/// What the tool must not accept, and what its one line has to say.
const std::pair<const char*, const char*> refusals[] = {
    {"", "recordings"},
    {"--speed 2 alice.wav", "--speed"},
    {"--listeners many alice.wav", "--listeners"},
    {"--rate 44100 alice.wav", "QNL_ERROR_SAMPLE_RATE"},
    {"--frames 500 alice.wav", "QNL_ERROR_DATA_LENGTH"},
    {"--channels 3 alice.wav", "QNL_ERROR_NUM_CHANNELS"},
    {"--sample-type int alice.wav", "--sample-type"},
    {"--interleaving woven alice.wav", "--interleaving"},
    {"--log loud alice.wav", "--log"},
    {"--layout 99 alice.wav", "QNL_ERROR_INVALID_VALUE"},
    {"--layout-file absent.json alice.wav", "absent.json"},
    {"--layout-file broken.json alice.wav", "broken.json"},
    {"--layout-file other alice.wav", "other"},
    {"--set alice alice.wav", "[WHO:]CONTROL=VALUE"},
    {"--set QNL_CONTROL_MASTR_GAIN=1 alice.wav", "QNL_CONTROL_MASTR_GAIN"},
    {"--set 15=1 alice.wav", "'15' is no control"},
    {"--set 12=5O alice.wav", "'5O' is no value"},
    {"--set 12=much alice.wav", "'much' is no value"},
    {"--set 12=99999999999 alice.wav", "'99999999999' is no value"},
    {"--set 12= alice.wav", "'' is no value"},
    {"--set 12=101 alice.wav", "QNL_ERROR_INVALID_VALUE"},
    {"--set alice:QNL_CONTROL_MIXING_3D_ENABLE=1 alice.wav", "QNL_ERROR_INVALID_CONTROL"},
    {"--set dave:2=1 alice.wav", "'dave'"},
    {"--set 3:2=1 alice.wav bob.wav", "'3'"},
    {"--set alice:2=1 alice.wav other/alice.wav", "use the number"},
    {"--whisper alice alice.wav", "WHO[,WHO...]=GROUP"},
    {"--whisper alice,,bob=1 alice.wav bob.wav", "alice,,bob=1"},
    {"--sidebar alice=101 alice.wav", "QNL_ERROR_INVALID_VALUE"},
    {"--device alice:earphone alice.wav", "earphone"},
    {"absent.wav", "absent.wav"},
    {"other", "other"},
    {"alice.wav text.wav", "text.wav"},
    {"empty.wav", "holds no audio"},
    {"three.wav", "only 1 or 2"},
    {"odd.wav", "odd.wav: a rate of 11025 Hz is not supported, only multiples of 100 Hz up to 48000 Hz"},
    {"--rate 24000 --frames 256 alice.wav wide.wav", "only multiples of 375 Hz up to 48000 Hz"},
    {"-o alice.wav bob.wav", "alice.wav"}};

TEST_F(conference_runner, refusals_give_one_clear_line_and_a_failing_exit) {
    std::filesystem::create_directory(folder / "other");
    for (const char* const name : {"alice.wav", "bob.wav", "other/alice.wav"})
        record(name, noise(1, 1, 500));
    record("odd.wav", noise(4, 1, 500), 11025);
    record("wide.wav", noise(4, 1, 500), 96000);
    record("three.wav", noise(5, 3, 500));
    record("empty.wav", audio(1));
    write_text("text.wav", "no audio in here\n");
    write_text("broken.json", "{\"default\": ");
    for (const auto& [arguments, reason] : refusals) {
        const outcome result = hold(arguments);
        EXPECT_GT(result.exit_code, 0) << arguments;
        EXPECT_LT(result.exit_code, 126) << arguments;
        EXPECT_THAT(result.err, HasSubstr(reason)) << arguments;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << arguments << result.err;
        EXPECT_EQ(result.out, "") << arguments;
    }
}

TEST_F(conference_runner, a_recording_is_never_overwritten_by_a_mix) {
    record("1-alice.wav", noise(1, 1, 500));
    record("alice.wav", noise(2, 1, 500));
    const outcome result = hold("-o . alice.wav 1-alice.wav");
    EXPECT_NE(result.exit_code, 0);
    EXPECT_THAT(result.err, HasSubstr("overwrite"));
    EXPECT_EQ(read("1-alice.wav"), noise(1, 1, 500));
}

TEST_F(conference_runner, the_console_refuses_a_broken_server_file_in_one_line) {
    write_text("server.json", "{\"port\":\"many\"}");
    const outcome result = run(QUENLIS_CONSOLE, "--server-file server.json </dev/null");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.err, "quenlis_console: server.json: not a usable configuration of the control server "
                          "(--log warning shows the reason)\n");
}

} // namespace
