#include <cmath>
#include <cstddef>
#include <cstdint>

#include "dsp/vector_kernels.h"
#include "dsp/vector_primitives.h"

namespace {

constexpr float power_dB_per_decade = 10.0F;
constexpr float amplitude_dB_per_decade = 20.0F;

void ten_to_power_I(float* x, int n) {
    qnl_constant_to_power_I(x, 10.0F, n);
}

// The 32-bit product, wrapped as two's complement.
std::int32_t wrapped_product(int a, int b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

} // namespace

void qnl_mag_dB(const complex32f* a, float* d, int n) {
    qnl_magnitude(a, d, n);
    qnl_linear_to_dB(d, d, a == nullptr ? 0 : n);
}

void qnl_mag_dB(const float* a, float* d, int n) {
    qnl_abs(a, d, n);
    qnl_linear_to_dB(d, d, a == nullptr ? 0 : n);
}

void qnl_linear_to_dB(const float* a, float* d, int n) {
    if (a == nullptr)
        return;
    qnl_log10(a, d, n);
    qnl_multiplyC_I(d, amplitude_dB_per_decade, n);
}

void qnl_linear_to_power_dB_I(float* x, int n) {
    qnl_log10_I(x, n);
    qnl_multiplyC_I(x, power_dB_per_decade, n);
}

void qnl_dB_to_linear(const float* a, float* d, int n) {
    if (a == nullptr)
        return;
    qnl_divideC(a, d, amplitude_dB_per_decade, n);
    ten_to_power_I(d, n);
}

void qnl_dB_to_linear_I(float* x, int n) {
    qnl_dB_to_linear(x, x, n);
}

void qnl_power_dB_to_linear_I(float* x, int n) {
    qnl_divideC_I(x, power_dB_per_decade, n);
    ten_to_power_I(x, n);
}

void qnl_power_spectrum_dB(const complex32f* a, float* d, int n) {
    if (a == nullptr || d == nullptr || n <= 0)
        return;
    active_complex_kernels.squared_magnitude(a, d, static_cast<std::size_t>(n));
    qnl_multiplyC_I(d, 1.0F / static_cast<float>(wrapped_product(n, n)), n);
    qnl_linear_to_power_dB_I(d, n);
}

float lin2dB(float x) {
    return std::log(x) * 8.68588924407959F; // 20 / ln 10
}

float dB2lin(float x) {
    return std::exp(x * 0.115129254758358F); // ln 10 / 20
}

float max_float(float a, float b) {
    return a > b ? a : b;
}

float min_float(float a, float b) {
    return a < b ? a : b;
}

int check_power_of_2(int n) {
    const auto bits = static_cast<std::uint32_t>(n);
    return bits != 0 && (bits & (bits - 1)) == 0 ? 1 : 0;
}

int next_power_of_2(int n) {
    if (n <= 0)
        return 0;
    const double power = std::pow(2.0, std::ceil(std::log(static_cast<double>(n)) / std::log(2.0)));
    return power > INT32_MAX ? INT32_MAX : static_cast<int>(power);
}

int check_valid_sampling_rate(int input_rate, int output_rate, int output_frames) {
    if (output_rate == 0)
        return 0;
    const std::int64_t product = wrapped_product(input_rate, output_frames);
    return product % output_rate == 0 ? 1 : 0;
}
