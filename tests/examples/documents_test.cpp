// The smallest host runs, and the pages tell the truth where they hold code or numbers.
#include "conference_runner.h"

#include <quenlis.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <regex>
#include <set>

namespace {

const std::filesystem::path root = QUENLIS_SOURCE_DIR;

struct destroyer {
    void operator()(qnl_handle engine) const { qnl_destroy_library(engine); }
};
using engine_owner = std::unique_ptr<quenlis_sound_manager, destroyer>;

engine_owner start(const qnl_library_configuration& format) {
    int code = 0;
    return engine_owner(qnl_initialize_library(nullptr, nullptr, format, &code));
}

std::vector<std::smatch> all_matches(const std::string& text, const std::regex& pattern) {
    return {std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator()};
}

TEST_F(conference_runner, the_smallest_host_talks_and_hears) {
    const outcome result = run(QUENLIS_MINIMAL_HOST, "");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out, "quenlis v1.0.9: Alice talks at 0.250, Bob hears her at 0.177\n");
    EXPECT_EQ(result.err, "");
}

TEST(documents, the_readme_shows_the_smallest_host_as_it_is_built) {
    const std::string host = read_text(root / "examples/minimal_host.c");
    EXPECT_LT(std::count(host.begin(), host.end(), '\n'), 100);
    EXPECT_THAT(read_text(root / "README.md"), testing::HasSubstr("```c\n" + host + "```\n"));
}

TEST(documents, the_table_of_controls_has_the_names_ranges_and_defaults_of_the_engine) {
    const std::string page = read_text(root / "docs/controls.md");
    const engine_owner engine = start({48000, 480, 2, true, 1});
    ASSERT_EQ(qnl_create_room(engine.get(), 1), QNL_ERROR_NONE);
    ASSERT_EQ(qnl_add_participant(engine.get(), 1, 1, "", {48000, 1, QNL_PARTICIPANT_REGULAR}),
              QNL_ERROR_NONE);

    const auto rows = all_matches(page, std::regex(R"(\| (\d+) \| `(\w+)` \| (\d+) to (\d+) \| (\d+) \|)"));
    ASSERT_EQ(rows.size(), 14U);
    for (const auto& row : rows) {
        const auto control = static_cast<qnl_audio_control>(std::stoi(row[1]));
        EXPECT_EQ(qnl_audio_control_to_string(control), row[2]);
        int value = -1;
        qnl_get_participant_state(engine.get(), 1, 1, control, &value);
        EXPECT_EQ(value, std::stoi(row[5])) << row[2];
        const auto refuses = [&](long long number) {
            return qnl_set_participant_state(engine.get(), 1, 1, control, static_cast<int>(number)) ==
                   QNL_ERROR_INVALID_VALUE;
        };
        const long long lowest = std::stoll(row[3]);
        const long long highest = std::stoll(row[4]);
        EXPECT_FALSE(refuses(lowest) || refuses(highest)) << row[2];
        EXPECT_TRUE(refuses(lowest - 1) && refuses(highest + 1)) << row[2]; // beyond 32 bits it wraps
    }
}

TEST(documents, the_table_of_formats_lists_exactly_what_the_engine_takes) {
    const std::string page = read_text(root / "docs/integration.md");
    std::set<std::pair<int, int>> listed;
    for (const auto& row : all_matches(page, std::regex(R"(\n\| (\d+) \| (\d+ \(.*\)) \|)"))) {
        const std::string formats = row[2];
        for (const auto& format : all_matches(formats, std::regex(R"((\d+) \((\d+)\))"))) {
            const int rate = std::stoi(row[1]);
            const int frames = std::stoi(format[1]);
            listed.insert({rate, frames});
            EXPECT_TRUE(start({rate, frames, 2, true, 1})) << rate << " Hz, " << frames;
            EXPECT_EQ(frames * 48000LL / rate, std::stoi(format[2])) << rate << " Hz, " << frames;
        }
    }
    EXPECT_EQ(listed.size(), 15U) << "as many as the engine takes";
}

} // namespace
