#include "render/crosstalk.h"

#include "kit/allocation_counter.h"
#include "kit/compare.h"
#include "kit/engine.h"
#include "kit/signals.h"
#include "render/centre_channel.h"
#include "render/crosstalk_tables.h"
#include "voice/limiter.h"

#include "../dsp/vector_checks.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <gtest/gtest.h>

namespace {

using namespace test_kit;
using samples = std::vector<float>;

constexpr int frame = 1024;

struct split_case {
    complex32f left, right, centre;
};

// Slopes and quotients of these are exact. The last three have a foot that is not finite, the first two of
// them by a slope whose reciprocal overflows: equal magnitudes take the right one.
constexpr split_case split_cases[] = {
    {{3, 4}, {3, 4}, {3, 4}},
    {{1, 1}, {1, 3}, {1, 0}},
    {{1, 2}, {3, 2}, {0, 2}},
    {{3, 4}, {0, 0}, {0, 0}},
    {{1, 2}, {-1, -2}, {0, 0}},
    {{0, 2}, {2, 0}, {1, 1}},
    {{2, 1}, {4, 4}, {2, 1}},
    {{4, 4}, {2, 1}, {2, 1}},
    {{0, 0}, {0, 0}, {0, 0}},
    {{1, 1e-40F}, {-1, 2e-40F}, {-1, 2e-40F}},
    {{1, 1e-40F}, {-2, 2e-40F}, {1, 1e-40F}},
    {{1e-40F, 1e10F}, {0, -2e10F}, {1e-40F, 1e10F}},
};

TEST(CentreSeparation, FollowsItsRuleWithTheSameBitsOnEveryTarget) {
    const samples values = vector_checks::test_values(4 * centre_bins, 9);
    std::vector<complex32f> left(centre_bins);
    std::vector<complex32f> right(centre_bins);
    for (std::size_t k = 0; k < left.size(); ++k) {
        left[k] = {values[4 * k], values[4 * k + 1]};
        right[k] = {values[4 * k + 2], values[4 * k + 3]};
    }
    left[0] = {3, 1};
    right[0] = {1, -5};
    for (std::size_t i = 0; i < std::size(split_cases); ++i) {
        left[i + 1] = split_cases[i].left;
        right[i + 1] = split_cases[i].right;
    }
    std::vector<complex32f> reference;
    vector_checks::on_every_target([&](const char* name) {
        std::vector<complex32f> l = left;
        std::vector<complex32f> r = right;
        std::vector<complex32f> c(centre_bins);
        separate_left_right_to_center(l.data(), r.data(), c.data());
        EXPECT_TRUE(c[0].re == 2.0F && c[0].im == -2.0F);
        EXPECT_TRUE(l[0].re == 1.0F && l[0].im == 3.0F && r[0].re == -1.0F && r[0].im == -3.0F);
        for (std::size_t i = 0; i < std::size(split_cases); ++i) {
            const split_case& expected = split_cases[i];
            EXPECT_TRUE(c[i + 1].re == expected.centre.re && c[i + 1].im == expected.centre.im) << name << i;
            EXPECT_EQ(l[i + 1].re, expected.left.re - expected.centre.re);
            EXPECT_EQ(r[i + 1].im, expected.right.im - expected.centre.im);
        }
        l.insert(l.end(), r.begin(), r.end());
        l.insert(l.end(), c.begin(), c.end());
        if (reference.empty())
            reference = l;
        EXPECT_TRUE(std::equal(l.begin(), l.end(), reference.begin(), [](complex32f a, complex32f b) {
            return vector_checks::same_bits(a.re, b.re) && vector_checks::same_bits(a.im, b.im);
        })) << name;
    });
}

/// What the renderer makes of a planar signal, in blocks, as two channels.
struct rendered {
    samples left, right;
};

rendered render(quenlis_xtc& renderer, int block, const samples& left, const samples& right) {
    rendered out;
    samples planar_block(2 * static_cast<std::size_t>(block));
    for (std::size_t at = 0; at + block <= left.size(); at += block) {
        std::copy_n(&left[at], block, planar_block.begin());
        std::copy_n(&right[at], block, planar_block.begin() + block);
        renderer.process(planar_block.data(), planar_block.data());
        out.left.insert(out.left.end(), planar_block.begin(), planar_block.begin() + block);
        out.right.insert(out.right.end(), planar_block.begin() + block, planar_block.end());
    }
    return out;
}

TEST(Rendering, DelaysAndLiftsWhatIsCommonAndWaitsForFramesInTheKnownCalls) {
    struct {
        int block;
        std::vector<int> silent_calls;
    } const cases[] = {{480, {1, 2, 17}}, {512, {1}}, {960, {1}}, {1024, {}}};
    for (const auto& [block, silent_calls] : cases) {
        quenlis_flags flags;
        quenlis_xtc renderer(block, &flags, nullptr, nullptr, nullptr, nullptr);
        constexpr std::size_t calls = 60;
        samples mono = noise(calls * block, 3, 0.5F);
        std::fill(mono.end() - 12 * frame, mono.end(), 0.0F);
        samples expected;
        std::size_t next = 0;
        for (int call = 1; call <= static_cast<int>(calls); ++call)
            for (int i = 0; i < block; ++i) {
                const bool waits = std::count(silent_calls.begin(), silent_calls.end(), call) != 0;
                const std::size_t due = waits ? 0 : next++;
                expected.push_back(due < 1536 ? 0.0F : 1.3225F * mono[due - 1536]);
            }
        const rendered out = render(renderer, block, mono, mono);
        EXPECT_TRUE(error_below(expected, out.left, -125.0)) << block;
        EXPECT_TRUE(same_bits(out.left, out.right)) << block;
        EXPECT_EQ(peak({out.left.end() - 4 * frame, out.left.end()}), 0.0F) << "silence after silence";
    }
}

/// Of one channel alone, the part that the separation takes for common: the mean of bin 0, frame by frame.
std::vector<double> common_part_of_one_side(const samples& x) {
    std::vector<double> common(x.size());
    const auto window = [](std::size_t k) { return std::sqrt(0.5 - 0.5 * std::cos(2.0 * M_PI * k / frame)); };
    for (std::size_t start = 0; start + frame <= x.size(); start += frame / 2) {
        double sum = 0.0;
        for (std::size_t k = 0; k < frame; ++k)
            sum += x[start + k] * window(k);
        for (std::size_t k = 0; k < 2 * frame && start + k < x.size(); ++k)
            common[start + k] += sum / 2.0 / (2 * frame) * window(k % frame);
    }
    return common;
}

/// Adds a residue, 512 frames late, through the filters in force at each frame.
void add_filtered(const std::vector<double>& residue, const float (*filters)[crosstalk_taps],
                  const std::vector<int>& angles, std::vector<double>& out) {
    for (std::size_t i = frame / 2; i < out.size(); ++i) {
        const float* const taps = filters[angles[i / frame]];
        const double value = 1.08F * residue[i - frame / 2];
        for (std::size_t tap = 0; tap < crosstalk_taps && i + tap < out.size(); ++tap)
            out[i + tap] += value * static_cast<double>(taps[tap]);
    }
}

TEST(Rendering, OfOneSideIsTheFiltersConvolutionAndAnAngleCountsFromTheNextFrame) {
    constexpr std::size_t frames = 8;
    const samples silence(frames * frame);
    samples input = noise(frames * frame, 4, 0.5F);
    std::fill(input.begin(), input.begin() + frame / 2, 0.0F); // the first half frame has but one window
    const std::vector<double> common = common_part_of_one_side(input);
    std::vector<double> own_residue(input.begin(), input.end());
    std::vector<double> other_residue(input.size());
    for (std::size_t i = 0; i < input.size(); ++i) {
        own_residue[i] -= common[i];
        other_residue[i] = -common[i];
    }
    const std::vector<int> angles = {15, 15, 15, 45, 45, 0, 0, 0};
    for (const bool on_the_left : {true, false}) {
        quenlis_flags flags;
        quenlis_xtc renderer(frame, &flags, nullptr, nullptr, nullptr, nullptr);
        rendered out;
        for (std::size_t f = 0; f < frames; ++f) {
            flags.set_state(QNL_CONTROL_HALF_SPAN_ANGLE, angles[f]);
            const samples part(input.begin() + f * frame, input.begin() + (f + 1) * frame);
            const samples nothing(frame);
            const rendered block =
                render(renderer, frame, on_the_left ? part : nothing, on_the_left ? nothing : part);
            out.left.insert(out.left.end(), block.left.begin(), block.left.end());
            out.right.insert(out.right.end(), block.right.begin(), block.right.end());
        }
        const auto& left_residue = on_the_left ? own_residue : other_residue;
        const auto& right_residue = on_the_left ? other_residue : own_residue;
        std::vector<double> centre(input.size());
        for (std::size_t i = 1536; i < centre.size(); ++i)
            centre[i] = 1.3225 * common[i - 1536];
        std::vector<double> left = centre;
        std::vector<double> right = centre;
        add_filtered(left_residue, ltol_speaker_irs, angles, left);
        add_filtered(right_residue, rtol_speaker_irs, angles, left);
        add_filtered(left_residue, ltor_speaker_irs, angles, right);
        add_filtered(right_residue, rtor_speaker_irs, angles, right);
        EXPECT_TRUE(error_below(samples(left.begin(), left.end()), out.left, -120.0));
        EXPECT_TRUE(error_below(samples(right.begin(), right.end()), out.right, -120.0));
    }
}

TEST(Rendering, HasTheSameBitsOnEveryTargetAndAllocatesNothing) {
    const samples left = noise(20 * 480, 5, 0.5F);
    const samples right = noise(20 * 480, 6, 0.5F);
    samples reference;
    vector_checks::on_every_target([&](const char* name) {
        quenlis_flags flags;
        quenlis_xtc renderer(480, &flags, nullptr, nullptr, nullptr, nullptr);
        flags.set_state(QNL_CONTROL_HALF_SPAN_ANGLE, 30);
        samples block = planar(noise(480, 1), noise(480, 2));
        const allocation_counter heap;
        for (int call = 0; call < 3; ++call)
            renderer.process(block.data(), block.data());
        EXPECT_EQ(heap.allocations(), 0U);
        const rendered out = render(renderer, 480, left, right);
        if (reference.empty())
            reference = planar(out.left, out.right);
        EXPECT_TRUE(same_bits(reference, planar(out.left, out.right))) << name;
    });
}

TEST(Rendering, StandsBeforeTheLimiterOfAListenerWithLoudspeakers) {
    constexpr int block = 480;
    engine engine({2, 2});
    engine.set(2, QNL_CONTROL_DEVICE, QNL_DEVICE_SPEAKER);
    quenlis_flags flags;
    quenlis_xtc renderer(block, &flags, nullptr, nullptr, nullptr, nullptr);
    quenlis_limiter limiter(-0.2F, 0.2F, 48000, 2, block);
    for (std::uint32_t period = 0; period < 8; ++period) {
        samples stereo = planar(noise(block, period, 1.0F), noise(block, period + 100, 1.0F));
        engine.push(1, stereo, block);
        renderer.process(stereo.data(), stereo.data());
        limiter.process(stereo.data(), stereo.data());
        EXPECT_TRUE(same_bits(stereo, engine.pull(2).samples)) << period;
    }
}

} // namespace
