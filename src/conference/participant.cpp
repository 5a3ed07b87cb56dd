#include "conference/participant.h"

#include "conference/control_text.h"
#include "dsp/sample_conversion.h"
#include "frame/exception.h"
#include "frame/integers.h"

#include <type_traits>

namespace {

constexpr int32_t engine_rate = 48000;
constexpr float limiter_threshold_db = -0.2F;
constexpr float limiter_attack_ms = 0.2F;
constexpr float mono_fold = 0.70710677F; // brings a mono talker, at -3 dB on both sides, back to unity

int32_t input_frames_of(int32_t input_rate, const qnl_library_configuration& library) {
    const int32_t product = wrapping_multiply(input_rate, library.output_number_frames);
    return saturating_truncate(static_cast<float>(product) /
                               static_cast<float>(library.output_sampling_rate));
}

/// Calls `use` with a value of the C type behind a sample type.
template <class Use>
void with_sample_type(quenlis_data_type type, Use use) {
    switch (type) {
    case QNL_DATA_SHORT:
        return use(short{});
    case QNL_DATA_FLOAT:
        return use(float{});
    case QNL_DATA_DOUBLE:
        return use(double{});
    }
    throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_INVALID_VALUE, "%i is no sample type",
                            static_cast<int>(type));
}

template <class From, class To>
void convert_samples(const From* from, To* to, int32_t samples) {
    if constexpr (std::is_same_v<From, To>)
        qnl_copy(from, to, samples);
    else
        qnl_convert(from, to, samples);
}

} // namespace

/// The controls that decide a talker's road.
struct quenlis_participant::enhancements {
    bool noise_cancellation = false;
    bool gain_control = false;
    bool equaliser = false;
    bool mixing_3d = false;

    bool any() const { return noise_cancellation || gain_control || equaliser || mixing_3d; }
};

quenlis_participant::quenlis_participant(const quenlis_common_object* common, int32_t id, const char* name,
                                         qnl_participant_configuration configuration)
    : id_(id),
      configuration_(configuration),
      library_(common->configuration),
      input_frames_(input_frames_of(configuration.input_sampling_rate, library_)),
      engine_frames_(engine_frames_of(library_)) {
    flags_.set_name(name);
    validate();
    if (configuration_.type != QNL_PARTICIPANT_SOURCE_ONLY)
        build_listener_side(common);
    if (configuration_.type != QNL_PARTICIPANT_LISTENER_ONLY)
        build_talker_side();
}

void quenlis_participant::validate() const {
    const int32_t channels = configuration_.input_number_channels;
    if (channels != 1 && channels != 2)
        throw quenlis_exception(
            QNL_LOG_ERROR, QNL_ERROR_NUM_CHANNELS,
            "You provided %i but Quenlis currently only supports 1 or 2 channel input for new participants",
            channels);
    if (configuration_.type < QNL_PARTICIPANT_REGULAR || configuration_.type > QNL_PARTICIPANT_LISTENER_ONLY)
        throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_PARTICIPANT_TYPE,
                                "Must pick Regular, source only, or listener only for a new participant");
    const int32_t input_rate = configuration_.input_sampling_rate;
    const int32_t output_rate = library_.output_sampling_rate;
    if (input_rate < 1 ||
        check_valid_sampling_rate(input_rate, output_rate, library_.output_number_frames) == 0)
        throw quenlis_exception(
            QNL_LOG_ERROR, QNL_ERROR_SAMPLE_RATE,
            "You provided %i but you must make input sampling rate an integer ratio of the "
            "output sampling rate %i",
            input_rate, output_rate);
    if (input_rate > engine_rate)
        throw quenlis_exception(
            QNL_LOG_ERROR, QNL_ERROR_SAMPLE_RATE,
            "You provided %i but the Quenlis library does not support sampling rates above %i", input_rate,
            engine_rate);
}

void quenlis_participant::build_listener_side(const quenlis_common_object* common) {
    listener_engine_ = std::make_unique<listener_engine>(&flags_, common, engine_frames_);
    output_block_ = qnl_make_buffer_32f(2 * engine_frames_);
    crosstalk_canceller_ =
        std::make_unique<quenlis_xtc>(engine_frames_, &flags_, nullptr, nullptr, nullptr, nullptr);
    limiter_ = std::make_unique<quenlis_limiter>(limiter_threshold_db, limiter_attack_ms, engine_rate, 2,
                                                 engine_frames_);
    if (library_.output_sampling_rate != engine_rate)
        output_resampler_ = std::make_unique<quenlis_resampler>(engine_rate, library_.output_sampling_rate,
                                                                library_.output_number_channels,
                                                                library_.output_number_frames);
}

void quenlis_participant::build_talker_side() {
    const int32_t channels = configuration_.input_number_channels;
    analysis_scratch_ = qnl_make_buffer_32f(2 * engine_frames_);
    // Room for two channels whatever the talker has, see listener_engine::input_audio.
    input_block_ = qnl_make_buffer_32f(2 * engine_frames_);
    if (configuration_.input_sampling_rate != engine_rate)
        input_resampler_ = std::make_unique<quenlis_resampler>(configuration_.input_sampling_rate,
                                                               engine_rate, channels, engine_frames_);
    rnn_ = std::make_unique<quenlis_rnn>(engine_frames_, channels);
    anc_ = std::make_unique<quenlis_anc>(engine_rate, channels, engine_frames_);
    agc_ = std::make_unique<quenlis_agc>(channels, engine_frames_);
    deesser_ = std::make_unique<quenlis_deesser>(engine_rate, channels, engine_frames_);
    auto_eq_ = std::make_unique<quenlis_auto_EQ>(engine_rate, channels, engine_frames_);
}

int32_t quenlis_participant::add_source(int32_t source_id, int32_t channels) {
    return listener_engine_ ? listener_engine_->add_source(source_id, channels) : -1;
}

qnl_error_code quenlis_participant::remove_source(int32_t source_id) {
    if (!listener_engine_)
        return QNL_ERROR_HANDLE_NULL;
    if (!listener_engine_->sourceExists(source_id))
        return QNL_ERROR_INVALID_PARTICIPANT_ID;
    listener_engine_->remove_source(source_id);
    return QNL_ERROR_NONE;
}

qnl_error_code quenlis_participant::set_state(qnl_audio_control control, int value) {
    // The value is not looked at: turning the equaliser off is refused as well.
    if (control == QNL_CONTROL_AUTO_EQ_ENABLE && input_resampler_)
        throw quenlis_exception(
            QNL_LOG_WARNING, QNL_ERROR_INVALID_CONTROL,
            "The Auto EQ effect is only available for 48 kHz inputs currently. It will not "
            "be enabled for participant %i",
            id_);
    return flags_.set_state(control, value);
}

void quenlis_participant::process_input(const void* audio, quenlis_data_type type) {
    if (audio == nullptr)
        throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_DATA_NULL, "input buffer not initialized");
    read_input(audio, type);
    const enhancements on = enabled_enhancements();
    if (configuration_.input_number_channels == 2 && on.any())
        convert_stereo_to_mono(input_block_.get(), 0.5F, input_frames_);
    if (input_resampler_)
        input_resampler_->process(input_block_.get(), input_block_.get());
    enhance(on);
}

void quenlis_participant::enhance(const enhancements& on) {
    float* const block = input_block_.get();
    const float voice_probability = analyse_speech(on);
    if (on.equaliser)
        auto_eq_->process(block, block, voice_probability, rnn_->get_pitch());
    if (on.gain_control)
        agc_->process(block, voice_probability);
    if (on.equaliser || on.gain_control)
        deesser_->process(block, block);
}

/// Cleans the block where that is wanted; otherwise only listens to it. @return the voice probability
float quenlis_participant::analyse_speech(const enhancements& on) {
    float* const block = input_block_.get();
    if (on.noise_cancellation) {
        anc_->process(block, block);
        return rnn_->process(block, block);
    }
    if (on.equaliser || on.gain_control)
        return rnn_->process(block, analysis_scratch_.get());
    return 1.0F;
}

void quenlis_participant::read_input(const void* audio, quenlis_data_type type) {
    float* const block = input_block_.get();
    const int32_t channels = configuration_.input_number_channels;
    with_sample_type(type, [&](auto sample) {
        const auto* const samples = static_cast<const decltype(sample)*>(audio);
        if (channels == 2 && library_.interleaved)
            qnl_deinterleave(samples, block, input_frames_);
        else
            convert_samples(samples, block, input_frames_ * channels);
    });
}

quenlis_participant::enhancements quenlis_participant::enabled_enhancements() const {
    enhancements on;
    if (flags_.get_state(QNL_CONTROL_STEREO_BYPASS_ENABLE) != 0)
        return on;
    on.noise_cancellation = flags_.get_state(QNL_CONTROL_ANC_ENABLE) != 0;
    on.gain_control = flags_.get_state(QNL_CONTROL_AGC_ENABLE) != 0;
    on.equaliser = flags_.get_state(QNL_CONTROL_AUTO_EQ_ENABLE) != 0;
    on.mixing_3d = flags_.get_state(QNL_CONTROL_MIXING_3D_ENABLE) != 0;
    return on;
}

qnl_error_code quenlis_participant::process_output(void* audio, quenlis_data_type type) {
    if (configuration_.type == QNL_PARTICIPANT_SOURCE_ONLY)
        throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_PARTICIPANT_TYPE,
                                "Participant %i has no output because it is source only", id_);
    if (!listener_engine_)
        throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_HANDLE_NULL, "your listener engine is null");
    if (audio == nullptr)
        throw quenlis_exception(QNL_LOG_ERROR, QNL_ERROR_DATA_NULL, "your output buffer is not initialized");

    const std::lock_guard<std::mutex> lock(output_mutex_);
    const bool bypass = flags_.get_state(QNL_CONTROL_STEREO_BYPASS_ENABLE) != 0;
    if (listener_engine_->output_audio(output_block_.get()) == 0) {
        write_silence(audio, type);
        qnl_logger::get_logger().log(QNL_LOG_DEBUG,
                                     "There was no input audio for this participant %i to process", id_);
        return QNL_ERROR_NO_INPUT_AUDIO;
    }
    if (!bypass)
        render_output();
    if (library_.output_number_channels == 1)
        convert_stereo_to_mono(output_block_.get(), mono_fold, engine_frames_);
    if (output_resampler_)
        output_resampler_->process(output_block_.get(), output_block_.get());
    write_output(audio, type);
    return QNL_ERROR_NONE;
}

void quenlis_participant::render_output() {
    if (flags_.get_state(QNL_CONTROL_DEVICE) == QNL_DEVICE_SPEAKER)
        crosstalk_canceller_->process(output_block_.get(), output_block_.get());
    limiter_->process(output_block_.get(), output_block_.get());
    const float gain = static_cast<float>(flags_.get_state(QNL_CONTROL_MASTER_GAIN)) / 100.0F;
    // Over 2F samples, not 2N: below 48000 Hz the gain stops short of the planar block's end. This is wanted.
    if (gain != 1.0F)
        qnl_multiplyC_I(output_block_.get(), gain, 2 * library_.output_number_frames);
}

void quenlis_participant::write_output(void* audio, quenlis_data_type type) const {
    const float* const block = output_block_.get();
    const int32_t frames = library_.output_number_frames;
    const int32_t channels = library_.output_number_channels;
    with_sample_type(type, [&](auto sample) {
        auto* const samples = static_cast<decltype(sample)*>(audio);
        if (channels == 2 && library_.interleaved)
            qnl_interleave(block, samples, frames);
        else
            convert_samples(block, samples, frames * channels);
    });
}

void quenlis_participant::write_silence(void* audio, quenlis_data_type type) const {
    const int32_t samples = library_.output_number_frames * library_.output_number_channels;
    with_sample_type(type, [&](auto sample) { qnl_zero(static_cast<decltype(sample)*>(audio), samples); });
}

nlohmann::json quenlis_participant::to_json() const {
    nlohmann::json json;
    json["participantId"] = id_;
    json["participantName"] = flags_.copy_name();
    json["input_sampling_rate"] = configuration_.input_sampling_rate;
    json["input_number_channels"] = configuration_.input_number_channels;
    json["type"] = static_cast<int32_t>(configuration_.type);
    const qnl_seat seat = flags_.get_seat();
    json["seatId"] = seat.id;
    json["x"] = seat.position.x;
    json["y"] = seat.position.y;
    json["z"] = seat.position.z;
    json["azimuth_heading"] = seat.heading.azimuth_heading;
    json["elevation_heading"] = seat.heading.elevation_heading;
    for (int number = QNL_CONTROL_STEREO_BYPASS_ENABLE; number <= QNL_CONTROL_SIDEBAR_ROOM; ++number) {
        const auto control = static_cast<qnl_audio_control>(number);
        json[audio_control_to_string(number)] = flags_.get_state(control);
    }
    return json;
}
