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

/// tansig_table[i] = tanh(i / 25); the last entry counts as 1.
std::array<float, table_size> make_tansig_table() {
    std::array<float, table_size> table{};
    for (int i = 0; i < table_size - 1; ++i)
        table[static_cast<std::size_t>(i)] = static_cast<float>(std::tanh(0.04 * i));
    table.back() = 1.0F;
    return table;
}

const std::array<float, table_size> tansig_table = make_tansig_table();

float activate(float x, int activation) {
    if (activation == activation_sigmoid)
        return sigmoid_approx(x);
    if (activation == activation_tanh)
        return tansig_approx(x);
    return std::max(x, 0.0F);
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
    if (!(x < 8.0F))
        return 1.0F;
    if (!(x > -8.0F))
        return -1.0F;
    const float sign = x < 0.0F ? -1.0F : 1.0F;
    x = std::abs(x);
    const int i = static_cast<int>(std::floor(0.5F + 25.0F * x));
    const float d = x - 0.04F * static_cast<float>(i);
    const float y = tansig_table[static_cast<std::size_t>(i)];
    const float slope = 1.0F - y * y;
    return sign * (y + d * slope * (1.0F - y * d));
}

float sigmoid_approx(float x) {
    return static_cast<float>(0.5 + 0.5 * static_cast<double>(tansig_approx(0.5F * x)));
}

void compute_dense(const rnn_dense_layer& layer, float* out, const float* in) {
    const int n = layer.neuron_count;
    widen(layer.bias, out, n);
    add_product(in, layer.input_count, out, n, layer.input_weights, n);
    for (int i = 0; i < n; ++i)
        out[i] = activate(weight_scale * out[i], layer.activation);
}

void compute_gru(const rnn_gru_layer& layer, float* state, const float* in) {
    const int n = layer.neuron_count;
    const int stride = 3 * n;
    float sums[3 * largest_rnn_layer];
    widen(layer.bias, sums, stride);
    add_product(in, layer.input_count, sums, stride, layer.input_weights, stride);
    add_product(state, n, sums, 2 * n, layer.recurrent_weights, stride);
    float* const update = sums;
    float* const reset = sums + n;
    float* const candidate = sums + 2 * n;
    float remembered[largest_rnn_layer];
    for (int i = 0; i < n; ++i) {
        update[i] = sigmoid_approx(weight_scale * update[i]);
        remembered[i] = sigmoid_approx(weight_scale * reset[i]) * state[i];
    }
    add_product(remembered, n, candidate, n, layer.recurrent_weights + 2 * n, stride);
    for (int i = 0; i < n; ++i)
        state[i] = update[i] * state[i] +
                   (1.0F - update[i]) * activate(weight_scale * candidate[i], layer.activation);
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
