// The lock of manager and rooms.
#include "frame/shared_lock.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

/// Waits until `condition` holds; gives up after a generous while.
template <class Condition>
bool comes_true(Condition condition) {
    for (int i = 0; i < 2000; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

TEST(SharedLock, SharedLockingNestsWhileAnExclusiveCallerWaits) {
    nestable_shared_mutex lock;
    std::atomic<bool> held_exclusively{false};
    std::thread writer;
    {
        const nestable_shared_mutex::shared_guard outer(lock);
        writer = std::thread([&] {
            const nestable_shared_mutex::exclusive_guard guard(lock);
            held_exclusively = true;
        });
        std::this_thread::sleep_for(50ms);
        const nestable_shared_mutex::shared_guard inner(
            lock); // would wait for ever behind the writer otherwise
        EXPECT_TRUE(lock.held_by_this_thread());
        EXPECT_FALSE(held_exclusively);
    }
    EXPECT_FALSE(lock.held_by_this_thread());
    EXPECT_TRUE(comes_true([&] { return held_exclusively.load(); }));
    writer.join();
}

TEST(SharedLock, SharedLockingNestsInsideTheOwnExclusiveLock) {
    nestable_shared_mutex lock;
    const nestable_shared_mutex other;
    std::atomic<bool> entered{false};
    std::thread reader;
    {
        const nestable_shared_mutex::exclusive_guard outer(lock);
        {
            const nestable_shared_mutex::shared_guard inner(lock);
            EXPECT_FALSE(other.held_by_this_thread());
        }
        reader = std::thread([&] {
            const nestable_shared_mutex::shared_guard guard(lock);
            entered = true;
        });
        std::this_thread::sleep_for(30ms);
        EXPECT_FALSE(entered) << "the end of the nested guard gave the lock away";
    }
    reader.join();
    EXPECT_TRUE(entered);
}

TEST(SharedLock, ExclusiveCallersExcludeEverybody) {
    nestable_shared_mutex lock;
    int plain = 0; // a data race here is what ThreadSanitizer would see
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 2000; ++i) {
                if (t % 2 == 0) {
                    const nestable_shared_mutex::exclusive_guard guard(lock);
                    ++plain;
                } else {
                    const nestable_shared_mutex::shared_guard guard(lock);
                    EXPECT_GE(plain, 0);
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(plain, 4000);
}

TEST(SharedLock, AnExclusiveCallerDoesNotStarveUnderSteadyReaders) {
    nestable_shared_mutex lock;
    std::atomic<bool> stop{false};
    std::vector<std::thread> readers;
    for (int r = 0; r < 3; ++r) {
        readers.emplace_back([&] {
            while (!stop) {
                const nestable_shared_mutex::shared_guard guard(lock);
                std::this_thread::sleep_for(2ms); // overlaps with the others, so somebody always holds it
            }
        });
    }
    std::atomic<int> entered{0};
    std::thread writer([&] {
        for (int i = 0; i < 20; ++i) {
            const nestable_shared_mutex::exclusive_guard guard(lock);
            ++entered;
        }
    });
    EXPECT_TRUE(comes_true([&] { return entered == 20; }));
    stop = true;
    writer.join();
    for (std::thread& reader : readers)
        reader.join();
}

} // namespace
