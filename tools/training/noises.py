"""Noises made on the spot: what offices and cars have and the recordings lack."""

import numpy as np
import scipy.fft

from corpus import RATE


def shaped(random, count, magnitude):
    """Gaussian noise whose spectrum follows `magnitude`, a function of the frequency in Hz."""
    frequency = scipy.fft.rfftfreq(count, 1 / RATE).astype(np.float32)
    spectrum = random.standard_normal((2, len(frequency)), dtype=np.float32)
    return scipy.fft.irfft((spectrum[0] + 1j * spectrum[1]) * magnitude(frequency), count).astype(np.float32)


def coloured(random, count):
    slope = random.uniform(-1.2, 0.3)
    return shaped(random, count, lambda f: (np.maximum(f, 40) / 1000) ** slope)


def harmonics(random, count, pitch, number):
    """Partials of one drifting tone, some 6 dB apart an octave."""
    time = np.arange(count, dtype=np.float32) / RATE
    phase = 2 * np.pi * (pitch * time + random.uniform(0, 0.3) * np.sin(2 * np.pi * random.uniform(0.1, 1) * time))
    sound = np.zeros(count, np.float32)
    for k in range(1, number + 1):
        if k * pitch < RATE / 2:
            sound += random.exponential() / k * np.sin(k * phase + random.uniform(0, 6.28)).astype(np.float32)
    return sound


def normalised(sound):
    return sound / (np.sqrt(np.mean(sound**2)) + 1e-9)


def hum(random, count):
    return normalised(harmonics(random, count, random.choice([50, 60]), 12)) + 0.3 * normalised(coloured(random, count))


def machine(random, count):
    """A fan, an air conditioning or a car: noise under a bend, with the harmonics of something that turns."""
    bend, steep = random.uniform(80, 1500), random.uniform(1, 2.2)
    air = shaped(random, count, lambda f: 1 / (1 + (f / bend) ** steep))
    sound = normalised(air)
    if random.random() < 0.6:
        sound += random.uniform(0.1, 0.6) * normalised(harmonics(random, count, random.uniform(25, 260), 10))
    swing = 1 + random.uniform(0, 0.3) * np.sin(
        2 * np.pi * random.uniform(0.2, 6) / RATE * np.arange(count, dtype=np.float32)
    )
    return sound * swing


def clicks(random, count):
    """Short bursts with a resonance each: keys, pens, a mouse."""
    sound = 0.003 * random.standard_normal(count, dtype=np.float32)
    for start in np.flatnonzero(random.random(count // 4800) < random.uniform(0.1, 0.5)) * 4800:
        length = int(random.uniform(100, 2500))
        place = min(start + int(random.uniform(0, 4800)), count - length)
        decay = np.exp(-np.arange(length, dtype=np.float32) / (length / 5))
        burst = random.standard_normal(length, dtype=np.float32)
        ring = np.sin(2 * np.pi * random.uniform(300, 6000) / RATE * np.arange(length, dtype=np.float32))
        sound[place : place + length] += random.exponential() * decay * (burst + 2 * random.random() * ring)
    return sound


MADE = (coloured, hum, machine, machine, clicks)
