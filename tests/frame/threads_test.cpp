// The lock of manager and rooms; then everything at once, for ThreadSanitizer and for the count of heads.
#include "frame/shared_lock.h"
#include "kit/host.h"

#include <atomic>
#include <chrono>
#include <future>

namespace {

using namespace std::chrono_literals;
using shared_guard = nestable_shared_mutex::shared_guard;
using exclusive_guard = nestable_shared_mutex::exclusive_guard;

/// Starts a thread, which ends before its handle does.
template <class Work>
std::future<void> on_a_thread(Work work) {
    return std::async(std::launch::async, work);
}

TEST(SharedLock, SharedLockingNestsWhileAnExclusiveCallerWaits) {
    nestable_shared_mutex lock;
    std::future<void> writer;
    {
        const shared_guard outer(lock);
        writer = on_a_thread([&] { const exclusive_guard guard(lock); });
        EXPECT_EQ(writer.wait_for(50ms), std::future_status::timeout);
        const shared_guard inner(lock); // would wait for ever behind the writer otherwise
        EXPECT_TRUE(lock.held_by_this_thread());
    }
    EXPECT_FALSE(lock.held_by_this_thread());
    writer.wait();
}

TEST(SharedLock, SharedLockingNestsInsideTheOwnExclusiveLock) {
    nestable_shared_mutex lock;
    const nestable_shared_mutex other;
    std::future<void> reader;
    const exclusive_guard outer(lock);
    {
        const shared_guard inner(lock);
        EXPECT_FALSE(other.held_by_this_thread());
    }
    reader = on_a_thread([&] { const shared_guard guard(lock); });
    EXPECT_EQ(reader.wait_for(30ms), std::future_status::timeout)
        << "the end of the nested guard gave it away";
}

TEST(SharedLock, AnExclusiveCallerDoesNotStarveUnderSteadyReaders) {
    nestable_shared_mutex lock;
    std::atomic<bool> stop{false};
    std::future<void> readers[3];
    for (std::future<void>& reader : readers)
        reader = on_a_thread([&] {
            while (!stop) {
                const shared_guard guard(lock);
                std::this_thread::sleep_for(2ms); // overlaps with the others, so somebody always holds it
            }
        });
    const std::future<void> writer = on_a_thread([&] {
        for (int entered = 0; entered < 20; ++entered)
            const exclusive_guard guard(lock);
    });
    EXPECT_EQ(writer.wait_for(10s), std::future_status::ready);
    stop = true;
}

TEST(Threads, TalkListenJoinLeaveMoveAndSteerAtOnce) {
    test_kit::engine engine({1, 1, 1}, {48000, 480, 2, false, 1}, test_kit::row_layout(3));
    qnl_handle const handle = engine.handle();
    constexpr int permanent = 3;
    std::atomic<bool> stop{false};
    std::vector<std::future<void>> threads;
    const auto run = [&](auto work) {
        threads.push_back(on_a_thread([&stop, work] {
            for (int round = 0; !stop; ++round)
                work(round);
        }));
    };
    const std::vector<float> block(480, 0.1F);
    std::atomic<int> heard{0};
    for (int id = 1; id <= permanent; ++id) {
        run([&, id](int) { EXPECT_EQ(engine.push(id, block), QNL_ERROR_NONE); });
        run([&, id](int) { heard += engine.pull(id).code == QNL_ERROR_NONE ? 1 : 0; });
    }
    run([&](int) {
        engine.add(100, 2);
        qnl_remove_participant(handle, 1, 100);
    });
    run([&](int round) {
        const int id = 1 + round % permanent;
        qnl_set_participant_seat(handle, 1, id, 1 + round % 7);
        engine.set(id, QNL_CONTROL_SIDEBAR_ROOM, round % 2);
        qnl_set_participant_name(handle, 1, id, round % 2 == 0 ? "a" : "a much longer name than a");
        qnl_flush_data(handle, 1, id);
    });
    run([&](int round) {
        char name[64];
        engine.heard(1, 2 + round % 2);
        qnl_get_participant_name(handle, 1, 1 + round % permanent, name, 63);
        if (round % 16 == 0) {
            qnl_create_room(handle, 2);
            qnl_set_room_layout(handle, 2, 1);
            qnl_destroy_room(handle, 2);
        }
    });
    std::this_thread::sleep_for(700ms);
    stop = true;
    threads.clear();
    EXPECT_GT(heard, 0);
    EXPECT_EQ(engine.participant_count(), permanent);
}

} // namespace
