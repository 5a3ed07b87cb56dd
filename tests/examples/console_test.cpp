// The console is driven by the conversation that docs/remote_protocol.md records.
#include "conference_runner.h"

#include <gmock/gmock.h>

#include <regex>
#include <sstream>

namespace {

const std::string page = read_text(QUENLIS_SOURCE_DIR "/docs/remote_protocol.md");

/// The lines of the page that start so, without their mark.
std::string lines_behind(const std::string& mark) {
    std::istringstream all(page);
    std::string found;
    for (std::string line; std::getline(all, line);)
        if (line.rfind(mark, 0) == 0)
            found += line.substr(mark.size()) + '\n';
    return found;
}

TEST_F(conference_runner, the_console_answers_as_the_page_of_the_protocol_says) {
    std::smatch layouts;
    ASSERT_TRUE(std::regex_search(page, layouts, std::regex("```json\n([^`]*)```")));
    write_text("layouts.json", layouts[1]);
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
    int commands = 0;
    for (std::sregex_iterator found(help.begin(), help.end(), command), end; found != end;
         ++found, ++commands) {
        const std::string name = (*found)[1];
        EXPECT_THAT(page, testing::HasSubstr("\n| " + name + " | "));
        EXPECT_THAT(page, testing::HasSubstr("\n> {\"Command\":\"" + name + '"'));
    }
    EXPECT_EQ(commands, 23);
}

TEST_F(conference_runner, the_console_refuses_a_broken_server_file_in_one_line) {
    write_text("server.json", "{\"port\":\"many\"}");
    const outcome result = run(QUENLIS_CONSOLE, "--server-file server.json </dev/null");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(result.err, "quenlis_console: server.json: not a usable configuration of the control server "
                          "(--log warning shows the reason)\n");
}

} // namespace
