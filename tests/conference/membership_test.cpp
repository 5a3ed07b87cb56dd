// Who may join, and what joining and leaving do to audio that is under way.
#include "kit/host.h"

namespace {

using test_kit::engine;
using testing::ElementsAre;

constexpr int lowest = std::numeric_limits<int>::min();

TEST(Joining, RefusesWhatItCannotServe) {
    engine engine({1});
    test_kit::log_capture log;
    const auto add = [&](int rate, int channels, int type) {
        return engine.add(2, channels, static_cast<qnl_participant_type>(type), rate);
    };
    EXPECT_EQ(engine.add(1), QNL_ERROR_INVALID_PARTICIPANT_ID);
    EXPECT_EQ(add(0, 3, 9), QNL_ERROR_NUM_CHANNELS);
    EXPECT_EQ(add(0, 2, 4), QNL_ERROR_PARTICIPANT_TYPE);
    for (const int rate : {11025, 96000, 0, lowest})
        EXPECT_EQ(add(rate, 1, 1), QNL_ERROR_SAMPLE_RATE);
    const std::string ratio =
        " but you must make input sampling rate an integer ratio of the output sampling rate 48000";
    EXPECT_THAT(
        log.take(),
        ElementsAre(
            "WARNING: The participant id 1 already exists in room 1",
            "ERROR: You provided 3 but Quenlis currently only supports 1 or 2 channel input for new "
            "participants",
            "ERROR: Must pick Regular, source only, or listener only for a new participant",
            "ERROR: You provided 11025" + ratio,
            "ERROR: You provided 96000 but the Quenlis library does not support sampling rates above 48000",
            "ERROR: You provided 0" + ratio, "ERROR: You provided -2147483648" + ratio));
    EXPECT_EQ(engine.participant_count(), 1);
}

TEST(Leaving, DropsQueuedBlocksAndThoseUntilTheReturnIsHeard) {
    for (const auto& [before, after] : {std::pair{2, 1}, {1, 2}, {2, 2}}) {
        engine engine({before, 1});
        const std::vector<float> block(960, 0.5F);
        engine.push(1, block, 480);
        EXPECT_EQ(qnl_remove_participant(engine.handle(), 1, 1), QNL_ERROR_NONE);
        ASSERT_EQ(engine.add(1, after), QNL_ERROR_NONE);
        EXPECT_EQ(engine.push(1, block, 480), QNL_ERROR_NONE) << "goes to the entry that is about to leave";
        EXPECT_EQ(engine.pull(2).code, QNL_ERROR_NO_INPUT_AUDIO);
        engine.push(1, block, 480);
        EXPECT_FLOAT_EQ(engine.pull(2).samples.back(), after == 2 ? 0.5F : 0.5F * 0.70710677F);
    }
}

TEST(Joining, WithRefusedDefaultStatesLeavesTheParticipantUnwired) {
    engine engine({}, {48000, 480, 2, false, 1},
                  test_kit::row_layout(3, R"("defaultStates":{"QNL_CONTROL_AUTO_EQ_ENABLE":1})"));
    engine.add(1);
    EXPECT_EQ(engine.add(2, 1, QNL_PARTICIPANT_REGULAR, 16000), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(engine.participant_count(), 2);
    EXPECT_EQ(engine.seat(2).id, 2);
    EXPECT_EQ(engine.push(2, std::vector<float>(160)), QNL_ERROR_NONE);
    EXPECT_EQ(engine.pull(1).code, QNL_ERROR_NO_INPUT_AUDIO);
    for (const int id : {1, 2})
        EXPECT_EQ(qnl_flush_data(engine.handle(), 1, id), QNL_ERROR_NONE);
    EXPECT_THAT(engine.heard(1, 2), ElementsAre(0, 0, 0));
    EXPECT_EQ(qnl_remove_participant(engine.handle(), 1, 2), QNL_ERROR_NONE);
}

TEST(Rooms, AreIndependentAndTakeAnyId) {
    engine engine({1, 1});
    qnl_handle const handle = engine.handle();
    EXPECT_EQ(qnl_create_room(handle, lowest), QNL_ERROR_NONE);
    EXPECT_EQ(qnl_create_room(handle, 1), QNL_ERROR_INVALID_ROOM_ID);
    EXPECT_EQ(engine.participant_count(), 2) << "the first room keeps its people";
    for (const int id : {1, lowest, 0})
        EXPECT_EQ(qnl_add_participant(handle, lowest, id, nullptr, {48000, 1, QNL_PARTICIPANT_REGULAR}),
                  QNL_ERROR_NONE);
    engine.push(1, std::vector<float>(480, 0.1F));
    std::vector<float> output(960);
    EXPECT_EQ(qnl_output_audio_float(handle, lowest, 0, output.data()), QNL_ERROR_NO_INPUT_AUDIO);
    EXPECT_EQ(qnl_destroy_room(handle, lowest), QNL_ERROR_NONE);
    EXPECT_EQ(qnl_destroy_room(handle, lowest), QNL_ERROR_INVALID_ROOM_ID);
    int rooms = 0;
    EXPECT_EQ(qnl_get_room_count(handle, &rooms), QNL_ERROR_NONE);
    EXPECT_EQ(rooms, 1);
}

} // namespace
