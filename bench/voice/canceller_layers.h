/// The weight matrices of the noise canceller in the order in which a frame meets them.
#pragma once

#include "voice/neural/noise_canceller_tables.h"

struct canceller_layer {
    const float* weights;
    int inputs;
    int outputs;
    bool recurrent; ///< needs the result of the frame before
};

constexpr int canceller_layer_count = 12;

inline const canceller_layer canceller_layers[canceller_layer_count] = {
    {lstm_weights_48k, 257, 512, false},    {lstm_recurrent_weights_48k, 128, 512, true},
    {lstm_1_weights_48k, 128, 512, false},  {lstm_1_recurrent_weights_48k, 128, 512, true},
    {dense_weights_48k, 128, 257, false},   {conv1d_weights_48k, 512, 256, false},
    {lstm_2_weights_48k, 256, 512, false},  {lstm_2_recurrent_weights_48k, 128, 512, true},
    {lstm_3_weights_48k, 128, 512, false},  {lstm_3_recurrent_weights_48k, 128, 512, true},
    {dense_1_weights_48k, 128, 256, false}, {conv1d_1_weights_48k, 256, 480, false}};
