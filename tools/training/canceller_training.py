"""Training of the neural canceller."""

import torch

from canceller import Canceller, read_tables
from corpus import Corpus
from losses import cleaning_loss
from mixing import Batches, Mixer
from training_run import TrainingRun, use_device

LEARNED_TRANSFORMS = {"conv1d_weights", "conv1d_1_weights"}  # begin perfect, so they change slowly


def parameter_groups(network):
    slow = [p for name, p in network.named_parameters() if name in LEARNED_TRANSFORMS]
    fast = [p for name, p in network.named_parameters() if name not in LEARNED_TRANSFORMS]
    return [{"params": fast}, {"params": slow, "factor": 0.3}]


def validate(network, corpus, seed, device):
    """Errors before and after, of a fixed set of mixtures of held-out voices and noises."""
    batches = Batches(Mixer(corpus, "validation", 4, seed), 16)
    before, after = [], []
    with torch.no_grad():
        for number in range(4):
            mixture, speech, target, edge = (part.to(device) for part in batches[number])
            before.append(cleaning_loss(mixture, speech, mixture, edge)[1])
            after.append(cleaning_loss(network(mixture), target, mixture, edge)[1])
    before, after = torch.cat(before), torch.cat(after)
    alone, clean = before.abs() < 0.05, before < -25
    noisy = ~alone & ~clean
    return (
        f"error {before[noisy].mean():.1f} -> {after[noisy].mean():.1f} dB in noise, "
        f"{before[clean].mean():.1f} -> {after[clean].mean():.1f} dB clean, noise alone {after[alone].mean():.1f} dB"
    )


def train(arguments):
    device = use_device()
    corpus = Corpus(arguments.work)
    torch.manual_seed(arguments.seed)
    network = Canceller(read_tables(arguments.start)).to(device)
    run = TrainingRun(
        "canceller", network, parameter_groups(network), arguments.work, arguments.steps, arguments.rate
    )
    batches = Batches(Mixer(corpus, "train", arguments.seconds, arguments.seed), arguments.batch)
    loader = torch.utils.data.DataLoader(
        batches, batch_size=None, sampler=range(run.step, run.steps), num_workers=arguments.mixers, prefetch_factor=4
    )

    def loss_of(batch):
        mixture, _, target, edge = (part.to(device) for part in batch)
        return cleaning_loss(network(mixture), target, mixture, edge)[0]

    run.run(loader, loss_of, lambda: validate(network, corpus, arguments.seed + 1, device), arguments.validate_every)
