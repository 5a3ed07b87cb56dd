"""The prepared corpus: all recordings of a kind in one file of 16-bit samples, and an index of what is known of each."""

import json
from dataclasses import asdict, dataclass
from pathlib import Path

import numpy as np

RATE = 48000


@dataclass
class Recording:
    name: str
    kind: str  # "speech" or "noise"
    split: str  # "train" or "validation"
    start: int  # in samples, in the file of its kind
    length: int
    level_db: float  # of the active parts, dBFS
    floor_db: float
    edge_hz: float  # where the recording's own spectrum ends
    pitch_hz: float  # median of the voice; 0 for noise


class Corpus:
    def __init__(self, folder):
        folder = Path(folder) / "corpus"
        index = folder / "index.json"
        if not index.is_file():
            raise SystemExit(f"no prepared corpus in {folder}: run prepare.py first")
        self.recordings = [Recording(**entry) for entry in json.loads(index.read_text())]
        self._samples = {
            kind: np.memmap(folder / f"{kind}.i16", dtype=np.int16, mode="r") for kind in ("speech", "noise")
        }

    def of(self, kind, split):
        chosen = [r for r in self.recordings if r.kind == kind and r.split == split]
        if not chosen:
            raise SystemExit(f"the corpus holds no {kind} for {split}")
        return chosen

    def samples(self, recording, offset, count):
        """`count` samples from `offset`, full scale 1.0; wraps at the recording's end."""
        whole = self._samples[recording.kind][recording.start : recording.start + recording.length]
        offset %= recording.length
        part = whole[offset : offset + count]
        if len(part) < count:
            part = np.resize(np.concatenate([part, whole[: count - len(part)]]), count)
        return part.astype(np.float32) / 32768


def write_index(folder, recordings):
    (folder / "index.json").write_text(json.dumps([asdict(r) for r in recordings], indent=1))
