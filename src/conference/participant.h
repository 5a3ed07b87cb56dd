/// Both ends of one person: the talker's road and the listener's road of audio.
#pragma once

#include "conference/flags.h"
#include "dsp/resampler.h"
#include "dsp/vector_primitives.h"
#include "frame/common_object.h"
#include "mix/listener_engine.h"
#include "quenlis.h"
#include "render/crosstalk.h"
#include "voice/agc.h"
#include "voice/auto_eq.h"
#include "voice/deesser.h"
#include "voice/limiter.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/rnn.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>

/// One participant of a room. Its type, rates and block sizes never change. Every buffer of the two roads is
/// allocated in the constructor; the roads may run in parallel, each by one thread at a time.
class quenlis_participant {
public:
    /// @param common  must outlive the object
    /// @param name    not null
    /// Raises QNL_ERROR_NUM_CHANNELS, QNL_ERROR_PARTICIPANT_TYPE or QNL_ERROR_SAMPLE_RATE at QNL_LOG_ERROR.
    quenlis_participant(const quenlis_common_object* common, int32_t id, const char* name,
                        qnl_participant_configuration configuration);

    int32_t id() const { return id_; }
    /// I, the frames per channel that each input call carries.
    int32_t input_frames() const { return input_frames_; }
    const qnl_participant_configuration& configuration() const { return configuration_; }
    quenlis_flags& flags() { return flags_; }
    const quenlis_flags& flags() const { return flags_; }
    /// Null for a source-only participant.
    listener_engine* engine() const { return listener_engine_.get(); }
    std::mutex& input_mutex() { return input_mutex_; }

    /// Does nothing without a listener's side. @return the id; -1 without a listener's side or memory
    int32_t add_source(int32_t source_id, int32_t channels);
    /// @return QNL_ERROR_HANDLE_NULL without a listener's side, QNL_ERROR_INVALID_PARTICIPANT_ID for
    ///         an unknown source
    qnl_error_code remove_source(int32_t source_id);

    /// Changes one control: the gate for every change from outside. Refuses the automatic equaliser, whatever
    /// the value, behind an input resampler with a raised QNL_ERROR_INVALID_CONTROL; all else as
    /// quenlis_flags.
    qnl_error_code set_state(qnl_audio_control control, int value);

    /// Takes one block of `input_frames` frames from the host through the talker's road.
    /// The caller holds input_mutex. Raises QNL_ERROR_DATA_NULL for null.
    void process_input(const void* audio, quenlis_data_type type);
    /// What process_input made: N frames of each input channel at 48 kHz, planar, in a block with room for
    /// two channels. The caller holds input_mutex; null for a listener-only participant.
    const float* input_block() const { return input_block_.get(); }

    /// Mixes one block of F frames for the host. @return QNL_ERROR_NONE, or
    /// QNL_ERROR_NO_INPUT_AUDIO with silence in `audio`
    /// Raises QNL_ERROR_PARTICIPANT_TYPE for a source-only participant and QNL_ERROR_DATA_NULL for null.
    qnl_error_code process_output(void* audio, quenlis_data_type type);

    /// Id, name, configuration, place and all controls.
    nlohmann::json to_json() const;

private:
    struct enhancements;

    void validate() const;
    void build_listener_side(const quenlis_common_object* common);
    void build_talker_side();

    void read_input(const void* audio, quenlis_data_type type);
    enhancements enabled_enhancements() const;
    void enhance(const enhancements& on);
    float analyse_speech(const enhancements& on);

    void render_output();
    void write_output(void* audio, quenlis_data_type type) const;
    void write_silence(void* audio, quenlis_data_type type) const;

    std::mutex input_mutex_;
    qnl_buffer_32f input_block_;
    std::unique_ptr<listener_engine> listener_engine_;
    const int32_t id_;
    const qnl_participant_configuration configuration_;
    const qnl_library_configuration library_;
    const int32_t input_frames_;
    const int32_t engine_frames_;
    qnl_buffer_32f output_block_; // always room for stereo
    std::mutex output_mutex_;
    std::unique_ptr<quenlis_resampler> input_resampler_;  // null when the input is at the engine's rate
    std::unique_ptr<quenlis_resampler> output_resampler_; // null when the output is
    qnl_buffer_32f analysis_scratch_; // cleaned audio that only its analysis was wanted of
    std::unique_ptr<quenlis_rnn> rnn_;
    std::unique_ptr<quenlis_anc> anc_;
    std::unique_ptr<quenlis_agc> agc_;
    std::unique_ptr<quenlis_auto_EQ> auto_eq_;
    std::unique_ptr<quenlis_deesser> deesser_;
    std::unique_ptr<quenlis_xtc> crosstalk_canceller_;
    std::unique_ptr<quenlis_limiter> limiter_;
    quenlis_flags flags_;
};
