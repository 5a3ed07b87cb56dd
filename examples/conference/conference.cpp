#include "conference.h"

#include "failure.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <numeric>

namespace {

constexpr int room_id = 1;

using seconds = std::chrono::duration<double>;
using stopwatch = std::chrono::steady_clock;

double seconds_of_longest_recording(const std::vector<member>& members) {
    double longest = 0;
    for (const member& person : members)
        if (person.talk)
            longest = std::max(longest, static_cast<double>(person.talk->frames()) / person.talk->rate());
    return longest;
}

/// Whether the engine could not use the layout file. It says so in its log alone, but its list then holds the
/// layout that it keeps for this case.
bool fell_back(qnl_handle engine) {
    return std::strstr(qnl_get_json_all_room_layouts(engine), "\"fallback_layout\"") != nullptr;
}

bool is_number(const std::string& text) {
    return text.find_first_not_of("0123456789") == std::string::npos;
}

/// A block has to hold a whole number of frames at the recording's rate too.
[[noreturn]] void refuse_rate(const recording& talk, const qnl_library_configuration& format) {
    const int step =
        format.output_sampling_rate / std::gcd(format.output_sampling_rate, format.output_number_frames);
    throw usage_error(talk.path() + ": a rate of " + std::to_string(talk.rate()) +
                      " Hz is not supported, only multiples of " + std::to_string(step) +
                      " Hz up to 48000 Hz with these blocks");
}

void forbid_overwriting(const std::string& mix, const std::vector<std::string>& recordings) {
    std::error_code unreadable;
    for (const std::string& path : recordings)
        if (std::filesystem::equivalent(mix, path, unreadable))
            throw usage_error(mix + ": the mix would overwrite a recording; choose another --output-dir");
}

} // namespace

conference::conference(const options& chosen) : format_(chosen.format), samples_(chosen.samples) {
    invite(chosen);
    start_engine(chosen);
    for (member& person : members_)
        join(person);
    if (chosen.layout_id)
        require_success(qnl_set_room_layout(engine_.get(), room_id, *chosen.layout_id),
                        "switch to layout " + std::to_string(*chosen.layout_id));
    for (const control_change& change : chosen.changes)
        apply(change);
    note_seats();
    open_mixes(chosen);
}

void conference::invite(const options& chosen) {
    for (const std::string& path : chosen.recordings)
        add_member(std::filesystem::path(path).stem()).talk.emplace(path);
    for (int i = 1; i <= chosen.listeners; ++i)
        add_member("listener" + std::to_string(i));
}

member& conference::add_member(const std::string& name) {
    member& person = members_.emplace_back();
    person.id = static_cast<int>(members_.size());
    person.name = name;
    return person;
}

void conference::start_engine(const options& chosen) {
    if (chosen.log_level) {
        qnl_enable_logging(true);
        qnl_set_log_level(*chosen.log_level);
    }
    const char* layouts = chosen.layout_file.empty() ? nullptr : chosen.layout_file.c_str();
    int code = QNL_ERROR_NONE;
    engine_.reset(qnl_initialize_library(layouts, nullptr, format_, &code));
    require_success(code, "start the engine at " + std::to_string(format_.output_sampling_rate) +
                              " Hz with blocks of " + std::to_string(format_.output_number_frames) +
                              " frames and " + std::to_string(format_.output_number_channels) + " channels");
    if (layouts != nullptr && fell_back(engine_.get()))
        throw failure(chosen.layout_file +
                      ": not a usable layout file (--log warning shows the engine's reason)");
    require_success(qnl_create_room(engine_.get(), room_id), "create the room");
}

void conference::join(member& person) {
    const int channels = person.talk ? person.talk->channels() : 1;
    const int rate = person.talk ? person.talk->rate() : format_.output_sampling_rate;
    const auto type = person.talk ? QNL_PARTICIPANT_REGULAR : QNL_PARTICIPANT_LISTENER_ONLY;
    const qnl_error_code code =
        qnl_add_participant(engine_.get(), room_id, person.id, person.name.c_str(), {rate, channels, type});
    if (person.talk && code == QNL_ERROR_SAMPLE_RATE)
        refuse_rate(*person.talk, format_);
    require_success(code, "add " + person.name);

    const long frames = static_cast<long>(rate) * format_.output_number_frames / format_.output_sampling_rate;
    person.spoken.resize(static_cast<std::size_t>(frames * channels));
    person.heard.resize(static_cast<std::size_t>(format_.output_number_frames) *
                        static_cast<std::size_t>(format_.output_number_channels));
    person.port = make_audio_port(samples_, {engine_.get(), room_id, person.id, channels,
                                             format_.output_number_channels, format_.interleaved});
}

void conference::open_mixes(const options& chosen) {
    const std::filesystem::path directory = chosen.output_directory;
    std::error_code problem;
    std::filesystem::create_directories(directory, problem);
    if (problem)
        throw failure(directory.string() + ": " + problem.message());
    for (member& person : members_) {
        const std::string path = directory / (std::to_string(person.id) + "-" + person.name + ".wav");
        forbid_overwriting(path, chosen.recordings);
        person.mix = std::make_unique<mix_file>(path, format_.output_sampling_rate,
                                                format_.output_number_channels, samples_);
    }
}

void conference::apply(const control_change& change) {
    const std::string text = std::string("set ") + qnl_audio_control_to_string(change.control) + " of ";
    const std::string value = " to " + std::to_string(change.value);
    if (change.participant.empty()) {
        require_success(qnl_set_all_participants_state(engine_.get(), room_id, change.control, change.value),
                        text + "everybody" + value);
        return;
    }
    const member& person = find(change.participant);
    require_success(
        qnl_set_participant_state(engine_.get(), room_id, person.id, change.control, change.value),
        text + person.name + value);
}

const member& conference::find(const std::string& participant) const {
    const auto is_meant = [&participant](const member& person) {
        return participant == (is_number(participant) ? std::to_string(person.id) : person.name);
    };
    const auto found = std::find_if(members_.begin(), members_.end(), is_meant);
    if (found == members_.end())
        throw usage_error("there is no participant '" + participant + "'");
    if (std::find_if(found + 1, members_.end(), is_meant) != members_.end())
        throw usage_error("several participants are called '" + participant + "': use the number");
    return *found;
}

void conference::note_seats() {
    for (member& person : members_) {
        qnl_seat seat{};
        require_success(qnl_get_participant_seat(engine_.get(), room_id, person.id, &seat),
                        "read the seat of " + person.name);
        person.seat = seat.id;
    }
}

run_times conference::run(const std::function<void(double)>& progress) {
    const auto start = stopwatch::now();
    const double total = seconds_of_longest_recording(members_);
    const double period = static_cast<double>(format_.output_number_frames) / format_.output_sampling_rate;
    run_times times{};
    while (read_talk()) {
        const auto entry = stopwatch::now();
        exchange_blocks();
        times.calls += seconds(stopwatch::now() - entry).count();
        write_mixes();
        times.audio += period;
        progress(std::min(times.audio / total, 1.0));
    }
    for (member& person : members_)
        person.mix->close();
    times.wall = seconds(stopwatch::now() - start).count();
    return times;
}

bool conference::read_talk() {
    bool anybody = false;
    for (member& person : members_) {
        const long frames = person.talk ? person.talk->read(person.spoken) : 0;
        person.talking = frames > 0;
        anybody = anybody || person.talking;
        if (person.talking)
            person.level_in.add(person.spoken, static_cast<std::size_t>(frames * person.talk->channels()));
    }
    return anybody;
}

void conference::exchange_blocks() {
    for (member& person : members_)
        if (person.talking)
            require_success(person.port->push(person.spoken), "push the talk of " + person.name);
    for (member& person : members_) {
        const qnl_error_code code = person.port->pull(person.heard);
        if (code == QNL_ERROR_NO_INPUT_AUDIO)
            ++person.blocks_without_audio;
        else
            require_success(code, "pull the mix of " + person.name);
    }
}

void conference::write_mixes() {
    for (member& person : members_) {
        person.level_out.add(person.heard, person.heard.size());
        person.mix->write(person.heard);
    }
}
