#include "voice/neural/layers.h"

#include "dsp/products.h"

#include <cmath>

namespace {

constexpr int lstm_gate_width = 512;
constexpr int lstm_gate_size = 128;
constexpr int norm_size = 256;
constexpr int row_size = 512;
constexpr float norm_epsilon = 1e-7F;

/// Adds the product of consecutive frames with a matrix whose rows follow each other without a gap.
void add_product(const float* in, int in_size, float* out, int out_size, const float* weights, int frames) {
    qnl_walk_rows({in, in_size, out, out_size, frames, in_size, out_size, out_size}, weights);
}

} // namespace

qnl_nn_lstm_layer::qnl_nn_lstm_layer(const float* bias, const float* kernel, const float* recurrent_kernel,
                                     int input_size, int units)
    : bias_(bias),
      kernel_(kernel),
      recurrent_kernel_(recurrent_kernel),
      hidden_state_(static_cast<std::size_t>(units)),
      cell_state_(static_cast<std::size_t>(units)),
      input_size_(input_size),
      units_(units),
      gate_width_(lstm_gate_width),
      forget_gate_(qnl_make_buffer_32f(lstm_gate_size)),
      input_gate_(qnl_make_buffer_32f(lstm_gate_size)),
      candidate_(qnl_make_buffer_32f(lstm_gate_size)),
      output_gate_(qnl_make_buffer_32f(lstm_gate_size)),
      input_sum_(qnl_make_buffer_32f(qnl_nn_max_frames * gate_width_)),
      recurrent_sum_(qnl_make_buffer_32f(gate_width_)),
      gate_sum_(qnl_make_buffer_32f(gate_width_)),
      row_scratch_(qnl_make_buffer_32f(row_size)) {}

void qnl_nn_lstm_layer::process(const float* in, float* out, int frames) {
    qnl_zero(input_sum_.get(), frames * gate_width_);
    add_product(in, input_size_, input_sum_.get(), gate_width_, kernel_, frames);
    for (int frame = 0; frame < frames; ++frame) {
        advance(input_sum_.get() + frame * gate_width_);
        qnl_copy(hidden_state_.data(), out + frame * units_, units_);
    }
}

void qnl_nn_lstm_layer::advance(const float* input_sum) {
    qnl_zero(recurrent_sum_.get(), gate_width_);
    add_product(hidden_state_.data(), units_, recurrent_sum_.get(), gate_width_, recurrent_kernel_, 1);
    qnl_add(input_sum, recurrent_sum_.get(), gate_sum_.get(), gate_width_);
    qnl_add_I(bias_, gate_sum_.get(), gate_width_);

    const float* const sum = gate_sum_.get();
    qnl_nn_helpers::sigmoid(sum, input_gate_.get(), units_);
    qnl_nn_helpers::sigmoid(sum + units_, forget_gate_.get(), units_);
    qnl_tanh(sum + 2 * units_, candidate_.get(), units_);
    qnl_nn_helpers::sigmoid(sum + 3 * units_, output_gate_.get(), units_);

    qnl_multiply_I(input_gate_.get(), candidate_.get(), units_);
    qnl_multiply_I(forget_gate_.get(), cell_state_.data(), units_);
    qnl_add_I(candidate_.get(), cell_state_.data(), units_);
    qnl_tanh(cell_state_.data(), candidate_.get(), units_);
    qnl_multiply(candidate_.get(), output_gate_.get(), hidden_state_.data(), units_);
}

qnl_nn_dense_layer::qnl_nn_dense_layer(const float* bias, const float* weights, int in_size, int out_size)
    : bias_(bias),
      weights_(weights),
      in_size_(in_size),
      out_size_(out_size),
      row_scratch_(qnl_make_buffer_32f(row_size)) {}

void qnl_nn_dense_layer::process(const float* in, float* out, int frames) {
    for (int frame = 0; frame < frames; ++frame)
        qnl_copy(bias_, out + frame * out_size_, out_size_);
    add_product(in, in_size_, out, out_size_, weights_, frames);
}

qnl_nn_conv1d_layer::qnl_nn_conv1d_layer(const float* weights, int in_size, int out_size)
    : weights_(weights),
      in_size_(in_size),
      out_size_(out_size),
      row_scratch_(qnl_make_buffer_32f(row_size)) {}

void qnl_nn_conv1d_layer::process(const float* in, float* out, int frames) {
    add_product(in, in_size_, out, out_size_, weights_, frames);
}

qnl_nn_instant_norm_layer::qnl_nn_instant_norm_layer(const float* gamma, const float* beta)
    : gamma_(gamma),
      beta_(beta),
      centred_(qnl_make_buffer_32f(norm_size)),
      squared_(qnl_make_buffer_32f(norm_size)) {}

void qnl_nn_instant_norm_layer::process(const float* in, float* out, int frames) {
    for (int frame = 0; frame < frames; ++frame, in += norm_size, out += norm_size) {
        qnl_subtractC(in, centred_.get(), qnl_mean(in, norm_size), norm_size);
        qnl_sqr(centred_.get(), squared_.get(), norm_size);
        const float deviation = std::sqrt(qnl_mean(squared_.get(), norm_size) + norm_epsilon);
        qnl_divideC(centred_.get(), out, deviation, norm_size);
        qnl_multiply_I(gamma_, out, norm_size);
        qnl_add_I(beta_, out, norm_size);
    }
}

void qnl_nn_helpers::dot_product(const float* in, int in_size, float* out, int out_size, float* /*scratch*/,
                                 const float* weights, const float* bias) {
    qnl_copy(bias, out, out_size);
    add_product(in, in_size, out, out_size, weights, 1);
}

void qnl_nn_helpers::sigmoid(const float* in, float* out, int n) {
    qnl_sigmoid(in, out, n);
}
