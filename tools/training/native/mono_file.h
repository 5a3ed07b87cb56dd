/// Recordings as the programs of the training read and write them.
#pragma once

#include <sndfile.h>

#include <filesystem>
#include <memory>
#include <vector>

/// The one rate at which the engine cleans voices, Hz, and its frame there, samples.
constexpr int voice_rate = 48000;
constexpr int voice_frame = 480;

/// A recording of one channel at 48 kHz, read from start to end: whatever libsndfile reads, and files named *.f32, which
/// are raw little-endian 32-bit floats of full scale 1.0.
class mono_file {
public:
    /// Throws std::runtime_error with one line that names the file and the reason, as read() does.
    explicit mono_file(const std::filesystem::path& file);

    /// Fills `samples` as far as the file goes, and the rest with zeros. @return the samples that came from the file
    long read(float* samples, long count);

    /// All the samples that are left.
    std::vector<float> read_all();

private:
    std::filesystem::path path_;
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file_;
};

/// Writes a whole WAV file of 32-bit floats at 48 kHz. Throws std::runtime_error when it can't be written, and leaves no
/// part of it.
void write_mono_wav(const std::filesystem::path& file, const std::vector<float>& samples);
