#!/usr/bin/env python3
"""Reads folders of speech and of noise and writes the corpus that training and evaluation draw from.

Every recording is 48 kHz (stereo is averaged). What training must know of it is measured once: its level, the floor
under it, where its spectrum ends, how high the voice is. The pauses of speech are silenced, so that a target never
teaches the network to keep the floor of a recording.
"""

import argparse
import hashlib
import shutil
from pathlib import Path

import numpy as np
import scipy.ndimage
import scipy.signal
import soundfile

from corpus import RATE, Recording, write_index

FRAME = RATE // 100
KINDS = ("speech", "noise")
FORMATS = {".wav", ".flac", ".ogg", ".opus"}


def frame_levels(samples):
    frames = samples[: len(samples) // FRAME * FRAME].reshape(-1, FRAME)
    return 10 * np.log10(np.mean(frames**2, axis=1) + 1e-12)


def active_level(levels):
    loud = levels[levels > np.percentile(levels, 95) - 25]
    return float(10 * np.log10(np.mean(10 ** (loud / 10))))


def spectrum_edge(samples):
    """Where the spectrum ends: at its steepest step beyond 9 kHz, if there is one such as a lossy codec or a lower
    sampling rate leaves, otherwise where it is lost 30 dB under what 5 to 10 kHz hold."""
    frequency, power = scipy.signal.welch(samples, RATE, nperseg=2048, scaling="spectrum")
    level = 10 * np.log10(power + 1e-20)
    smooth, apart = scipy.ndimage.uniform_filter1d(level, 21), 21  # of 23 Hz each
    step = smooth[: -2 * apart] - smooth[2 * apart :]
    step[(frequency[apart:-apart] < 9000) | (frequency[apart:-apart] > 19000)] = 0
    if step.max() > 12:
        return float(frequency[apart + np.argmax(step)])
    middle = np.median(level[(frequency > 5000) & (frequency < 10000)])
    return float(frequency[np.nonzero(smooth > middle - 30)[0][-1]])


def median_pitch(samples, levels):
    """The median period of the loud frames, by the peak of the autocorrelation between 70 and 420 Hz."""
    low = scipy.signal.decimate(samples, 6)
    rate, pitches = RATE // 6, []
    for frame in np.argsort(levels)[-len(levels) // 4 :: 7]:
        piece = low[frame * 80 : frame * 80 + 480]
        if len(piece) < 480:
            continue
        spectrum = np.fft.rfft(piece - piece.mean(), 1024)
        correlation = np.fft.irfft(np.abs(spectrum) ** 2)
        lags = correlation[rate // 420 : rate // 70]
        if lags.max() > 0.5 * correlation[0]:
            pitches.append(rate / (rate // 420 + int(np.argmax(lags))))
    return float(np.median(pitches)) if pitches else 0.0


def silence_pauses(samples, levels, level, floor):
    """Fades out what lies near the floor for longer than the ends of words do."""
    open_frames = levels > max(floor + 8, level - 42)
    open_frames = scipy.ndimage.binary_dilation(open_frames, np.ones(3))
    open_frames = np.concatenate([np.zeros(12, bool), open_frames, np.zeros(18, bool)])
    held = np.convolve(open_frames, np.ones(31), "same")[6:][: len(levels)] > 0
    gain = np.interp(np.arange(len(samples)), np.arange(len(held)) * FRAME + FRAME // 2, held.astype(float))
    return samples * gain.astype(np.float32)


def read(path):
    try:
        samples, rate = soundfile.read(path, dtype="float32", always_2d=True)
    except RuntimeError as error:
        raise SystemExit(f"{path}: {error}")
    if rate != RATE:
        raise SystemExit(f"{path}: sampled at {rate} Hz, {RATE} Hz is wanted")
    if len(samples) < RATE:
        raise SystemExit(f"{path}: shorter than a second")
    return samples.mean(axis=1)


def split_of(name, one_in):
    """Depends on the name alone, so that a corpus that grows keeps its held-out recordings."""
    return "validation" if int(hashlib.sha1(name.encode()).hexdigest(), 16) % one_in == 0 else "train"


def prepare(path, kind, start, one_in):
    samples = read(path)
    levels = frame_levels(samples)
    level, floor = active_level(levels), float(np.percentile(levels, 5))
    pitch = median_pitch(samples, levels) if kind == "speech" else 0.0
    edge = spectrum_edge(samples)
    if kind == "speech":
        samples = silence_pauses(samples, levels, level, floor)
    pcm = np.round(np.clip(samples, -1, 32767 / 32768) * 32768).astype(np.int16)
    return pcm, Recording(path.stem, kind, split_of(path.stem, one_in), start, len(pcm), level, floor, edge, pitch)


def files_in(folder):
    found = sorted(p for p in Path(folder).rglob("*") if p.suffix.lower() in FORMATS)
    if not found:
        raise SystemExit(f"{folder}: no recordings ({', '.join(sorted(FORMATS))})")
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--speech", required=True, help="folder of recorded voices, one file a speaker")
    parser.add_argument("--noise", required=True, help="folder of recorded noises")
    parser.add_argument("--work", default="build/training", type=Path, help="where everything is kept")
    parser.add_argument("--validation", default=7, type=int, metavar="N", help="keep one recording in N apart")
    arguments = parser.parse_args()

    unfinished, finished = arguments.work / "corpus.unfinished", arguments.work / "corpus"
    folders = {kind: files_in(getattr(arguments, kind)) for kind in KINDS}
    shutil.rmtree(unfinished, ignore_errors=True)
    unfinished.mkdir(parents=True)
    recordings = []
    for kind in KINDS:
        start = 0
        with open(unfinished / f"{kind}.i16", "wb") as out:
            for number, path in enumerate(folders[kind], 1):
                pcm, recording = prepare(path, kind, start, arguments.validation)
                out.write(pcm.tobytes())
                start += len(pcm)
                recordings.append(recording)
                print(
                    f"{kind} {number}/{len(folders[kind])} {recording.split:10} {recording.name}: "
                    f"{len(pcm) / RATE:.0f} s, level {recording.level_db:.0f} dB, floor {recording.floor_db:.0f} dB, "
                    f"up to {recording.edge_hz / 1000:.1f} kHz, pitch {recording.pitch_hz:.0f} Hz",
                    flush=True,
                )
    write_index(unfinished, recordings)
    shutil.rmtree(finished, ignore_errors=True)
    unfinished.rename(finished)


if __name__ == "__main__":
    try:
        main()
    except OSError as error:
        raise SystemExit(str(error))
