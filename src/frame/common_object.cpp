#include "frame/common_object.h"

#include "dsp/vector_primitives.h"
#include "frame/integers.h"

int32_t engine_frames_of(const qnl_library_configuration& configuration) {
    const float ratio = 48000.0F / static_cast<float>(configuration.output_sampling_rate);
    return saturating_truncate(static_cast<float>(configuration.output_number_frames) * ratio);
}

quenlis_common_object quenlis_common_object::derive(const qnl_library_configuration& configuration) {
    const int32_t frames = engine_frames_of(configuration);
    const int32_t partition = next_power_of_2(frames); // a power of two is its own
    quenlis_common_object common{};
    common.configuration = configuration;
    common.ir_length = 256 << configuration.spatial_quality;
    common.filter_length = common.ir_length >= frames ? common.ir_length : next_power_of_2(frames);
    common.fft_size = 2 * partition;
    common.number_partitions = common.filter_length / partition;
    return common;
}
