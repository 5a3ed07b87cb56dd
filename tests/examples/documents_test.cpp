// The smallest host and the console do what the pages record.
#include "conference_runner.h"
#include "kit/documents.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

const std::filesystem::path root = QUENLIS_SOURCE_DIR;
const std::string protocol_page = "docs/remote_protocol.md";

TEST_F(conference_runner, the_smallest_host_of_the_readme_talks_and_hears) {
    const outcome result = run(QUENLIS_MINIMAL_HOST, "");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out, "quenlis v1.0.9: Alice talks at 0.250, Bob hears her at 0.177\n");
    EXPECT_EQ(result.err, "");
    const std::string host = read_text(root / "examples/minimal_host.c");
    EXPECT_LT(std::count(host.begin(), host.end(), '\n'), 100);
    EXPECT_THAT(read_text(root / "README.md"), HasSubstr("```c\n" + host + "```\n"));
}

/// The lines of the protocol's page that start so, without their mark.
std::string lines_behind(const std::string& mark) {
    std::string found;
    for (const auto& row : test_kit::rows_of(protocol_page, '\n' + mark + "([^\n]*)"))
        found += row[1] + '\n';
    return found;
}

TEST_F(conference_runner, the_console_answers_as_the_page_of_the_protocol_says) {
    write_text("layouts.json", test_kit::rows_of(protocol_page, "```json\n([^`]*)```").at(0)[1]);
    write_text("requests.txt", lines_behind("> "));
    record("demo.wav", noise(1, 1, 500));
    const outcome result =
        run(QUENLIS_CONSOLE, "--events --people 1 --layout-file layouts.json <requests.txt");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out, lines_behind("< "));
    EXPECT_EQ(result.err, lines_behind("! "));
}

TEST_F(conference_runner, the_page_has_an_exchange_for_every_command_of_the_console) {
    const std::string help = run(QUENLIS_CONSOLE, "--help").out;
    const std::regex command("\n  ([a-z_]+)(?=[ \n])");
    const std::string protocol = read_text(root / protocol_page);
    int commands = 0;
    for (std::sregex_iterator found(help.begin(), help.end(), command), end; found != end; ++found) {
        ++commands;
        const std::string name = (*found)[1];
        EXPECT_THAT(protocol, HasSubstr("\n| " + name + " | "));
        EXPECT_THAT(protocol, HasSubstr("\n> {\"Command\":\"" + name + '"'));
    }
    EXPECT_EQ(commands, 23);
}

} // namespace
