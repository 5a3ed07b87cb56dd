#include "audio_file.h"

#include "failure.h"

#include <algorithm>

namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw failure(path + ": " + reason);
}

/// The number with which the library of audio files describes what is written.
int wav_format(sample_type samples) {
    return SF_FORMAT_WAV | (samples == sample_type::int16 ? SF_FORMAT_PCM_16 : SF_FORMAT_FLOAT);
}

} // namespace

recording::recording(const std::string& path) : path_(path), file_(sf_open(path.c_str(), SFM_READ, &info_)) {
    if (!file_)
        refuse(path_, sf_strerror(nullptr));
    if (info_.channels != 1 && info_.channels != 2)
        refuse(path_, std::to_string(info_.channels) + " channels are not supported, only 1 or 2");
    if (info_.frames <= 0)
        refuse(path_, "holds no audio");
}

long recording::read(std::vector<float>& block) {
    const long wanted = static_cast<long>(block.size()) / info_.channels;
    const long got = sf_readf_float(file_.get(), block.data(), wanted);
    if (sf_error(file_.get()) != SF_ERR_NO_ERROR)
        refuse(path_, sf_strerror(file_.get()));
    std::fill(block.begin() + got * info_.channels, block.end(), 0.0F);
    return got;
}

mix_file::mix_file(const std::string& path, int rate, int channels, sample_type samples)
    : path_(path), samples_(samples), channels_(channels) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = wav_format(samples);
    file_.reset(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!file_)
        refuse(path_, sf_strerror(nullptr));
    // Its time stamp would make two equal runs give different files.
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
}

void mix_file::write(const std::vector<float>& block) {
    const sf_count_t frames = static_cast<sf_count_t>(block.size()) / channels_;
    sf_count_t written = 0;
    if (samples_ == sample_type::int16) {
        rounded_.resize(block.size());
        std::transform(block.begin(), block.end(), rounded_.begin(), to_int16);
        written = sf_writef_short(file_.get(), rounded_.data(), frames);
    } else {
        written = sf_writef_float(file_.get(), block.data(), frames);
    }
    if (written != frames)
        refuse(path_, sf_strerror(file_.get()));
}

void mix_file::close() {
    if (sf_close(file_.release()) != 0)
        refuse(path_, "the file could not be completed");
}
