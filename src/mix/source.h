/// The records of a listener's mix: a talker as one listener sees it, its queue of blocks, and queued
/// changes.
#pragma once

#include "dsp/vector_primitives.h"

#include <cstdint>

/// One block in a source's chain. A filled chain always ends in an empty block.
struct linked_buffer {
    linked_buffer* next;
    int32_t frames; ///< valid frames: N once the block is filled, 0 in the empty block at the tail
    float* data; ///< N frames of each of the source's channels, planar, in the same heap block as this record
};

/// What a source keeps for one of its channels.
struct source_channel {
    float* channel_data; ///< N floats, the block of this channel being mixed; lent by the source manager
    int32_t first_offset;
    int32_t second_offset;
    complex32f* spectra[2]; ///< fft_size values each: storage of a spatial renderer, never touched
};

/// One talker as seen by one listener. What every block needs stands first, in one cache line.
struct alignas(64) sSource {
    int32_t source_id;
    int32_t number_channels;
    linked_buffer* first_buffer;
    int32_t active;  ///< 1 while the source is to be asked for a block
    int32_t changed; ///< set by every applied change
    source_channel channels[2];
    int32_t renderer_changed; ///< the renderer's own flag beside `changed`, never touched
    int32_t near_distance;    ///< the distance up to 300
    int32_t far_distance;     ///< what goes beyond 300
    int32_t azimuth;          ///< degrees
    int32_t elevation;        ///< degrees
    complex32f* history[2];   ///< fft_size x number_partitions values each: storage of a spatial renderer,
                              ///< never touched
    float* renderer_block[2]; ///< N floats each: likewise
};

/// One queued change of the table.
struct action {
    int32_t action_type;
    int32_t source_id;
    int32_t arguments[3];
    action* next;
};
