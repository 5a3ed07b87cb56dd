#include "frame/shared_lock.h"

thread_local const shared_lock::guard* shared_lock::guard::innermost_ = nullptr;

bool shared_lock::held_by_this_thread() const {
    for (const guard* held = guard::innermost_; held != nullptr; held = held->outer_) {
        if (&held->lock_ == this)
            return true;
    }
    return false;
}

shared_lock::shared_guard::shared_guard(shared_lock& lock)
    : guard(lock), nested_(lock.held_by_this_thread()) {
    if (!nested_) {
        if (lock.waiting_exclusive_.load(std::memory_order_relaxed) > 0)
            const std::lock_guard<std::mutex> turn(lock.gate_);
        lock.mutex_.lock_shared();
    }
    enter();
}

shared_lock::shared_guard::~shared_guard() {
    leave();
    if (!nested_)
        lock_.mutex_.unlock_shared();
}

shared_lock::exclusive_guard::exclusive_guard(shared_lock& lock) : guard(lock) {
    lock.waiting_exclusive_.fetch_add(1, std::memory_order_relaxed);
    {
        const std::lock_guard<std::mutex> turn(lock.gate_);
        lock.mutex_.lock();
    }
    lock.waiting_exclusive_.fetch_sub(1, std::memory_order_relaxed);
    enter();
}

shared_lock::exclusive_guard::~exclusive_guard() {
    leave();
    lock_.mutex_.unlock();
}
