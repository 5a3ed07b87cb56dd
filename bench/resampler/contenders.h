#pragma once

#include <memory>

/// One channel that is brought from one rate to another in blocks of 10 ms.
class contender {
public:
    virtual ~contender() = default;
    /// @param out  room for twice the frames of a block
    virtual void process(const float* in, float* out) = 0;
};

std::unique_ptr<contender> make_quenlis(int input_rate, int output_rate);

/// At its highest quality, which works by block transforms with some 40 ms of delay; null where it is missing.
std::unique_ptr<contender> make_soxr(int input_rate, int output_rate);

/// At quality 10, a windowed sinc as here; null where it is missing.
std::unique_ptr<contender> make_speexdsp(int input_rate, int output_rate);
