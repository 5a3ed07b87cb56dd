// The lock of manager and rooms.
#include "frame/shared_lock.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using shared_guard = nestable_shared_mutex::shared_guard;
using exclusive_guard = nestable_shared_mutex::exclusive_guard;

TEST(SharedLock, SharedLockingNestsWhileAnExclusiveCallerWaits) {
    nestable_shared_mutex lock;
    std::atomic<bool> held_exclusively{false};
    std::thread writer;
    {
        const shared_guard outer(lock);
        writer = std::thread([&] {
            const exclusive_guard guard(lock);
            held_exclusively = true;
        });
        std::this_thread::sleep_for(50ms);
        const shared_guard inner(lock); // would wait for ever behind the writer otherwise
        EXPECT_TRUE(lock.held_by_this_thread());
        EXPECT_FALSE(held_exclusively);
    }
    EXPECT_FALSE(lock.held_by_this_thread());
    writer.join();
}

TEST(SharedLock, SharedLockingNestsInsideTheOwnExclusiveLock) {
    nestable_shared_mutex lock;
    const nestable_shared_mutex other;
    std::atomic<bool> entered{false};
    std::thread reader;
    {
        const exclusive_guard outer(lock);
        {
            const shared_guard inner(lock);
            EXPECT_FALSE(other.held_by_this_thread());
        }
        reader = std::thread([&] {
            const shared_guard guard(lock);
            entered = true;
        });
        std::this_thread::sleep_for(30ms);
        EXPECT_FALSE(entered) << "the end of the nested guard gave the lock away";
    }
    reader.join();
}

TEST(SharedLock, AnExclusiveCallerDoesNotStarveUnderSteadyReaders) {
    nestable_shared_mutex lock;
    std::atomic<bool> stop{false};
    std::vector<std::thread> readers(3);
    for (std::thread& reader : readers) {
        reader = std::thread([&] {
            while (!stop) {
                const shared_guard guard(lock);
                std::this_thread::sleep_for(2ms); // overlaps with the others, so somebody always holds it
            }
        });
    }
    std::atomic<int> entered{0};
    std::thread writer([&] {
        for (; entered < 20; ++entered) {
            const exclusive_guard guard(lock);
        }
    });
    for (int wait = 0; wait < 2000 && entered < 20; ++wait)
        std::this_thread::sleep_for(5ms);
    EXPECT_EQ(entered, 20);
    stop = true;
    writer.join();
    for (std::thread& reader : readers)
        reader.join();
}

} // namespace
