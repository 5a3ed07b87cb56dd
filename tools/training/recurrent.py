"""The recurrent denoiser's network with its 8-bit weights, and the text that holds them."""

import torch

from gru import GruSteps, Tansig

FEATURES, BANDS = 42, 22
HEADER = "rnnoise-nu model file version 1\n"
TANH, SIGMOID, RECTIFIER = 0, 1, 2
SCALE = 256

# name: inputs, neurons, activation, recurrent
LAYERS = {
    "input_dense": (FEATURES, 24, TANH, False),
    "vad_gru": (24, 24, RECTIFIER, True),
    "noise_gru": (90, 48, RECTIFIER, True),
    "denoise_gru": (114, 96, RECTIFIER, True),
    "denoise_output": (96, BANDS, SIGMOID, False),
    "vad_output": (24, 1, SIGMOID, False),
}


def parameters_of(layer):
    """Names and shapes in the order of the text."""
    inputs, neurons, _, recurrent = LAYERS[layer]
    width = 3 * neurons if recurrent else neurons
    shapes = {f"{layer}_weights": (inputs, width)}
    if recurrent:
        shapes[f"{layer}_recurrent_weights"] = (neurons, width)
    return {**shapes, f"{layer}_bias": (width,)}


class Quantise(torch.autograd.Function):
    """To the nearest value that 8 bits hold; the gradient passes as if nothing had happened."""

    @staticmethod
    def forward(context, weights):
        return torch.clamp(torch.round(weights * SCALE), -128, 127) / SCALE

    @staticmethod
    def backward(context, gradient):
        return gradient


def sigmoid(x):
    return 0.5 + 0.5 * Tansig.apply(0.5 * x)


class RecurrentDenoiser(torch.nn.Module):
    """(frames, batch, 42) features -> (frames, batch, 22) gains and (frames, batch) voice probabilities."""

    def __init__(self):
        super().__init__()
        for layer in LAYERS:
            for name, shape in parameters_of(layer).items():
                values = torch.zeros(shape) if len(shape) == 1 else torch.nn.init.xavier_uniform_(torch.empty(shape))
                self.register_parameter(name, torch.nn.Parameter(values))

    def keep_in_range(self):
        """Weights that 8 bits do not hold would stop to learn."""
        with torch.no_grad():
            for weights in self.parameters():
                weights.clamp_(-128 / SCALE, 127 / SCALE)

    def _dense(self, layer, inputs):
        weights, bias = (Quantise.apply(getattr(self, f"{layer}_{part}")) for part in ("weights", "bias"))
        return inputs @ weights + bias

    def _gru(self, layer, inputs):
        return GruSteps.apply(
            self._dense(layer, inputs), Quantise.apply(getattr(self, f"{layer}_recurrent_weights"))
        )

    def forward(self, features):
        dense = Tansig.apply(self._dense("input_dense", features))
        voice = self._gru("vad_gru", dense)
        noise = self._gru("noise_gru", torch.cat([dense, voice, features], -1))
        state = self._gru("denoise_gru", torch.cat([voice, noise, features], -1))
        probability = sigmoid(self._dense("vad_output", voice)).squeeze(-1)
        return sigmoid(self._dense("denoise_output", state)), probability


def model_text(network):
    parts = [HEADER]
    for layer, (inputs, neurons, activation, _) in LAYERS.items():
        parts.append(f"{inputs} {neurons} {activation}\n")
        for name in parameters_of(layer):
            values = (Quantise.apply(getattr(network, name).detach()) * SCALE).round().to(torch.int64).flatten()
            lines = [" ".join(map(str, row.tolist())) for row in values.split(32)]
            parts.append("\n".join(lines) + "\n")
    return "".join(parts)


def network_of(text):
    """The network that a text holds; the shapes must be the engine's."""
    if not text.startswith(HEADER):
        raise SystemExit("no model text")
    try:
        numbers = iter([int(word) for word in text[len(HEADER) :].split()])
        network = RecurrentDenoiser()
        for layer, (inputs, neurons, activation, _) in LAYERS.items():
            if [next(numbers) for _ in range(3)] != [inputs, neurons, activation]:
                raise SystemExit(f"the shape of {layer} is not the engine's")
            for name, shape in parameters_of(layer).items():
                values = torch.tensor([next(numbers) for _ in range(torch.Size(shape).numel())], dtype=torch.float32)
                with torch.no_grad():
                    getattr(network, name).copy_(values.reshape(shape) / SCALE)
        return network
    except (StopIteration, ValueError):
        raise SystemExit("the model text breaks off or holds more than numbers") from None
