#include "remote/audio_file.h"

#include <cstdio>

bool quenlis_audio_file::load(const std::string& path) {
    open(path, std::ios::in | std::ios::binary);
    if (!good()) {
        std::perror("Error");
        return false;
    }
    read(reinterpret_cast<char*>(header.data()), static_cast<std::streamsize>(header.size()));
    return true;
}

int32_t quenlis_audio_file::number_channels() const {
    return header[22] | header[23] << 8;
}

int32_t quenlis_audio_file::sampling_rate() const {
    uint32_t rate = 0;
    for (size_t place = 28; place-- > 24;)
        rate = rate << 8 | header[place];
    return static_cast<int32_t>(rate);
}
