#include "mono_file.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
    throw std::runtime_error(file.string() + ": " + reason);
}

} // namespace

mono_file::mono_file(const std::filesystem::path& file) : path_(file) {
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
