#pragma once

#include "sample_type.h"

#include <sndfile.h>

#include <memory>
#include <string>
#include <vector>

namespace audio_file {

struct closer {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using handle = std::unique_ptr<SNDFILE, closer>;

} // namespace audio_file

/// An audio file that is read from start to end, block by block.
class recording {
public:
    /// Opens a file of one or two channels and any length above 0.
    /// Throws a failure that names the file and the reason.
    explicit recording(const std::string& path);

    const std::string& path() const { return path_; }
    int rate() const { return info_.samplerate; } ///< Hz
    int channels() const { return info_.channels; }
    long frames() const { return info_.frames; } ///< as its header says

    /// Reads the next frames as interleaved floats of full scale 1.0.
    ///
    /// @param block  filled to its size, a whole number of frames; what the file does not fill is silence
    /// @return the frames that came from the file; 0 at its end. Throws a failure on damaged data.
    long read(std::vector<float>& block);

private:
    std::string path_;
    SF_INFO info_{};
    audio_file::handle file_;
};

/// A WAV file that is written block by block.
class mix_file {
public:
    /// Creates or replaces the file: 16-bit samples for sample_type::int16, 32-bit floats otherwise.
    /// Throws a failure that names the file and the reason.
    mix_file(const std::string& path, int rate, int channels, sample_type samples);

    /// Appends interleaved floats of full scale 1.0. Throws a failure.
    void write(const std::vector<float>& block);

    /// Completes the file. Throws a failure. Without this call the destructor does it and stays silent.
    void close();

private:
    std::string path_;
    sample_type samples_;
    int channels_;
    std::vector<short> rounded_;
    audio_file::handle file_;
};
