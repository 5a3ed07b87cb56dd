#include "conference_runner.h"

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/wait.h>

audio noise(unsigned seed, int channels, std::size_t frames) {
    std::mt19937 numbers(seed);
    audio content(static_cast<std::size_t>(channels), std::vector<float>(frames));
    for (auto& channel : content)
        for (float& sample : channel)
            // Steps of 16 bits, so that every file format holds the same values.
            sample = static_cast<float>(static_cast<int>(numbers() % 4001) - 2000) / 32768.0F;
    return content;
}

std::string read_text(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

void conference_runner::record(const std::string& name, const audio& content, int rate, int format) {
    const std::size_t channels = content.size();
    std::vector<float> samples(channels * content.front().size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = content[i % channels][i / channels];
    SndfileHandle file(folder / name, SFM_WRITE, format, static_cast<int>(channels), rate);
    file.write(samples.data(), static_cast<sf_count_t>(samples.size()));
    ASSERT_EQ(file.error(), 0) << file.strError();
}

outcome conference_runner::run(const std::string& program, const std::string& arguments) {
    const std::string command =
        "cd '" + folder.string() + "' && '" + program + "' " + arguments + " >stdout.txt 2>stderr.txt";
    const int status = std::system(command.c_str());
    const int exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return {exit_code, read_text(folder / "stdout.txt"), read_text(folder / "stderr.txt")};
}

outcome conference_runner::hold(const std::string& arguments) {
    return run(QUENLIS_CONFERENCE, arguments);
}

audio conference_runner::read(const std::string& name) {
    SndfileHandle file(folder / name);
    EXPECT_EQ(file.error(), 0) << name << ": " << file.strError();
    const auto channels = static_cast<std::size_t>(file.channels());
    std::vector<float> samples(channels * static_cast<std::size_t>(file.frames()));
    file.readf(samples.data(), file.frames());
    audio content(channels);
    for (std::size_t i = 0; i < samples.size(); ++i)
        content[i % channels].push_back(samples[i]);
    return content;
}
