"""The pictures of the evaluation, as small PNG files."""

import io

import matplotlib
import numpy as np
import scipy.signal
from PIL import Image

from measures import FRAME, RATE, decibels, loudness_weighted, tracked_loudness

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402

TARGET_BAND = (-25.2, -23.2)  # dB, of the gain control


def save(figure, path):
    drawn = io.BytesIO()
    figure.savefig(drawn, format="png", dpi=80)
    pyplot.close(figure)
    path.parent.mkdir(parents=True, exist_ok=True)
    Image.open(drawn).convert("RGB").quantize(32).save(path, optimize=True)


def draw_spectrograms(path, signals):
    """Samples by title, one picture above the other."""
    figure, axes = pyplot.subplots(len(signals), 1, figsize=(9, 8), sharex=True, layout="constrained")
    for axis, (title, samples) in zip(axes, signals.items()):
        spectrum = scipy.signal.stft(samples, RATE, nperseg=1024)[2][: 20000 * 1024 // RATE]
        extent = (0, len(samples) / RATE, 0, 20)
        picture = axis.imshow(decibels(np.abs(spectrum) ** 2), "magma", vmin=-105, vmax=-35, origin="lower")
        picture.set_extent(extent)
        axis.set_aspect("auto")
        axis.set(title=title, ylabel="kHz")
    axes[-1].set_xlabel("seconds")
    figure.colorbar(picture, ax=axes, label="dB")
    save(figure, path)


def draw_gain_control(path, signals, talks, pauses):
    """The talker at three places by name. For each frame: `talks`, whether a word sounds; `pauses`, whether it lies in
    a pause between two turns."""
    seconds = np.arange(len(pauses)) * FRAME / RATE
    figure, axis = pyplot.subplots(figsize=(9, 4.5), layout="constrained")
    axis.fill_between(seconds, -95, 0, where=pauses, step="post", color="0.9", label="the talker pauses")
    axis.axhspan(*TARGET_BAND, color="tab:green", alpha=0.4, label="target band")
    for (name, x), colour in zip(signals.items(), ("tab:blue", "black", "tab:red")):
        axis.plot(seconds, tracked_loudness(x, talks), colour, lw=1.5, label=f"speech level {name}")
    for name, colour in (("in", "tab:blue"), ("out", "tab:red")):
        power = np.convolve(loudness_weighted(signals[name]) ** 2, np.ones(8 * FRAME) / (8 * FRAME), "same")[::FRAME]
        axis.plot(seconds, decibels(power), colour, alpha=0.5, lw=0.8, label=f"loudness {name}")
    axis.set(xlabel="seconds", ylabel="dB of full scale", ylim=(-95, 0), xlim=(0, seconds[-1]))
    axis.legend(ncol=3, loc="lower center", fontsize="small")
    save(figure, path)
