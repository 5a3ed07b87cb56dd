#pragma once

#include "kit/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sndfile.hh>
#include <string>
#include <vector>

/// What a program left behind.
struct outcome {
    int exit_code;
    std::string out; ///< standard output
    std::string err; ///< standard error
};

/// One channel after the other, each with full scale 1.0.
using audio = std::vector<std::vector<float>>;

/// Seeded white noise at a level that no number of test talkers brings near full scale.
audio noise(unsigned seed, int channels, std::size_t frames);

/// The whole of a text file.
std::string read_text(const std::filesystem::path& path);

/// A folder for one test, removed behind it, with means to fill it with recordings and to run programs in it.
class conference_runner : public testing::Test {
protected:
    /// Writes a recording. @param format  a major format and a sample type of the library of audio files
    void record(const std::string& name, const audio& content, int rate = 48000,
                int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    void write_text(const std::string& name, const std::string& content) { directory_.write(name, content); }

    /// Runs a program inside the folder. @param arguments  as in a shell
    outcome run(const std::string& program, const std::string& arguments);
    /// Runs quenlis_conference inside the folder.
    outcome hold(const std::string& arguments);

    audio read(const std::string& name);
    /// What the participant heard; fails the test when the file is missing.
    audio mix(const std::string& name) { return read("mixes/" + name + ".wav"); }

    const test_kit::temporary_directory directory_;
    const std::filesystem::path folder = directory_.path();
};
