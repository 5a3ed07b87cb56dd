/// The readers/writer lock of the manager and the rooms.
#pragma once

#include <atomic>
#include <mutex>
#include <shared_mutex>

/// A shared mutex with two promises that the standard one does not make:
///  - shared locking may nest on one thread, also inside the thread's own exclusive lock, whoever waits;
///  - a waiting exclusive caller holds back new shared ones, so it does not starve under steady audio.
///
/// It is taken through the guards below only, which live on the stack of one thread and end in reverse order.
/// Never allocates. Exclusive locking does not nest: ask `held_by_this_thread` first where that can happen.
class nestable_shared_mutex {
public:
    class shared_guard;
    class exclusive_guard;

    /// Whether the calling thread holds this lock, in either way.
    bool held_by_this_thread() const;

private:
    /// One guard in the chain of those that its thread holds.
    class guard {
    public:
        guard(const guard&) = delete;
        guard& operator=(const guard&) = delete;

    protected:
        explicit guard(nestable_shared_mutex& lock) : lock_(lock), outer_(innermost) {}
        ~guard() = default;

        void enter() { innermost = this; }
        void leave() { innermost = outer_; }

        nestable_shared_mutex& lock_;

    private:
        friend class nestable_shared_mutex;
        // Laid out at load time: reaching it never allocates, also in a library that was opened late.
        static thread_local const guard* innermost __attribute__((tls_model("initial-exec")));
        const guard* const outer_;
    };

    void wait_for_turn();

    std::shared_mutex mutex_;
    std::mutex gate_; // held by the exclusive caller whose turn is next
    std::atomic<int> waiting_exclusive_{0};
};

/// Holds the lock shared for its own lifetime.
class nestable_shared_mutex::shared_guard : private guard {
public:
    explicit shared_guard(nestable_shared_mutex& lock);
    ~shared_guard();

private:
    const bool nested_;
};

/// Holds the lock exclusively for its own lifetime.
class nestable_shared_mutex::exclusive_guard : private guard {
public:
    explicit exclusive_guard(nestable_shared_mutex& lock);
    ~exclusive_guard();
};
