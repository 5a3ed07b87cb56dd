#include "conference/room.h"

#include "conference/control_text.h"
#include "frame/exception.h"

#include <algorithm>

namespace {

float group_gain(participant_groups talker, participant_groups listener) {
    if (talker.whisper_room != 0)
        return listener.whisper_room == talker.whisper_room ? 1.0F : 0.0F;
    if (talker.sidebar_room != 0)
        return listener.sidebar_room == talker.sidebar_room ? 1.0F : 0.0F;
    if (listener.sidebar_room != 0)
        return 0.0F;
    // A whisper room goes on hearing the main room at a quarter of its level, a sidebar does not: this is
    // wanted.
    return listener.whisper_room != 0 ? 0.25F : 1.0F;
}

} // namespace

float valid_to_add_source(const quenlis_participant& talker, const quenlis_participant& listener) {
    if (listener.configuration().type == QNL_PARTICIPANT_SOURCE_ONLY)
        return 0.0F;
    return group_gain(talker.flags().get_groups(), listener.flags().get_groups());
}

quenlis_room::quenlis_room(const quenlis_common_object* common, int32_t id, const quenlis_room_layout* layout)
    : id_(id), common_(common), layout_(layout) {}

qnl_error_code quenlis_room::add_participant(qnl_participant_configuration config, int32_t id,
                                             const char* name) {
    const nestable_shared_mutex::exclusive_guard participants_lock(participants_mutex_);
    if (participant_exists(id))
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_PARTICIPANT_ID,
                                "The participant id %i already exists in room %i", id, id_);
    auto participant = std::make_unique<quenlis_participant>(common_, id, name, config);
    const nestable_shared_mutex::shared_guard layout_lock(layout_mutex_);
    if (!layout_->open_room())
        layout_->require_seats();
    participants_.push_back(std::move(participant));

    quenlis_participant* const newcomer = participants_.back().get();
    if (!layout_->open_room())
        take_first_seat(newcomer);
    wire(newcomer);
    return QNL_ERROR_NONE;
}

void quenlis_room::take_first_seat(quenlis_participant* newcomer) {
    newcomer->flags().set_seat(get_next_available_seat_no_lock());
    layout_->apply_default_states(newcomer);
}

void quenlis_room::wire(quenlis_participant* newcomer) {
    for (const auto& other : participants_) {
        if (other->id() == newcomer->id())
            continue;
        other->add_source(newcomer->id(), newcomer->configuration().input_number_channels);
        newcomer->add_source(other->id(), other->configuration().input_number_channels);
        update_spherical_position(newcomer, other.get());
        update_spherical_position(other.get(), newcomer);
    }
}

qnl_error_code quenlis_room::remove_participant(int32_t id) {
    const nestable_shared_mutex::exclusive_guard lock(participants_mutex_);
    const quenlis_participant* const leaver = get_participant(id);
    participants_.erase(std::find_if(participants_.begin(), participants_.end(),
                                     [leaver](const auto& p) { return p.get() == leaver; }));
    for (const auto& remaining : participants_)
        remaining->remove_source(id);
    return QNL_ERROR_NONE;
}

int32_t quenlis_room::get_participant_count() {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return static_cast<int32_t>(participants_.size());
}

qnl_participant_configuration quenlis_room::get_participant_configuration(int32_t id) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return get_participant(id)->configuration();
}

bool quenlis_room::participant_exists(int32_t id) const {
    return std::any_of(participants_.begin(), participants_.end(),
                       [id](const auto& p) { return p->id() == id; });
}

quenlis_participant* quenlis_room::get_participant(int32_t id) const {
    const auto found = std::find_if(participants_.begin(), participants_.end(),
                                    [id](const auto& p) { return p->id() == id; });
    if (found == participants_.end())
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_INVALID_PARTICIPANT_ID,
                                "The participant id %i is not in room %i", id, id_);
    return found->get();
}

qnl_error_code quenlis_room::input(const void* audio, int32_t frames, int32_t participant_id,
                                   quenlis_data_type type) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    quenlis_participant* const talker = get_participant(participant_id);
    if (frames != talker->input_frames())
        throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_DATA_LENGTH,
                                "the number of input frames %i does not match required number of frames %i",
                                frames, talker->input_frames());
    if (talker->configuration().type == QNL_PARTICIPANT_LISTENER_ONLY)
        throw quenlis_exception(QNL_LOG_WARNING, QNL_ERROR_PARTICIPANT_TYPE,
                                "Cannot input audio to participant %i in room %i because it is LISTENER ONLY",
                                participant_id, id_);
    if (talker->flags().get_state(QNL_CONTROL_MUTE_ENABLE) != 0)
        return QNL_ERROR_NONE;

    const std::lock_guard<std::mutex> input_lock(talker->input_mutex());
    talker->process_input(audio, type);
    for (const auto& listener : participants_) {
        if (listener.get() == talker)
            continue;
        const float gain = valid_to_add_source(*talker, *listener);
        if (gain > 0.0F)
            listener->engine()->input_audio(participant_id, talker->input_block(), gain);
    }
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_room::output(void* audio, int32_t participant_id, quenlis_data_type type) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return get_participant(participant_id)->process_output(audio, type);
}

qnl_error_code quenlis_room::flush(int32_t participant_id) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    const quenlis_participant* const flushed = get_participant(participant_id);
    for (const auto& listener : participants_) {
        if (listener.get() != flushed && listener->engine() != nullptr)
            listener->engine()->flush_source(participant_id);
    }
    if (flushed->engine() != nullptr)
        flushed->engine()->flush_all_sources();
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_room::set_participant_state(int32_t id, qnl_audio_control control, int value) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return get_participant(id)->set_state(control, value);
}

qnl_error_code quenlis_room::set_all_participants_state(qnl_audio_control control, int value) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    for (const auto& participant : participants_)
        participant->set_state(control, value);
    return QNL_ERROR_NONE;
}

int quenlis_room::get_participant_state(qnl_audio_control control, int32_t id) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return get_participant(id)->flags().get_state(control);
}

qnl_error_code quenlis_room::set_name(int32_t id, const char* name) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return get_participant(id)->flags().set_name(name);
}

std::string quenlis_room::get_name(int32_t id) {
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    return get_participant(id)->flags().copy_name();
}

nlohmann::json quenlis_room::get_json() {
    const nestable_shared_mutex::shared_guard participants_lock(participants_mutex_);
    nlohmann::json participants = nlohmann::json::array();
    for (const auto& participant : participants_)
        participants.push_back(participant->to_json());

    const nestable_shared_mutex::shared_guard layout_lock(layout_mutex_);
    nlohmann::json room;
    room["id"] = id_;
    room["roomConfigId"] = layout_->id();
    room["allowParticipantStacking"] = layout_->allow_stacking() ? "true" : "false";
    room["openRoom"] = layout_->open_room() ? "true" : "false";
    room["participants"] = std::move(participants);
    return room;
}

std::string quenlis_room::get_all_participants_state(qnl_audio_control control) {
    nlohmann::json state;
    state["room_id"] = id_;
    state["control_to_edit"] = audio_control_to_string(control);
    const nestable_shared_mutex::shared_guard lock(participants_mutex_);
    for (const auto& participant : participants_) {
        const quenlis_flags& flags = participant->flags();
        state["participants"].push_back(
            {{"id", participant->id()}, {"name", flags.copy_name()}, {"value", flags.get_state(control)}});
    }
    return state.dump();
}
