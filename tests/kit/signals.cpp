#include "kit/signals.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <iterator>
#include <random>

namespace test_kit {
namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double syllables_per_second = 4.0;

/// Uniform from -1 to 1. The library's own distributions differ between standard libraries.
double next(std::mt19937& random) {
    return static_cast<double>(random()) / 2147483647.5 - 1.0;
}

/// A voice: 16 harmonics, each weaker than the one below. @param phase  of the pitch, in periods
double voice(double phase) {
    double sum = 0.0;
    for (int harmonic = 1; harmonic <= 16; ++harmonic)
        sum += std::sin(2.0 * pi * harmonic * phase) / harmonic;
    return sum;
}

/// Rises and falls within a syllable; 0 in the pause.
double loudness(double syllable) {
    const bool pause = static_cast<long>(syllable) % 4 == 3;
    return pause ? 0.0 : std::sin(pi * (syllable - std::floor(syllable)));
}

constexpr double word_rate = 48000.0;
constexpr std::size_t syllable_frames = 10080; // 0.21 s
constexpr std::size_t syllables_of_word = 3;   // and one of pause

/// A resonance of two poles with gain 1 at 0 Hz.
class formant {
public:
    double process(double x, double hz, double bandwidth) {
        const double radius = std::exp(-pi * bandwidth / word_rate);
        const double a1 = 2.0 * radius * std::cos(2.0 * pi * hz / word_rate);
        const double a2 = -radius * radius;
        const double y = (1.0 - a1 - a2) * x + a1 * y1_ + a2 * y2_;
        y2_ = y1_;
        y1_ = y;
        return y;
    }

private:
    double y1_ = 0.0;
    double y2_ = 0.0;
};

/// Formants of vowels, Hz, men's averages (G. E. Peterson and H. L. Barney, 1952).
constexpr double vowels[][3] = {{730, 1090, 2440}, {270, 2290, 3010}, {570, 840, 2410},
                                {530, 1840, 2480}, {300, 870, 2240},  {660, 1720, 2410}};

/// A mouth that moves from vowel to vowel.
class vocal_tract {
public:
    /// @param place  in syllables
    double process(double source, double place, const std::vector<std::size_t>& said) {
        const auto syllable = static_cast<std::size_t>(place);
        const double glide = std::clamp((place - std::floor(place) - 0.6) / 0.4, 0.0, 1.0);
        const double* const from = vowels[said[syllable]];
        const double* const to = vowels[said[syllable + 1]];
        double x = source;
        for (std::size_t i = 0; i < 3; ++i)
            x = formants_[i].process(x, from[i] + glide * (to[i] - from[i]),
                                     60.0 + 30.0 * static_cast<double>(i));
        x = formants_[3].process(x, 3500.0, 200.0);
        return formants_[4].process(x, 4500.0, 250.0);
    }

private:
    formant formants_[5];
};

double strength_at(const std::vector<float>& x, double hz, double rate) {
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const auto time = static_cast<double>(i);
        const double window = 0.5 - 0.5 * std::cos(2.0 * pi * (time + 0.5) / static_cast<double>(x.size()));
        sum += window * static_cast<double>(x[i]) * std::polar(1.0, -2.0 * pi * hz * time / rate);
    }
    return std::abs(sum) / static_cast<double>(x.size());
}

/// Largest at the true lag: no shift of a signal correlates with it more than the signal itself.
double correlation(const std::vector<float>& reference, const std::vector<float>& delayed, std::size_t lag) {
    double sum = 0.0;
    for (std::size_t i = 0; i < reference.size() && lag + i < delayed.size(); ++i)
        sum += static_cast<double>(reference[i]) * static_cast<double>(delayed[lag + i]);
    return std::abs(sum);
}

} // namespace

std::vector<float> noise(std::size_t frames, std::uint32_t seed, float amplitude) {
    std::mt19937 random(seed);
    std::vector<float> x(frames);
    for (float& value : x)
        value = static_cast<float>(next(random)) * amplitude;
    return x;
}

std::vector<float> sine(std::size_t frames, double hz, float amplitude, double rate) {
    std::vector<float> x(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2.0 * pi * hz * static_cast<double>(i) / rate;
        x[i] = static_cast<float>(std::sin(phase)) * amplitude;
    }
    return x;
}

std::vector<float> impulse(std::size_t frames, std::size_t at, float amplitude) {
    std::vector<float> x(frames, 0.0F);
    x.at(at) = amplitude;
    return x;
}

std::vector<float> speech_like(std::size_t frames, std::uint32_t seed, double rate) {
    std::mt19937 random(seed);
    const double middle_pitch = 150.0 + 40.0 * next(random);
    std::vector<float> x(frames);
    double phase = 0.0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double syllable = syllables_per_second * static_cast<double>(i) / rate;
        phase += middle_pitch * (1.0 + 0.13 * std::sin(0.9 * syllable)) / rate;
        const bool hissing = syllable - std::floor(syllable) < 0.2;
        const double hiss = next(random) * (hissing ? 0.5 : 0.01);
        x[i] = static_cast<float>(loudness(syllable) * (voice(phase) + hiss));
    }
    const float loudest = peak(x);
    for (float& value : x)
        value *= loudest > 0.0F ? 0.5F / loudest : 0.0F;
    return x;
}

spoken_words words(std::size_t frames, double hz, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::size_t> said(frames / syllable_frames + 2);
    for (std::size_t& vowel : said)
        vowel = random() % std::size(vowels);
    spoken_words result{std::vector<float>(frames), std::vector<double>(frames / 480)};
    vocal_tract mouth;
    formant glottis;
    formant teeth;
    double phase = 0.0;
    double flow_before = 0.0;
    double hiss_before = 0.0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double place = static_cast<double>(i) / syllable_frames;
        const double within = place - std::floor(place);
        const bool speaks = static_cast<std::size_t>(place) % (syllables_of_word + 1) != syllables_of_word;
        const bool hisses = speaks && static_cast<std::size_t>(place) % 2 == 0 && within < 0.3;
        const bool voiced = speaks && within > 0.25;
        const double pitch = hz * (1.0 + 0.1 * std::sin(0.7 * place) - 0.05 * within);
        phase += pitch / word_rate;
        const double pulse = phase >= 1.0 ? word_rate / pitch : 0.0;
        phase -= std::floor(phase);
        const double swell = voiced ? std::sin(pi * (within - 0.25) / 0.75) : 0.0;
        const double flow =
            mouth.process(glottis.process(swell * (pulse + 0.1 * next(random)), 100.0, 200.0), place, said);
        const double hiss = hisses ? next(random) * std::sin(pi * within / 0.3) : 0.0;
        // A fricative sounds at the teeth, in front of the formants.
        const double fricative = teeth.process(hiss - hiss_before, 6500.0, 3000.0);
        hiss_before = hiss;
        result.samples[i] =
            static_cast<float>(flow - flow_before + 0.05 * fricative); // lips radiate the change
        flow_before = flow;
        if (i % 480 == 240 && i / 480 < result.pitch.size() && voiced && within > 0.3 && within < 0.95)
            result.pitch[i / 480] = pitch;
    }
    const float loudest = peak(result.samples);
    for (float& sample : result.samples)
        sample *= 0.3F / loudest;
    return result;
}

std::vector<float> planar(const std::vector<float>& left, const std::vector<float>& right) {
    std::vector<float> x(left);
    x.insert(x.end(), right.begin(), right.end());
    return x;
}

float peak(const std::vector<float>& x) {
    float highest = 0.0F;
    for (const float value : x)
        highest = std::max(highest, std::abs(value));
    return highest;
}

double gain_db_at(const std::vector<float>& in, const std::vector<float>& out, double hz, double rate) {
    return 20.0 * std::log10(strength_at(out, hz, rate) / strength_at(in, hz, rate));
}

std::optional<std::size_t> find_delay(const std::vector<float>& reference, const std::vector<float>& delayed,
                                      std::size_t longest) {
    std::optional<std::size_t> best;
    double strongest = 0.0;
    for (std::size_t lag = 0; lag <= longest; ++lag) {
        const double now = correlation(reference, delayed, lag);
        if (now > strongest)
            best = lag;
        strongest = std::max(strongest, now);
    }
    return best;
}

} // namespace test_kit
