"""The recurrent denoiser's gated units over whole sequences, with the engine's table of the hyperbolic tangent."""

from typing import Tuple

import torch
from torch import Tensor

TANSIG_TABLE = torch.tanh(0.04 * torch.arange(201, dtype=torch.float64)).float()
TANSIG_TABLE[200] = 1.0


@torch.jit.script
def tansig(x: Tensor, table: Tensor) -> Tensor:
    """As the engine has it: the nearest entry and two terms of the series around it."""
    size = x.abs()
    entry = torch.floor(0.5 + 25 * size).clamp(max=200)
    d = size - 0.04 * entry
    y = table[entry.long()]
    value = torch.where(size < 8, y + d * (1 - y * y) * (1 - y * d), torch.ones_like(size))
    return torch.copysign(value, x)


@torch.jit.script
def _forward(sums: Tensor, recurrent: Tensor, table: Tensor) -> Tuple[Tensor, Tensor, Tensor, Tensor]:
    steps, batch, width = sums.shape
    units = width // 3
    states = torch.zeros([steps + 1, batch, units], device=sums.device)
    gates = torch.empty([steps, batch, 2 * units], device=sums.device)
    remembered = torch.empty([steps, batch, units], device=sums.device)
    candidates = torch.empty([steps, batch, units], device=sums.device)
    of_gates = recurrent[:, : 2 * units].contiguous()
    of_candidate = recurrent[:, 2 * units :].contiguous()
    for t in range(steps):
        gate = gates[t]
        gate.copy_(0.5 + 0.5 * tansig(0.5 * torch.addmm(sums[t][:, : 2 * units], states[t], of_gates), table))
        torch.mul(gate[:, units:], states[t], out=remembered[t])
        candidates[t] = torch.relu(torch.addmm(sums[t][:, 2 * units :], remembered[t], of_candidate))
        torch.lerp(candidates[t], states[t], gate[:, :units], out=states[t + 1])
    return states, gates, remembered, candidates


@torch.jit.script
def _backward(
    gradient: Tensor, states: Tensor, gates: Tensor, remembered: Tensor, candidates: Tensor, recurrent: Tensor
) -> Tuple[Tensor, Tensor]:
    steps, batch, units = gradient.shape
    update, reset = gates[:, :, :units], gates[:, :, units:]
    of_gates = recurrent[:, : 2 * units].t().contiguous()
    of_candidate = recurrent[:, 2 * units :].t().contiguous()
    update_slope = (states[:steps] - candidates) * update * (1 - update)
    reset_slope = states[:steps] * reset * (1 - reset)
    candidate_slope = (1 - update) * (candidates > 0)
    of_sums = torch.empty([steps, batch, 3 * units], device=gates.device)
    of_state = torch.zeros([batch, units], device=gates.device)
    for back in range(steps):
        t = steps - 1 - back
        of_state = of_state + gradient[t]
        of_sum = of_sums[t]
        torch.mul(of_state, update_slope[t], out=of_sum[:, :units])
        torch.mul(of_state, candidate_slope[t], out=of_sum[:, 2 * units :])
        of_remembered = torch.mm(of_sum[:, 2 * units :], of_candidate)
        torch.mul(of_remembered, reset_slope[t], out=of_sum[:, units : 2 * units])
        of_state = of_state * update[t] + of_remembered * reset[t] + torch.mm(of_sum[:, : 2 * units], of_gates)
    rows = steps * batch
    flat = of_sums.view(rows, 3 * units)
    before = states[:steps].reshape(rows, units)
    of_recurrent = torch.cat(
        [before.t().mm(flat[:, : 2 * units]), remembered.view(rows, units).t().mm(flat[:, 2 * units :])], 1
    )
    return of_sums, of_recurrent


class GruSteps(torch.autograd.Function):
    """(steps, batch, 3 units) sums of inputs and bias, (units, 3 units) weights -> (steps, batch, units).

    Gates in the order update, reset, candidate, which is rectified; the state starts at zero."""

    @staticmethod
    def forward(context, sums, recurrent):
        saved = _forward(sums, recurrent, TANSIG_TABLE.to(sums.device))
        context.save_for_backward(*saved, recurrent)
        return saved[0][1:]

    @staticmethod
    def backward(context, gradient):
        return _backward(gradient.contiguous(), *context.saved_tensors)


class Tansig(torch.autograd.Function):
    @staticmethod
    def forward(context, x):
        y = tansig(x, TANSIG_TABLE.to(x.device))
        context.save_for_backward(y)
        return y

    @staticmethod
    def backward(context, gradient):
        (y,) = context.saved_tensors
        return gradient * (1 - y * y)
