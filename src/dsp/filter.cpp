#include "dsp/filter.h"

#include <algorithm>
#include <cmath>

quenlis_filter::quenlis_filter()
    : input_history_(qnl_make_buffer_32f(4)),
      output_history_(qnl_make_buffer_32f(4)),
      a_(qnl_make_buffer_32f(3)),
      b_(qnl_make_buffer_32f(3)),
      number_(3) {}

quenlis_filter::quenlis_filter(int number, const float* a, const float* b)
    : input_history_(qnl_make_buffer_32f(number + 1)),
      output_history_(qnl_make_buffer_32f(number + 1)),
      a_(qnl_make_buffer_32f(number)),
      b_(qnl_make_buffer_32f(number)),
      number_(number) {
    quenlis_filter::set_coefficients(number, a, b);
    quenlis_filter::reset();
}

void quenlis_filter::process(const float* in, float* out, int count) {
    float* const xh = input_history_.get();
    float* const yh = output_history_.get();
    for (int t = 0; t < count; ++t) {
        const float x = in[t];
        float y = b_[0] * x;
        for (int32_t k = 1; k < number_; ++k)
            y += b_[k] * xh[k] - a_[k] * yh[k];
        out[t] = y;
        std::copy_backward(xh + 1, xh + number_, xh + number_ + 1);
        std::copy_backward(yh + 1, yh + number_, yh + number_ + 1);
        xh[1] = x;
        yh[1] = y;
    }
}

void quenlis_filter::set_coefficients(int number, const float* a, const float* b) {
    qnl_copy(a, a_.get(), number);
    qnl_copy(b, b_.get(), number);
}

void quenlis_filter::reset() {
    qnl_zero(input_history_.get(), number_ + 1);
    qnl_zero(output_history_.get(), number_ + 1);
}

namespace {

constexpr float two_pi = 6.2831854820251465F;

/// A second-order section before its division by a0; all zero for an unknown type.
struct section {
    float b0 = 0.0F;
    float b1 = 0.0F;
    float b2 = 0.0F;
    float a0 = 0.0F;
    float a1 = 0.0F;
    float a2 = 0.0F;
};

section resonant(float cs, float alpha, float b0, float b1, float b2) {
    return {b0, b1, b2, 1 + alpha, -2 * cs, 1 - alpha};
}

section peaking(float A, float cs, float alpha) {
    return {1 + alpha * A, -2 * cs, 1 - alpha * A, 1 + alpha / A, -2 * cs, 1 - alpha / A};
}

section low_shelf(float A, float sn, float cs, float beta) {
    return {A * ((A + 1) - (A - 1) * cs + beta * sn),
            2 * A * ((A - 1) - (A + 1) * cs),
            A * ((A + 1) - (A - 1) * cs - beta * sn),
            (A + 1) + (A - 1) * cs + beta * sn,
            -2 * ((A - 1) + (A + 1) * cs),
            (A + 1) + (A - 1) * cs - beta * sn};
}

section high_shelf(float A, float sn, float cs, float beta) {
    return {A * ((A + 1) + (A - 1) * cs + beta * sn),
            -2 * A * ((A - 1) + (A + 1) * cs),
            A * ((A + 1) + (A - 1) * cs - beta * sn),
            (A + 1) - (A - 1) * cs + beta * sn,
            2 * ((A - 1) - (A + 1) * cs),
            (A + 1) - (A - 1) * cs - beta * sn};
}

section design_section(int type, float dbGain, float freq, float srate, float Q) {
    const auto A = static_cast<float>(std::pow(10.0, static_cast<double>(dbGain) / 40.0));
    const float w = two_pi * freq / srate;
    const float sn = std::sin(w);
    const float cs = std::cos(w);
    const float alpha = sn / (2 * Q);
    const float beta = std::sqrt(A + A);
    switch (type) {
    case 0:
        return resonant(cs, alpha, (1 - cs) / 2, 1 - cs, (1 - cs) / 2);
    case 1:
        return resonant(cs, alpha, (1 + cs) / 2, -(1 + cs), (1 + cs) / 2);
    case 2:
        return resonant(cs, alpha, alpha, 0, -alpha);
    case 3:
        return resonant(cs, alpha, 1, -2 * cs, 1);
    case 4:
        return peaking(A, cs, alpha);
    case 5:
        return low_shelf(A, sn, cs, beta);
    case 6:
        return high_shelf(A, sn, cs, beta);
    default:
        return {};
    }
}

} // namespace

quenlis_biquad::quenlis_biquad(int type, float dbGain, float freq, float srate, float Q)
    : type_(type), dbGain_(dbGain), freq_(freq), srate_(srate), Q_(Q) {
    design();
}

void quenlis_biquad::edit_type(int type) {
    type_ = type;
    design();
}

void quenlis_biquad::edit_dbGain(float dbGain) {
    dbGain_ = dbGain;
    design();
}

void quenlis_biquad::edit_freq(float freq) {
    freq_ = freq;
    design();
}

void quenlis_biquad::edit_Q(float Q) {
    Q_ = Q;
    design();
}

void quenlis_biquad::design() {
    edit_BiQuad(type_, dbGain_, freq_, srate_, Q_);
}

void quenlis_biquad::edit_BiQuad(int type, float dbGain, float freq, float srate, float Q) {
    const section s = design_section(type, dbGain, freq, srate, Q);
    const float a[] = {1.0F, s.a1 / s.a0, s.a2 / s.a0};
    const float b[] = {s.b0 / s.a0, s.b1 / s.a0, s.b2 / s.a0};
    set_coefficients(3, a, b);
}
