/// Brings each talker to a common loudness.
#pragma once

#include "dsp/circular_buffer.h"
#include "dsp/equaliser.h"
#include "dsp/vector_primitives.h"
#include "voice/compressor.h"

#include <cstdint>

/// Automatic gain control towards a band of -25.2 to -23.2 dB of equal-loudness weighted level, within 35 dB up and
/// down, and a compressor behind it. The level is tracked while there is speech; in pauses the gain fades to 0 dB.
/// Each frame's gain is measured two frames ahead of the audio. A frame is 256 samples when the block is a power of
/// two, else 240.
///
/// Output is 2.5 frames late: 600 samples at 480 and 960, 640 at 512 and 1024. Only the first channel is heard, on
/// both. A NaN goes by; after an infinity the compressor gives silence for good, and a sample whose square overflows
/// leaves the gain at -35 dB for good: the object has to be made anew.
/// Never allocates after construction. One thread at a time.
class quenlis_agc {
public:
    /// @param channels  1 or 2
    /// @param block     samples per channel at 48 kHz; what is left of it behind whole chunks of two frames keeps
    ///                  its gain and gets no delay
    quenlis_agc(int channels, int block);

    /// Processes one planar block in place.
    /// @param voice_probability  of this block, 0 to 1: above 0.85 the level is learnt, below 0.025 is a pause
    void process(float* x, float voice_probability);

private:
    static constexpr int delays_ = 4;

    float compute_loudness(const float* frame);
    float calculate_agc_gain_factor(const float* frame);
    void track_level(float loudness, float delayed_loudness, bool rising);
    float gain_towards_target() const;
    float fade_in_pauses(float gain_db);
    void single_agc_block(float* frame, int index);
    void process_agc_parsed(float* x, int length);
    void overlap_add(const float* x);

    int32_t block_;
    int32_t channels_;
    int32_t frame_;
    qnl_buffer_32f window_;
    qnl_buffer_32f input_tail_;        // the last half frame of the previous chunk's input
    qnl_buffer_32f output_tail_;       // and of its windowed output
    qnl_buffer_32f between_frames_[2]; // those that straddle the frame boundaries
    qnl_buffer_32f assembly_;
    qnl_buffer_32f measured_;
    float previous_loudness_ = -160.0F;
    float level_estimate_ = -24.2F;
    circular_buffer frame_delay_[delays_];
    circular_buffer loudness_delay_;
    quenlis_compressor compressor_;
    quenlis_EQ weighting_;
    float voice_probability_ = 0.0F;
    float quiet_frames_ = 0.0F;
};
