/// Synthesised words that a network trained on speech takes for speech.
#pragma once

#include "kit/signals.h"

namespace test_kit {

/// Words that were never said.
struct spoken_words {
    test_kit::samples samples;
    std::vector<double> pitch; // Hz, in the middle of each 480 samples; 0 where no voice sounds
};

/// Words of three syllables with pauses between them, at 48 kHz: a glottal pulse through the formants of vowels that
/// glide into each other, and a fricative at the onset of every other syllable. The pitch moves within 15% of `hz`; the
/// peak is 0.3.
spoken_words words(std::size_t frames, double hz, std::uint32_t seed);

} // namespace test_kit
