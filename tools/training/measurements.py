"""What is measured of each stretch, collected under its name."""

from collections import defaultdict

import numpy as np

from listening import LEAD_IN, SYSTEMS
from high_pass import high_passed
from measures import FRAME, active_power, aligned, band_power, decibels, frame_levels, loud_level, si_sdr
from pitch_reference import steady, track

SNRS = (0, 5, 10)
ROADS = ("", "raw_")  # behind the canceller, and without it
VOICE, NO_VOICE = 0.85, 0.025  # where the gain control listens, and where it fades
OCTAVES = np.array([2, 1 / 2, 3, 1 / 3])


class Measurements:
    def __init__(self, programs):
        self.programs = programs
        self.figures = defaultdict(list)

    def __getitem__(self, name):
        return np.array(self.figures[name])

    def measure_speech(self, speaker, speech, noise):
        mixtures = {snr: speech + noise * 10 ** (-snr / 20) for snr in SNRS}
        heard, found = self.programs.listen({**mixtures, "clean": speech})
        for system in SYSTEMS:
            for snr in SNRS:
                reference, estimate = aligned(speech[LEAD_IN:], heard[system, snr][LEAD_IN:])
                before = si_sdr(reference, mixtures[snr][LEAD_IN:][: len(reference)])
                self.figures["gain", system, snr].append(si_sdr(reference, estimate) - before)
            self.compare_clean(speaker, system, *aligned(speech[LEAD_IN:], heard[system, "clean"][LEAD_IN:]))
        self.judge_analysis(frame_levels(speech), *track(speech), found)

    def compare_clean(self, speaker, system, reference, estimate):
        figures = self.figures
        figures["clean", system].append(si_sdr(reference, estimate))
        figures["high-passed", system].append(si_sdr(high_passed(reference), estimate))
        figures["level", system].append(decibels(active_power(estimate)) - decibels(active_power(reference)))
        if speaker.edge_hz >= 12000:
            before, after = (decibels(band_power(x, 5000, 12000)) for x in (reference, estimate))
            figures["band", system].append(after - before)

    def judge_analysis(self, levels, pitch, clearness, found):
        loud = levels > loud_level(levels) - 25
        voiced, clear = loud & (clearness > 0.6), loud & (clearness > 0.8) & steady(pitch)
        # A frame before and five behind are left to the ends of words.
        silent = np.convolve(levels > loud_level(levels) - 50, np.ones(7))[1:-5] == 0
        silent[: LEAD_IN // FRAME] = False
        for road in ROADS:
            self.figures["voiced", road].extend(found[10][road + "voice"][voiced] > VOICE)
            for name in (10, "clean"):
                self.figures["pauses", road].extend(found[name][road + "voice"][silent] < NO_VOICE)
            ratios = {name: found[name][road + "pitch"][clear] / pitch[clear] for name in (10, "clean")}
            hits = {name: np.abs(ratio - 1) < 0.05 for name, ratio in ratios.items()}
            for name in hits:
                self.figures["pitch", road, name].extend(hits[name])
            self.figures["kept", road].extend(hits[10][hits["clean"]])
            octave = np.abs(ratios[10][:, None] / OCTAVES - 1).min(axis=1) < 0.05
            self.figures["octave", road].extend(octave)

    def measure_noise(self, noise):
        heard, found = self.programs.listen({"noise": noise})
        for system in SYSTEMS:
            rest = np.mean(heard[system, "noise"][LEAD_IN:] ** 2) / np.mean(noise[LEAD_IN:] ** 2)
            self.figures["attenuation", system].append(-decibels(rest))
        for road in ROADS:
            self.figures["noise", road].extend(found["noise"][road + "voice"][LEAD_IN // FRAME :] < NO_VOICE)
