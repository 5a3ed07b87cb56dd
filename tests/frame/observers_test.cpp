// What observers hear, in which order, and what they may do.
#include "frame/exception.h"
#include "kit/host.h"

#include <sstream>

namespace {

using test_kit::engine;
using namespace testing;

/// Writes down everything it hears.
class scribe : public qnl_event_manager {
public:
    explicit scribe(std::vector<std::string>& heard, std::string name = {})
        : heard_(heard), name_(std::move(name)) {}

    void create_room_event(int room) override { note("create_room", room); }
    void destroy_room_event(int room) override { note("destroy_room", room); }
    void add_participant_event(int room, int id, const char* name, qnl_participant_configuration c) override {
        note("add", room, id, name, c.input_sampling_rate, c.input_number_channels, c.type);
    }
    void remove_participant_event(int room, int id) override { note("remove", room, id); }
    void set_participant_seat_event(int room, int id, qnl_seat seat) override {
        note("seat", room, id, seat.id, seat.position.x);
    }
    void set_participant_position_event(int room, int id, qnl_position p, qnl_heading h) override {
        note("position", room, id, p.x, p.y, p.z, h.azimuth_heading, h.elevation_heading);
    }
    void set_participant_state_event(int room, int id, qnl_audio_control control, int value) override {
        note("state", room, id, control, value);
    }
    void set_all_participants_state_event(int room, qnl_audio_control control, int value) override {
        note("all", room, control, value);
    }
    void set_room_layout_event(int room, int layout) override { note("layout", room, layout); }
    void set_name_event(int room, int id, const char* name) override { note("name", room, id, name); }

private:
    template <class... Values>
    void note(Values... values) {
        std::ostringstream text;
        text << name_;
        ((text << values << ' '), ...);
        heard_.push_back(text.str());
    }

    std::vector<std::string>& heard_;
    std::string name_;
};

TEST(Observers, HearEveryChangeAndTheLogWritesItDown) {
    std::vector<std::string> heard;
    scribe observer(heard);
    engine engine;
    qnl_handle const handle = engine.handle();
    qnl_add_event_manager(handle, &observer);
    test_kit::log_capture log(QNL_LOG_INFO);

    qnl_create_room(handle, 4);
    qnl_add_participant(handle, 4, 5, nullptr, {48000, 2, QNL_PARTICIPANT_SOURCE_ONLY});
    qnl_set_participant_position(handle, 4, 5, {1, 2, 3}, {4, 5});
    qnl_set_participant_seat(handle, 4, 5, 1);
    qnl_set_participant_state(handle, 4, 5, QNL_CONTROL_MUTE_ENABLE, 1);
    qnl_set_participant_state(handle, 4, 5, QNL_CONTROL_MIXING_3D_ENABLE, 1); // stored and refused
    qnl_set_all_participants_state(handle, 4, QNL_CONTROL_DEVICE, 2);
    qnl_set_room_layout(handle, 4, 1);
    qnl_set_participant_name(handle, 4, 5, "Ada");
    qnl_remove_participant(handle, 4, 5);
    qnl_destroy_room(handle, 4);

    EXPECT_THAT(heard, ElementsAre("create_room 4 ", "add 4 5  48000 2 2 ", "position 4 5 1 2 3 4 5 ",
                                   "seat 4 5 -1 1 ", "state 4 5 2 1 ", "state 4 5 6 1 ", "all 4 10 2 ",
                                   "layout 4 1 ", "name 4 5 Ada ", "remove 4 5 ", "destroy_room 4 "));
    EXPECT_THAT(
        log.take(),
        ElementsAre("INFO: A new room with id 4 was created",
                    "INFO: A new participant with id 5 has been added to room 4",
                    "INFO: Participant 5 in room 4 has changed position to {1, 2, 3} and heading {4, 5}",
                    "INFO: Participant 5 in room 4 has moved to seat 1",
                    "INFO: Participant 5 in room 4 set QNL_CONTROL_MUTE_ENABLE to 1",
                    "WARNING: 3D Mixing is not available in the client side version of the Quenlis libraries",
                    "INFO: Participant 5 in room 4 set QNL_CONTROL_MIXING_3D_ENABLE to 1",
                    "INFO: Set all participant's QNL_CONTROL_DEVICE in room 4 to 2",
                    "INFO: Room 4 has changed to layout 1", "INFO: Set participant 5 in room 4 name to Ada",
                    "INFO: Participant 5 has been removed from room 4", "INFO: Room 4 was destroyed"));
}

TEST(Observers, AreCalledInTheOrderOfRegistrationAndNotForARaisedRefusal) {
    std::vector<std::string> heard;
    scribe first(heard, "first ");
    scribe second(heard, "second ");
    engine engine({1});
    qnl_handle const handle = engine.handle();
    for (qnl_event_manager* const observer : {&first, &second, &second})
        EXPECT_EQ(qnl_add_event_manager(handle, observer), QNL_ERROR_NONE);
    for (const qnl_error_code refused :
         {qnl_create_room(handle, 1), engine.add(1), engine.set(1, QNL_CONTROL_MIXING_3D_ENABLE, 2),
          qnl_set_participant_seat(handle, 1, 1, -3), qnl_set_room_layout(handle, 1, 77),
          qnl_set_participant_name(handle, 1, 1, nullptr), qnl_remove_participant(handle, 1, 9),
          qnl_destroy_room(handle, 9)})
        EXPECT_NE(refused, QNL_ERROR_NONE);
    EXPECT_THAT(heard, IsEmpty());
    qnl_create_room(handle, 2);
    EXPECT_THAT(heard, ElementsAre("first create_room 2 ", "second create_room 2 ", "second create_room 2 "));
}

/// Looks back into the library, and raises when somebody leaves.
class meddler : public scribe {
public:
    meddler(qnl_handle handle, std::vector<std::string>& heard) : scribe(heard), handle_(handle) {}

    void create_room_event(int room) override {
        int count = -1;
        EXPECT_EQ(qnl_get_participant_count(handle_, room, &count), QNL_ERROR_NONE) << "in an exclusive call";
        EXPECT_EQ(count, 0);
        EXPECT_EQ(qnl_create_room(handle_, 9), QNL_ERROR_INVALID_CONTROL) << "instead of waiting for itself";
        EXPECT_EQ(qnl_add_event_manager(handle_, this), QNL_ERROR_INVALID_CONTROL);
        scribe::create_room_event(room);
    }
    void set_name_event(int room, int id, const char* name) override {
        qnl_seat seat{};
        EXPECT_EQ(qnl_get_participant_seat(handle_, room, id, &seat), QNL_ERROR_NONE);
        EXPECT_EQ(seat.id, -1);
        scribe::set_name_event(room, id, name);
    }
    void remove_participant_event(int /*room*/, int /*id*/) override {
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_HEADING, "an observer's own failure");
    }

private:
    qnl_handle handle_;
};

TEST(Observers, MayAskAndMustNotRebuild) {
    std::vector<std::string> heard;
    engine engine({1});
    meddler observer(engine.handle(), heard);
    qnl_add_event_manager(engine.handle(), &observer);
    EXPECT_EQ(qnl_create_room(engine.handle(), 2), QNL_ERROR_NONE);
    EXPECT_EQ(qnl_set_participant_name(engine.handle(), 1, 1, "x"), QNL_ERROR_NONE);
    EXPECT_THAT(heard, ElementsAre("create_room 2 ", "name 1 1 x "));
    EXPECT_EQ(qnl_remove_participant(engine.handle(), 1, 1), QNL_ERROR_INVALID_HEADING);
    EXPECT_EQ(engine.participant_count(), 0) << "the change stands";
}

} // namespace
