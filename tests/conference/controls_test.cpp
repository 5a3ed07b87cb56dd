// What controls accept, keep and say.
#include "conference/flags.h"
#include "kit/host.h"

namespace {

using namespace test_kit;
using namespace testing;

qnl_audio_control control(int number) {
    return static_cast<qnl_audio_control>(number);
}

TEST(Controls, HaveTheNamesDefaultsAndExactlyTheRangesOfTheirPage) {
    engine engine({1});
    const auto rows = rows_of("docs/controls.md", R"(\| (\d+) \| `(\w+)` \| (\d+) to (\d+) \| (\d+) \|)");
    ASSERT_EQ(rows.size(), 14U);
    for (const auto& row : rows) {
        SCOPED_TRACE(row[2]);
        const int number = std::stoi(row[1]);
        const int lowest = std::stoi(row[3]);
        const int highest = std::stoi(row[4]);
        EXPECT_EQ(qnl_audio_control_to_string(number), row[2]);
        EXPECT_EQ(qnl_string_to_audio_control(row[2].c_str()), number);
        EXPECT_EQ(engine.get(1, control(number)), std::stoi(row[5]));
        const bool refused = number >= 6 && number <= 9; // stored all the same
        for (const int value : {lowest, highest}) {
            EXPECT_EQ(engine.set(1, control(number), value),
                      refused ? QNL_ERROR_INVALID_CONTROL : QNL_ERROR_NONE);
            EXPECT_EQ(engine.get(1, control(number)), value);
        }
        const int above = highest != std::numeric_limits<int>::max() ? highest + 1 : -2;
        for (const int value : {lowest - 1, -1, std::numeric_limits<int>::min(), above})
            EXPECT_EQ(engine.set(1, control(number), value), QNL_ERROR_INVALID_VALUE) << value;
        EXPECT_EQ(engine.get(1, control(number)), highest) << "changed by a refused value";
    }
}

TEST(Controls, SayWhatTheyRefuse) {
    engine engine({1});
    log_capture log;
    int value = 7;
    engine.set(1, control(11), 90);
    engine.set(1, control(10), 0);
    engine.set(1, control(9), 0);
    for (const int unknown : {0, 15}) {
        EXPECT_EQ(engine.set(1, control(unknown), 0), QNL_ERROR_INVALID_CONTROL);
        EXPECT_EQ(qnl_get_participant_state(engine.handle(), 1, 1, control(unknown), &value),
                  QNL_ERROR_INVALID_CONTROL);
    }
    EXPECT_THAT(
        log.take(),
        ElementsAre("WARNING: You must use a value of between 1 and 90 for half span angle control",
                    "WARNING: You must use a valid qnl_device_types value to change the device",
                    "WARNING: 3D Mixing is not available in the client side version of the Quenlis libraries",
                    "WARNING: You must use a valid control to edit from the qnl_audio_control list",
                    "WARNING: You did not input a valid control to edit",
                    "WARNING: You must use a valid control to edit from the qnl_audio_control list",
                    "WARNING: You did not input a valid control to edit"));
}

TEST(Controls, MasterGainReadsBackTruncated) {
    quenlis_flags flags;
    std::vector<int> one_lower;
    for (int gain = 0; gain <= 100; ++gain) {
        flags.set_state(QNL_CONTROL_MASTER_GAIN, gain);
        if (flags.get_state(QNL_CONTROL_MASTER_GAIN) != gain)
            one_lower.push_back(flags.get_state(QNL_CONTROL_MASTER_GAIN) + 1);
    }
    EXPECT_THAT(one_lower, ElementsAre(5, 10, 15, 20, 23, 27, 30, 40, 43, 46, 49, 53, 54, 59, 60, 67, 73, 80,
                                       86, 92, 98, 99));
}

TEST(Controls, AutomaticEqualiserIsRefusedBehindAnInputResamplerWhichStopsASettingForAll) {
    engine engine({1});
    engine.add(2, 1, QNL_PARTICIPANT_REGULAR, 16000);
    engine.add(3, 1, QNL_PARTICIPANT_LISTENER_ONLY, 16000);
    log_capture log;
    for (const int value : {0, 1, 7})
        EXPECT_EQ(engine.set(2, QNL_CONTROL_AUTO_EQ_ENABLE, value), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(log.take().front(),
              "WARNING: The Auto EQ effect is only available for 48 kHz inputs currently. "
              "It will not be enabled for participant 2");
    const auto set_all = [&](qnl_audio_control all, int value) {
        return qnl_set_all_participants_state(engine.handle(), 1, all, value);
    };
    EXPECT_EQ(set_all(QNL_CONTROL_AUTO_EQ_ENABLE, 1), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(engine.get(1, QNL_CONTROL_AUTO_EQ_ENABLE), 1);
    EXPECT_EQ(engine.get(3, QNL_CONTROL_AUTO_EQ_ENABLE), 0);
    EXPECT_EQ(engine.set(3, QNL_CONTROL_AUTO_EQ_ENABLE, 1), QNL_ERROR_NONE) << "a listener has no resampler";
    EXPECT_EQ(set_all(QNL_CONTROL_MIXING_3D_ATTENUATION, 40), QNL_ERROR_NONE) << "stored and refused goes on";
    EXPECT_EQ(engine.get(3, QNL_CONTROL_MIXING_3D_ATTENUATION), 40);
}

TEST(ControlText, ReadsNamesInAnyCaseAndNoOthers) {
    EXPECT_EQ(qnl_string_to_audio_control("qnl_Control_DEVICE"), QNL_CONTROL_DEVICE);
    log_capture log;
    for (const int unknown : {0, 15})
        EXPECT_STREQ(qnl_audio_control_to_string(unknown), "");
    for (const char* const unknown : {"qnl_control_Devices", static_cast<const char*>(nullptr)})
        EXPECT_EQ(qnl_string_to_audio_control(unknown), 15);
    EXPECT_THAT(log.take(), ElementsAre("WARNING: State 0 is not valid, must be between 1 and 14.",
                                        "WARNING: State 15 is not valid, must be between 1 and 14.",
                                        "WARNING: qnl_control_Devices is not a valid control.",
                                        "WARNING:  is not a valid control."));
}

TEST(ControlText, ReadsValuesByNameAndNumber) {
    log_capture log;
    for (const auto& [text, value] : {std::pair{"QNL_DEVICE_HEADPHONE", 1},
                                      {"qnl_device_speaker", 2},
                                      {"QNL_ENABLE", 1},
                                      {"true", 1},
                                      {"Qnl_Disable", 0},
                                      {"FALSE", 0},
                                      {"7", 7},
                                      {"12abc", 12},
                                      {" -3", -3},
                                      {"-9990", -9990}})
        EXPECT_EQ(qnl_string_to_participant_value(text), value) << text;
    EXPECT_THAT(log.take(), IsEmpty());

    for (const char* const text : {"truely", "", "99999999999", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(qnl_string_to_participant_value(text), -9990);
        EXPECT_THAT(
            log.take(),
            ElementsAre("WARNING: State value " + std::string(text != nullptr ? text : "") +
                        " is invalid. You must enter an integer value, the string QNL_DEVICE_HEADPHONE, "
                        "the string QNL_DEVICE_SPEAKER, the string QNL_ENABLE, or the string QNL_DISABLE "));
    }
}

} // namespace
