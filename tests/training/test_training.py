"""The training tools: layers against plain recursions, the engine against the network, broken-off and refused runs."""

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import numpy as np
import soundfile
import torch

ROOT = Path(__file__).resolve().parents[2]
TOOLS = ROOT / "tools" / "training"
PROGRAMS = Path(os.environ.get("QUENLIS_BUILD", ROOT / "build" / "release")) / "tools" / "training" / "native"
sys.path.insert(0, str(TOOLS))

from canceller import HOP, Canceller, read_tables  # noqa: E402
import noises  # noqa: E402
import synthesis  # noqa: E402
from gru import GruSteps, tansig, TANSIG_TABLE  # noqa: E402
from high_pass import high_passed, with_phase_taken_back  # noqa: E402
from lstm import LstmSteps  # noqa: E402
from measures import frame_levels, loud_level, si_sdr  # noqa: E402
from pitch_reference import steady, track  # noqa: E402
from recurrent import RecurrentDenoiser, model_text, network_of  # noqa: E402
from recurrent_data import ROW, voice_of  # noqa: E402


def plain_lstm(sums, recurrent):
    cell = hidden = torch.zeros(sums.shape[1], recurrent.shape[0])
    steps = []
    for total in sums:
        into, keep, candidate, out = (total + hidden @ recurrent).chunk(4, -1)
        cell = torch.sigmoid(keep) * cell + torch.sigmoid(into) * torch.tanh(candidate)
        hidden = torch.sigmoid(out) * torch.tanh(cell)
        steps.append(hidden)
    return torch.stack(steps)


def plain_gru(sums, recurrent):
    units = recurrent.shape[0]
    state, steps = torch.zeros(sums.shape[1], units), []
    for total in sums:
        update, reset = torch.sigmoid(total[:, : 2 * units] + state @ recurrent[:, : 2 * units]).chunk(2, -1)
        candidate = torch.relu(total[:, 2 * units :] + (reset * state) @ recurrent[:, 2 * units :])
        state = update * state + (1 - update) * candidate
        steps.append(state)
    return torch.stack(steps)


def outcome(steps_of, sums, recurrent, weights):
    leaves = [tensor.clone().requires_grad_() for tensor in (sums, recurrent)]
    steps = steps_of(*leaves)
    (steps * weights).sum().backward()
    return [steps.detach(), *(leaf.grad for leaf in leaves)]


class Sounds(unittest.TestCase):
    def test_every_made_noise_fills_its_length(self):
        for make in noises.MADE:
            for seed in range(20):
                sound = make(np.random.default_rng(seed), 24000)
                self.assertEqual(sound.shape, (24000,), make)
                self.assertTrue(np.isfinite(sound).all() and sound.std() > 1e-5, make)

    def test_a_synthesised_talker_has_clear_pitch_and_pauses(self):
        for seed in range(5):
            voice = synthesis.talker(np.random.default_rng(seed), 6 * 48000)
            self.assertEqual(voice.shape, (6 * 48000,))
            levels = frame_levels(voice)
            pitch, clearness = track(voice)
            clear = (levels > loud_level(levels) - 25) & (clearness > 0.8) & steady(pitch)
            self.assertGreater(clear.mean(), 0.3, seed)
            self.assertGreater(np.mean(levels < loud_level(levels) - 35), 0.03, seed)

    def test_targets_come_out_of_the_high_pass_as_the_low_voice_that_they_were(self):
        time = np.arange(48000) / 48000
        voice = np.sin(2 * np.pi * 95 * np.outer(np.arange(1, 20), time)).sum(0) * np.hanning(48000)
        self.assertLess(si_sdr(voice, high_passed(voice)), 25)
        turned = with_phase_taken_back(voice[None].astype(np.float32))[0]
        self.assertGreater(si_sdr(voice, high_passed(turned)), 40)


class Layers(unittest.TestCase):
    def test_values_and_gradients_are_those_of_the_plain_recursion(self):
        torch.manual_seed(1)
        for fast, plain, gates in ((LstmSteps.apply, plain_lstm, 4), (GruSteps.apply, plain_gru, 3)):
            sums, recurrent = torch.randn(9, 3, gates * 5), 0.4 * torch.randn(5, gates * 5)
            weights = torch.randn(9, 3, 5)
            for got, wanted in zip(outcome(fast, sums, recurrent, weights), outcome(plain, sums, recurrent, weights)):
                torch.testing.assert_close(got, wanted, rtol=0, atol=2e-5)  # the table's tanh is good to 1e-6

    def test_the_table_follows_the_hyperbolic_tangent_and_ends_at_one(self):
        x = torch.linspace(-9, 9, 4001)
        torch.testing.assert_close(tansig(x, TANSIG_TABLE), torch.tanh(x), rtol=0, atol=3e-6)
        self.assertEqual(tansig(torch.tensor([8.0, -300.0]), TANSIG_TABLE).tolist(), [1.0, -1.0])


class Models(unittest.TestCase):
    def test_text_brings_back_the_rounded_network_and_other_shapes_are_refused(self):
        torch.manual_seed(2)
        network = RecurrentDenoiser()
        network.vad_output_bias.data[0] = 3.0
        network.keep_in_range()
        text = model_text(network)
        features = torch.randn(50, 2, 42)
        for got, wanted in zip(network_of(text)(features), network(features)):
            self.assertTrue(torch.equal(got, wanted))
        self.assertEqual(text.split()[-1], "127")
        for bad in (text.replace("42 24 0", "42 23 0"), text[: len(text) // 2], text.replace("127", "x"), "127"):
            with self.assertRaises(SystemExit):
                network_of(bad)

    def test_voice_is_loud_frames_and_silence_is_far_from_them(self):
        energy = np.concatenate([np.zeros(60), np.full(40, 1e6), np.full(20, 1e3), np.zeros(60)])
        noise = np.where(np.arange(len(energy)) < 70, 1e8, 1.0)
        voice = voice_of(energy, energy + noise)
        self.assertEqual(set(voice[60:70]), {-1.0}, "drowned in noise")
        self.assertEqual(set(voice[70:100]), {1.0})
        self.assertEqual(set(voice[100:120]), {-1.0})
        self.assertEqual(set(voice[:50]) | set(voice[140:]), {0.0})


class Engine(unittest.TestCase):
    def test_the_engine_hears_behind_its_canceller_what_the_network_leaves(self):
        program = PROGRAMS / "quenlis_features"
        if not program.is_file():
            self.skipTest(f"{program} is not built")
        random = np.random.default_rng(3)
        time_s = np.arange(200 * 480) / 48000
        sound = 0.1 * np.sin(2 * np.pi * 150 * time_s) ** 9 + 0.01 * random.standard_normal(len(time_s))
        sound = torch.from_numpy(sound.astype(np.float32))[None]
        begun = torch.nn.functional.pad(sound, (HOP, 0))  # the engine begins with one more frame of silence
        with torch.no_grad():
            cleaned = Canceller(read_tables(ROOT / "data" / "noise_canceller"))(begun)[0, HOP:]
        with tempfile.TemporaryDirectory() as folder:
            late = np.concatenate([np.zeros(480, np.float32), cleaned.numpy()[:-480]])
            rows = []
            for name, samples, options in (("a", sound[0].numpy(), ["--through-canceller"]), ("b", late, [])):
                samples.astype("<f4").tofile(f"{folder}/{name}.f32")
                subprocess.run([program, *options, f"{folder}/{name}.f32", f"{folder}/{name}.rows"], check=True)
                rows.append(np.fromfile(f"{folder}/{name}.rows", "<f4").reshape(-1, ROW)[5:])
        energies = [np.log10(part[:, 42:64] + 0.1) for part in rows]
        self.assertLess(np.abs(energies[0] - energies[1]).max(), 0.01)


class Runs(unittest.TestCase):
    """On a corpus of two made recordings of either kind."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.work = Path(cls.folder.name)
        random = np.random.default_rng(4)
        for kind in ("speech", "noise"):
            (cls.work / kind).mkdir()
            for number in range(2):
                sound = 0.1 * random.standard_normal(3 * 48000)
                soundfile.write(cls.work / kind / f"{kind}{number}.wav", sound, 48000)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def command(self, tool, *options):
        return [sys.executable, str(TOOLS / tool), *map(str, options)]

    def refused(self, tool, *options):
        result = subprocess.run(self.command(tool, *options), capture_output=True, text=True)
        self.assertNotEqual(result.returncode, 0)
        self.assertEqual(len(result.stderr.strip().splitlines()), 1, result.stderr)
        return result.stderr

    def prepare(self, work, speech):
        return ["--speech", speech, "--noise", self.work / "noise", "--work", work, "--validation", 2]

    def test_bad_input_gives_one_line_and_leaves_no_corpus(self):
        work = self.work / "refused"
        wrong = self.work / "wrong"
        wrong.mkdir()
        soundfile.write(wrong / "telephone.wav", np.zeros(8000 * 2), 8000)
        self.assertIn("8000 Hz", self.refused("prepare.py", *self.prepare(work, wrong)))
        self.assertIn("no recordings", self.refused("prepare.py", *self.prepare(work, self.work / "nowhere")))
        self.assertFalse((work / "corpus").exists())
        options = ["--work", work, "canceller", "--start", ROOT / "data" / "noise_canceller"]
        self.assertIn("prepare.py", self.refused("train.py", *options))
        self.assertIn("train first", self.refused("export.py", "canceller", "--work", work, "--out", work / "out"))

    def test_a_run_that_was_cut_off_ends_like_one_that_was_not(self):
        ends = []
        for cut in (False, True):
            work = self.work / f"cut-{cut}"
            subprocess.run(
                self.command("prepare.py", *self.prepare(work, self.work / "speech")), check=True, capture_output=True
            )
            self.split(work)
            train = self.command(
                "train.py", "--work", work, "canceller", "--start", ROOT / "data" / "noise_canceller",
                "--steps", 40, "--batch", 2, "--seconds", 0.5,
            )
            if cut:
                self.cut_off(train)
            subprocess.run(train, check=True, capture_output=True)
            ends.append(torch.load(work / "canceller.checkpoint")["network"])
        for name, tensor in ends[0].items():
            self.assertTrue(torch.equal(tensor, ends[1][name]), name)

    def split(self, work):
        """One recording of either kind for training, whatever the hashes of their names say."""
        index = work / "corpus" / "index.json"
        recordings = json.loads(index.read_text())
        for recording in recordings:
            recording["split"] = "train" if recording["name"].endswith("0") else "validation"
        index.write_text(json.dumps(recordings))

    def cut_off(self, train):
        process = subprocess.Popen(train, stdout=subprocess.PIPE, text=True)
        self.assertIn("from step 0", process.stdout.readline())
        time.sleep(1)
        process.send_signal(signal.SIGTERM)
        self.assertIn("stopped at step", process.communicate()[0])


if __name__ == "__main__":
    unittest.main()
