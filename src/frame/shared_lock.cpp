#include "frame/shared_lock.h"

thread_local const nestable_shared_mutex::guard* nestable_shared_mutex::guard::innermost = nullptr;

bool nestable_shared_mutex::held_by_this_thread() const {
    for (const guard* held = guard::innermost; held != nullptr; held = held->outer_) {
        if (&held->lock_ == this)
            return true;
    }
    return false;
}

// The gate stays shut until the exclusive caller whose turn it is has the lock.
void nestable_shared_mutex::wait_for_turn() {
    const std::lock_guard<std::mutex> turn(gate_);
}

nestable_shared_mutex::shared_guard::shared_guard(nestable_shared_mutex& lock)
    : guard(lock), nested_(lock.held_by_this_thread()) {
    if (!nested_) {
        if (lock.waiting_exclusive_.load(std::memory_order_relaxed) > 0)
            lock.wait_for_turn();
        lock.mutex_.lock_shared();
    }
    enter();
}

nestable_shared_mutex::shared_guard::~shared_guard() {
    leave();
    if (!nested_)
        lock_.mutex_.unlock_shared();
}

nestable_shared_mutex::exclusive_guard::exclusive_guard(nestable_shared_mutex& lock) : guard(lock) {
    lock.waiting_exclusive_.fetch_add(1, std::memory_order_relaxed);
    {
        const std::lock_guard<std::mutex> turn(lock.gate_);
        lock.mutex_.lock();
    }
    lock.waiting_exclusive_.fetch_sub(1, std::memory_order_relaxed);
    enter();
}

nestable_shared_mutex::exclusive_guard::~exclusive_guard() {
    leave();
    lock_.mutex_.unlock();
}
