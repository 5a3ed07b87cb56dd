"""The pitch of clean speech, by a way of its own: the normalised autocorrelation at 12 kHz."""

import numpy as np
import scipy.signal

from measures import FRAME

DECIMATION = 4
HOP = FRAME // DECIMATION
WINDOW = 2 * HOP
RATE = 12000
LAGS = np.arange(RATE // 500, RATE // 65 + 1)


def correlations(x):
    """For each frame, the last 20 ms against those a lag earlier, from -1 to 1; one column for each of LAGS."""
    low = scipy.signal.resample_poly(x, 1, DECIMATION)
    low = scipy.signal.sosfiltfilt(scipy.signal.butter(4, [60, 1500], "bandpass", fs=RATE, output="sos"), low)
    low = np.concatenate([np.zeros(WINDOW + LAGS[-1]), low])
    ends = LAGS[-1] + WINDOW + HOP * np.arange(1, len(x) // FRAME + 1)
    now = low[ends[:, None] + np.arange(-WINDOW, 0)]
    energy = np.concatenate([[0], np.cumsum(low**2)])
    result = np.empty((len(ends), len(LAGS)))
    for column, lag in enumerate(LAGS):
        before = low[ends[:, None] + np.arange(-WINDOW - lag, -lag)]
        energies = np.sum(now**2, axis=1) * (energy[ends - lag] - energy[ends - lag - WINDOW])
        result[:, column] = np.sum(now * before, axis=1) / np.sqrt(np.maximum(energies, 1e-12))
    return result


def pitch_of(row):
    """The shortest lag that is a peak nearly as high as the highest, refined by a parabola. Hz and height."""
    inner = row[1:-1]
    peaks = 1 + np.nonzero((inner >= row[:-2]) & (inner > row[2:]))[0]
    if len(peaks) == 0 or row[peaks].max() <= 0:
        return 0.0, 0.0
    best = peaks[np.nonzero(row[peaks] > 0.92 * row[peaks].max())[0][0]]
    left, middle, right = row[best - 1 : best + 2]
    offset = 0.5 * (left - right) / min(left - 2 * middle + right, -1e-9)
    return RATE / (LAGS[best] + offset), middle


def track(x):
    """Pitch in Hz and its clearness, -1 to 1, of every frame of 480 samples at 48 kHz."""
    pitch, clearness = np.array([pitch_of(row) for row in correlations(x)]).T
    return pitch, clearness


def steady(pitch):
    """Whether the neighbours of a frame have its pitch within 8%."""
    near = np.abs(np.diff(np.log(np.maximum(pitch, 1)))) < 0.08
    return np.concatenate([[False], near]) & np.concatenate([near, [False]])
