/// The head of an audio file that a demo participant is to play.
#pragma once

#include <array>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

/// A WAVE file with the canonical header of 44 bytes, in front of its samples. Of the header two fields are
/// read; neither marks nor sample format nor the layout of chunks are looked at, so a file of another form gives
/// misread numbers.
class quenlis_audio_file : public std::ifstream {
public:
    /// Opens a file and reads its header, which a shorter file fills in part.
    /// @return false, with a line on standard error, when it cannot be opened
    bool load(const std::string& path);

    int32_t number_channels() const;
    int32_t sampling_rate() const; ///< Hz; what lies beyond 31 bits wraps to below 0

    std::array<unsigned char, 44> header{};
    std::unique_ptr<short[]> samples; ///< for a transport that plays the file: never filled
    int32_t block_length = 960;       ///< likewise: frames, 20 ms at 48 kHz
};
