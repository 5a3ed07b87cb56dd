#include "kit/words.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace test_kit {
namespace {

constexpr double pi = 3.14159265358979323846;
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

/// Formants of vowels, Hz, men's averages (G. E. Peterson and H. L. Barney, 1952), and two that all of them share.
constexpr double vowels[][5] = {{730, 1090, 2440, 3500, 4500}, {270, 2290, 3010, 3500, 4500},
                                {570, 840, 2410, 3500, 4500},  {530, 1840, 2480, 3500, 4500},
                                {300, 870, 2240, 3500, 4500},  {660, 1720, 2410, 3500, 4500}};
constexpr double bandwidths[] = {60, 90, 120, 200, 250};

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
        for (std::size_t i = 0; i < 5; ++i)
            x = formants_[i].process(x, from[i] + glide * (to[i] - from[i]), bandwidths[i]);
        return x;
    }

private:
    formant formants_[5];
};

} // namespace

spoken_words words(std::size_t frames, double hz, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::size_t> said(frames / syllable_frames + 2);
    for (std::size_t& vowel : said)
        vowel = random() % std::size(vowels);
    spoken_words result{samples(frames), std::vector<double>(frames / 480)};
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
        const double flow = mouth.process(
            glottis.process(swell * (pulse + 0.1 * uniform(random)), 100.0, 200.0), place, said);
        const double hiss = hisses ? uniform(random) * std::sin(pi * within / 0.3) : 0.0;
        // A fricative sounds at the teeth, in front of the formants.
        const double fricative = teeth.process(hiss - hiss_before, 6500.0, 3000.0);
        hiss_before = hiss;
        result.samples[i] =
            static_cast<float>(flow - flow_before + 0.05 * fricative); // lips radiate the change
        flow_before = flow;
        if (i % 480 == 240 && i / 480 < result.pitch.size() && voiced && within > 0.3 && within < 0.95)
            result.pitch[i / 480] = pitch;
    }
    result.samples = scaled(result.samples, 0.3F / peak(result.samples));
    return result;
}

} // namespace test_kit
