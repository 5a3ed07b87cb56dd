#!/usr/bin/env python3
"""Measures the shipped data sets through the engine itself, on held-out speakers and noises, beside packaged noise
suppressors, and prints a table of what was aimed at and what was reached.

Each stretch of speech stands at -26 dBFS, with a second of the noise alone ahead, in which every system may settle and
nothing is measured. Each system's delay, up to 60 ms, is looked for in every stretch.
"""

import argparse
import subprocess
import sys
from pathlib import Path

import numpy as np

import gain_control
import plots
from corpus import Corpus
from listening import LEAD_IN, SYSTEMS, Programs, make_noise, make_speech, steadiest
from measurements import NO_VOICE, ROADS, SNRS, VOICE, Measurements
from measures import RATE, decibels
from table import Table

WHERE = dict(zip(ROADS, ("behind the canceller", "raw")))


def share(hits):
    return 100 * float(np.mean(hits)) if len(hits) else float("nan")


def of_others(figures):
    return ", ".join(f"{system} {figures(system):.1f}" for system in SYSTEMS[1:])


def add_cleaning(table, m):
    for snr in SNRS:
        gains = {system: float(np.mean(m["gain", system, snr])) for system in SYSTEMS}
        aim = max(gains[system] for system in SYSTEMS[1:]) + (3 if snr == 5 else 0)
        table.add(f"SI-SDR gain at {snr} dB SNR, dB", gains["ours"], (aim, None), f"mean; {of_others(gains.get)}")
    for key, name, aim in (
        ("clean", "Clean speech: SI-SDR, dB", (15, None)),
        ("high-passed", "the same, the speech behind the denoiser's high-pass, dB", None),
        ("level", "Clean speech: change of level, dB", (-1, 1)),
        ("band", "Clean speech: change of 5 to 12 kHz, dB", (-3, 3)),
    ):
        low, middle, high = np.percentile(m[key, "ours"], [10, 50, 90])
        remark = f"median, 80% within {low:.1f} to {high:.1f}; {of_others(lambda system: np.median(m[key, system]))}"
        table.add(name, middle, aim, remark)
    down = {system: float(np.median(m["attenuation", system])) for system in SYSTEMS}
    energy = -decibels(np.mean(10 ** (-m["attenuation", "ours"] / 10)))
    remark = f"median, of all the energy {energy:.1f}; {of_others(down.get)}"
    table.add("Noise alone: down by, dB", down["ours"], (25, None), remark)


def add_analysis(table, m):
    for road, where in WHERE.items():
        hits = m["voiced", road]
        table.add(f"Voice above {VOICE} at 10 dB SNR, {where}, %", share(hits), (90, None), f"{len(hits)} voiced frames")
    for road, where in WHERE.items():
        noise, pauses = m["noise", road], m["pauses", road]
        remark = f"noise alone {share(noise):.1f}, pauses at 10 dB SNR and in clean speech {share(pauses):.1f}"
        table.add(f"Voice below {NO_VOICE} without speech, {where}, %", share([*noise, *pauses]), (90, None), remark)
    for road, where in WHERE.items():
        clean, kept, octaves = (share(m[figure]) for figure in (("pitch", road, "clean"), ("kept", road), ("octave", road)))
        remark = f"{clean:.1f} in clean speech, of which noise leaves {kept:.1f}%; an octave or twelfth off {octaves:.1f}"
        table.add(f"Pitch within 5% at 10 dB SNR, {where}, %", share(m["pitch", road, 10]), (90, None), remark)


def draw_example(path, corpus, programs, seed):
    random = np.random.default_rng(seed)
    speaker = max(corpus.of("speech", "validation"), key=lambda recording: recording.edge_hz)
    speech = make_speech(corpus, speaker, random)[LEAD_IN // 2 :]
    noise = make_noise(corpus, steadiest(corpus.of("noise", "validation")), len(speech), random)
    noisy = speech + noise * 10 ** (-5 / 20)
    cleaned = programs.listen({"noisy": noisy}, ["ours"])[0]["ours", "noisy"]
    plots.draw_spectrograms(path, {"Noisy, 5 dB SNR": noisy, "Cleaned": cleaned, "The speech alone": speech})


def parse():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--work", default="build/training", type=Path, help="where prepare.py keeps the corpus")
    parser.add_argument("--programs", default="build/release/tools/training/native", type=Path)
    parser.add_argument("--stretches", default=4, type=int, help="of speech, of each speaker")
    parser.add_argument("--seed", default=6, type=int)
    parser.add_argument("--plots", type=Path, metavar="FOLDER", help="write the pictures there")
    parser.add_argument("--markdown", action="store_true", help="print the table as Markdown")
    return parser.parse_args()


def show_progress(text):
    if sys.stderr.isatty():
        print(f"\r{text:20}\r", end="", file=sys.stderr, flush=True)


def measure(corpus, programs, stretches, seed):
    m = Measurements(programs)
    random = np.random.default_rng(seed)
    speakers, noises = corpus.of("speech", "validation"), corpus.of("noise", "validation")
    for number, speaker in enumerate(speakers * stretches):
        show_progress(f"speech {number + 1}/{len(speakers) * stretches}")
        speech = make_speech(corpus, speaker, random)
        noise = noises[(number + number // len(speakers)) % len(noises)]
        m.measure_speech(speaker, speech, make_noise(corpus, noise, len(speech), random))
    for number, noise in enumerate(noises):
        show_progress(f"noise {number + 1}/{len(noises)}")
        m.measure_noise(make_noise(corpus, noise, 9 * RATE, random) * 10 ** (-5 / 20))
    show_progress("")
    return m


def main():
    options = parse()
    programs = Programs(options.programs)
    if not (options.work / "corpus" / "index.json").is_file():
        raise FileNotFoundError(f"no prepared corpus in {options.work}: run prepare.py first")
    corpus = Corpus(options.work)
    m = measure(corpus, programs, options.stretches, options.seed)
    table = Table()
    add_cleaning(table, m)
    add_analysis(table, m)
    quiet_talker = gain_control.listen(corpus, programs, options.seed)
    quiet_talker.add_to(table)
    table.print(options.markdown)
    for noise, down in zip(corpus.of("noise", "validation"), m["attenuation", "ours"]):
        print(f"{noise.name} alone: {down:.1f} dB down")
    if options.plots:
        draw_example(options.plots / "cleaning_spectrogram.png", corpus, programs, options.seed)
        quiet_talker.draw(options.plots / "gain_control.png")


if __name__ == "__main__":
    try:
        main()
    except (OSError, subprocess.CalledProcessError) as error:
        print(f"evaluate: {error}", file=sys.stderr)
        sys.exit(2)
