"""What the gain control makes of a quiet talker in noise who pauses."""

from dataclasses import dataclass

import numpy as np

import plots
from listening import pick, steadiest, talking
from measures import FRAME, RATE, active_power, decibels, frame_levels, loud_level, loudness_weighted, tracked_loudness

LEVEL, SNR = -30, 15  # of the talker, dBFS, where loudness comes to some -41 dB; over the noise, dB
TALK, PAUSE, TURNS = 6 * RATE, 2 * RATE, 3


@dataclass
class QuietTalker:
    before: np.ndarray
    after: np.ndarray
    talks: np.ndarray  # for each frame whether a word sounds
    pauses: np.ndarray  # whether it lies in a pause between two turns

    def add_to(self, table):
        """Judged in the second half of each turn: after a pause the gain has to be found anew."""
        low, high = plots.TARGET_BAND
        settled = np.tile(np.arange((PAUSE + TALK) // FRAME) >= (PAUSE + TALK // 2) // FRAME, TURNS)
        before, after = (np.median(tracked_loudness(x, self.talks)[settled]) for x in (self.before, self.after))
        remark = f"comes in at {before:.1f} dB, {SNR} dB over noise; target band {low} to {high}"
        table.add("Gain control: speech level of a quiet talker in noise, dB", after, (low - 1, high + 1), remark)
        inside = np.repeat(self.pauses, FRAME)
        before, after = (decibels(np.mean(loudness_weighted(x)[inside] ** 2)) for x in (self.before, self.after))
        table.add("Gain control: noise in pauses raised by, dB", after - before, (None, 0))

    def draw(self, path):
        plots.draw_gain_control(path, self.before, self.after, self.talks, self.pauses)


def listen(corpus, programs, seed):
    random = np.random.default_rng(seed)
    speaker = max(corpus.of("speech", "validation"), key=lambda recording: recording.length)
    noise = steadiest(corpus.of("noise", "validation"))
    turns = [np.append(np.zeros(PAUSE), pick(corpus, speaker, TALK, random, 16, talking)) for _ in range(TURNS)]
    speech = np.concatenate(turns)
    speech *= np.sqrt(10 ** (LEVEL / 10) / active_power(speech))
    hiss = corpus.samples(noise, 0, len(speech))
    before = speech + hiss * np.sqrt(10 ** ((LEVEL - SNR) / 10) / np.mean(hiss**2))
    after = programs.listen({"talk": before}, ["ours"], ["--gain-control"])[0]["ours", "talk"]
    levels = frame_levels(speech)
    pauses = np.tile(np.arange((PAUSE + TALK) // FRAME) < PAUSE // FRAME, TURNS)
    return QuietTalker(before, after, levels > loud_level(levels) - 25, pauses)
