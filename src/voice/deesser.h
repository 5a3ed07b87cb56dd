/// Removes sibilance from a voice.
#pragma once

#include <cstdint>

/// Splits the signal into a slow and a fast part wherever its third difference is large, and divides the fast part
/// down, by 24 dB at most. Sample by sample, without delay: block lengths do not matter, and what holds no sibilance
/// passes unchanged. A NaN stays in its channel's state for good: the object has to be made anew. Samples beyond full
/// scale for some hundredths of a second can end in one by themselves, on the right only; the left drops it, on purpose.
/// Never allocates. One thread at a time.
class quenlis_deesser {
public:
    /// @param sample_rate  Hz  @param channels  1 or 2  @param block  frames per call; below 1 nothing is processed
    quenlis_deesser(int sample_rate, int channels, int block);

    /// Processes one planar block of `channels * block` samples; `out` may be `in`.
    void process(const float* in, float* out);

private:
    /// Two detectors that take turns, each seeing every other sample.
    struct channel_state {
        double s1 = 0.0; // the last three input samples
        double s2 = 0.0;
        double s3 = 0.0;
        double ratio[2] = {1.0, 1.0};
        double smooth[2] = {0.0, 0.0};
    };

    double sense_sibilance(channel_state& state, double x, double& attack) const;
    template <bool Guarded>
    float process_sample(channel_state& state, float x) const;

    [[maybe_unused]] int32_t sample_rate_; // Hz, kept for the record
    int32_t channels_;
    int32_t block_;
    channel_state left_;
    channel_state right_;
    double intensity_;
    double intensity_squared_;
    double maximum_ratio_ = 15.848931924611133; // 24 dB
    double smoothing_amount_;
    bool flip_ = false;
};
