// What controls accept, keep and say.
#include "conference/control_text.h"
#include "conference/flags.h"
#include "frame/exception.h"
#include "kit/engine.h"
#include "kit/log_capture.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using test_kit::log_capture;
using test_kit::log_entry;
using testing::ElementsAre;
using testing::IsEmpty;

qnl_audio_control control(int number) {
    return static_cast<qnl_audio_control>(number);
}

qnl_error_code code_of(quenlis_flags& flags, int number, int value) {
    try {
        return flags.set_state(control(number), value);
    } catch (const quenlis_exception& failure) {
        return failure.code();
    }
}

TEST(Controls, StartAtTheirDefaults) {
    const quenlis_flags flags;
    const std::array<int, 14> defaults = {0, 0, 0, 0, 0, 0, 6, 300, 1, 1, 15, 100, 0, 0};
    for (int number = 1; number <= 14; ++number)
        EXPECT_EQ(flags.get_state(control(number)), defaults[static_cast<size_t>(number - 1)]) << number;
    EXPECT_EQ(flags.get_seat().id, -1);
    EXPECT_STREQ(flags.get_name(), "");
}

TEST(Controls, AcceptExactlyTheirRange) {
    struct range {
        int number, lowest, highest;
    };
    const int huge = std::numeric_limits<int>::max();
    const std::vector<range> ranges = {{1, 0, 1},   {2, 0, 1},    {3, 0, 1},    {4, 0, 1},   {5, 0, 1},
                                       {6, 0, 1},   {7, 0, 40},   {8, 0, huge}, {9, 0, 1},   {10, 1, 2},
                                       {11, 0, 89}, {12, 0, 100}, {13, 0, 100}, {14, 0, 100}};
    for (const auto& [number, lowest, highest] : ranges) {
        quenlis_flags flags;
        const qnl_error_code accepted =
            number >= 6 && number <= 9 ? QNL_ERROR_INVALID_CONTROL : QNL_ERROR_NONE;
        for (const int value : {lowest, highest}) {
            EXPECT_EQ(code_of(flags, number, value), accepted) << number << " = " << value;
            EXPECT_EQ(flags.get_state(control(number)), value) << number;
        }
        for (const int value : {lowest - 1, -1, std::numeric_limits<int>::min()}) {
            EXPECT_EQ(code_of(flags, number, value), value == lowest ? accepted : QNL_ERROR_INVALID_VALUE)
                << number << " = " << value;
        }
        if (highest != huge) {
            EXPECT_EQ(code_of(flags, number, highest + 1), QNL_ERROR_INVALID_VALUE) << number;
        }
        EXPECT_EQ(flags.get_state(control(number)), highest) << number << " changed by a refused value";
    }
}

TEST(Controls, SayWhatTheyRefuse) {
    quenlis_flags flags;
    log_capture log;
    EXPECT_EQ(code_of(flags, 11, 90), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(code_of(flags, 10, 0), QNL_ERROR_INVALID_VALUE);
    EXPECT_EQ(code_of(flags, 0, 0), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(code_of(flags, 15, 0), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(code_of(flags, 9, 0), QNL_ERROR_INVALID_CONTROL);
    EXPECT_THROW(flags.get_state(control(15)), quenlis_exception);
    EXPECT_THROW(flags.get_state(control(-7)), quenlis_exception);
    EXPECT_THAT(
        log.take(),
        ElementsAre(
            log_entry{QNL_LOG_WARNING,
                      "You must use a value of between 1 and 90 for half span angle control"},
            log_entry{QNL_LOG_WARNING, "You must use a valid qnl_device_types value to change the device"},
            log_entry{QNL_LOG_WARNING,
                      "You must use a valid control to edit from the qnl_audio_control list"},
            log_entry{QNL_LOG_WARNING,
                      "You must use a valid control to edit from the qnl_audio_control list"},
            log_entry{QNL_LOG_WARNING,
                      "3D Mixing is not available in the client side version of the Quenlis libraries"},
            log_entry{QNL_LOG_WARNING, "You did not input a valid control to edit"},
            log_entry{QNL_LOG_WARNING, "You did not input a valid control to edit"}));
}

TEST(Controls, MasterGainReadsBackTruncated) {
    quenlis_flags flags;
    std::vector<int> one_lower;
    for (int gain = 0; gain <= 100; ++gain) {
        flags.set_state(QNL_CONTROL_MASTER_GAIN, gain);
        const int read = flags.get_state(QNL_CONTROL_MASTER_GAIN);
        if (read != gain) {
            EXPECT_EQ(read, gain - 1);
            one_lower.push_back(gain);
        }
    }
    EXPECT_THAT(one_lower, ElementsAre(5, 10, 15, 20, 23, 27, 30, 40, 43, 46, 49, 53, 54, 59, 60, 67, 73, 80,
                                       86, 92, 98, 99));
}

TEST(Controls, AutomaticEqualiserIsRefusedBehindAnInputResampler) {
    test_kit::engine engine;
    engine.add(1, 1, QNL_PARTICIPANT_REGULAR, 16000);
    engine.add(2, 1, QNL_PARTICIPANT_LISTENER_ONLY, 16000);
    log_capture log(QNL_LOG_WARNING);
    for (const int value : {0, 1, 7})
        EXPECT_EQ(engine.set(1, QNL_CONTROL_AUTO_EQ_ENABLE, value), QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(log.take().front().message,
              "The Auto EQ effect is only available for 48 kHz inputs currently. It "
              "will not be enabled for participant 1");
    EXPECT_EQ(engine.set(2, QNL_CONTROL_AUTO_EQ_ENABLE, 1), QNL_ERROR_NONE) << "a listener has no resampler";
}

TEST(Controls, SetForAllStopsAtTheFirstRefusal) {
    test_kit::engine engine;
    engine.add(1);
    engine.add(2, 1, QNL_PARTICIPANT_REGULAR, 16000);
    engine.add(3);
    EXPECT_EQ(qnl_set_all_participants_state(engine.handle(), 1, QNL_CONTROL_AUTO_EQ_ENABLE, 1),
              QNL_ERROR_INVALID_CONTROL);
    EXPECT_EQ(engine.get(1, QNL_CONTROL_AUTO_EQ_ENABLE), 1);
    EXPECT_EQ(engine.get(3, QNL_CONTROL_AUTO_EQ_ENABLE), 0);
    EXPECT_EQ(qnl_set_all_participants_state(engine.handle(), 1, QNL_CONTROL_MIXING_3D_ATTENUATION, 40),
              QNL_ERROR_NONE)
        << "a returned refusal is dropped";
    EXPECT_EQ(engine.get(3, QNL_CONTROL_MIXING_3D_ATTENUATION), 40);
}

TEST(ControlText, NamesControlsBothWays) {
    for (int number = 1; number <= 14; ++number)
        EXPECT_EQ(qnl_string_to_audio_control(qnl_audio_control_to_string(number)), number);
    EXPECT_STREQ(qnl_audio_control_to_string(12), "QNL_CONTROL_MASTER_GAIN");
    EXPECT_EQ(qnl_string_to_audio_control("qnl_Control_DEVICE"), QNL_CONTROL_DEVICE);

    log_capture log;
    EXPECT_STREQ(qnl_audio_control_to_string(0), "");
    EXPECT_STREQ(qnl_audio_control_to_string(15), "");
    EXPECT_EQ(qnl_string_to_audio_control("qnl_control_Devices"), 15);
    EXPECT_EQ(qnl_string_to_audio_control(nullptr), 15);
    EXPECT_THAT(log.take(),
                ElementsAre(log_entry{QNL_LOG_WARNING, "State 0 is not valid, must be between 1 and 14."},
                            log_entry{QNL_LOG_WARNING, "State 15 is not valid, must be between 1 and 14."},
                            log_entry{QNL_LOG_WARNING, "qnl_control_Devices is not a valid control."},
                            log_entry{QNL_LOG_WARNING, " is not a valid control."}));
}

TEST(ControlText, ReadsValuesByNameAndNumber) {
    log_capture log;
    const std::vector<std::pair<const char*, int>> readable = {{"QNL_DEVICE_HEADPHONE", 1},
                                                               {"qnl_device_speaker", 2},
                                                               {"QNL_ENABLE", 1},
                                                               {"true", 1},
                                                               {"Qnl_Disable", 0},
                                                               {"FALSE", 0},
                                                               {"7", 7},
                                                               {"12abc", 12},
                                                               {" -3", -3},
                                                               {"-9990", -9990}};
    for (const auto& [text, value] : readable)
        EXPECT_EQ(qnl_string_to_participant_value(text), value) << text;
    EXPECT_THAT(log.take(), IsEmpty());

    for (const char* const text : {"truely", "", "99999999999", static_cast<const char*>(nullptr)})
        EXPECT_EQ(qnl_string_to_participant_value(text), -9990);
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].message,
              "State value truely is invalid. You must enter an integer value, the string "
              "QNL_DEVICE_HEADPHONE, the "
              "string QNL_DEVICE_SPEAKER, the string QNL_ENABLE, or the string QNL_DISABLE ");
}

} // namespace
