/// What the recurrent denoiser hears in a frame: its spectra, its pitch and the features that its network reads.
#pragma once

#include "voice/recurrent/denoiser.h"
#include "voice/recurrent/network.h"
#include "voice/recurrent/spectrum.h"

/// What one frame is on its way to its features and gains.
struct frame_analysis {
    complex32f x[denoiser_spectrum::bins] = {}; // spectrum
    complex32f p[denoiser_spectrum::bins] = {}; // spectrum one pitch period earlier
    float ex[denoiser_spectrum::bands] = {};    // energies of both
    float ep[denoiser_spectrum::bands] = {};
    float exp[denoiser_spectrum::bands] = {}; // their correlation, -1 to 1
    float features[largest_rnn_layer] = {};   // the first feature_count are meant, the rest stays zero
};

/// Takes the next frame into the state and, behind a high-pass, analyses the 960 samples that end with it. Never
/// allocates.
///
/// @param in     480 samples, scaled to the range of 16-bit audio
/// @param frame  freshly made
/// @return false for a silent frame, which has no features and leaves the cepstra as they are
bool compute_features(rnnoise_state& st, const float* in, frame_analysis& frame);
