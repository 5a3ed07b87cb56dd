#include "voice/neural/dtln_model.h"

#include "voice/neural/noise_canceller_tables.h"

namespace {

constexpr int frame_size = 480;
constexpr int transform_size = 512;
constexpr int bins = 257;
constexpr int encoding = 256;
constexpr int units = 128;

qnl_buffer_32f for_every_frame(int size) {
    return qnl_make_buffer_32f(qnl_nn_max_frames * size);
}

} // namespace

dtln_model::dtln_model(int /*ignored*/)
    : lstm_(lstm_bias_48k, lstm_weights_48k, lstm_recurrent_weights_48k, bins, units),
      lstm_1_(lstm_1_bias_48k, lstm_1_weights_48k, lstm_1_recurrent_weights_48k, units, units),
      dense_(dense_bias_48k, dense_weights_48k, units, bins),
      conv1d_(conv1d_weights_48k, transform_size, encoding),
      instant_layer_normalization_(instant_layer_normalization_gamma_weights_48k,
                                   instant_layer_normalization_beta_weights_48k),
      lstm_2_(lstm_2_bias_48k, lstm_2_weights_48k, lstm_2_recurrent_weights_48k, encoding, units),
      lstm_3_(lstm_3_bias_48k, lstm_3_weights_48k, lstm_3_recurrent_weights_48k, units, units),
      dense_1_(dense_1_bias_48k, dense_1_weights_48k, units, encoding),
      conv1d_1_(conv1d_1_weights_48k, encoding, frame_size),
      inverse_fft_(transform_size, false),
      forward_fft_(transform_size, true),
      spectrum_(qnl_make_buffer_32fc(transform_size)),
      time_frame_(for_every_frame(transform_size)),
      magnitude_(for_every_frame(bins)),
      phase_(for_every_frame(bins)),
      spectral_mask_(for_every_frame(bins)),
      normalised_(for_every_frame(encoding)),
      encoded_(for_every_frame(encoding)),
      hidden_(for_every_frame(units)) {}

void dtln_model::process(const float* in, float* out, int frames) {
    mask_spectrum(in, frames);
    mask_encoded(frames);
    qnl_zero(out, frames * frame_size);
    conv1d_1_.process(encoded_.get(), out, frames);
}

/// First stage: from samples to samples, with the phase left as it is.
void dtln_model::mask_spectrum(const float* in, int frames) {
    complex32f* const spectrum = spectrum_.get();
    for (int frame = 0; frame < frames; ++frame) {
        forward_fft_.RFFT(in + frame * frame_size, frame_size, spectrum, transform_size);
        qnl_magnitude(spectrum, magnitude_.get() + frame * bins, bins);
        qnl_phase(spectrum, phase_.get() + frame * bins, bins);
    }
    lstm_.process(magnitude_.get(), hidden_.get(), frames);
    lstm_1_.process(hidden_.get(), hidden_.get(), frames);
    dense_.process(hidden_.get(), spectral_mask_.get(), frames);
    qnl_nn_helpers::sigmoid(spectral_mask_.get(), spectral_mask_.get(), frames * bins);
    qnl_multiply_I(spectral_mask_.get(), magnitude_.get(), frames * bins);
    for (int frame = 0; frame < frames; ++frame) {
        qnl_polar_to_cart(magnitude_.get() + frame * bins, phase_.get() + frame * bins, spectrum, bins);
        for (int k = bins; k < transform_size; ++k)
            spectrum[k] = {spectrum[transform_size - k].re, -spectrum[transform_size - k].im};
        inverse_fft_.IFFT_no_save(spectrum, time_frame_.get() + frame * transform_size, transform_size);
    }
}

/// Second stage: the mask is worked out of normalised values and lands on the plain ones.
void dtln_model::mask_encoded(int frames) {
    qnl_zero(encoded_.get(), frames * encoding);
    conv1d_.process(time_frame_.get(), encoded_.get(), frames);
    instant_layer_normalization_.process(encoded_.get(), normalised_.get(), frames);
    lstm_2_.process(normalised_.get(), hidden_.get(), frames);
    lstm_3_.process(hidden_.get(), hidden_.get(), frames);
    dense_1_.process(hidden_.get(), normalised_.get(), frames);
    qnl_nn_helpers::sigmoid(normalised_.get(), normalised_.get(), frames * encoding);
    qnl_multiply_I(normalised_.get(), encoded_.get(), frames * encoding);
}
