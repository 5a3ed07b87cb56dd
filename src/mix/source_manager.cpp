#include "mix/source_manager.h"

#include <algorithm>
#include <new>

namespace {

enum action_type : int32_t {
    remove_source = 0,
    set_direction = 1,
    set_distance = 2,
    set_channel_offset = 3,
    set_azimuth = 4,
    set_elevation = 5,
};

constexpr int32_t near_limit = 300; // where a distance is split into its near and far part

// The data of a block begins one cache line behind its record.
constexpr int32_t record_floats = 64 / sizeof(float);
static_assert(sizeof(linked_buffer) <= record_floats * sizeof(float));

void split_distance(sSource& source, int32_t distance) {
    source.near_distance = std::min(distance, near_limit);
    source.far_distance = distance - source.near_distance;
}

} // namespace

source_manager::source_manager(const quenlis_common_object* common, int32_t frames)
    : frames_(frames), common_(common), channel_data_(qnl_make_buffer_32f(2 * frames)) {}

source_manager::~source_manager() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        do_actions();
    }
    for (const entry& row : table_)
        destroy_source(row.source);
}

sSource* source_manager::create_source(int32_t id, int32_t channels) {
    if (channels != 1 && channels != 2)
        return nullptr;
    sSource* source = nullptr;
    try {
        const std::lock_guard<std::mutex> lock(mutex_);
        source = new (records_.allocate(sizeof(sSource), alignof(sSource))) sSource{};
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    source->source_id = id;
    source->number_channels = channels;
    source->changed = 1;
    source->renderer_changed = 1;
    for (int32_t channel = 0; channel < channels; ++channel) {
        source_channel& side = source->channels[channel];
        side.channel_data = channel_data_.get() + static_cast<ptrdiff_t>(channel) * frames_;
        for (complex32f*& spectrum : side.spectra)
            spectrum = qnl_malloc_32fc(common_->fft_size);
    }
    for (complex32f*& spectra : source->history)
        spectra = qnl_malloc_32fc(common_->fft_size * common_->number_partitions);
    for (float*& block : source->renderer_block)
        block = qnl_malloc_32f(frames_);
    qnl_zero(source->renderer_block[0], frames_);
    return source;
}

int32_t source_manager::sm_add_source(sSource* source) {
    if (source == nullptr)
        return -1;
    const std::lock_guard<std::mutex> lock(mutex_);
    try {
        table_.push_back({source->source_id, source});
    } catch (const std::bad_alloc&) {
        destroy_source(source);
        return -1;
    }
    return source->source_id;
}

sSource* source_manager::sm_get_source_handle(int32_t id) const {
    const auto row = std::find_if(table_.begin(), table_.end(), [id](const entry& e) { return e.id == id; });
    return row != table_.end() ? row->source : nullptr;
}

bool source_manager::sm_check_id_exists(int32_t id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return sm_get_source_handle(id) != nullptr;
}

int32_t source_manager::sm_get_azimuth(int32_t id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const sSource* const source = sm_get_source_handle(id);
    return source != nullptr ? source->azimuth : 0;
}

int32_t source_manager::sm_get_elevation(int32_t id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const sSource* const source = sm_get_source_handle(id);
    return source != nullptr ? source->elevation : 0;
}

int32_t source_manager::sm_get_distance(int32_t id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const sSource* const source = sm_get_source_handle(id);
    return source != nullptr ? source->near_distance + source->far_distance : 0;
}

void source_manager::sm_remove_source(int32_t id) {
    queue(remove_source, id);
}

void source_manager::sm_set_direction(int32_t id, int32_t azimuth, int32_t elevation) {
    queue(set_direction, id, azimuth, elevation);
}

void source_manager::sm_set_distance(int32_t id, int32_t distance) {
    queue(set_distance, id, distance);
}

void source_manager::sm_set_channel_offset(int32_t id, int32_t channel, int32_t first, int32_t second) {
    queue(set_channel_offset, id, channel, first, second);
}

void source_manager::sm_set_azimuth(int32_t id, int32_t azimuth) {
    queue(set_azimuth, id, azimuth);
}

void source_manager::sm_set_elevation(int32_t id, int32_t elevation) {
    queue(set_elevation, id, elevation);
}

action* source_manager::get_item_mem() {
    return new (std::nothrow) action{};
}

void source_manager::queue(int32_t type, int32_t id, int32_t first, int32_t second, int32_t third) {
    action* const change = get_item_mem();
    if (change == nullptr)
        return;
    change->action_type = type;
    change->source_id = id;
    change->arguments[0] = first;
    change->arguments[1] = second;
    change->arguments[2] = third;
    add_action(change);
}

void source_manager::add_action(action* change) {
    const std::lock_guard<std::mutex> lock(mutex_);
    change->next = nullptr;
    (last_action_ != nullptr ? last_action_->next : first_action_) = change;
    last_action_ = change;
}

void source_manager::process_source_manager() {
    const std::lock_guard<std::mutex> lock(mutex_);
    do_actions();
}

void source_manager::do_actions() {
    while (first_action_ != nullptr) {
        action* const change = first_action_;
        first_action_ = change->next;
        apply(*change);
        delete change;
    }
    last_action_ = nullptr;
}

void source_manager::apply(const action& change) {
    sSource* const source = sm_get_source_handle(change.source_id);
    if (source == nullptr)
        return;
    const auto& [first, second, third] = change.arguments;
    switch (change.action_type) {
    case remove_source:
        remove_source_via_ptr(source);
        return;
    case set_direction:
        source->azimuth = first;
        source->elevation = second;
        break;
    case set_distance:
        if (first < 0)
            return;
        split_distance(*source, first);
        break;
    case set_channel_offset:
        if (first >= 0 && first < source->number_channels) {
            source->channels[first].first_offset = second;
            source->channels[first].second_offset = third;
        }
        break;
    case set_azimuth:
        source->azimuth = first;
        break;
    case set_elevation:
        source->elevation = first;
        break;
    default:
        return;
    }
    source->changed = 1;
}

linked_buffer* source_manager::create_linked_buffer(int32_t channels) const {
    float* const storage = qnl_malloc_32f(record_floats + frames_ * channels);
    return storage != nullptr ? new (storage) linked_buffer{nullptr, 0, storage + record_floats} : nullptr;
}

void source_manager::destroy_linked_buffer(linked_buffer* block) {
    qnl_free(block);
}

linked_buffer*& source_manager::sm_get_last_buf(sSource* source) {
    linked_buffer** last = &source->first_buffer;
    while (*last != nullptr && (*last)->next != nullptr)
        last = &(*last)->next;
    return *last;
}

void source_manager::clear_all_buffers(sSource* source) {
    while (source->first_buffer != nullptr) {
        linked_buffer* const block = source->first_buffer;
        source->first_buffer = block->next;
        destroy_linked_buffer(block);
    }
}

void source_manager::destroy_source(sSource* source) {
    clear_all_buffers(source);
    for (const source_channel& side : source->channels) {
        for (complex32f* spectrum : side.spectra)
            qnl_free(spectrum);
    }
    for (complex32f* spectra : source->history)
        qnl_free(spectra);
    for (float* block : source->renderer_block)
        qnl_free(block);
    records_.deallocate(source, sizeof(sSource), alignof(sSource));
}

void source_manager::remove_source_via_ptr(sSource* source) {
    const auto row =
        std::find_if(table_.begin(), table_.end(), [source](const entry& e) { return e.source == source; });
    if (row != table_.end())
        table_.erase(row);
    destroy_source(source);
}
