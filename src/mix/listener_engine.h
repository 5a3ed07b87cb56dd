/// One listener's mix.
#pragma once

#include "dsp/vector_primitives.h"
#include "frame/common_object.h"
#include "mix/source_manager.h"

#include <cstdint>

class quenlis_flags;

/// Collects a queue of 48 kHz blocks from every talker and sums one of each into a stereo block. Talkers push
/// and the listener pulls on different threads at different paces; the queues have no limit.
class listener_engine {
public:
    /// @param flags   the listener's controls, kept for a spatial renderer: the mix does not depend on them
    /// @param common  must outlive the object
    /// @param frames  N, frames per channel of a block
    listener_engine(quenlis_flags* flags, const quenlis_common_object* common, int32_t frames);

    /// Any thread. @return the id, or -1 when memory is exhausted
    int32_t add_source(int32_t id, int32_t channels);
    /// Takes effect at the next output_audio, as do the three updates.
    void remove_source(int32_t id);
    void updateAzimuth(int32_t id, int32_t value);
    void updateElevation(int32_t id, int32_t value);
    void updateDistance(int32_t id, int32_t value);
    /// What was last applied; 0 for an unknown source.
    int32_t getAzimuth(int32_t id);
    int32_t getElevation(int32_t id);
    int32_t getDistance(int32_t id);
    bool sourceExists(int32_t id);

    /// Queues a copy of a talker's block, scaled by `gain`. A talker's thread.
    ///
    /// @param block  room for N frames of two channels, planar, of which the source's channels are read:
    ///               an id that was removed and added anew may still stand for its former channel count
    /// @return 1 when the source exists, else 0
    /// Allocates the next block of the queue; when memory is exhausted the block is dropped.
    int32_t input_audio(int32_t id, const float* block, float gain);

    /// Mixes one block of every source that has one. The listener's thread.
    /// @param out  2 x N floats, planar stereo; silence when there was no block. Stereo sources keep their
    ///             sides, mono sources come to both at 0.70710677
    /// @return N when at least one source gave a block, else 0
    /// Applies queued changes first; frees the blocks it takes.
    int32_t output_audio(float* out);

    /// Drops all queued blocks of one source, or of all; an unknown id does nothing.
    void flush_source(int32_t id);
    void flush_all_sources();

    /// Copies the first block of the chain to the channels' data. The caller holds the source manager's
    /// mutex.
    void move_linked_buffer_to_channel_data(sSource* source) const;
    /// Adds the channels' data to the sum; scales a mono source's data in place. Likewise.
    void copy_source_to_outbuf(sSource* source);

    source_manager& sources() { return source_manager_; }

private:
    bool mix_next_block(sSource* source);

    const int32_t frames_;
    // Both are kept for a spatial renderer.
    [[maybe_unused]] const quenlis_common_object* const common_;
    [[maybe_unused]] quenlis_flags* const flags_;
    source_manager source_manager_;
    const qnl_buffer_32f accumulator_;
};
