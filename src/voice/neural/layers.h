/// The layers of the neural noise canceller, in single precision.
#pragma once

#include "dsp/vector_primitives.h"

#include <cstdint>
#include <vector>

// What holds for every layer: weight tables are row-major with the input as the row, constant, and borrowed; they must
// outlive the layer. `process` takes one frame, or up to qnl_nn_max_frames consecutive ones laid end to end, whose
// results are those of one call for each. Nothing is checked, a NaN goes through, nothing allocates after construction.
// One thread at a time.

constexpr int qnl_nn_max_frames = 4;

/// A layer of 128 long short-term memory cells (S. Hochreiter and J. Schmidhuber, 1997) without peepholes. Gates stand
/// in the order input, forget, candidate, output in every table.
class qnl_nn_lstm_layer {
public:
    /// @param bias              4 * units values
    /// @param kernel            input_size rows of 4 * units
    /// @param recurrent_kernel  units rows of 4 * units
    /// @param units             128: the gates' storage does not grow with it, on purpose
    qnl_nn_lstm_layer(const float* bias, const float* kernel, const float* recurrent_kernel, int input_size,
                      int units);

    /// @param in   input_size values a frame  @param out  units values a frame; may be `in`
    /// Advances the state.
    void process(const float* in, float* out, int frames = 1);

private:
    void advance(const float* input_sum);

    const float* bias_;
    const float* kernel_;
    const float* recurrent_kernel_;
    std::vector<float> hidden_state_;
    std::vector<float> cell_state_;
    int32_t input_size_;
    int32_t units_;
    int32_t gate_width_;
    qnl_buffer_32f forget_gate_;
    qnl_buffer_32f input_gate_;
    qnl_buffer_32f candidate_;
    qnl_buffer_32f output_gate_;
    qnl_buffer_32f input_sum_; // of every frame
    qnl_buffer_32f recurrent_sum_;
    qnl_buffer_32f gate_sum_;
    qnl_buffer_32f row_scratch_; // for one scaled row of weights; the row walk needs none
};

/// A fully connected layer; the activation is the caller's business.
class qnl_nn_dense_layer {
public:
    /// @param bias      out_size values, or null for adding to what `out` holds
    /// @param weights   in_size rows of out_size
    /// @param out_size  up to 512
    qnl_nn_dense_layer(const float* bias, const float* weights, int in_size, int out_size);

    /// @param in  in_size values a frame  @param out  out_size values a frame; must not overlap `in`
    void process(const float* in, float* out, int frames = 1);

private:
    const float* bias_;
    const float* weights_;
    int32_t in_size_;
    int32_t out_size_;
    qnl_buffer_32f row_scratch_; // as above
};

/// A pointwise convolution over one frame: a matrix product without bias, activation or memory.
class qnl_nn_conv1d_layer {
public:
    /// @param weights  in_size rows of out_size
    qnl_nn_conv1d_layer(const float* weights, int in_size, int out_size);

    /// Adds the product to `out`, which the caller has zeroed; it must not overlap `in`.
    void process(const float* in, float* out, int frames = 1);

private:
    const float* weights_;
    int32_t in_size_;
    int32_t out_size_;
    qnl_buffer_32f row_scratch_; // as above
};

/// Normalisation over the 256 features of one frame, without memory (J. L. Ba et al., "Layer normalization", 2016).
class qnl_nn_instant_norm_layer {
public:
    /// @param gamma  scale  @param beta  offset; 256 values each
    qnl_nn_instant_norm_layer(const float* gamma, const float* beta);

    /// 256 values a frame; `out` may be `in`.
    void process(const float* in, float* out, int frames = 1);

private:
    const float* gamma_;
    const float* beta_;
    qnl_buffer_32f centred_;
    qnl_buffer_32f squared_;
};

struct qnl_nn_helpers {
    /// Adds in * weights, row after row, to a copy of `bias` in `out`, or when that is null to what `out` holds.
    /// @param scratch  kept in the interface, never touched
    static void dot_product(const float* in, int in_size, float* out, int out_size, float* scratch,
                            const float* weights, const float* bias);

    /// out[i] = 1 / (1 + e to the power -in[i]), by the C library's expf; `out` may be `in`.
    static void sigmoid(const float* in, float* out, int n);
};
