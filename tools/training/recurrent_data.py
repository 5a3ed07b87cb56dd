"""Rows for training the recurrent denoiser: features from the engine itself, ideal gains and voice from the clean side.

Two roads are heard: `raw` microphones, and `cleaned` ones, that have passed the canceller that the programs were built
with, which makes them one frame late.
"""

import subprocess
from pathlib import Path

import numpy as np

from mixing import Mixer
from recurrent import BANDS, FEATURES

ROADS = {"raw": ([], 0), "cleaned": (["--through-canceller"], 1)}  # options of the program, frames of delay
IN_TURN = ("raw", "raw", "cleaned")  # raw microphones are harder
ROW = FEATURES + 2 * BANDS + 2
BAND_TOP_HZ = 200 * np.array([1, 2, 3, 4, 5, 6, 7, 8, 10, 12, 14, 16, 20, 24, 28, 34, 40, 48, 60, 78, 100, 100])
UNKNOWN = -1.0
INAUDIBLE = 0.05  # band energy in the engine's scale
FAINT = 1e-5  # band energy relative to a whole frame in the loud parts of an example
DROWNED = 0.15  # share of a frame's energy that voice needs to be heard
EXAMPLE_S, EXAMPLES = 12, 8  # in one file
HANGOVER, ONSET = 7, 2  # frames beside voice that count neither way


def voice_of(clean, heard):
    """1 where the talker can be heard to speak, 0 where no speech is near, unknown between; of the energies of one
    example's frames, the talker's alone and all that is heard."""
    level = 10 * np.log10(clean + 1e-3)
    loud = np.percentile(level, 95)
    if loud < 5:
        return np.zeros(len(level), np.float32)
    voice = np.full(len(level), UNKNOWN, np.float32)
    voice[(level > loud - 25) & (clean > DROWNED * heard)] = 1
    near = np.convolve(level > loud - 45, np.ones(HANGOVER + ONSET + 1), "full")[ONSET:][: len(level)] > 0
    voice[~near] = 0
    return voice


def gains_of(clean, heard, edge_hz):
    """Ideal gains of the bands, of the energies of one example's frames; unknown where nothing can be heard and above
    the recording's own edge."""
    louder = np.maximum(clean, heard)
    gains = np.sqrt(np.minimum(1, clean / (heard + 1e-9)))
    faint = max(INAUDIBLE, FAINT * np.percentile(heard.sum(1), 95))
    gains[(louder < faint) | (BAND_TOP_HZ > edge_hz)] = UNKNOWN
    return gains.astype(np.float32)


def targets(heard, clean, edges_hz):
    """Features, ideal gains and voice of the active rows of one file."""
    energies = [np.split(rows[:, FEATURES : FEATURES + BANDS], EXAMPLES) for rows in (clean, heard)]
    examples = list(zip(*energies, edges_hz))
    gains = np.concatenate([gains_of(*example) for example in examples])
    voice = np.concatenate([voice_of(speech.sum(1), all_.sum(1)) for speech, all_, _ in examples])
    active = heard[:, -1] > 0
    return heard[active, :FEATURES], gains[active], voice[active]


def dump(program, options, pairs):
    command = [str(program), *options, *(str(path) for pair in pairs for path in pair)]
    if subprocess.run(command).returncode != 0:
        raise SystemExit(f"{program} failed")
    return [np.fromfile(rows, dtype="<f4").reshape(-1, ROW) for _, rows in pairs]


def make_file(mixer, number, folder, programs, roads):
    """Writes one file of rows for each road; it takes its name when it is whole."""
    mixture, target, edges = mixer.batch(number, EXAMPLES)
    sounds = {name: folder / f"{name}.f32" for name in ("mixture", "target")}
    sounds["mixture"].write_bytes(mixture.numpy().tobytes())
    sounds["target"].write_bytes(target.numpy().tobytes())
    program = programs / "quenlis_features"
    (clean,) = dump(program, [], [(sounds["target"], folder / "clean.rows")])
    for road in roads:
        options, late = ROADS[road]
        (heard,) = dump(program, options, [(sounds["mixture"], folder / "heard.rows")])
        features, gains, voice = targets(heard, np.roll(clean, late, 0), edges.numpy())
        with open(folder / "unfinished.npz", "wb") as out:
            np.savez(out, features=features, gains=gains, voice=voice)
        (folder / "unfinished.npz").rename(folder / f"{road}-{number:04}.npz")


def make_rows(corpus, split, count, work, programs, seed):
    """Makes the files that are not there yet. @return their folder"""
    folder = Path(work) / f"rows-{split}"
    folder.mkdir(exist_ok=True)
    mixer = Mixer(corpus, split, EXAMPLE_S, seed)
    for number in range(count):
        missing = [road for road in ROADS if not (folder / f"{road}-{number:04}.npz").is_file()]
        if missing:
            make_file(mixer, number, folder, Path(programs), missing)
            print(f"rows for {split}: {number + 1} of {count}", flush=True)
    return folder


class Rows(dict):
    """All rows of a split, road by road: features, gains and voice one after another."""

    def __init__(self, folder):
        for road in ROADS:
            files = [np.load(path) for path in sorted(folder.glob(f"{road}-*.npz"))]
            self[road] = [np.concatenate([f[part] for f in files]) for part in ("features", "gains", "voice")]

    def sequences(self, number, seed, size, steps):
        """(steps, size, ...) of each part; raw ones twice as often, from places that depend on the number alone."""
        random = np.random.default_rng([seed, number])
        parts = []
        for place in range(size):
            rows = self[IN_TURN[place % len(IN_TURN)]]
            start = int(random.integers(len(rows[2]) - steps))
            parts.append([part[start : start + steps] for part in rows])
        return [np.stack(part, 1) for part in zip(*parts)]
