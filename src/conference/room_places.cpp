// Seats, positions and layouts of a room.
#include "conference/geometry.h"
#include "conference/room.h"
#include "frame/exception.h"
#include "frame/integers.h"

#include <algorithm>

void cartesian_to_spherical(const quenlis_participant* source, const quenlis_participant* listener,
                            int* azimuth, int* elevation, int* distance) {
    const spherical_position heard =
        cartesian_to_spherical(source->flags().get_seat(), listener->flags().get_seat());
    *azimuth = heard.azimuth;
    *elevation = heard.elevation;
    *distance = heard.distance;
}

bool quenlis_room::seat_available(int32_t seat_id) const {
    return seat_id < 0 || std::none_of(participants_.begin(), participants_.end(), [seat_id](const auto& p) {
               return p->flags().get_seat().id == seat_id;
           });
}

qnl_seat quenlis_room::get_next_available_seat_no_lock() const {
    int32_t number = 1;
    while (!seat_available(number))
        ++number;
    return layout_->get_seat(number);
}

qnl_error_code quenlis_room::set_participant_seat(int32_t id, int32_t seat_id) {
    const nestable_shared_mutex::exclusive_guard participants_lock(participants_mutex_);
    const nestable_shared_mutex::shared_guard layout_lock(layout_mutex_);
    const uint64_t count = layout_->seats().size();
    const auto wanted = static_cast<uint64_t>(static_cast<int64_t>(seat_id));
    // Refuses every negative number, which is huge as unsigned, and lets 0 through: this is wanted.
    if (seat_id <= 0 && count < wanted)
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE,
                                "seat index %d does not exist in room layout %i.", seat_id, layout_->id());
    quenlis_participant* const mover = get_participant(id);
    layout_->require_seats();

    // Unsigned, so that an unseated participant, too, counts as sitting at some entry: this is wanted.
    const auto present = static_cast<uint64_t>(static_cast<int64_t>(mover->flags().get_seat().id));
    if ((present - 1) % count + 1 == wanted)
        return QNL_ERROR_NONE;

    int32_t number = seat_id;
    while (number >= 0 && !seat_available(number))
        number = wrapping_add(number, static_cast<int32_t>(count));
    mover->flags().set_seat(layout_->get_seat(number));
    update_all_positions(mover);
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_room::set_room_layout(const quenlis_room_layout* layout) {
    const nestable_shared_mutex::exclusive_guard participants_lock(participants_mutex_);
    const nestable_shared_mutex::exclusive_guard layout_lock(layout_mutex_);
    if (layout->id() == layout_->id())
        return QNL_ERROR_NONE;
    const auto needs_seat = [](const auto& p) { return p->flags().get_seat().id != 0; };
    if (std::any_of(participants_.begin(), participants_.end(), needs_seat))
        layout->require_seats();

    layout_ = layout;
    for (const auto& participant : participants_) {
        layout_->apply_default_states(participant.get());
        const int32_t number = participant->flags().get_seat().id;
        participant->flags().set_seat(number != -1 ? layout_->get_seat(number)
                                                   : get_next_available_seat_no_lock());
    }
    for (const auto& listener : participants_) {
        for (const auto& source : participants_)
            update_spherical_position(listener.get(), source.get());
    }
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_room::set_position(int32_t id, qnl_position position, qnl_heading heading) {
    const nestable_shared_mutex::exclusive_guard participants_lock(participants_mutex_);
    const nestable_shared_mutex::shared_guard layout_lock(layout_mutex_);
    if (!layout_->open_room())
        throw quenlis_exception(
            QNL_LOG_WARNING, QNL_ERROR_INVALID_CONTROL,
            "You can only use set_position for an open room. Change room %i to an open room "
            "layout to use set_position",
            id_);
    quenlis_participant* const mover = get_participant(id);
    mover->flags().set_seat({-1, position, heading});
    update_all_positions(mover);
    return QNL_ERROR_NONE;
}

void quenlis_room::update_all_positions(quenlis_participant* mover) {
    for (const auto& other : participants_) {
        update_spherical_position(mover, other.get());
        update_spherical_position(other.get(), mover);
    }
}

void quenlis_room::update_spherical_position(quenlis_participant* listener,
                                             const quenlis_participant* source) {
    if (listener->id() == source->id() || listener->configuration().type == QNL_PARTICIPANT_SOURCE_ONLY)
        return;
    int azimuth = 0;
    int elevation = 0;
    int distance = 0;
    cartesian_to_spherical(source, listener, &azimuth, &elevation, &distance);
    listener_engine* const engine = listener->engine();
    engine->updateAzimuth(source->id(), azimuth);
    engine->updateElevation(source->id(), elevation);
    engine->updateDistance(source->id(), distance);
}

qnl_seat quenlis_room::get_participant_seat(int32_t id) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return get_participant(id)->flags().get_seat();
}

qnl_position quenlis_room::get_participant_position(int32_t id) {
    return get_participant_seat(id).position;
}

qnl_heading quenlis_room::get_participant_heading(int32_t id) {
    return get_participant_seat(id).heading;
}

int32_t quenlis_room::get_room_layout() {
    const nestable_shared_mutex::shared_guard lock(layout_mutex_);
    return layout_->id();
}

qnl_error_code quenlis_room::get_participant_spherical(int32_t listener_id, int32_t source_id, int* azimuth,
                                                       int* elevation, int* distance) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    const quenlis_participant* const listener = get_participant(listener_id);
    get_participant(source_id);
    if (listener->configuration().type == QNL_PARTICIPANT_SOURCE_ONLY)
        throw quenlis_exception(
            QNL_LOG_WARNING, QNL_ERROR_INVALID_VALUE,
            "Participant %i in room %i is source only and therefore doesn't experience 3D", listener_id, id_);
    listener_engine* const engine = listener->engine();
    *azimuth = engine->getAzimuth(source_id);
    *elevation = engine->getElevation(source_id);
    *distance = engine->getDistance(source_id);
    return QNL_ERROR_NONE;
}
