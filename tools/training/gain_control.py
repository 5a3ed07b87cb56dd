"""What the gain control makes of a quiet talker in noise who pauses."""

from collections import deque
from dataclasses import dataclass

import numpy as np

import plots
from listening import pick, steadiest, talking
from measures import FRAME, RATE, active_power, decibels, frame_levels, loud_level
from measures import loudness_by_hop, loudness_weighted, tracked_loudness

LEVEL, SNR = -30, 15  # of the talker, dBFS, where loudness comes to some -41 dB; over the noise, dB
TALK, PAUSE, TURNS = 6 * RATE, 2 * RATE, 3


def slow_gain(cleaned, voice):
    """The gain that the engine's rules give for a cleaned talker, in dB for every hop of the audio that it meets: a
    compressor stands behind it, so that the engine's output does not show it. `voice`: its probability in each frame."""
    low, high = plots.TARGET_BAND
    estimate, before, quiet, earlier, gains = -24.2, -160.0, 0, deque([0.0] * 4), []
    # The denoiser knows of a frame's voice before it lets the frame out.
    for level, probability in zip(loudness_by_hop(cleaned), np.repeat(np.append(voice[1:], voice[-1]), 4)):
        earlier.append(level)
        delayed = earlier.popleft()
        bursts = delayed < -60 and level - delayed > 40
        if probability > 0.85:
            rate = 0.0001 if estimate - level > 20 else 0.8 if bursts else 0.03 if level > before else 0.01
            estimate += rate * (level - estimate)
        before = level
        quiet = quiet + 1 if probability < 0.025 else 0
        if quiet > 100 and estimate < low:
            estimate = -24.2
        gain = np.clip(low - estimate, 0, 35) + np.clip(high - estimate, -35, 0)
        gains.append(gain * (1 if quiet <= 16 else 1 - 0.02 * quiet if quiet <= 50 else 0))
    return np.append(gains[4:], gains[-4:])  # a gain is worked out one frame ahead


@dataclass
class QuietTalker:
    before: np.ndarray
    gained: np.ndarray  # with the slow gain alone
    after: np.ndarray
    talks: np.ndarray  # for each frame whether a word sounds
    pauses: np.ndarray  # whether it lies in a pause between two turns

    def add_to(self, table):
        """Judged in the second half of each turn: after a pause the gain has to be found anew."""
        low, high = plots.TARGET_BAND
        settled = np.tile(np.arange((PAUSE + TALK) // FRAME) >= (PAUSE + TALK // 2) // FRAME, TURNS)
        levels = [np.median(tracked_loudness(x, self.talks)[settled]) for x in (self.before, self.gained, self.after)]
        remark = f"comes in at {levels[0]:.1f} dB, {SNR} dB over noise; target band {low} to {high}"
        table.add("Gain control: speech level of a quiet talker in noise, dB", levels[1], (low - 1, high + 1), remark)
        table.add("the same behind the compressor that stands there, dB", levels[2])
        inside = np.repeat(self.pauses, FRAME)
        before, after = (decibels(np.mean(loudness_weighted(x)[inside] ** 2)) for x in (self.before, self.after))
        table.add("Gain control: noise in pauses raised by, dB", after - before, (None, 0))

    def draw(self, path):
        signals = {"in": self.before, "with the slow gain": self.gained, "out": self.after}
        plots.draw_gain_control(path, signals, self.talks, self.pauses)


def listen(corpus, programs, seed):
    random = np.random.default_rng(seed)
    speaker = max(corpus.of("speech", "validation"), key=lambda recording: recording.length)
    noise = steadiest(corpus.of("noise", "validation"))
    turns = [np.append(np.zeros(PAUSE), pick(corpus, speaker, TALK, random, 16, talking)) for _ in range(TURNS)]
    speech = np.concatenate(turns)
    speech *= np.sqrt(10 ** (LEVEL / 10) / active_power(speech))
    hiss = corpus.samples(noise, 0, len(speech))
    before = speech + hiss * np.sqrt(10 ** ((LEVEL - SNR) / 10) / np.mean(hiss**2))
    heard, found = programs.listen({"talk": before}, ["ours"])
    cleaned = heard["ours", "talk"]
    gain = 10 ** (slow_gain(cleaned, found["talk"]["voice"]) / 20)
    after = programs.listen({"talk": before}, ["ours"], ["--gain-control"])[0]["ours", "talk"]
    levels = frame_levels(speech)
    pauses = np.tile(np.arange((PAUSE + TALK) // FRAME) < PAUSE // FRAME, TURNS)
    return QuietTalker(before, cleaned * np.repeat(gain, FRAME // 4), after, levels > loud_level(levels) - 25, pauses)
