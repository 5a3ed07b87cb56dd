"""The loop around one network's training: schedule, checkpoints that survive an interruption, a progress line."""

import ctypes
import math
import os
import signal
import sys
import time

import torch


def use_device():
    """An accelerator where there is one. On the processor one thread, and memory that is kept rather than given back
    after every tensor."""
    if torch.cuda.is_available():
        return torch.device("cuda")
    torch.set_num_threads(1)
    mmap_threshold, trim_threshold, top_pad = -3, -1, -2
    for option, value in ((mmap_threshold, 1 << 30), (trim_threshold, (1 << 31) - 1), (top_pad, 1 << 28)):
        ctypes.CDLL(None).mallopt(option, value)
    return torch.device("cpu")


def save_whole(state, path):
    """A full disk or an interruption leaves the file that was there."""
    unfinished = path.with_suffix(".unfinished")
    torch.save(state, unfinished)
    os.replace(unfinished, path)


class TrainingRun:
    """Adam with a short warming up and a cosine down to nothing; goes on from the checkpoint that it finds."""

    SAVE_EVERY_S = 120

    def __init__(self, name, network, groups, work, steps, rate):
        self.name, self.network, self.steps, self.rate = name, network, steps, rate
        self.path = work / f"{name}.checkpoint"
        self.optimiser = torch.optim.Adam(groups, betas=(0.9, 0.99))
        self.factors = [group.get("factor", 1.0) for group in self.optimiser.param_groups]
        self.step, self.seconds, self.stop = 0, 0.0, False
        if self.path.is_file():
            state = torch.load(self.path, map_location="cpu")
            network.load_state_dict(state["network"])
            self.optimiser.load_state_dict(state["optimiser"])
            self.step, self.seconds = state["step"], state["seconds"]
        print(f"{name}: from step {self.step} to {steps}", flush=True)
        for number in (signal.SIGINT, signal.SIGTERM):
            signal.signal(number, lambda *_: setattr(self, "stop", True))

    def save(self):
        state = {"network": self.network.state_dict(), "optimiser": self.optimiser.state_dict()}
        save_whole({**state, "step": self.step, "seconds": self.seconds}, self.path)

    def _set_rate(self):
        rising = min(1, (self.step + 1) / 200)
        falling = 0.5 * (1 + math.cos(math.pi * self.step / self.steps)) + 0.002
        for group, factor in zip(self.optimiser.param_groups, self.factors):
            group["lr"] = self.rate * factor * rising * falling

    def run(self, batches, loss_of, validate, validate_every):
        """`loss_of(batch)` gives a loss; `validate()` a line of text, every so many steps."""
        last, saved, mean = time.monotonic(), time.monotonic(), None
        for batch in batches:
            self._set_rate()
            self.optimiser.zero_grad()
            loss = loss_of(batch)
            loss.backward()
            torch.nn.utils.clip_grad_norm_(self.network.parameters(), 1.0)
            self.optimiser.step()
            self.step += 1
            mean = loss.item() if mean is None else 0.98 * mean + 0.02 * loss.item()
            now = time.monotonic()
            self.seconds, last = self.seconds + now - last, now
            self._report(mean)
            if self.step % validate_every == 0:
                print(f"\n{self.name} step {self.step}: {validate()}", flush=True)
            if now - saved > self.SAVE_EVERY_S or self.step == self.steps or self.stop:
                self.save()
                saved = now
            if self.stop:
                print(f"\n{self.name}: stopped at step {self.step}; the same command goes on from here")
                sys.exit(1)
        print(f"\n{self.name}: {self.step} steps in {self.seconds / 60:.0f} minutes")

    def _report(self, mean):
        if sys.stdout.isatty() or self.step % 50 == 0:
            left = self.seconds / self.step * (self.steps - self.step) / 60
            end = "" if sys.stdout.isatty() else "\n"
            print(
                f"\r{self.name} step {self.step}/{self.steps}, loss {mean:.4f}, {left:.0f} minutes left", end=end, flush=True
            )
