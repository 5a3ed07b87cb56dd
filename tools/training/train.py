#!/usr/bin/env python3
"""Trains one of the two networks on the prepared corpus. Cut off at any time, the same command goes on."""

import argparse
import os
from pathlib import Path

# Before the libraries load: steps are too small for more than one thread, and threads that wait for each other burn time.
for library in ("OPENBLAS", "OMP"):
    os.environ.setdefault(f"{library}_NUM_THREADS", "1")

import canceller_training  # noqa: E402
import recurrent_training  # noqa: E402


def arguments_of():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--work", default="build/training", type=Path, help="where prepare.py wrote the corpus")
    parser.add_argument("--seed", default=1, type=int)
    parser.add_argument("--validate-every", default=200, type=int, metavar="STEPS")
    networks = parser.add_subparsers(dest="network", required=True)
    canceller = networks.add_parser("canceller", help="the neural noise canceller")
    canceller.add_argument("--start", required=True, type=Path, help="folder of the tables that training begins with")
    canceller.add_argument("--steps", default=5200, type=int)
    canceller.add_argument("--batch", default=32, type=int, help="examples in one step")
    canceller.add_argument("--seconds", default=2.0, type=float, help="length of an example")
    canceller.add_argument("--rate", default=1e-3, type=float, help="highest learning rate")
    canceller.add_argument("--mixers", default=1, type=int, help="processes that make examples")
    canceller.set_defaults(train=canceller_training.train)
    recurrent = networks.add_parser("recurrent", help="the recurrent denoiser")
    recurrent.add_argument("--programs", required=True, type=Path, help="folder of the built quenlis_features")
    recurrent.add_argument("--start", type=Path, metavar="MODEL", help="model text to begin with rather than with chance")
    recurrent.add_argument("--files", default=200, type=int, help="files of 96 seconds to make rows of")
    recurrent.add_argument("--steps", default=16000, type=int)
    recurrent.add_argument("--batch", default=32, type=int, help="sequences in one step")
    recurrent.add_argument("--length", default=400, type=int, help="frames of a sequence")
    recurrent.add_argument("--rate", default=3e-3, type=float, help="highest learning rate")
    recurrent.set_defaults(train=recurrent_training.train)
    return parser.parse_args()


if __name__ == "__main__":
    try:
        arguments = arguments_of()
        arguments.train(arguments)
    except (OSError, RuntimeError) as error:
        raise SystemExit(str(error))
