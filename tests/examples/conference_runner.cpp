#include "conference_runner.h"

#include <sndfile.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

const int conference_runner::wav_float = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
const int conference_runner::wav_16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
const int conference_runner::flac = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;

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

conference_runner::conference_runner() {
    std::string name = (std::filesystem::temp_directory_path() / "quenlis_examples_XXXXXX").string();
    folder = mkdtemp(name.data());
}

conference_runner::~conference_runner() { std::filesystem::remove_all(folder); }

void conference_runner::record(const std::string& name, const audio& content, int rate, int format) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = static_cast<int>(content.size());
    info.format = format;
    SNDFILE* file = sf_open((folder / name).c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    for (std::size_t frame = 0; frame < content.front().size(); ++frame)
        for (const auto& channel : content) {
            const auto rounded = static_cast<short>(channel[frame] * 32768.0F);
            const bool whole = (format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16;
            whole ? sf_write_short(file, &rounded, 1) : sf_write_float(file, &channel[frame], 1);
        }
    sf_close(file);
}

void conference_runner::write_text(const std::string& name, const std::string& content) {
    std::ofstream(folder / name) << content;
}

outcome conference_runner::run(const std::string& program, const std::string& arguments) {
    const std::string command =
        "cd '" + folder.string() + "' && '" + program + "' " + arguments + " >stdout.txt 2>stderr.txt";
    const int status = std::system(command.c_str());
    const int exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return {exit_code, read_text(folder / "stdout.txt"), read_text(folder / "stderr.txt")};
}

outcome conference_runner::hold(const std::string& arguments) {
    return run(QUENLIS_CONFERENCE, "-o mixes " + arguments);
}

audio conference_runner::read(const std::string& name) {
    SF_INFO info{};
    SNDFILE* file = sf_open((folder / name).c_str(), SFM_READ, &info);
    if (file == nullptr) {
        ADD_FAILURE() << name << ": " << sf_strerror(nullptr);
        return audio(2);
    }
    const auto channels = static_cast<std::size_t>(info.channels);
    audio content(channels, std::vector<float>(static_cast<std::size_t>(info.frames)));
    for (std::size_t i = 0; i < static_cast<std::size_t>(info.frames) * channels; ++i)
        sf_read_float(file, &content[i % channels][i / channels], 1);
    sf_close(file);
    return content;
}
