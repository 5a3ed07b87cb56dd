/// What every object of one library instance needs to know of it.
#pragma once

#include "quenlis.h"

#include <cstdint>

/// The configuration and the sizes derived from it. Lives inside the sound manager, never changes and never
/// moves; rooms, participants and source managers keep a pointer to it.
struct quenlis_common_object {
    qnl_library_configuration configuration;
    int32_t ir_length;         ///< impulse response length in samples, by spatial quality
    int32_t fft_size;          ///< storage per partition of a source, in complex values
    int32_t filter_length;     ///< in samples
    int32_t number_partitions; ///< partitions of a source's storage
    /// For the constructor of the crosstalk canceller, which reads its built-in tables: never filled.
    const float* crosstalk_tables[4];

    /// @param configuration  a valid one
    static quenlis_common_object derive(const qnl_library_configuration& configuration);
};

/// N, the frames per channel of a block inside the engine, which runs at 48 kHz: the truncation of
/// F x 48000 / R in 32-bit floats. Defined for every R and F.
int32_t engine_frames_of(const qnl_library_configuration& configuration);
