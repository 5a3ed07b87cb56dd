"""Stretches of the held-out recordings, and what the engine and packaged noise suppressors make of them."""

import subprocess
import tempfile
from pathlib import Path

import numpy as np
import soundfile

from measures import FRAME, RATE, active_power, frame_levels, loud_level

SYSTEMS = ("ours", "speexdsp", "webrtc", "webrtc16k")
LEAD_IN = RATE
SPEECH_POWER = 10 ** (-26 / 10)


class Programs:
    def __init__(self, folder):
        self.folder = folder
        for name in ("quenlis_clean", "quenlis_peers"):
            if not (folder / name).is_file():
                raise FileNotFoundError(f"{folder / name} is missing: build the tools, with both suppressors installed")

    def listen(self, signals, systems=SYSTEMS, options=()):
        """For each system and signal what is heard; for each signal what the engine finds in its frames."""
        with tempfile.TemporaryDirectory() as folder:
            ins = {name: Path(folder) / f"{name}.wav" for name in signals}
            for name, samples in signals.items():
                soundfile.write(ins[name], samples, RATE, "FLOAT")
            outs = {(system, name): Path(folder) / f"{system}-{name}.wav" for system in systems for name in signals}
            for system in systems:
                command = ["quenlis_peers", system] if system != "ours" else ["quenlis_clean", "--report", *options]
                pairs = [path for name in signals for path in (ins[name], outs[system, name])]
                subprocess.run([self.folder / command[0], *command[1:], *pairs], check=True)
            heard = {key: soundfile.read(path)[0] for key, path in outs.items()}
            reports = {name: outs["ours", name].with_suffix(".csv") for name in signals}
            return heard, {name: np.genfromtxt(path, delimiter=",", names=True) for name, path in reports.items()}


def pick(corpus, recording, length, random, tries, merit):
    """The best of a few stretches: a recording has gaps."""
    offsets = random.integers(0, max(recording.length - length, 1), tries)
    return max((corpus.samples(recording, int(offset), length) for offset in offsets), key=merit)


def talking(x):
    levels = frame_levels(x)
    return np.mean(levels > loud_level(levels) - 25)


def make_speech(corpus, speaker, random):
    """Six to eight seconds at -26 dBFS, behind a second of silence."""
    words = pick(corpus, speaker, int(random.integers(600, 801)) * FRAME, random, 4, talking)
    return np.concatenate([np.zeros(LEAD_IN), words * np.sqrt(SPEECH_POWER / active_power(words))])


def make_noise(corpus, noise, length, random):
    """As loud as the speech."""
    samples = pick(corpus, noise, length, random, 4, lambda x: np.mean(x**2))
    return samples * np.sqrt(SPEECH_POWER / np.mean(samples**2))


def steadiest(noises):
    return max(noises, key=lambda noise: noise.floor_db - noise.level_db)
