#!/usr/bin/env python3
"""Turns a checkpoint into the files that tools/install_data takes, and says how they agree with what was trained."""

import argparse
import os
import shutil
from pathlib import Path

import torch

from canceller import HOP, TABLES, Canceller, read_tables, table_file
from recurrent import RecurrentDenoiser, model_text, network_of
from recurrent_data import ROADS, Rows

GATE_BIASES = ("lstm_bias", "lstm_1_bias", "lstm_2_bias", "lstm_3_bias")


def checkpoint(work, name):
    path = work / f"{name}.checkpoint"
    if not path.is_file():
        raise SystemExit(f"no checkpoint {path}: train first")
    state = torch.load(path, map_location="cpu")
    print(f"{name}: step {state['step']}, trained for {state['seconds'] / 60:.0f} minutes")
    return state["network"]


def report_marks(tables):
    """What a faithful training leaves."""
    for name in GATE_BIASES:
        into, forget, candidate, out = (gate.mean().item() for gate in tables[name].chunk(4))
        holds = abs(forget - 1) < 0.3 and max(abs(into), abs(candidate), abs(out)) < 0.3
        print(
            f"{'holds' if holds else 'FAILS'}: {name} averages {into:+.2f}, {forget:+.2f} (forget), "
            f"{candidate:+.2f}, {out:+.2f}"
        )
    gamma = tables["instant_layer_normalization_gamma_weights"]
    print(f"{'holds' if gamma.min() > 0 else 'FAILS'}: gamma is at least {gamma.min():.2f}")
    bias = tables["dense_1_bias"]
    print(f"{'holds' if bias.max() < 0 else 'FAILS'}: dense_1_bias is at most {bias.max():+.2f}")


def export_canceller(arguments):
    tables = checkpoint(arguments.work, "canceller")
    unfinished = arguments.out.with_name(arguments.out.name + ".unfinished")
    shutil.rmtree(unfinished, ignore_errors=True)
    unfinished.mkdir(parents=True)
    for name, shape in TABLES.items():
        if tuple(tables[name].shape) != shape or not torch.isfinite(tables[name]).all():
            raise SystemExit(f"{name}: not {shape} finite numbers")
        tables[name].numpy().astype("<f4").tofile(table_file(unfinished, name))
    written, trained = Canceller(read_tables(unfinished)), Canceller(tables)
    noise = 0.1 * torch.randn(2, 100 * HOP, generator=torch.Generator().manual_seed(1))
    with torch.no_grad():
        difference = (written(noise) - trained(noise)).abs().max()
    print(f"{'holds' if difference == 0 else 'FAILS'}: the tables clean as the trained network does")
    report_marks(tables)
    shutil.rmtree(arguments.out, ignore_errors=True)
    unfinished.rename(arguments.out)


def export_recurrent(arguments):
    trained = RecurrentDenoiser()
    trained.load_state_dict(checkpoint(arguments.work, "recurrent"))
    unfinished = arguments.out.with_name(arguments.out.name + ".unfinished")
    unfinished.write_text(model_text(trained))
    written = network_of(unfinished.read_text())
    rows = Rows(arguments.work / "rows-validation")
    for road in ROADS:
        features = torch.from_numpy(rows[road][0][:3000])[:, None]
        with torch.no_grad():
            difference = max((a - b).abs().max().item() for a, b in zip(trained(features), written(features)))
        print(f"{'holds' if difference == 0 else 'FAILS'}: the text's gains and voice are the trained ones, {road} road")
    os.replace(unfinished, arguments.out)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("network", choices=("canceller", "recurrent"))
    parser.add_argument("--work", default="build/training", type=Path)
    parser.add_argument("--out", required=True, type=Path, help="folder of the tables, or file of the model text")
    arguments = parser.parse_args()
    {"canceller": export_canceller, "recurrent": export_recurrent}[arguments.network](arguments)


if __name__ == "__main__":
    try:
        main()
    except OSError as error:
        raise SystemExit(str(error))
