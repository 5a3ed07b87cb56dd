/// The weights of the recurrent denoiser: the record, its text form and the built-in model.
#pragma once

#include <cstdint>
#include <cstdio>

// Activation codes: 0 hyperbolic tangent, 1 sigmoid, 2 rectifier. Weights and biases count in 256ths. A matrix has one
// row for each input; a row of a gated layer holds all update weights, then all reset, then all candidate weights.

/// Layer record of a dense layer: out = activation((bias + in * weights) / 256).
struct rnn_dense_layer {
    const std::int8_t* bias;
    const std::int8_t* input_weights;
    std::int32_t input_count;
    std::int32_t neuron_count;
    std::int32_t activation;
};

/// Layer record of gated recurrent units (K. Cho et al., 2014).
struct rnn_gru_layer {
    const std::int8_t* bias;
    const std::int8_t* input_weights;
    const std::int8_t* recurrent_weights;
    std::int32_t input_count;
    std::int32_t neuron_count;
    std::int32_t activation;
};

/// Six layers with their neuron counts. Read-only once made, so that states and threads may share it.
struct rnnoise_model {
    std::int32_t input_dense_size;
    const rnn_dense_layer* input_dense;
    std::int32_t vad_gru_size;
    const rnn_gru_layer* vad_gru;
    std::int32_t noise_gru_size;
    const rnn_gru_layer* noise_gru;
    std::int32_t denoise_gru_size;
    const rnn_gru_layer* denoise_gru;
    std::int32_t denoise_output_size;
    const rnn_dense_layer* denoise_output;
    std::int32_t vad_output_size;
    const rnn_dense_layer* vad_output;
};

/// The built-in model, constant data.
extern const rnnoise_model rnnoise_model_orig;

/// Reads one model from text: the line "rnnoise-nu model file version 1", then for each layer, in the record's order,
/// input count, neuron count, activation code, input weights, recurrent weights of a gated layer, biases; all decimal
/// integers between blanks. Counts and codes run from 0 to 128; a code other than 1 and 2 is the hyperbolic tangent; a
/// weight is cut to its lowest eight bits. Whether the layers fit together is not checked: a model that breaks the
/// rules of the denoiser loads, and corrupts its frames.
///
/// @param stream  stays open, at wherever reading stopped
/// @return a model to be given back with rnnoise_model_free when no state uses it any more; null for anything that is
///         not such a text, or without memory
rnnoise_model* rnnoise_model_from_file(std::FILE* stream);

/// Gives back what rnnoise_model_from_file made, and nothing else. Null is ignored.
void rnnoise_model_free(rnnoise_model* model);
