// How long each stage of a talker needs, after three seconds of unusual input, until it treats speech as if silence had
// been there instead. The bounds are those of the integration page.
#include "dsp/flush_to_zero.h"
#include "kit/audio.h"
#include "kit/words.h"
#include "voice/agc.h"
#include "voice/auto_eq.h"
#include "voice/deesser.h"
#include "voice/limiter.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/rnn.h"

#include <functional>
#include <memory>
#include <string>

namespace {

using namespace test_kit;
using stage = std::function<void(float*)>;

constexpr int block = 480;
constexpr size_t second = 48000;
constexpr double never = 100.0;
constexpr double at_once = 0.0;

/// A stage that works in place; `rest` follows the buffers.
template <class Effect, class... Rest>
stage in_place(std::shared_ptr<Effect> effect, Rest... rest) {
    return [=](float* x) { effect->process(x, x, rest...); };
}

/// A listener's limiter, one sound on both sides.
template <class Effect>
stage on_both_sides(std::shared_ptr<Effect> effect) {
    return [effect, both = samples(2 * block)](float* x) mutable {
        std::copy_n(x, block, both.begin());
        std::copy_n(x, block, both.begin() + block);
        effect->process(both.data(), both.data());
        std::copy_n(both.begin() + block, block, x);
    };
}

struct row {
    std::string name;
    std::function<stage()> make;
    double seconds[6]; // until it has recovered from each of `wild_input`, rounded up
};

void PrintTo(const row& of, std::ostream* out) {
    *out << of.name;
}

const float infinity = std::numeric_limits<float>::infinity();

samples wild_input(size_t kind) {
    samples square(3 * second, 1.0F);
    for (size_t i = 0; i < square.size(); ++i)
        square[i] = i / 109 % 2 == 0 ? -1.0F : 1.0F;
    const float constants[] = {0.0F, 1.0F, 1e-40F, 1e30F, std::numeric_limits<float>::quiet_NaN(), infinity};
    return kind == 0 ? square : samples(3 * second, constants[kind]);
}

const row rows[] = {
    {"Canceller",
     [] { return in_place(std::make_shared<quenlis_anc>(48000, 1, block)); },
     {1.0, 2.0, at_once, never, never, never}},
    {"Denoiser",
     [] { return in_place(std::make_shared<quenlis_rnn>(block, 1)); },
     {6.0, 6.0, at_once, never, never, never}},
    {"Equaliser",
     [] { return in_place(std::make_shared<quenlis_auto_EQ>(48000, 1, block), 1.0F, 120); },
     {4.0, 6.0, at_once, never, never, never}},
    {"GainControl",
     [] { return [agc = std::make_shared<quenlis_agc>(1, block)](float* x) { agc->process(x, 1.0F); }; },
     {2.0, 0.5, at_once, never, 0.1, never}},
    {"Deesser",
     [] { return in_place(std::make_shared<quenlis_deesser>(48000, 1, block)); },
     {0.1, 0.1, at_once, 0.1, never, never}},
    {"DeesserOfBothSides",
     [] { return on_both_sides(std::make_shared<quenlis_deesser>(48000, 2, block)); },
     {0.1, 0.1, at_once, never, never, never}},
    {"Limiter",
     [] { return on_both_sides(std::make_shared<quenlis_limiter>(-0.2F, 0.2F, 48000, 2, block)); },
     {0.1, 0.1, at_once, 0.2, 0.2, 0.2}},
};

/// Words in a quiet room: the equaliser, told that all is speech, has to hear something.
samples talk(size_t frames, std::uint32_t seed) {
    return sum(words(frames, 150.0, seed).samples, noise(frames, seed, 1e-4F));
}

/// What speech becomes after `before`.
samples speech_after(const row& of, const samples& before) {
    static const samples first = talk(3 * second, 9);
    static const samples last = talk(8 * second, 5);
    const flush_to_zero guard;
    const stage process = of.make();
    in_blocks(first, block, process);
    in_blocks(before, block, process);
    return in_blocks(last, block, process);
}

/// The end, in seconds, of the last block whose error is above a fifth of its own level or of the usual one.
double recovery(const samples& expected, const samples& heard) {
    const double usual = power(expected);
    double end = 0.0;
    for (size_t start = 0; start < expected.size(); start += block) {
        const samples wanted = part(expected, start, start + block);
        const samples error = sum(part(heard, start, start + block), scaled(wanted, -1.0F));
        if (!(power(error) <= 0.04 * (power(wanted) + usual)))
            end = static_cast<double>(start + block) / second;
    }
    return end;
}

class Recovery : public testing::TestWithParam<row> {};

INSTANTIATE_TEST_SUITE_P(Stages, Recovery, testing::ValuesIn(rows),
                         [](const auto& of) { return of.param.name; });

TEST_P(Recovery, TakesNoLongerThanThePageSays) {
    const samples expected = speech_after(GetParam(), samples(3 * second));
    for (size_t kind = 0; kind < std::size(GetParam().seconds); ++kind) {
        const double longest = GetParam().seconds[kind];
        const double took = recovery(expected, speech_after(GetParam(), wild_input(kind)));
        if (longest == never)
            EXPECT_GT(took, 7.0) << "input " << kind << " is held for good, and the page has to say so";
        else
            EXPECT_LE(took, longest) << "input " << kind;
    }
}

} // namespace
