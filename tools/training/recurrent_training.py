"""Training of the recurrent denoiser's network."""

import torch

from corpus import Corpus
from recurrent import RecurrentDenoiser, network_of
from recurrent_data import ROADS, Rows, make_rows
from training_run import TrainingRun, use_device

SETTLING = 30  # frames at the start of a sequence whose state has not heard enough


def denoising_loss(gains, probability, wanted, voice):
    """Errors of gains as heard, that is of their roots, and of the voice; unknown targets left out.

    The voice is judged by its cross entropy and by how far it stays from where the gain control looks: above 0.85 for
    speech, below 0.025 for none, each with a margin. Frames without speech are few and their threshold is far out, so they
    count more."""
    known = (wanted >= 0).float()
    distance = torch.sqrt(gains + 1e-4) - torch.sqrt(wanted.clamp(min=0) + 1e-4)
    error = 10 * distance**4 + distance**2
    decided = (voice >= 0).float() * torch.where(voice == 0, 2.0, 1.0)
    sure = probability.clamp(1e-5, 1 - 1e-5)
    entropy = torch.nn.functional.binary_cross_entropy(sure, voice.clamp(min=0), decided)
    odds = torch.log(sure / (1 - sure))
    doubt = torch.where(voice > 0.5, torch.relu(2.2 - odds), torch.relu(4.2 + odds))
    return 3 * (error * known).sum() / known.sum() + entropy + (doubt * decided).mean()


def measure(network, rows, device):
    """The shares of frames whose voice is told surely, and the error of the gains, on either road."""
    texts = []
    for road in ROADS:
        features, wanted, voice = (torch.from_numpy(part)[:, None].to(device) for part in rows[road])
        with torch.no_grad():
            gains, probability = network(features)
        voice, probability = voice[:, 0], probability[:, 0]
        known = wanted >= 0
        error = (gains - wanted)[known].abs().mean()
        spoken, still = probability[voice == 1] > 0.85, probability[voice == 0] < 0.025
        texts.append(
            f"{road}: voice {100 * spoken.float().mean():.0f}%, none {100 * still.float().mean():.0f}%, gains {error:.3f} off"
        )
    return "; ".join(texts)


def train(arguments):
    device = use_device()
    corpus = Corpus(arguments.work)
    folders = [
        make_rows(corpus, split, count, arguments.work, arguments.programs, arguments.seed)
        for split, count in (("train", arguments.files), ("validation", max(2, arguments.files // 20)))
    ]
    rows, held_out = (Rows(folder) for folder in folders)
    torch.manual_seed(arguments.seed)
    network = network_of(arguments.start.read_text()) if arguments.start else RecurrentDenoiser()
    network.to(device)
    run = TrainingRun(
        "recurrent", network, [{"params": network.parameters()}], arguments.work, arguments.steps, arguments.rate
    )

    def batches():
        for number in range(run.step, run.steps):
            parts = rows.sequences(number, arguments.seed, arguments.batch, arguments.length)
            yield [torch.from_numpy(part).to(device) for part in parts]

    def loss_of(batch):
        network.keep_in_range()
        features, wanted, voice = batch
        gains, probability = network(features)
        return denoising_loss(
            gains[SETTLING:], probability[SETTLING:], wanted[SETTLING:], voice[SETTLING:]
        )

    run.run(batches(), loss_of, lambda: measure(network, held_out, device), arguments.validate_every)
