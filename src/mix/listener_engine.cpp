#include "mix/listener_engine.h"

namespace {

constexpr float mono_gain = 0.70710677F; // -3 dB to each side

// Asks the memory for what the next two sources need first, while this one is mixed: in a large room every
// record and every block has left the cache since the talker's push.
void fetch_ahead(const std::vector<source_manager::entry>& rows, size_t row) {
    if (row + 2 < rows.size())
        __builtin_prefetch(rows[row + 2].source);
    if (row + 1 < rows.size()) {
        const sSource* const next = rows[row + 1].source;
        __builtin_prefetch(next->first_buffer);
        __builtin_prefetch(next->channels[0].channel_data, 1);
    }
}

} // namespace

listener_engine::listener_engine(quenlis_flags* flags, const quenlis_common_object* common, int32_t frames)
    : frames_(frames),
      common_(common),
      flags_(flags),
      source_manager_(common, frames),
      accumulator_(qnl_make_buffer_32f(2 * frames)) {}

int32_t listener_engine::add_source(int32_t id, int32_t channels) {
    return source_manager_.sm_add_source(source_manager_.create_source(id, channels));
}

void listener_engine::remove_source(int32_t id) {
    source_manager_.sm_remove_source(id);
}

void listener_engine::updateAzimuth(int32_t id, int32_t value) {
    source_manager_.sm_set_azimuth(id, value);
}

void listener_engine::updateElevation(int32_t id, int32_t value) {
    source_manager_.sm_set_elevation(id, value);
}

void listener_engine::updateDistance(int32_t id, int32_t value) {
    source_manager_.sm_set_distance(id, value);
}

int32_t listener_engine::getAzimuth(int32_t id) {
    return source_manager_.sm_get_azimuth(id);
}

int32_t listener_engine::getElevation(int32_t id) {
    return source_manager_.sm_get_elevation(id);
}

int32_t listener_engine::getDistance(int32_t id) {
    return source_manager_.sm_get_distance(id);
}

bool listener_engine::sourceExists(int32_t id) {
    return source_manager_.sm_check_id_exists(id);
}

int32_t listener_engine::input_audio(int32_t id, const float* block, float gain) {
    const std::lock_guard<std::mutex> lock(source_manager_.mutex());
    sSource* const source = source_manager_.sm_get_source_handle(id);
    if (source == nullptr)
        return 0;
    const int32_t channels = source->number_channels;
    linked_buffer*& last = source_manager::sm_get_last_buf(source);
    if (last == nullptr)
        last = source_manager_.create_linked_buffer(channels);
    linked_buffer* const filled = last != nullptr ? source_manager_.create_linked_buffer(channels) : nullptr;
    if (filled == nullptr)
        return 1;

    const int32_t samples = frames_ * channels;
    qnl_copy(block, filled->data, samples);
    if (gain != 1.0F)
        qnl_multiplyC_I(filled->data, gain, samples);
    source->active = 1;
    filled->frames = frames_;
    // In front of the empty block, which stays as it is: the heap gives back a block that was freed a moment ago
    // and is still in the cache. Filling the empty one would go through twice the memory.
    filled->next = last;
    last = filled;
    return 1;
}

int32_t listener_engine::output_audio(float* out) {
    qnl_zero(accumulator_.get(), 2 * frames_);
    qnl_zero(out, 2 * frames_);
    source_manager_.process_source_manager();

    bool mixed = false;
    {
        const std::lock_guard<std::mutex> lock(source_manager_.mutex());
        const auto& rows = source_manager_.sources();
        for (size_t row = 0; row < rows.size(); ++row) {
            fetch_ahead(rows, row);
            if (rows[row].source->active == 1 && mix_next_block(rows[row].source))
                mixed = true;
        }
    }
    if (!mixed)
        return 0;
    qnl_copy(accumulator_.get(), out, 2 * frames_);
    return frames_;
}

bool listener_engine::mix_next_block(sSource* source) {
    linked_buffer* const block = source->first_buffer;
    if (block == nullptr || block->frames < frames_) {
        source->active = 0; // under-run: the source sits out until its talker's next block
        return false;
    }
    move_linked_buffer_to_channel_data(source);
    source->first_buffer = block->next;
    source_manager::destroy_linked_buffer(block);
    copy_source_to_outbuf(source);
    return true;
}

void listener_engine::move_linked_buffer_to_channel_data(sSource* source) const {
    const float* const data = source->first_buffer->data;
    if (source->number_channels == 1) {
        qnl_copy(data, source->channels[0].channel_data, frames_);
    } else if (source->number_channels == 2) {
        qnl_copy(data, source->channels[0].channel_data, frames_);
        qnl_copy(data + frames_, source->channels[1].channel_data, frames_);
    }
}

void listener_engine::copy_source_to_outbuf(sSource* source) {
    float* const left = accumulator_.get();
    float* const right = left + frames_;
    if (source->number_channels == 1) {
        qnl_mix_to_both_sides_I(source->channels[0].channel_data, mono_gain, left, right, frames_);
    } else if (source->number_channels == 2) {
        qnl_add_I(source->channels[0].channel_data, left, frames_);
        qnl_add_I(source->channels[1].channel_data, right, frames_);
    }
}

void listener_engine::flush_source(int32_t id) {
    const std::lock_guard<std::mutex> lock(source_manager_.mutex());
    if (sSource* const source = source_manager_.sm_get_source_handle(id))
        source_manager::clear_all_buffers(source);
}

void listener_engine::flush_all_sources() {
    const std::lock_guard<std::mutex> lock(source_manager_.mutex());
    for (const source_manager::entry& row : source_manager_.sources())
        source_manager::clear_all_buffers(row.source);
}
