"""Measures of signals at 48 kHz with full scale 1.0, in frames of 10 ms as the engine has them."""

import numpy as np
import scipy.signal

RATE = 48000
FRAME = RATE // 100
LONGEST_DELAY = RATE * 60 // 1000


def decibels(power):
    return 10 * np.log10(np.maximum(power, 1e-20))


def frame_levels(x):
    return decibels(np.mean(x[: len(x) // FRAME * FRAME].reshape(-1, FRAME) ** 2, axis=1))


def loud_level(levels):
    return np.percentile(levels, 95)


def active_power(speech):
    """The mean over the frames that are within 25 dB of the loud ones."""
    levels = frame_levels(speech)
    return np.mean(10 ** (levels[levels > loud_level(levels) - 25] / 10))


def si_sdr(reference, estimate):
    """Scale-invariant signal to distortion ratio, dB (J. Le Roux et al., "SDR - half-baked or well done?", 2019)."""
    target = reference * (estimate @ reference) / (reference @ reference)
    error = estimate - target
    return float(decibels(target @ target) - decibels(error @ error))


def aligned(reference, estimate):
    """Both without the delay of the estimate, looked for from 0 to 60 ms: the same stretch for every delay."""
    length = len(reference) - LONGEST_DELAY
    correlation = scipy.signal.correlate(estimate, reference[:length], "valid", "fft")
    delay = int(np.argmax(correlation))
    return reference[:length], estimate[delay : delay + length]


def band_power(x, low, high):
    spectrum = np.abs(np.fft.rfft(x)) ** 2
    frequency = np.fft.rfftfreq(len(x), 1 / RATE)
    return spectrum[(frequency >= low) & (frequency < high)].sum()


def loudness_weighted(x):
    """Equal loudness as the gain control has it: the ReplayGain curve for 48 kHz."""
    contour_a = [1.0, -3.84664607, 7.81501675, -11.34170341, 13.05504227, -12.28759861, 9.48293781, -5.87257862]
    contour_a += [2.7546587, -0.86984378, 0.13919315]
    contour_b = [0.038576, -0.02160367, -0.00123395, -0.00009292, -0.0165526, 0.02161527, -0.02074045, 0.00594298]
    contour_b += [0.00306428, 0.00012025, 0.00288464]
    low_cut_a, low_cut_b = [1.0, -1.97223377, 0.97261399], [0.98621190, -1.97242379, 0.98621190]
    return scipy.signal.lfilter(low_cut_b, low_cut_a, scipy.signal.lfilter(contour_b, contour_a, x))


def loudness_by_hop(x):
    """The gain control's measure: frames of 5 ms with a hop of half of that, dB."""
    hop = FRAME // 4
    power = np.convolve(np.append(loudness_weighted(x), np.zeros(hop)) ** 2, np.ones(2 * hop) / (2 * hop), "valid")[::hop]
    return decibels(power)[: len(x) // hop]


def tracked_loudness(x, talks):
    """The level of speech in every frame, followed as the gain control follows it.
    `talks`: for every frame of 10 ms whether to follow."""
    levels = loudness_by_hop(x)[: 4 * len(talks)]
    estimate = np.median(levels[np.repeat(talks, 4)])
    before, track = estimate, []
    for level, follows in zip(levels, np.repeat(talks, 4)):
        if follows and estimate - level < 20:
            estimate += (0.03 if level > before else 0.01) * (level - estimate)
        before = level
        track.append(estimate)
    return np.array(track)[::4]
