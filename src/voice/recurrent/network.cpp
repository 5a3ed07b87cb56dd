#include "voice/recurrent/network.h"

#include "dsp/products.h"
#include "dsp/vector_primitives.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int activation_tanh = 0;
constexpr int activation_sigmoid = 1;
constexpr float weight_scale = 1.0F / 256.0F;

constexpr int table_size = 201;

/// By its series, whose terms are all positive here: 80 of them reach e^16 to the last bits of a double.
constexpr double exponential(double x) {
    double term = 1.0;
    double sum = 1.0;
    for (int n = 1; n <= 80; ++n) {
        term *= x / n;
        sum += term;
    }
    return sum;
}

/// tansig_table[i] = tanh(i / 25); the last entry counts as 1. Made by the compiler: the library builds nothing
/// when it is loaded.
constexpr std::array<float, table_size> make_tansig_table() {
    std::array<float, table_size> table{};
    for (int i = 0; i < table_size - 1; ++i)
        table[static_cast<std::size_t>(i)] = static_cast<float>(1.0 - 2.0 / (exponential(0.08 * i) + 1.0));
    table.back() = 1.0F;
    return table;
}

constexpr std::array<float, table_size> tansig_table = make_tansig_table();

void apply_tansig(float* x, int n) {
    qnl_table_tanh(tansig_table.data(), x, n);
}

void apply_sigmoid(float* x, int n) {
    qnl_multiplyC_I(x, 0.5F, n);
    apply_tansig(x, n);
    for (int i = 0; i < n; ++i)
        x[i] = static_cast<float>(0.5 + 0.5 * static_cast<double>(x[i]));
}

/// Of sums that count in 256ths.
void activate(float* x, int n, int activation) {
    qnl_multiplyC_I(x, weight_scale, n);
    if (activation == activation_sigmoid)
        apply_sigmoid(x, n);
    else if (activation == activation_tanh)
        apply_tansig(x, n);
    else
        std::transform(x, x + n, x, [](float value) { return std::max(value, 0.0F); });
}

void widen(const std::int8_t* bias, float* out, int n) {
    for (int i = 0; i < n; ++i)
        out[i] = static_cast<float>(bias[i]);
}

/// Adds the product of `in` with columns of a matrix to `out`.
void add_product(const float* in, int inputs, float* out, int width, const std::int8_t* weights,
                 int row_stride) {
    qnl_walk_rows({in, 0, out, 0, 1, inputs, row_stride, width}, weights);
}

float* append(float* to, const float* values, int n) {
    qnl_copy(values, to, n);
    return to + n;
}

} // namespace

float tansig_approx(float x) {
    apply_tansig(&x, 1);
    return x;
}

float sigmoid_approx(float x) {
    apply_sigmoid(&x, 1);
    return x;
}

void compute_dense(const rnn_dense_layer& layer, float* out, const float* in) {
    const int n = layer.neuron_count;
    widen(layer.bias, out, n);
    add_product(in, layer.input_count, out, n, layer.input_weights, n);
    activate(out, n, layer.activation);
}

void compute_gru(const rnn_gru_layer& layer, float* state, const float* in) {
    const int n = layer.neuron_count;
    const int stride = 3 * n;
    float sums[3 * largest_rnn_layer];
    widen(layer.bias, sums, stride);
    add_product(in, layer.input_count, sums, stride, layer.input_weights, stride);
    add_product(state, n, sums, 2 * n, layer.recurrent_weights, stride);
    activate(sums, 2 * n, activation_sigmoid);
    const float* const update = sums;
    const float* const reset = sums + n;
    float* const candidate = sums + 2 * n;
    float remembered[largest_rnn_layer];
    qnl_multiply(reset, state, remembered, n);
    add_product(remembered, n, candidate, n, layer.recurrent_weights + 2 * n, stride);
    activate(candidate, n, layer.activation);
    for (int i = 0; i < n; ++i)
        state[i] = update[i] * state[i] + (1.0F - update[i]) * candidate[i];
}

float compute_rnn(const rnnoise_model& model, const rnn_state& state, float* gains, const float* features) {
    float dense_out[largest_rnn_layer] = {};
    float layer_input[3 * largest_rnn_layer] = {};
    float voice_probability[largest_rnn_layer] = {};
    compute_dense(*model.input_dense, dense_out, features);
    compute_gru(*model.vad_gru, state.vad_gru_state, dense_out);
    compute_dense(*model.vad_output, voice_probability, state.vad_gru_state);

    float* end = append(layer_input, dense_out, model.input_dense_size);
    end = append(end, state.vad_gru_state, model.vad_gru_size);
    append(end, features, feature_count);
    compute_gru(*model.noise_gru, state.noise_gru_state, layer_input);

    end = append(layer_input, state.vad_gru_state, model.vad_gru_size);
    end = append(end, state.noise_gru_state, model.noise_gru_size);
    append(end, features, feature_count);
    compute_gru(*model.denoise_gru, state.denoise_gru_state, layer_input);
    compute_dense(*model.denoise_output, gains, state.denoise_gru_state);
    return voice_probability[0];
}
