#include "kit/signals.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numeric>

namespace test_kit {
namespace {

constexpr double pi = 3.14159265358979323846;

double strength_at(const samples& x, double hz, double rate) {
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const auto time = static_cast<double>(i);
        const double window = 0.5 - 0.5 * std::cos(2.0 * pi * (time + 0.5) / static_cast<double>(x.size()));
        sum += window * static_cast<double>(x[i]) * std::polar(1.0, -2.0 * pi * hz * time / rate);
    }
    return std::abs(sum) / static_cast<double>(x.size());
}

/// Largest at the true lag: no shift of a signal correlates with it more than the signal itself.
double correlation(const samples& reference, const samples& delayed, std::size_t lag) {
    const std::size_t count = lag < delayed.size() ? std::min(reference.size(), delayed.size() - lag) : 0;
    return std::abs(
        std::inner_product(reference.data(), reference.data() + count, delayed.data() + lag, 0.0));
}

} // namespace

double uniform(std::mt19937& random) {
    return static_cast<double>(random()) / 2147483647.5 - 1.0;
}

samples noise(std::size_t frames, std::uint32_t seed, float amplitude) {
    std::mt19937 random(seed);
    samples x(frames);
    std::generate(x.begin(), x.end(), [&] { return static_cast<float>(uniform(random)) * amplitude; });
    return x;
}

samples sine(std::size_t frames, double hz, float amplitude, double rate) {
    samples x(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2.0 * pi * hz * static_cast<double>(i) / rate;
        x[i] = static_cast<float>(std::sin(phase)) * amplitude;
    }
    return x;
}

samples planar(const samples& left, const samples& right) {
    samples x(left);
    x.insert(x.end(), right.begin(), right.end());
    return x;
}

samples part(const samples& x, std::size_t from, std::size_t to) {
    return {x.data() + from, x.data() + to};
}

samples sum(samples x, const samples& y) {
    std::transform(x.begin(), x.end(), y.begin(), x.begin(), std::plus<>());
    return x;
}

samples scaled(samples x, float gain) {
    std::transform(x.begin(), x.end(), x.begin(), [=](float sample) { return sample * gain; });
    return x;
}

float peak(const samples& x) {
    return std::accumulate(x.begin(), x.end(), 0.0F,
                           [](float a, float b) { return std::max(a, std::abs(b)); });
}

double power(const samples& x) {
    return std::inner_product(x.begin(), x.end(), x.begin(), 0.0) / static_cast<double>(x.size());
}

double gain_db_at(const samples& in, const samples& out, double hz, double rate) {
    return 20.0 * std::log10(strength_at(out, hz, rate) / strength_at(in, hz, rate));
}

std::optional<std::size_t> find_delay(const samples& reference, const samples& delayed, std::size_t longest) {
    std::vector<double> strength;
    for (std::size_t lag = 0; lag <= longest; ++lag)
        strength.push_back(correlation(reference, delayed, lag));
    const auto best = std::max_element(strength.begin(), strength.end());
    return *best > 0.0 ? std::optional<std::size_t>(best - strength.begin()) : std::nullopt;
}

} // namespace test_kit
