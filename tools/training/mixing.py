"""Examples for training, made on the fly: what a microphone hears and what of it is to remain.

Every batch depends on its number and the seed alone, so that an interrupted run goes on with the very same examples.
"""

import numpy as np
import scipy.fft
import scipy.signal
import torch

import noises
import synthesis
from corpus import RATE
from high_pass import with_phase_taken_back

TALKER_RATES = (8000, 16000, 24000, 32000)


def decibels(value):
    return np.float32(10 ** (value / 20))


def active_power(sound):
    """Of the frames within 25 dB of the loudest ones; 0 for silence."""
    frames = np.mean(sound[: len(sound) // 480 * 480].reshape(-1, 480) ** 2, axis=1)
    return float(frames[frames > np.percentile(frames, 95) / 316].mean()) if frames.any() else 0.0


class Mixer:
    """Draws examples of `seconds` from one split of a corpus."""

    def __init__(self, corpus, split, seconds, seed):
        self.corpus, self.seed, self.count = corpus, seed, int(seconds * 100) * 480
        self.padded = scipy.fft.next_fast_len(self.count + RATE // 2, real=True)
        self.frequencies = scipy.fft.rfftfreq(self.padded, 1 / RATE)
        self.speech, self.noise = corpus.of("speech", split), corpus.of("noise", split)
        weights = np.array([self._weight(recording) for recording in self.speech])
        self.speech_weights = weights / weights.sum()

    @staticmethod
    def _weight(recording):
        """Voices by the root of their length, low ones and those with a full band more often."""
        low = 2.0 if 0 < recording.pitch_hz < 165 else 1.0
        full = 1.6 if recording.edge_hz > 17000 else 1.0
        return recording.length**0.5 * low * full

    def batch(self, number, size):
        """(size, samples) of mixtures and of targets, and the edge in Hz that each recording's own spectrum has."""
        random = np.random.default_rng([self.seed, number])
        examples = [self._example(random) for _ in range(size)]
        mixture, target = (torch.from_numpy(np.stack([e[i] for e in examples])) for i in (0, 1))
        return mixture, target, torch.tensor([e[2] for e in examples], dtype=torch.float32)

    def _example(self, random):
        kind = random.random()
        edge = 24000.0
        speech = np.zeros(self.count, np.float32)
        if kind >= 0.1:
            speech, edge = self._talker(random)
        noise = self._noise(random)
        level = decibels(random.uniform(-45, -5))
        power = active_power(speech)
        speech = speech * (level / np.sqrt(power)) if power > 0 else speech
        noise = noise * (level * decibels(-self._snr(random, kind)) / np.sqrt(np.mean(noise**2) + 1e-12))
        mixture = speech + noise
        if random.random() < 0.2:
            passed = self._band_limit(random)
            mixture, speech = self._filter(mixture, passed), self._filter(speech, passed)
        if random.random() < 0.05:
            ceiling = random.uniform(0.4, 0.9) * np.abs(mixture).max()
            mixture = np.clip(mixture, -ceiling, ceiling)
        return np.clip(mixture, -1, 1).astype(np.float32), speech.astype(np.float32), edge

    @staticmethod
    def _snr(random, kind):
        """Noise alone, nearly clean, or anything between."""
        if kind < 0.1:
            return random.uniform(0, 25)
        return random.uniform(35, 65) if kind < 0.2 else random.uniform(-5, 25)

    def _talker(self, random):
        """A voice coloured by a microphone and often by a room, and where its own spectrum ends."""
        speech, edge = self._synthesised(random) if random.random() < 0.06 else self._recorded(random)
        return self._filter(speech, self._colour(random, 6), self._room(random)), edge

    def _synthesised(self, random):
        return synthesis.talker(random, self.count), 24000.0

    def _recorded(self, random):
        """One to three pieces of a voice with gaps between."""
        recording = self.speech[random.choice(len(self.speech), p=self.speech_weights)]
        speed = random.uniform(0.86, 1.12) if random.random() < 0.6 else 1.0
        speech = np.zeros(self.count, np.float32)
        place = int(max(0, random.uniform(-2, 0.5)) * RATE)
        while place < self.count:
            length = min(int(random.uniform(0.8, 3) * RATE), self.count - place)
            speech[place : place + length] = self._piece(random, recording, length, speed)
            place += length + int(random.uniform(0.1, 1.2) * RATE)
        return speech, min(recording.edge_hz * speed, 24000.0)

    def _piece(self, random, recording, length, speed):
        start = int(random.integers(recording.length))
        if speed == 1.0:
            piece = self.corpus.samples(recording, start, length)
        else:
            piece = scipy.signal.resample(
                self.corpus.samples(recording, start, scipy.fft.next_fast_len(int(length * speed) + 1)),
                scipy.fft.next_fast_len(length),
            )[:length]
        fade = np.minimum(1, np.minimum(np.arange(length), np.arange(length)[::-1]) / 480).astype(np.float32)
        return piece * fade

    def _noise(self, random):
        noise = self._one_noise(random)
        if random.random() < 0.25:
            noise = noise + decibels(random.uniform(-12, 0)) * self._one_noise(random)
        return self._filter(noise, self._colour(random, 8))

    def _one_noise(self, random):
        kind = random.random()
        if kind < 0.5:
            noise = self._recorded_noise(random)
        elif kind < 0.88:
            noise = noises.MADE[random.integers(len(noises.MADE))](random, self.count)
        else:
            noise = self._babble(random)
        return noises.normalised(noise)

    def _recorded_noise(self, random):
        """At another speed, backwards or swelling, so that a few recordings stand for many."""
        recording = self.noise[random.integers(len(self.noise))]
        speed = 2 ** random.uniform(-1, 1) if random.random() < 0.6 else 1.0
        taken = int(self.count * speed) + 2
        noise = self.corpus.samples(recording, int(random.integers(recording.length)), taken)
        if speed != 1.0:
            noise = np.interp(np.arange(self.count) * speed, np.arange(taken), noise).astype(np.float32)
        noise = noise[: self.count]
        if random.random() < 0.25:
            noise = noise[::-1]
        return noise * noises.swell(random, self.count, 12) if random.random() < 0.25 else noise

    def _babble(self, random):
        voices = np.zeros(self.count, np.float32)
        for _ in range(random.integers(4, 11)):
            recording = self.speech[random.integers(len(self.speech))]
            voice = self.corpus.samples(recording, int(random.integers(recording.length)), self.count)
            voices += decibels(random.uniform(-8, 0)) * noises.normalised(voice)
        return self._filter(voices, self._room(random))

    def _filter(self, sound, *responses):
        """By responses over `frequencies`, with room for half a second of reverberation."""
        size = self.padded
        spectrum = scipy.fft.rfft(sound.astype(np.float32), size)
        for response in responses:
            spectrum = spectrum * response
        return scipy.fft.irfft(spectrum, size)[: self.count].astype(np.float32)

    def _colour(self, random, most):
        """A smooth response of up to `most` dB either way over the octaves."""
        octaves = np.log2(np.maximum(self.frequencies, 30) / 30)
        points = np.linspace(0, octaves[-1], 5)
        return (10 ** (np.interp(octaves, points, random.uniform(-most, most, 5)) / 20)).astype(np.float32)

    def _room(self, random):
        """Direct sound and a decaying tail (60 dB in 0.1 to 0.6 s), quieter with the talker nearer; often none."""
        response = np.zeros(self.padded, np.float32)
        response[0] = 1
        if random.random() < 0.45:
            length, first = RATE // 2, int(random.uniform(0.001, 0.008) * RATE)
            tail = random.standard_normal(length, dtype=np.float32)
            tail *= np.exp(-6.9 * np.arange(length) / (random.uniform(0.1, 0.6) * RATE))
            tail *= decibels(random.uniform(-22, -4)) / np.sqrt(np.sum(tail**2))
            response[first:length] += tail[: length - first]
        return scipy.fft.rfft(response)

    def _band_limit(self, random):
        edge = 0.47 * TALKER_RATES[random.integers(len(TALKER_RATES))]
        return (self.frequencies < edge).astype(np.float32)


class Batches(torch.utils.data.Dataset):
    """The mixer's batches by number, for a loader with processes of its own. Beside the target stands the same as the
    canceller is to leave it for the denoiser's high-pass."""

    def __init__(self, mixer, size):
        self.mixer, self.size = mixer, size

    def __getitem__(self, number):
        mixture, target, edge = self.mixer.batch(number, self.size)
        return mixture, target, torch.from_numpy(with_phase_taken_back(target.numpy())), edge
