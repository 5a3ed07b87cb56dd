"""Noises made on the spot: what offices and cars have, and more kinds of sudden sounds than any corpus holds."""

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


def add_events(random, sound, starts, make):
    """Lays `make(length)`, of 10 to 500 ms, over `sound` at each start, with a level and a decay of its own."""
    for start in starts:
        length = min(int(RATE * 10 ** random.uniform(-2, -0.3)), len(sound) - start)
        time = np.arange(length, dtype=np.float32) / length
        envelope = np.minimum(1, time / random.uniform(0.01, 0.4)) * np.exp(-random.uniform(1, 6) * time)
        sound[start : start + length] += random.exponential() * envelope * make(length)


def starts_of(random, count, most):
    """Places of up to `most` events a second, evenly spread or in clusters."""
    number = 1 + random.poisson(random.uniform(0.5, most) * count / RATE)
    if random.random() < 0.5:
        return random.integers(0, count - 480, number)
    middle, width = random.uniform(0, count), random.uniform(0.02, 0.3) * count
    return np.clip(random.normal(middle, width, number), 0, count - 480).astype(int)


def calls(random, count):
    """Animals, squeaks and horns: gliding partials, some of them hoarse, all of one throat."""
    pitch, brightness = 10 ** random.uniform(1.9, 3.7), random.uniform(0.3, 2)
    hoarse, glide = random.choice([0, 0, 0.3, 1]), random.uniform(-1.5, 1.5)

    def call(length):
        time = np.arange(length, dtype=np.float32) / length
        octaves = glide * (time - time * time) + random.normal(0, 0.15)
        wobble = 0.02 * random.random() * np.sin(random.uniform(10, 60) * time)
        phase = 2 * np.pi * np.cumsum(pitch * 2 ** (octaves + wobble)) / RATE
        voice = sum(
            k**-brightness * random.random() * np.sin(k * phase)
            for k in range(1, min(20, 1 + int(RATE / 4 / pitch)) + 1)
        )
        return voice + hoarse * random.standard_normal(length, dtype=np.float32)

    sound = 1e-3 * normalised(coloured(random, count))
    add_events(random, sound, starts_of(random, count, 5), call)
    return sound


def crackle(random, count):
    """Fire, rain on a window, paper, crisps: many grains through one body."""
    density, body = 10 ** random.uniform(1, 3.7) / RATE, random.uniform(0.1, 1.2)
    grains = random.standard_normal(count, dtype=np.float32) ** 3 * (random.random(count, dtype=np.float32) < density)
    middle = 10 ** random.uniform(2.5, 4)
    spectrum = scipy.fft.rfft(grains)
    octaves = np.log2(np.maximum(scipy.fft.rfftfreq(count, 1 / RATE), 20) / middle).astype(np.float32)
    sound = scipy.fft.irfft(spectrum * 2 ** (-body * octaves**2), count).astype(np.float32)
    return sound * swell(random, count, 15) if random.random() < 0.5 else sound


def swell(random, count, most):
    """A smooth gain that wanders by up to `most` dB either way, one to thirty times a second."""
    points = 2 + int(count / RATE * 10 ** random.uniform(0, 1.5))
    levels = random.uniform(-most, most, points)
    return (10 ** (np.interp(np.linspace(0, points - 1, count), np.arange(points), levels) / 20)).astype(np.float32)


def texture(random, count):
    """Noise whose bands come and go by themselves: wind, surf, traffic, crowds far away."""
    frequency = scipy.fft.rfftfreq(count, 1 / RATE)
    spectrum = scipy.fft.rfft(coloured(random, count))
    edges = np.concatenate([[0], np.sort(10 ** random.uniform(2, 4.3, random.integers(1, 6))), [RATE]])
    sound = np.zeros(count, np.float32)
    for low, high in zip(edges, edges[1:]):
        band = scipy.fft.irfft(np.where((frequency >= low) & (frequency < high), spectrum, 0), count)
        sound += band.astype(np.float32) * swell(random, count, 20)
    return sound


MADE = (coloured, hum, machine, machine, clicks, calls, crackle, texture)
