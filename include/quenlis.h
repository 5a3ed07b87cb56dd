/// libquenlis: a real-time conference audio engine.
///
/// A host creates rooms, adds participants, pushes every participant's captured audio block by block and
/// pulls for every participant a personal mix of everybody else in the room. This header is the whole
/// interface; it compiles as C11 and as C++17.
///
/// Words. A *frame* is one sample of each channel; a *sample* is a single value. Audio is 16-bit, or 32- or
/// 64-bit floating point with full scale at 1.0. With `interleaved` set in the library configuration a stereo
/// buffer holds left and right in turn; otherwise it is planar, all of left, then all of right. Positions are
/// whole numbers in the room's own unit: x to the right, y up, z forward. Headings are whole degrees: azimuth
/// from -180 to 180 with 0 facing +z and positive towards +x, elevation from -90 to 90.
///
/// Results. Almost every function returns a `qnl_error_code`. Success is QNL_ERROR_NONE, which is -10000 and
/// not 0. A null handle is logged and answered with QNL_ERROR_HANDLE_NULL, and out pointers are left alone;
/// an unknown room is answered with QNL_ERROR_INVALID_ROOM_ID, an unknown participant with
/// QNL_ERROR_INVALID_PARTICIPANT_ID. Every int is a legal room or participant id. A refused call changes
/// nothing unless its description says otherwise. Only exhausted memory (std::bad_alloc) and exceptions of
/// the host's own observers ever leave a call.
///
/// Threads. Every function may be called from any thread at any time, except where its description says
/// otherwise. Audio calls of different participants run in parallel, and so do one participant's input and
/// output. The library starts no thread: all work happens inside the calls. qnl_create_room,
/// qnl_destroy_room and qnl_set_room_layout wait for all calls in progress on the handle and hold up new
/// ones.
///
/// Ownership. The library copies every text and record that it is given. Observers stay the host's.
#ifndef QUENLIS_H
#define QUENLIS_H

#include <stdbool.h>
#include <stdint.h>

#if defined(_WIN32)
#define QNL_API
#else
#define QNL_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
/* Values outside the list travel through enumerations, so their type is fixed. */
#define QNL_INT32 : int32_t
class quenlis_sound_manager;
class qnl_event_manager;
extern "C" {
#else
#define QNL_INT32
typedef struct quenlis_sound_manager quenlis_sound_manager;
typedef struct qnl_event_manager qnl_event_manager;
#endif

/// One instance of the library, from qnl_initialize_library to qnl_destroy_library.
typedef quenlis_sound_manager* qnl_handle;

/// The result of almost every call.
typedef enum qnl_error_code QNL_INT32 {
    QNL_ERROR_NONE = -10000,                  ///< success
    QNL_ERROR_HANDLE_NULL = -9999,            ///< the handle is null
    QNL_ERROR_DATA_NULL = -9998,              ///< a buffer, text or out pointer is null
    QNL_ERROR_DATA_LENGTH = -9997,            ///< a frame count or buffer length is wrong
    QNL_ERROR_NUM_CHANNELS = -9996,           ///< channel count other than 1 or 2
    QNL_ERROR_SAMPLE_RATE = -9995,            ///< sampling rate not supported
    QNL_ERROR_SPATIAL_QUALITY = -9994,        ///< spatial quality outside 1 to 5
    QNL_ERROR_INVALID_ROOM_ID = -9993,        ///< the room does not exist, or already exists
    QNL_ERROR_INVALID_PARTICIPANT_ID = -9992, ///< the participant is not in the room, or already is
    QNL_ERROR_INVALID_CONTROL = -9991,        ///< control or operation unknown or not available
    QNL_ERROR_INVALID_VALUE = -9990,          ///< value out of range
    QNL_ERROR_INVALID_HEADING = -9989,        ///< heading out of range
    QNL_ERROR_NO_INPUT_AUDIO = -9988,         ///< nothing to mix for this listener; the output is silence
    QNL_ERROR_PARTICIPANT_TYPE = -9987,       ///< operation not possible for this participant type
    QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED = -9986, ///< the handle of qnl_destroy_library is null
} qnl_error_code;

/// How grave a log line is.
typedef enum qnl_log_level QNL_INT32 {
    QNL_LOG_VERBOSE = 0,
    QNL_LOG_DEBUG = 1,
    QNL_LOG_INFO = 2,
    QNL_LOG_WARNING = 3,
    QNL_LOG_ERROR = 4,
} qnl_log_level;

/// What a participant is able to do.
typedef enum qnl_participant_type QNL_INT32 {
    QNL_PARTICIPANT_REGULAR = 1,       ///< talks and listens
    QNL_PARTICIPANT_SOURCE_ONLY = 2,   ///< talks, has no output
    QNL_PARTICIPANT_LISTENER_ONLY = 3, ///< listens, takes no input
} qnl_participant_type;

/// Controls of a participant: accepted values, then the default.
typedef enum qnl_audio_control QNL_INT32 {
    QNL_CONTROL_STEREO_BYPASS_ENABLE = 1,    ///< 0, 1; 0. Pass the participant's audio through untouched
    QNL_CONTROL_MUTE_ENABLE = 2,             ///< 0, 1; 0. Drop the participant's input
    QNL_CONTROL_ANC_ENABLE = 3,              ///< 0, 1; 0. Noise cancellation
    QNL_CONTROL_AGC_ENABLE = 4,              ///< 0, 1; 0. Automatic gain control
    QNL_CONTROL_AUTO_EQ_ENABLE = 5,          ///< 0, 1; 0. Automatic equaliser, 48 kHz inputs only
    QNL_CONTROL_MIXING_3D_ENABLE = 6,        ///< 0, 1; 0. Stored and refused, see qnl_set_participant_state
    QNL_CONTROL_MIXING_3D_ATTENUATION = 7,   ///< 0 to 40 dB; 6. Stored and refused likewise
    QNL_CONTROL_MIXING_3D_MAX_DISTANCE = 8,  ///< 0 and above; 300. Stored and refused likewise
    QNL_CONTROL_MIXING_3D_REVERB_ENABLE = 9, ///< 0, 1; 1. Stored and refused likewise
    QNL_CONTROL_DEVICE = 10,                 ///< a qnl_device_types value; headphone
    QNL_CONTROL_HALF_SPAN_ANGLE = 11,        ///< 0 to 89 degrees; 15. Half the angle between the loudspeakers
    QNL_CONTROL_MASTER_GAIN = 12,            ///< 0 to 100 percent; 100. Some values read back one lower
    QNL_CONTROL_WHISPER_ROOM = 13, ///< 0 to 100; 0. Private group that still hears the main room at 0.25
    QNL_CONTROL_SIDEBAR_ROOM = 14, ///< 0 to 100; 0. Private group that hears only itself
} qnl_audio_control;

/// What a participant listens with.
typedef enum qnl_device_types QNL_INT32 {
    QNL_DEVICE_HEADPHONE = 1,
    QNL_DEVICE_SPEAKER = 2,
} qnl_device_types;

/// The sample types of the audio calls, one family of calls for each.
typedef enum quenlis_data_type QNL_INT32 {
    QNL_DATA_SHORT = 0,  ///< signed 16 bit
    QNL_DATA_FLOAT = 1,  ///< 32 bit, full scale 1.0
    QNL_DATA_DOUBLE = 2, ///< 64 bit, full scale 1.0
} quenlis_data_type;

/// The format that one instance of the library delivers.
typedef struct qnl_library_configuration {
    int32_t output_sampling_rate;   ///< R: 8000, 16000, 24000, 32000 or 48000 Hz
    int32_t output_number_frames;   ///< F: frames of one output call at that rate; F x 48000 / R must come to
                                    ///< 480, 512, 960 or 1024
    int32_t output_number_channels; ///< 1 or 2
    bool interleaved;               ///< layout of every stereo buffer of the host, in and out
    int32_t spatial_quality;        ///< 1 to 5
} qnl_library_configuration;

/// What one participant brings.
typedef struct qnl_participant_configuration {
    int32_t input_sampling_rate;   ///< r: 1 to 48000 Hz, with r x F divisible by R
    int32_t input_number_channels; ///< 1 or 2
    qnl_participant_type type;
} qnl_participant_configuration;

/// A place, in the room's own unit.
typedef struct qnl_position {
    int32_t x; ///< to the right
    int32_t y; ///< up
    int32_t z; ///< forward
} qnl_position;

/// Where somebody faces, in degrees.
typedef struct qnl_heading {
    int32_t azimuth_heading;   ///< -180 to 180, 0 faces +z, positive towards +x
    int32_t elevation_heading; ///< -90 to 90
} qnl_heading;

/// A place with a number.
typedef struct qnl_seat {
    int32_t id; ///< counted from 1; -1 for no seat
    qnl_position position;
    qnl_heading heading;
} qnl_seat;

/* ---- Lifetime and logging ---------------------------------------------------------------------------- */

/// Builds one instance of the library. Several may live side by side.
///
/// @param room_layout_path       room configuration file (JSON), or null. A missing or broken file is no
///                               failure: the library logs a warning and starts on its fallback layout
/// @param websocket_config_path  control server configuration file (JSON), or null. Without a usable one there is
///                               no control server, which the log says at QNL_LOG_WARNING
/// @param configuration          the output format; fixed for the life of the instance
/// @param error_code             receives QNL_ERROR_NONE or the reason of a refusal; may be null
/// @return the handle, or null with QNL_ERROR_SAMPLE_RATE, QNL_ERROR_DATA_LENGTH, QNL_ERROR_NUM_CHANNELS or
///         QNL_ERROR_SPATIAL_QUALITY for a refused configuration
///
/// Logging is off at first: call qnl_enable_logging before this to see warnings about the files.
QNL_API qnl_handle qnl_initialize_library(const char* room_layout_path, const char* websocket_config_path,
                                          qnl_library_configuration configuration, int* error_code);

/// Destroys the instance with all its rooms. Takes no lock: every other call on this handle must have ended.
/// @return QNL_ERROR_LIBRARY_NOT_YET_INITIALIZED for a null handle, unlike all other functions
QNL_API qnl_error_code qnl_destroy_library(qnl_handle handle);

/// The version of the library, "v1.0.9". Needs no handle; the text is constant.
QNL_API const char* qnl_get_version(void);

/// Turns the log on or off for the whole process. It is off at start and goes to standard output.
QNL_API qnl_error_code qnl_enable_logging(bool enable);

/// Sets the lowest level that is logged; QNL_LOG_WARNING at start.
/// @return QNL_ERROR_INVALID_VALUE for anything but 0 to 4, and the level stays
QNL_API qnl_error_code qnl_set_log_level(qnl_log_level level);

/// The name of an error code as a constant text. Any value that is no failure gives "QNL_ERROR_NONE".
QNL_API const char* qnl_error_code_to_string(int code);

/// A copy of the configuration. A null handle gives -1 in every number and false in `interleaved`.
QNL_API qnl_library_configuration qnl_get_library_configuration(qnl_handle handle);

/* ---- Rooms and participants --------------------------------------------------------------------------- */

/// Creates an empty room with the default layout. Excludes all other calls while it runs.
/// @return QNL_ERROR_INVALID_ROOM_ID when the room exists
QNL_API qnl_error_code qnl_create_room(qnl_handle handle, int room_id);

/// Destroys a room with its participants. Excludes all other calls while it runs.
QNL_API qnl_error_code qnl_destroy_room(qnl_handle handle, int room_id);

/// Adds a participant. Unless the room's layout is an open room, the participant takes the lowest free seat
/// and the layout's default control values.
///
/// @param participant_name  any text, copied; null is an empty name
/// @return QNL_ERROR_INVALID_PARTICIPANT_ID when the id is taken; QNL_ERROR_NUM_CHANNELS,
///         QNL_ERROR_PARTICIPANT_TYPE or QNL_ERROR_SAMPLE_RATE for a refused configuration;
///         QNL_ERROR_INVALID_VALUE when the layout has no seats. A code that comes from the layout's default
///         control values leaves the participant in the room, seated, but those who were there neither hear
///         it nor are heard by it: remove it.
QNL_API qnl_error_code qnl_add_participant(qnl_handle handle, int room_id, int participant_id,
                                           const char* participant_name,
                                           qnl_participant_configuration config);

/// Removes a participant. Listeners drop what they had queued of it at their next output call.
QNL_API qnl_error_code qnl_remove_participant(qnl_handle handle, int room_id, int participant_id);

/* ---- Audio -------------------------------------------------------------------------------------------- */

/// Pushes one block of a talker to every other listener of the room.
///
/// @param audio          `number_frames` frames at the participant's input rate r
/// @param number_frames  r x F / R, exactly
/// @return QNL_ERROR_DATA_LENGTH for another count; QNL_ERROR_PARTICIPANT_TYPE for a listener-only
///         participant; QNL_ERROR_DATA_NULL for a null buffer. A muted participant's block is dropped with
///         QNL_ERROR_NONE.
///
/// Real time: allocates the queued blocks of the mix and nothing else, but for a log message and a refusal's
/// exception. A listener for whom no block can be had misses this one.
/// A listener that never pulls has its queues grow without limit, see qnl_flush_data.
QNL_API qnl_error_code qnl_input_audio_short(qnl_handle handle, int room_id, int participant_id,
                                             const short* audio, int number_frames);
/// As qnl_input_audio_short, for 32-bit floats with full scale 1.0.
QNL_API qnl_error_code qnl_input_audio_float(qnl_handle handle, int room_id, int participant_id,
                                             const float* audio, int number_frames);
/// As qnl_input_audio_short, for 64-bit floats with full scale 1.0; each value is rounded to 32 bits.
QNL_API qnl_error_code qnl_input_audio_double(qnl_handle handle, int room_id, int participant_id,
                                              const double* audio, int number_frames);

/// Pulls one block of a listener's personal mix: one queued block of every talker that has one.
///
/// @param output  receives F frames of the output channel count, always the whole of it
/// @return QNL_ERROR_NO_INPUT_AUDIO, with silence in `output`, when nobody had a block (a normal state);
///         QNL_ERROR_PARTICIPANT_TYPE for a source-only participant; QNL_ERROR_DATA_NULL for a null buffer
///
/// Clamped to 16 bits; a NaN becomes 0. Real time: allocates nothing but a log message and a refusal's
/// exception.
QNL_API qnl_error_code qnl_output_audio_short(qnl_handle handle, int room_id, int participant_id,
                                              short* output);
/// As qnl_output_audio_short, for 32-bit floats; nothing is clamped.
QNL_API qnl_error_code qnl_output_audio_float(qnl_handle handle, int room_id, int participant_id,
                                              float* output);
/// As qnl_output_audio_short, for 64-bit floats; nothing is clamped.
QNL_API qnl_error_code qnl_output_audio_double(qnl_handle handle, int room_id, int participant_id,
                                               double* output);

/// Drops all queued blocks of this talker that others have not heard, and all that this listener has not
/// heard. No filter or effect state is reset. The queued changes of places, a few bytes each time somebody
/// moves or joins, wait for the listener's next output call all the same.
QNL_API qnl_error_code qnl_flush_data(qnl_handle handle, int room_id, int participant_id);

/* ---- Controls ----------------------------------------------------------------------------------------- */

/// Sets one control of one participant.
///
/// @return QNL_ERROR_INVALID_CONTROL for an unknown control; QNL_ERROR_INVALID_VALUE for a bad value;
///         QNL_ERROR_INVALID_CONTROL for the equaliser at an input rate other than 48000 Hz.
///         The 3D controls 6 to 9 store a good value, tell the observers and still return
///         QNL_ERROR_INVALID_CONTROL, since this edition has no 3D mixing.
QNL_API qnl_error_code qnl_set_participant_state(qnl_handle handle, int room_id, int participant_id,
                                                 qnl_audio_control control, int value);

/// Sets one control of every participant of a room, in order of joining. A refusal by one participant stops
/// there; those already set stay set. Succeeds for the 3D controls, and for anything in an empty room.
QNL_API qnl_error_code qnl_set_all_participants_state(qnl_handle handle, int room_id,
                                                      qnl_audio_control control, int value);

/// Reads one control.
/// @param value  receives the value, or 0 when it cannot be read; null gives QNL_ERROR_DATA_NULL
QNL_API qnl_error_code qnl_get_participant_state(qnl_handle handle, int room_id, int participant_id,
                                                 qnl_audio_control control, int* value);

/// The name of a control, such as "QNL_CONTROL_DEVICE", as a constant text; empty, with a log line, for
/// others.
QNL_API const char* qnl_audio_control_to_string(int control);

/// The control of that name in any mix of upper and lower case; 15, with a log line, for any other text and
/// for null.
QNL_API qnl_audio_control qnl_string_to_audio_control(const char* text);

/// The value that a text stands for: QNL_DEVICE_HEADPHONE 1, QNL_DEVICE_SPEAKER 2, QNL_ENABLE and TRUE 1,
/// QNL_DISABLE and FALSE 0, in any mix of upper and lower case, or the decimal integer at its start.
/// Anything else, null included, gives -9990 with a log line.
QNL_API int qnl_string_to_participant_value(const char* text);

/* ---- Names, seats, positions, layouts ------------------------------------------------------------------ */

/// Renames a participant. @param name  copied; null gives QNL_ERROR_DATA_NULL
QNL_API qnl_error_code qnl_set_participant_name(qnl_handle handle, int room_id, int participant_id,
                                                const char* name);

/// Copies a participant's name with its terminating zero.
///
/// @param name    receives the text; null gives QNL_ERROR_DATA_NULL
/// @param length  the longest name accepted: the buffer must hold `length` + 1 bytes
/// @return QNL_ERROR_DATA_LENGTH when the name is longer or `length` is negative. An unknown room or
///         participant reads as an empty name, not as a failure.
QNL_API qnl_error_code qnl_get_participant_name(qnl_handle handle, int room_id, int participant_id,
                                                char* name, int length);

/// Moves a participant to a seat, counted from 1. Numbers above the layout's count lie in layers above its
/// seats; a taken number means the next free layer above it. 0 puts the participant at the origin.
///
/// A participant that sits at that entry of the layout, in whatever layer, stays where it is with
/// QNL_ERROR_NONE. So does one without a seat when it asks for the entry that -1 stands for, which is (-2
/// modulo the seat count, as unsigned 64 bit) + 1.
/// @return QNL_ERROR_INVALID_VALUE for a negative number and in a layout without seats
QNL_API qnl_error_code qnl_set_participant_seat(qnl_handle handle, int room_id, int participant_id,
                                                int seat_index);

/// Reads a participant's seat; all 0 when room or participant is unknown. @param seat  null gives
/// QNL_ERROR_DATA_NULL
QNL_API qnl_error_code qnl_get_participant_seat(qnl_handle handle, int room_id, int participant_id,
                                                qnl_seat* seat);

/// Places a participant freely, in an open room only.
/// @return QNL_ERROR_INVALID_HEADING for a heading out of range; QNL_ERROR_INVALID_CONTROL in a seated room
QNL_API qnl_error_code qnl_set_participant_position(qnl_handle handle, int room_id, int participant_id,
                                                    qnl_position position, qnl_heading heading);

/// Reads a participant's place. An unknown room or participant zeroes `position` and leaves `heading`; a null
/// pointer gives QNL_ERROR_DATA_NULL.
QNL_API qnl_error_code qnl_get_participant_position(qnl_handle handle, int room_id, int participant_id,
                                                    qnl_position* position, qnl_heading* heading);

/// Reads where a listener hears a source, as of the listener's latest output call.
///
/// @param azimuth    degrees, -180 to 180; positive to the right
/// @param elevation  degrees
/// @param distance   in the room's unit
/// @return QNL_ERROR_INVALID_PARTICIPANT_ID for equal ids; QNL_ERROR_DATA_NULL for a null pointer;
///         QNL_ERROR_INVALID_VALUE for a source-only listener. What cannot be read is 0, 0, 0, but equal
///         ids leave the three alone.
QNL_API qnl_error_code qnl_get_participant_spherical(qnl_handle handle, int room_id, int listener_id,
                                                     int source_id, int* azimuth, int* elevation,
                                                     int* distance);

/// Switches a room to another layout: everybody gets a seat and the layout's default control values. The
/// layout that the room has already changes nothing. Excludes all other calls while it runs.
/// @return QNL_ERROR_INVALID_VALUE for an unknown layout, and for one without seats when a seat is needed. A
///         code that comes from the default control values leaves the layout changed, those who joined later
///         where they were, and everybody's spherical values as before.
QNL_API qnl_error_code qnl_set_room_layout(qnl_handle handle, int room_id, int layout_id);

/// Reads the id of a room's layout; 0 when the room is unknown. @param layout_id  null gives
/// QNL_ERROR_DATA_NULL
QNL_API qnl_error_code qnl_get_room_layout(qnl_handle handle, int room_id, int* layout_id);

/// All room layouts as one JSON text without whitespace. It lives as long as the handle; do not free it.
/// A null handle gives {"error_code": "QNL_ERROR_HANDLE_NULL"}, a constant.
QNL_API const char* qnl_get_json_all_room_layouts(qnl_handle handle);

/* ---- Queries ------------------------------------------------------------------------------------------ */

/// The number of rooms. @param room_count  null gives QNL_ERROR_DATA_NULL
QNL_API qnl_error_code qnl_get_room_count(qnl_handle handle, int* room_count);

/// The number of participants of a room. @param participant_count  null gives QNL_ERROR_DATA_NULL
QNL_API qnl_error_code qnl_get_participant_count(qnl_handle handle, int room_id, int* participant_count);

/// Reads what a participant was added with. What cannot be read, a null handle included, is -1 in both
/// numbers and the value 4 in `type`. @param config  null gives QNL_ERROR_DATA_NULL
QNL_API qnl_error_code qnl_get_participant_configuration(qnl_handle handle, int room_id, int participant_id,
                                                         qnl_participant_configuration* config);

/* ---- Observers and remote control ---------------------------------------------------------------------- */

/// Registers an observer, a C++ object that implements qnl_event_manager. There is no way to remove it: the
/// host keeps it alive until the library is destroyed. Must be called while no other call on the handle runs.
/// @return QNL_ERROR_DATA_NULL for null; QNL_ERROR_INVALID_CONTROL from inside an observer
QNL_API qnl_error_code qnl_add_event_manager(qnl_handle handle, qnl_event_manager* manager);

/// Always refused with QNL_ERROR_INVALID_CONTROL: this edition carries no network transport.
QNL_API qnl_error_code qnl_enable_websockets(qnl_handle handle, bool enable);

/// Always refused with QNL_ERROR_INVALID_CONTROL: this edition carries no network transport.
QNL_API qnl_error_code qnl_send_custom_websocket_event(qnl_handle handle, int room_id, const char* event);

#ifdef __cplusplus
} /* extern "C" */

/// An observer of the conference. After each change every observer is called in order of registration, on the
/// thread that made the change and inside the library's lock: return quickly. A handler may call getters,
/// audio and setters; what those change it hears of in turn. Creating and destroying rooms, changing layouts
/// and adding observers are refused from inside a handler with QNL_ERROR_INVALID_CONTROL. Texts live for the
/// duration of the call only.
class qnl_event_manager {
public:
    virtual ~qnl_event_manager() = default;
    virtual void create_room_event(int room_id) = 0;
    virtual void destroy_room_event(int room_id) = 0;
    /// @param participant_name  never null
    virtual void add_participant_event(int room_id, int participant_id, const char* participant_name,
                                       qnl_participant_configuration configuration) = 0;
    virtual void remove_participant_event(int room_id, int participant_id) = 0;
    /// @param seat  as it is after the change, also when nothing moved
    virtual void set_participant_seat_event(int room_id, int participant_id, qnl_seat seat) = 0;
    virtual void set_participant_position_event(int room_id, int participant_id, qnl_position position,
                                                qnl_heading heading) = 0;
    /// Also called for a 3D control, whose setter returns QNL_ERROR_INVALID_CONTROL.
    virtual void set_participant_state_event(int room_id, int participant_id, qnl_audio_control control,
                                             int value) = 0;
    virtual void set_all_participants_state_event(int room_id, qnl_audio_control control, int value) = 0;
    virtual void set_room_layout_event(int room_id, int layout_id) = 0;
    virtual void set_name_event(int room_id, int participant_id, const char* name) = 0;

protected:
    qnl_event_manager() = default;
    qnl_event_manager(const qnl_event_manager&) = default;
    qnl_event_manager& operator=(const qnl_event_manager&) = default;
};
#endif

#endif
