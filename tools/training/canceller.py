"""The neural canceller's network, as the engine runs it, on whole recordings at once."""

from pathlib import Path

import numpy as np
import torch

from lstm import LstmSteps

FRAME, HOP, TRANSFORM, BINS, ENCODING, UNITS = 480, 240, 512, 257, 256, 128
GATES = 4 * UNITS

TABLES = {
    "lstm_bias": (GATES,),
    "lstm_weights": (BINS, GATES),
    "lstm_recurrent_weights": (UNITS, GATES),
    "lstm_1_bias": (GATES,),
    "lstm_1_weights": (UNITS, GATES),
    "lstm_1_recurrent_weights": (UNITS, GATES),
    "dense_bias": (BINS,),
    "dense_weights": (UNITS, BINS),
    "conv1d_weights": (TRANSFORM, ENCODING),
    "instant_layer_normalization_gamma_weights": (ENCODING,),
    "instant_layer_normalization_beta_weights": (ENCODING,),
    "lstm_2_bias": (GATES,),
    "lstm_2_weights": (ENCODING, GATES),
    "lstm_2_recurrent_weights": (UNITS, GATES),
    "lstm_3_bias": (GATES,),
    "lstm_3_weights": (UNITS, GATES),
    "lstm_3_recurrent_weights": (UNITS, GATES),
    "dense_1_bias": (ENCODING,),
    "dense_1_weights": (UNITS, ENCODING),
    "conv1d_1_weights": (ENCODING, FRAME),
}


def table_file(folder, table):
    return Path(folder) / f"{table}_48k.f32"


def read_tables(folder):
    tables = {}
    for table, shape in TABLES.items():
        try:
            values = np.fromfile(table_file(folder, table), dtype="<f4")
        except OSError as error:
            raise SystemExit(str(error))
        if values.size != np.prod(shape):
            raise SystemExit(f"{table_file(folder, table)}: {values.size} values, {np.prod(shape)} wanted")
        tables[table] = torch.from_numpy(values.reshape(shape).copy())
    return tables


def fourier(signals):
    """Real parts beside imaginary parts of the bins of each row: a product with them is faster than a transform."""
    spectrum = torch.fft.rfft(signals.double())
    return torch.cat([spectrum.real, spectrum.imag], -1).float()


def inverse_fourier():
    unit = torch.eye(BINS, dtype=torch.complex128)
    return torch.cat([torch.fft.irfft(unit, TRANSFORM), torch.fft.irfft(1j * unit, TRANSFORM)]).float()


class Canceller(torch.nn.Module):
    """(batch, samples) at 48 kHz, samples a multiple of the hop -> the same shape, not delayed."""

    def __init__(self, tables):
        super().__init__()
        for table in TABLES:
            self.register_parameter(table, torch.nn.Parameter(tables[table]))
        self.register_buffer("transform", fourier(torch.eye(TRANSFORM)[:FRAME]), persistent=False)
        self.register_buffer("inverse", inverse_fourier(), persistent=False)

    def _cells(self, layer, steps):
        weights, recurrent = getattr(self, f"{layer}_weights"), getattr(self, f"{layer}_recurrent_weights")
        return LstmSteps.apply(steps @ weights + getattr(self, f"{layer}_bias"), recurrent)

    def _mask(self, steps, layers, dense):
        for layer in layers:
            steps = self._cells(layer, steps)
        return torch.sigmoid(steps @ getattr(self, f"{dense}_weights") + getattr(self, f"{dense}_bias"))

    def _normalise(self, encoded):
        centred = encoded - encoded.mean(-1, keepdim=True)
        scale = torch.sqrt((centred**2).mean(-1, keepdim=True) + 1e-7)
        return (
            centred / scale * self.instant_layer_normalization_gamma_weights
            + self.instant_layer_normalization_beta_weights
        )

    def forward(self, samples):
        history = torch.nn.functional.pad(samples, (HOP, HOP))
        frames = history.unfold(1, FRAME, HOP).transpose(0, 1)  # steps, batch, frame
        real, imaginary = (frames @ self.transform).chunk(2, -1)
        magnitude = torch.sqrt(real**2 + imaginary**2)
        mask = self._mask(magnitude, ("lstm", "lstm_1"), "dense")
        from_bins = (self.inverse @ self.conv1d_weights).chunk(2)
        encoded = (real * mask) @ from_bins[0] + (imaginary * mask) @ from_bins[1]
        mask = self._mask(self._normalise(encoded), ("lstm_2", "lstm_3"), "dense_1")
        frames = (encoded * mask) @ self.conv1d_1_weights
        overlapped = frames[1:, :, :HOP] + frames[:-1, :, HOP:]
        return overlapped.transpose(0, 1).reshape(samples.shape)
