/// The weight tables of the neural noise canceller: row-major, one row for each input.
#pragma once

extern "C" {
extern const float lstm_bias_48k[512];
extern const float lstm_weights_48k[257 * 512];
extern const float lstm_recurrent_weights_48k[128 * 512];
extern const float lstm_1_bias_48k[512];
extern const float lstm_1_weights_48k[128 * 512];
extern const float lstm_1_recurrent_weights_48k[128 * 512];
extern const float dense_bias_48k[257];
extern const float dense_weights_48k[128 * 257];
extern const float conv1d_weights_48k[512 * 256];
extern const float instant_layer_normalization_gamma_weights_48k[256];
extern const float instant_layer_normalization_beta_weights_48k[256];
extern const float lstm_2_bias_48k[512];
extern const float lstm_2_weights_48k[256 * 512];
extern const float lstm_2_recurrent_weights_48k[128 * 512];
extern const float lstm_3_bias_48k[512];
extern const float lstm_3_weights_48k[128 * 512];
extern const float lstm_3_recurrent_weights_48k[128 * 512];
extern const float dense_1_bias_48k[256];
extern const float dense_1_weights_48k[128 * 256];
extern const float conv1d_1_weights_48k[256 * 480];
}
