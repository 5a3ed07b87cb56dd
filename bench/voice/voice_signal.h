/// A signal to measure stages on: noise whose level rises and falls like syllables.
#pragma once

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

inline std::vector<float> voice_signal(std::size_t frames) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> uniform(-0.3F, 0.3F);
    std::vector<float> x(frames);
    for (std::size_t i = 0; i < frames; ++i)
        x[i] = uniform(random) * std::abs(std::sin(0.0003F * static_cast<float>(i)));
    return x;
}
