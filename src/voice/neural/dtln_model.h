/// The network of the noise canceller.
#pragma once

#include "dsp/fft.h"
#include "dsp/vector_primitives.h"
#include "voice/neural/layers.h"

/// A two-stage suppressor: a mask on the magnitude spectrum, then one on a learned representation of the samples
/// (N. L. Westhausen and B. T. Meyer, "Dual-signal transformation LSTM network for real-time noise suppression", 2020),
/// for frames of 480 samples at 48 kHz that follow each other by 240. Frames go in without a window; the sum of the
/// overlapping results is the cleaned audio. Tables are constant and shared; the recurrent state is the object's own.
/// Never allocates after construction. One thread at a time.
class dtln_model {
public:
    /// @param ignored  kept in the interface
    explicit dtln_model(int ignored);

    /// Takes `frames` consecutive frames of 480 samples laid end to end, up to four, each layer for all of them before
    /// the next layer: the weights are read once. The result is that of one call for each. `out` may be `in`.
    void process(const float* in, float* out, int frames = 1);

private:
    void mask_spectrum(const float* in, int frames);
    void mask_encoded(int frames);

    qnl_nn_lstm_layer lstm_;
    qnl_nn_lstm_layer lstm_1_;
    qnl_nn_dense_layer dense_;
    qnl_nn_conv1d_layer conv1d_;
    qnl_nn_instant_norm_layer instant_layer_normalization_;
    qnl_nn_lstm_layer lstm_2_;
    qnl_nn_lstm_layer lstm_3_;
    qnl_nn_dense_layer dense_1_;
    qnl_nn_conv1d_layer conv1d_1_;
    quenlis_FFT inverse_fft_;
    quenlis_FFT forward_fft_;
    qnl_buffer_32fc spectrum_;
    // From here on one after the other for each frame.
    qnl_buffer_32f time_frame_;
    qnl_buffer_32f magnitude_;
    qnl_buffer_32f phase_;
    qnl_buffer_32f spectral_mask_;
    qnl_buffer_32f normalised_;
    qnl_buffer_32f encoded_;
    qnl_buffer_32f hidden_;
};
