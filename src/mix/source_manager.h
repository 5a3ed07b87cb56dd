/// A listener's table of sources.
#pragma once

#include "frame/common_object.h"
#include "mix/source.h"

#include <cstdint>
#include <memory_resource>
#include <mutex>
#include <vector>

/// Keeps one sSource for each other participant of the room and a queue of changes, which take effect when
/// the listener's thread calls process_source_manager.
///
/// One mutex covers the table, the chains and the queue. Operations lock it unless they say that the caller
/// holds it. Nothing raises: a failed allocation drops what was asked for.
class source_manager {
public:
    /// @param common  must outlive the object
    /// @param frames  N, frames per channel of a block
    source_manager(const quenlis_common_object* common, int32_t frames);
    ~source_manager();
    source_manager(const source_manager&) = delete;
    source_manager& operator=(const source_manager&) = delete;

    std::mutex& mutex() { return mutex_; }

    /// Builds a source that is in no table yet. @param channels  1 or 2
    /// @return null for another count and when memory is exhausted
    sSource* create_source(int32_t id, int32_t channels);
    /// Takes the source over and appends it at once. @return its id, or -1 for null or when memory is
    /// exhausted
    int32_t sm_add_source(sSource* source);

    /// The first source with that id, or null. The caller holds the mutex.
    sSource* sm_get_source_handle(int32_t id) const;
    bool sm_check_id_exists(int32_t id);

    /// What was last applied for the first source with that id; 0 without one.
    int32_t sm_get_azimuth(int32_t id);
    int32_t sm_get_elevation(int32_t id);
    int32_t sm_get_distance(int32_t id);

    /// Queue a change; see do_actions.
    void sm_remove_source(int32_t id);
    void sm_set_direction(int32_t id, int32_t azimuth, int32_t elevation);
    /// A negative distance is dropped when applied.
    void sm_set_distance(int32_t id, int32_t distance);
    void sm_set_channel_offset(int32_t id, int32_t channel, int32_t first, int32_t second);
    void sm_set_azimuth(int32_t id, int32_t azimuth);
    void sm_set_elevation(int32_t id, int32_t elevation);

    /// A new record, all zero, or null when memory is exhausted.
    static action* get_item_mem();
    /// Takes a record over and appends it to the queue.
    void add_action(action* change);
    /// Applies what is queued.
    void process_source_manager();
    /// Applies all queued changes in order and frees them; those for unknown ids or of unknown types are
    /// dropped. The caller holds the mutex.
    void do_actions();

    /// A new empty block for that many channels, data not cleared; null when memory is exhausted.
    linked_buffer* create_linked_buffer(int32_t channels) const;
    static void destroy_linked_buffer(linked_buffer* block);
    /// The pointer that holds the last block of the chain; it is null when there is none. The caller holds
    /// the mutex.
    static linked_buffer*& sm_get_last_buf(sSource* source);
    /// Frees the whole chain; `active` stays. The caller holds the mutex.
    static void clear_all_buffers(sSource* source);
    /// Frees a source that is in no table. The caller holds the mutex.
    void destroy_source(sSource* source);
    /// Takes the source out of the table when it is there, and destroys it. The caller holds the mutex.
    void remove_source_via_ptr(sSource* source);

    /// One row of the table; the id stands beside the pointer so that a search stays in one piece of memory.
    struct entry {
        int32_t id;
        sSource* source;
    };
    /// In order of adding. The caller holds the mutex.
    const std::vector<entry>& sources() const { return table_; }

private:
    void queue(int32_t type, int32_t id, int32_t first = 0, int32_t second = 0, int32_t third = 0);
    void apply(const action& change);

    std::vector<entry> table_;
    std::mutex mutex_;
    const int32_t frames_;
    const quenlis_common_object* const common_;
    const qnl_buffer_32f channel_data_; // lent to all sources, of which one at a time is being mixed
    // The records stand close together, apart from the renderer's large storage: a period of a large room
    // touches every one of them, and one page for each would cost more than the mix.
    std::pmr::unsynchronized_pool_resource records_;
    action* first_action_ = nullptr;
    action* last_action_ = nullptr;
};
