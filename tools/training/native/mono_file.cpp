#include "mono_file.h"

#include "unfinished_file.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
    throw std::runtime_error(file.string() + ": " + reason);
}

} // namespace

mono_file::mono_file(const std::filesystem::path& file) : path_(file), file_(nullptr, &sf_close) {
    SF_INFO info{};
    if (file.extension() == ".f32")
        info = {0, voice_rate, 1, SF_FORMAT_RAW | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE, 0, 0};
    file_.reset(sf_open(file.c_str(), SFM_READ, &info));
    if (!file_)
        refuse(file, sf_strerror(nullptr));
    if (info.samplerate != voice_rate)
        refuse(file, "a rate of " + std::to_string(info.samplerate) + " Hz, not 48000");
    if (info.channels != 1)
        refuse(file, std::to_string(info.channels) + " channels, not one");
}

long mono_file::read(float* samples, long count) {
    const long got = sf_read_float(file_.get(), samples, count);
    if (sf_error(file_.get()) != SF_ERR_NO_ERROR)
        refuse(path_, sf_strerror(file_.get()));
    std::fill(samples + got, samples + count, 0.0F);
    return got;
}

std::vector<float> mono_file::read_all() {
    std::vector<float> samples;
    long got = voice_rate;
    while (got == voice_rate) {
        samples.resize(samples.size() + voice_rate);
        got = read(&samples[samples.size() - voice_rate], voice_rate);
    }
    samples.resize(samples.size() - static_cast<std::size_t>(voice_rate - got));
    return samples;
}

void write_mono_wav(const std::filesystem::path& file, const std::vector<float>& samples) {
    const unfinished_file unfinished(file);
    SF_INFO info{0, voice_rate, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0, 0};
    SNDFILE* const out = sf_open(unfinished.path().c_str(), SFM_WRITE, &info);
    if (out == nullptr)
        unfinished.fail();
    const auto count = static_cast<sf_count_t>(samples.size());
    const bool whole = sf_write_float(out, samples.data(), count) == count;
    if (sf_close(out) != 0 || !whole)
        unfinished.fail();
    unfinished.finish();
}
