/// A named virtual room: its seats, and what participants get when they enter.
#pragma once

#include "conference/default_states.h"
#include "quenlis.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

class quenlis_participant;

/// Read once from its JSON object and never changed afterwards, so rooms read it without a lock of its own.
class quenlis_room_layout {
public:
    /// Never raises: an object that cannot be read to the end is logged at QNL_LOG_ERROR and leaves the
    /// layout in the state it had reached.
    quenlis_room_layout(std::string name, nlohmann::json config);
    virtual ~quenlis_room_layout() = default;
    quenlis_room_layout(const quenlis_room_layout&) = delete;
    quenlis_room_layout& operator=(const quenlis_room_layout&) = delete;

    int32_t id() const { return id_; }
    const std::string& name() const { return name_; }
    const std::string& description() const { return description_; }
    bool allow_stacking() const { return allow_stacking_; }
    bool open_room() const { return open_room_; }
    /// The layout's own seats, whose ids count from 0.
    const std::vector<qnl_seat>& seats() const { return seats_; }
    const default_state_map& default_states() const { return default_states_; }

    /// The seat of that number, counted from 1. Numbers above the seat count wrap, one layer higher each
    /// time; a number below 1 means no seat and gives the origin. Raises as require_seats for 1 and above.
    qnl_seat get_seat(int seat_id) const;
    /// Raises QNL_ERROR_INVALID_VALUE at QNL_LOG_WARNING when the layout has no seats.
    void require_seats() const;
    /// The heading from a place to the centre point.
    qnl_heading get_seat_heading(qnl_position position) const;

    /// Sets every default control value, in table order. Returned refusals are dropped; a raised one passes
    /// on, with the values not yet reached unset.
    void apply_default_states(quenlis_participant* participant) const;

private:
    void init_room_config();
    void report_missing_properties() const;
    void read_default_states();
    void read_stacking();
    void read_seats();

    int32_t id_ = 0;
    std::string name_;
    std::string description_;
    bool allow_stacking_ = false;
    int32_t stack_delta_ = 0;
    bool open_room_ = false;
    qnl_position centre_point_{0, 0, 0};
    std::vector<qnl_seat> seats_;
    default_state_map default_states_;
    nlohmann::json config_;
};
