"""What training of the canceller minimises."""

import torch

from corpus import RATE

RESOLUTIONS = (960, 240, 1920)  # window lengths; the first is also the one that the waveform error is measured in
TOP_HZ = 20000  # the engine's second stage passes nothing above
SILENT = 1e-6  # power of a target without speech, relative to the mixture
CHUNK = 4  # examples at a time, so that they stay in the processor's cache


class _Transform(torch.autograd.Function):
    """Real and imaginary parts of the transform of real rows. The library's own gradient of it is a complex transform
    of the full length; this one is a real one."""

    @staticmethod
    def forward(context, rows):
        context.size = rows.shape[-1]
        spectrum = torch.fft.rfft(rows)
        return spectrum.real.contiguous(), spectrum.imag.contiguous()

    @staticmethod
    def backward(context, real, imaginary):
        gradient = torch.complex(real, imaginary) * (context.size / 2)
        gradient[..., 0] *= 2
        if context.size % 2 == 0:
            gradient[..., -1] *= 2
        return torch.fft.irfft(gradient, context.size)


class _Spectrum:
    """Short-time spectra; real and imaginary parts of (examples, frames, bins)."""

    def __init__(self, size):
        self.size, self.hop = size, size // (4 if size > 480 else 2)
        self.window = torch.hann_window(size) / (size * 0.375) ** 0.5
        self.frequency = torch.arange(size // 2 + 1) * (RATE / size)

    def __call__(self, samples):
        return _Transform.apply(samples.unfold(1, self.size, self.hop) * self.window.to(samples.device))

    def weights(self, edge_hz):
        """Per bin: 0 above the recording's own edge, more from 5 kHz up, where speech is weak and matters."""
        frequency = self.frequency.to(edge_hz.device)
        weight = 1 + 0.5 * ((frequency - 4000) / 2000).clamp(0, 1)
        return ((frequency < (edge_hz[:, None] - 200).clamp(max=TOP_HZ)) * weight)[:, None, :]


SPECTRA = [_Spectrum(size) for size in RESOLUTIONS]


def _power(parts):
    return parts[0] * parts[0] + parts[1] * parts[1]


def _compressed(power):
    """Magnitudes to the power of a quarter: weak consonants count beside loud vowels."""
    return torch.sqrt(torch.sqrt(torch.sqrt(power + 1e-6)))


def _waveform_error(got, wanted, mixture, audible):
    """Decibels of error to target, or of what remains to the mixture where the target is silent; levels off at -30 dB
    and -40 dB."""
    error = (_power([g - w for g, w in zip(got, wanted)]) * audible).mean((1, 2))
    power, whole = (_power(wanted) * audible).mean((1, 2)), (_power(mixture) * audible).mean((1, 2))
    speaks = power > SILENT * whole
    reference = torch.where(speaks, power, whole) + 1e-12
    return 10 * torch.log10(error / reference + torch.where(speaks, 1e-3, 1e-4))


def _chunk_loss(estimate, target, mixture, edge_hz):
    loss, decibels = 0.0, None
    for spectrum in SPECTRA:
        weight = spectrum.weights(edge_hz)
        got = spectrum(estimate)
        with torch.no_grad():
            wanted = spectrum(target)
            wanted_power = _power(wanted)
            wanted_size = _compressed(wanted_power)
        got_power = _power(got)
        got_size = _compressed(got_power)
        loss = loss + ((got_size - wanted_size) ** 2 * weight).mean()
        if decibels is None:
            decibels = _waveform_error(got, wanted, spectrum(mixture), weight > 0)
            phase = got_size / torch.sqrt(got_power + 1e-6), wanted_size / torch.sqrt(wanted_power + 1e-6)
            distance = [g * phase[0] - w * phase[1] for g, w in zip(got, wanted)]
            loss = loss + 0.3 * (_power(distance) * weight).mean()
    return 0.05 * decibels.mean() + loss, decibels.detach()


def cleaning_loss(estimate, target, mixture, edge_hz):
    """Waveform error and compressed spectra at several resolutions of (batch, samples), and the decibels of each.

    Every example is scaled to the same power of its mixture, so that quiet talkers count like loud ones. The waveform
    error is measured in the transform, where what lies above a recording's edge can be left out."""
    scale = 1 / (mixture.pow(2).mean(1, keepdim=True).sqrt() + 1e-5)
    parts = [tensor.split(CHUNK) for tensor in (estimate * scale, target * scale, mixture * scale, edge_hz)]
    losses = [_chunk_loss(*chunk) for chunk in zip(*parts)]
    return torch.stack([loss for loss, _ in losses]).mean(), torch.cat([decibels for _, decibels in losses])
