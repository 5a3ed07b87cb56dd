#include "voice/recurrent/pitch.h"

#include "dsp/products.h"
#include "dsp/vector_primitives.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace pitch_analysis {

namespace {

constexpr int lpc_order = 4;
constexpr int vector_lags = 8; // lags are worked out in groups of so many
constexpr int second_check[16] = {0, 0, 3, 2, 3, 2, 5, 2, 3, 2, 3, 2, 5, 2, 3, 2};

int whole_groups(int lags) {
    return (lags + vector_lags - 1) / vector_lags * vector_lags;
}

struct lag_pair {
    int best = 0;
    int second = 1;
};

/// The two lags whose squared correlation is largest for the energy there. Only positive correlations count.
lag_pair find_best_lags(const float* correlation, const float* y, int len, int lags) {
    constexpr float scale = 1e-12F; // keeps the squares within single precision
    lag_pair lags_found;
    float best_num[2] = {-1.0F, -1.0F};
    float best_den[2] = {0.0F, 0.0F};
    float energy = 1.0F + qnl_inner_product(y, y, len);
    for (int i = 0; i < lags; ++i) {
        if (correlation[i] > 0.0F) {
            const float scaled = correlation[i] * scale;
            const float num = scaled * scaled;
            if (num * best_den[1] > best_num[1] * energy) {
                if (num * best_den[0] > best_num[0] * energy) {
                    best_num[1] = best_num[0];
                    best_den[1] = best_den[0];
                    lags_found.second = lags_found.best;
                    best_num[0] = num;
                    best_den[0] = energy;
                    lags_found.best = i;
                } else {
                    best_num[1] = num;
                    best_den[1] = energy;
                    lags_found.second = i;
                }
            }
        }
        energy += y[i + len] * y[i + len] - y[i] * y[i];
        energy = std::max(1.0F, energy);
    }
    return lags_found;
}

/// Which neighbour of b leans towards being the peak: -1, 0 or 1.
int lean(float a, float b, float c) {
    if (c - a > 0.7F * (b - a))
        return 1;
    if (a - c > 0.7F * (b - c))
        return -1;
    return 0;
}

/// The best two lags at a quarter of the full rate.
lag_pair search_coarsely(const float* x_lp, const float* y, int len, int max_pitch) {
    constexpr int quarter_history = half_history / 2 + padding;
    float x_quarter[correlation_frame / 4];
    float y_quarter[quarter_history] = {};
    float correlation[(longest_lag / 4 / vector_lags + 1) * vector_lags];
    for (int j = 0; j < len / 4; ++j)
        x_quarter[j] = x_lp[2 * j];
    for (int j = 0; j < (len + max_pitch) / 4; ++j)
        y_quarter[j] = y[2 * j];
    celt_pitch_xcorr(x_quarter, y_quarter, correlation, len / 4, whole_groups(max_pitch / 4));
    return find_best_lags(correlation, y_quarter, len / 4, max_pitch / 4);
}

float gain_of(float xy, float xx, float yy) {
    return xy / std::sqrt(1.0F + xx * yy);
}

/// Energies of the half-rate window moved back by 0 to `maxperiod` samples.
void slide_energies(const float* x, int n, int maxperiod, float xx, float* energies) {
    float energy = xx;
    energies[0] = xx;
    for (int i = 1; i <= maxperiod; ++i) {
        energy = energy + x[-i] * x[-i] - x[n - i] * x[n - i];
        energies[i] = std::max(0.0F, energy);
    }
}

/// How much the last period speaks for a candidate.
float continuity(int candidate, int divisor, int period, int prev_period, float prev_gain) {
    const int distance = std::abs(candidate - prev_period);
    if (distance <= 1)
        return prev_gain;
    if (distance <= 2 && 5 * divisor * divisor < period)
        return 0.5F * prev_gain;
    return 0.0F;
}

/// A second period at which a candidate has to hold as well.
int second_period(int divisor, int candidate, int period, int maxperiod) {
    if (divisor == 2)
        return candidate + period > maxperiod ? period : period + candidate;
    return (2 * second_check[divisor] * period + divisor) / (2 * divisor);
}

} // namespace

void _celt_lpc(float* lpc, const float* autocorrelation, int order) {
    std::fill_n(lpc, order, 0.0F);
    float error = autocorrelation[0];
    if (autocorrelation[0] == 0.0F)
        return;
    for (int i = 0; i < order; ++i) {
        float sum = 0.0F;
        for (int j = 0; j < i; ++j)
            sum += lpc[j] * autocorrelation[i - j];
        sum += autocorrelation[i + 1];
        const float reflection = -sum / error;
        lpc[i] = reflection;
        for (int j = 0; j < (i + 1) / 2; ++j) {
            const float low = lpc[j];
            const float high = lpc[i - 1 - j];
            lpc[j] = low + reflection * high;
            lpc[i - 1 - j] = high + reflection * low;
        }
        error = error - reflection * reflection * error;
        if (error < 0.001F * autocorrelation[0])
            break;
    }
}

void _celt_autocorr(const float* x, float* autocorrelation, int lag, int n) {
    const int common = n - lag;
    celt_pitch_xcorr(x, x, autocorrelation, common, vector_lags);
    for (int k = 0; k <= lag; ++k) {
        float rest = 0.0F;
        for (int i = k + common; i < n; ++i)
            rest += x[i] * x[i - k];
        autocorrelation[k] += rest;
    }
}

void celt_pitch_xcorr(const float* x, const float* y, float* out, int len, int lags) {
    // Row j of the product is the history from sample j on.
    qnl_zero(out, lags);
    qnl_walk_rows({x, 0, out, 0, 1, len, 1, lags}, y);
}

void pitch_downsample(const float* x, float* x_lp) {
    for (int i = 1; i < half_history; ++i)
        x_lp[i] = 0.5F * (0.5F * (x[2 * i - 1] + x[2 * i + 1]) + x[2 * i]);
    x_lp[0] = 0.5F * (0.5F * x[1] + x[0]);
    std::fill_n(x_lp + half_history, padding, 0.0F);

    float autocorrelation[vector_lags];
    _celt_autocorr(x_lp, autocorrelation, lpc_order, half_history);
    autocorrelation[0] *= 1.0001F; // a noise floor at -40 dB
    for (int k = 1; k <= lpc_order; ++k) {
        const float lag_window = 0.008F * static_cast<float>(k);
        autocorrelation[k] -= autocorrelation[k] * lag_window * lag_window;
    }
    float a[lpc_order];
    _celt_lpc(a, autocorrelation, lpc_order);
    float widening = 1.0F;
    for (float& coefficient : a) {
        widening *= 0.9F;
        coefficient *= widening;
    }
    const float c[lpc_order + 1] = {a[0] + 0.8F, a[1] + 0.8F * a[0], a[2] + 0.8F * a[1], a[3] + 0.8F * a[2],
                                    0.8F * a[3]};
    float delayed[lpc_order + 1 + half_history] = {};
    qnl_copy(x_lp, delayed + lpc_order + 1, half_history);
    for (int n = 0; n < half_history; ++n) {
        float sum = x_lp[n];
        for (int k = 0; k <= lpc_order; ++k)
            sum += c[k] * delayed[n + lpc_order - k];
        x_lp[n] = sum;
    }
}

int pitch_search(const float* x_lp, const float* y, int len, int max_pitch) {
    const lag_pair coarse = search_coarsely(x_lp, y, len, max_pitch);
    float correlation[longest_lag / 2] = {};
    const int lags = max_pitch / 2;
    for (const int centre : {2 * coarse.best, 2 * coarse.second})
        for (int i = std::max(0, centre - 2); i <= std::min(lags - 1, centre + 2); ++i)
            correlation[i] = std::max(-1.0F, qnl_inner_product(x_lp, y + i, len / 2));
    const int best = find_best_lags(correlation, y, len / 2, lags).best;
    if (best == 0 || best == lags - 1)
        return 2 * best;
    return 2 * best - lean(correlation[best - 1], correlation[best], correlation[best + 1]);
}

float remove_doubling(const float* x, int maxperiod, int minperiod, int n, int& period, int prev_period,
                      float prev_gain) {
    const int full_rate_minimum = minperiod;
    maxperiod /= 2;
    minperiod /= 2;
    n /= 2;
    prev_period /= 2;
    x += maxperiod;
    const int found = std::min(period / 2, maxperiod - 1);

    float energies[max_period / 2 + 1];
    const float xx = qnl_inner_product(x, x, n);
    slide_energies(x, n, maxperiod, xx, energies);
    int best = found;
    float best_xy = qnl_inner_product(x, x - found, n);
    float best_yy = energies[found];
    const float found_gain = gain_of(best_xy, xx, best_yy);
    float best_gain = found_gain;
    for (int k = 2; k <= 15; ++k) {
        const int candidate = (2 * found + k) / (2 * k);
        if (candidate < minperiod)
            break;
        const int second = second_period(k, candidate, found, maxperiod);
        const float xy =
            0.5F * (qnl_inner_product(x, x - candidate, n) + qnl_inner_product(x, x - second, n));
        const float yy = 0.5F * (energies[candidate] + energies[second]);
        const float gain = gain_of(xy, xx, yy);
        const float support = continuity(candidate, k, found, prev_period, prev_gain);
        // Very short periods need better reasons.
        const float threshold = candidate < 3 * minperiod ? std::max(0.4F, 0.85F * found_gain - support)
                                                          : std::max(0.3F, 0.7F * found_gain - support);
        if (gain > threshold) {
            best = candidate;
            best_xy = xy;
            best_yy = yy;
            best_gain = gain;
        }
    }

    best_xy = std::max(0.0F, best_xy);
    const float pitch_gain = best_yy <= best_xy ? 1.0F : best_xy / (best_yy + 1.0F);
    const int offset = lean(qnl_inner_product(x, x - (best - 1), n), qnl_inner_product(x, x - best, n),
                            qnl_inner_product(x, x - (best + 1), n));
    period = std::max(full_rate_minimum, 2 * best + offset);
    return std::min(pitch_gain, best_gain);
}

} // namespace pitch_analysis
