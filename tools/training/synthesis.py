"""Synthesised talkers: screen readers and announcements are voices too, and sound like calls to a network that never
heard one. Pulses and noise through resonances that move from vowel to vowel, in the manner of a cascade formant
synthesiser (D. H. Klatt, J. Acoust. Soc. Am. 67(3), 1980)."""

import numpy as np
import scipy.signal

from corpus import RATE

STEP = RATE // 200  # in which resonances stand still
VOWELS_HZ = np.array(
    [[730, 1090, 2440], [530, 1840, 2480], [390, 1990, 2550], [270, 2290, 3010], [570, 840, 2410], [440, 1020, 2240]]
)
UPPER_HZ = np.array([3500, 4500])
BANDWIDTHS_HZ = (60, 90, 130, 220, 280)


def syllables(random, count):
    """Loudness of the voice and of hissing, and the three lowest resonances, in every step."""
    voiced, hissing = np.zeros(count), np.zeros(count)
    resonances, place, vowel = np.zeros((count, 3)), 0, random.integers(len(VOWELS_HZ))
    while place < count:
        length = int(random.uniform(20, 60))
        here, next_vowel = slice(place, min(place + length, count)), random.integers(len(VOWELS_HZ))
        share = np.linspace(0, 1, length)[: here.stop - here.start]
        glide = np.clip(2 * share - 1, 0, 1)[:, None]
        resonances[here] = VOWELS_HZ[vowel] + glide * (VOWELS_HZ[next_vowel] - VOWELS_HZ[vowel])
        if random.random() < 0.8:  # else a pause
            onset, loudness, swelling = random.uniform(0, 0.3), random.uniform(0.5, 1), random.uniform(0.3, 1)
            voiced[here] = loudness * np.sin(np.pi * np.clip((share - onset) / (1 - onset), 0, 1)) ** swelling
            hissing[here] = random.choice([0, 0, 0.03, 0.1]) * np.clip(1 - share / (onset + 0.1), 0, 1)
        place, vowel = place + length, next_vowel
    return voiced, hissing, resonances


def pulses(random, count):
    """One a period of a pitch that drifts and falls, with a little breath."""
    time = np.arange(count) / RATE
    depth, swings_hz, begin = random.uniform(0.02, 0.2), random.uniform(0.2, 1.5), random.uniform(0, 6.28)
    drift = 1 + depth * np.sin(2 * np.pi * swings_hz * time + begin)
    phase = np.cumsum(80 * 2 ** random.uniform(0, 1.8) * drift / RATE)
    source = np.diff(np.floor(phase), prepend=0.0) * np.sqrt(RATE / 150)
    source += random.uniform(0.02, 0.2) * random.standard_normal(count)
    pole = np.exp(-2 * np.pi * random.uniform(80, 400) / RATE)
    return scipy.signal.lfilter([1], [1, -2 * pole, pole**2], source)


def talker(random, count):
    steps = -(-count // STEP)
    voiced, hissing, resonances = syllables(random, steps)
    at_samples = np.linspace(0, steps - 1, steps * STEP)
    source = pulses(random, steps * STEP) * np.interp(at_samples, np.arange(steps), voiced)
    hiss = random.standard_normal(steps * STEP) * np.interp(at_samples, np.arange(steps), hissing)
    hiss = scipy.signal.sosfilt(scipy.signal.butter(2, [3500, 9500], "bandpass", fs=RATE, output="sos"), hiss)
    size = random.uniform(0.9, 1.25)  # of the head: a child's resonances lie higher
    tracks = size * np.column_stack([resonances, np.broadcast_to(UPPER_HZ, (steps, 2))])
    for track, bandwidth in zip(tracks.T, BANDWIDTHS_HZ):
        radius, state = np.exp(-np.pi * bandwidth / RATE), np.zeros(2)
        for step, a1 in enumerate(-2 * radius * np.cos(2 * np.pi * track / RATE)):
            here = slice(step * STEP, (step + 1) * STEP)
            gain = 1 + a1 + radius**2
            source[here], state = scipy.signal.lfilter([gain], [1, a1, radius**2], source[here], zi=state)
    voice = np.diff(source, prepend=0.0)  # lips radiate the change
    return (voice / (np.abs(voice).max() + 1e-9) + hiss)[:count].astype(np.float32)
