#include "conference_runner.h"

#include <sndfile.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/wait.h>

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

void conference_runner::record(const std::string& name, const audio& content, int rate, int format) {
    const std::size_t channels = content.size();
    std::vector<float> samples(channels * content.front().size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = content[i % channels][i / channels];

    SF_INFO info{};
    info.samplerate = rate;
    info.channels = static_cast<int>(channels);
    info.format = format;
    SNDFILE* file = sf_open((folder / name).c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    sf_write_float(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
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
    SF_INFO info{};
    SNDFILE* file = sf_open((folder / name).c_str(), SFM_READ, &info);
    if (file == nullptr) {
        ADD_FAILURE() << name << ": " << sf_strerror(nullptr);
        return audio(2);
    }
    const auto channels = static_cast<std::size_t>(info.channels);
    const auto frames = static_cast<std::size_t>(info.frames);
    std::vector<float> samples(channels * frames);
    sf_readf_float(file, samples.data(), info.frames);
    sf_close(file);
    audio content(channels, std::vector<float>(frames));
    for (std::size_t i = 0; i < samples.size(); ++i)
        content[i % channels][i / channels] = samples[i];
    return content;
}
