#pragma once

#include "sample_type.h"

#include <quenlis.h>

#include <memory>
#include <vector>

/// The two audio calls of one participant, in the sample type and buffer layout that the host chose. On this
/// side blocks are interleaved floats of full scale 1.0, so the rest of the host knows one form of audio.
class audio_port {
public:
    virtual ~audio_port() = default;

    /// Hands the engine one block of talk.
    /// @param block  input frames times input channels
    virtual qnl_error_code push(const std::vector<float>& block) = 0;

    /// Fetches one block of the mix.
    /// @param block  output frames times output channels, filled also when there was nothing to hear
    virtual qnl_error_code pull(std::vector<float>& block) = 0;
};

/// Whose audio it is and how its buffers look.
struct port_configuration {
    qnl_handle engine;
    int room_id;
    int participant_id;
    int input_channels;
    int output_channels;
    bool interleaved;
};

std::unique_ptr<audio_port> make_audio_port(sample_type samples, const port_configuration& whose);
