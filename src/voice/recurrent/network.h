/// The network of the recurrent denoiser, with weights of 8 bits.
#pragma once

#include "voice/recurrent/model.h"

/// Most neurons or inputs of one layer of a model. Arrays for a layer's values have room for so many.
constexpr int largest_rnn_layer = 128;

/// How many features the network reads.
constexpr int feature_count = 42;

/// The activations, by table and in the reduced precision that models are trained for.
float tansig_approx(float x);
float sigmoid_approx(float x);

/// @param out  neuron_count values  @param in  input_count values
void compute_dense(const rnn_dense_layer& layer, float* out, const float* in);

/// Advances `state`, neuron_count values, all at once. @param in  input_count values
void compute_gru(const rnn_gru_layer& layer, float* state, const float* in);

/// The state of the three gated layers.
struct rnn_state {
    float* vad_gru_state;
    float* noise_gru_state;
    float* denoise_gru_state;
};

/// One pass over one frame. Never allocates.
/// @param gains     room for largest_rnn_layer values, of which the first 22 are the gains of the bands, 0 to 1
/// @param features  largest_rnn_layer values, of which the first 42 are the features and the rest zero
/// @return the voice probability, 0 to 1
float compute_rnn(const rnnoise_model& model, const rnn_state& state, float* gains, const float* features);
