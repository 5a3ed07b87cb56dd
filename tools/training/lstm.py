"""The recurrent layers' inner loop, forward and backward, with one matrix product and a few vector operations a step.

Sums over inputs, over the gradient of the recurrent weights and the local derivatives of all gates are formed for all
steps at once; only what truly depends on the step before runs in the loop, which is compiled.
"""

from typing import Tuple

import torch
from torch import Tensor


@torch.jit.script
def _forward(sums: Tensor, recurrent: Tensor) -> Tuple[Tensor, Tensor, Tensor, Tensor]:
    steps, batch, width = sums.shape
    units = width // 4
    gates = sums.clone()
    hidden = torch.zeros([steps + 1, batch, units], device=sums.device)
    cell = torch.zeros([steps + 1, batch, units], device=sums.device)
    bounded = torch.empty([steps, batch, units], device=sums.device)
    for t in range(steps):
        gate = gates[t]
        gate.addmm_(hidden[t], recurrent)
        torch.sigmoid_(gate[:, : 2 * units])
        torch.tanh_(gate[:, 2 * units : 3 * units])
        torch.sigmoid_(gate[:, 3 * units :])
        torch.mul(gate[:, units : 2 * units], cell[t], out=cell[t + 1])
        cell[t + 1].addcmul_(gate[:, :units], gate[:, 2 * units : 3 * units])
        torch.tanh(cell[t + 1], out=bounded[t])
        torch.mul(bounded[t], gate[:, 3 * units :], out=hidden[t + 1])
    return gates, hidden, cell, bounded


@torch.jit.script
def _backward(
    gradient: Tensor, gates: Tensor, hidden: Tensor, cell: Tensor, bounded: Tensor, recurrent: Tensor
) -> Tuple[Tensor, Tensor]:
    steps, batch, units = gradient.shape
    into, keep = gates[:, :, :units], gates[:, :, units : 2 * units]
    candidate, out = gates[:, :, 2 * units : 3 * units], gates[:, :, 3 * units :]
    slopes = torch.empty_like(gates)
    slopes[:, :, :units] = candidate * into * (1 - into)
    slopes[:, :, units : 2 * units] = cell[:steps] * keep * (1 - keep)
    slopes[:, :, 2 * units : 3 * units] = into * (1 - candidate * candidate)
    slopes[:, :, 3 * units :] = bounded * out * (1 - out)
    cell_slope = out * (1 - bounded * bounded)
    transposed = recurrent.t().contiguous()
    of_sums = torch.empty_like(gates)
    of_hidden = torch.zeros([batch, units], device=gates.device)
    of_cell = torch.zeros([batch, units], device=gates.device)
    for back in range(steps):
        t = steps - 1 - back
        of_hidden = of_hidden + gradient[t]
        of_cell.addcmul_(of_hidden, cell_slope[t])
        torch.mul(
            slopes[t][:, : 3 * units].view(batch, 3, units),
            of_cell.unsqueeze(1),
            out=of_sums[t][:, : 3 * units].view(batch, 3, units),
        )
        torch.mul(slopes[t][:, 3 * units :], of_hidden, out=of_sums[t][:, 3 * units :])
        of_cell.mul_(keep[t])
        of_hidden = torch.mm(of_sums[t], transposed)
    of_recurrent = hidden[:steps].reshape(steps * batch, units).t().mm(of_sums.view(steps * batch, 4 * units))
    return of_sums, of_recurrent


class LstmSteps(torch.autograd.Function):
    """(steps, batch, 4 units) sums of inputs and bias, (units, 4 units) weights -> (steps, batch, units).

    Gates in the order input, forget, candidate, output; the state starts at zero."""

    @staticmethod
    def forward(context, sums, recurrent):
        saved = _forward(sums, recurrent)
        context.save_for_backward(*saved, recurrent)
        return saved[1][1:]

    @staticmethod
    def backward(context, gradient):
        return _backward(gradient.contiguous(), *context.saved_tensors)
