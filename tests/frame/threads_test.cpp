// The lock of manager and rooms; then everything at once, for ThreadSanitizer and for the count of heads.
#include "frame/shared_lock.h"
#include "kit/engine.h"

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

TEST(Threads, TalkListenJoinLeaveMoveAndSteerAtOnce) {
    test_kit::engine engine({1, 1, 1}, {48000, 480, 2, false, 1}, test_kit::row_layout(3));
    qnl_handle const handle = engine.handle();
    constexpr int permanent = 3;
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    const auto run = [&](auto work) {
        threads.emplace_back([&stop, work] {
            for (int round = 0; !stop; ++round)
                work(round);
        });
    };
    const std::vector<float> block(480, 0.1F);
    std::atomic<int> heard{0};
    for (int id = 1; id <= permanent; ++id) {
        run([&, id](int) {
            EXPECT_EQ(qnl_input_audio_float(handle, 1, id, block.data(), 480), QNL_ERROR_NONE);
        });
        run([&, id](int) {
            std::vector<float> mix(960);
            if (qnl_output_audio_float(handle, 1, id, mix.data()) == QNL_ERROR_NONE)
                ++heard;
        });
    }
    run([&](int) {
        qnl_add_participant(handle, 1, 100, "guest", {48000, 2, QNL_PARTICIPANT_REGULAR});
        qnl_remove_participant(handle, 1, 100);
    });
    run([&](int round) {
        qnl_set_participant_seat(handle, 1, 1 + round % permanent, 1 + round % 7);
        qnl_set_participant_state(handle, 1, 1 + round % permanent, QNL_CONTROL_SIDEBAR_ROOM, round % 2);
        qnl_set_participant_name(handle, 1, 1 + round % permanent,
                                 round % 2 == 0 ? "a" : "a much longer name than a");
        qnl_flush_data(handle, 1, 1 + round % permanent);
    });
    run([&](int round) {
        int numbers[3];
        char name[64];
        qnl_get_participant_spherical(handle, 1, 1, 2 + round % 2, &numbers[0], &numbers[1], &numbers[2]);
        qnl_get_participant_name(handle, 1, 1 + round % permanent, name, 63);
        if (round % 16 == 0) {
            qnl_create_room(handle, 2);
            qnl_set_room_layout(handle, 2, 1);
            qnl_destroy_room(handle, 2);
        }
    });
    std::this_thread::sleep_for(700ms);
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GT(heard, 0);
    EXPECT_EQ(engine.participant_count(), permanent);
}

} // namespace
