#include "options.h"

#include "failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace {

constexpr const char* introduction =
    "Holds a conference of recordings: every audio file (WAV, FLAC, OGG; mono or stereo) becomes a talker\n"
    "in one room, and what each participant hears of the others is written as a WAV file.";

constexpr const char* examples =
    "WHO is a participant's number, counted from 1, or name: the file's name without its ending for\n"
    "talkers, listener1, listener2 and so on for listeners. Changes are made in this order: devices,\n"
    "whisper groups, sidebars, then --set as given.\n"
    "\n"
    "Examples:\n"
    "  quenlis_conference alice.wav bob.flac carol.ogg\n"
    "      Three talkers; the mixes are mixes/1-alice.wav, mixes/2-bob.wav and mixes/3-carol.wav\n"
    "  quenlis_conference --listeners 1 --channels 1 --sample-type short -o out alice.wav bob.wav\n"
    "      A listener hears both; 16-bit mono through the short calls\n"
    "  quenlis_conference --whisper alice,bob=3 --set carol:QNL_CONTROL_MASTER_GAIN=50 *.wav\n"
    "      Alice and Bob talk in private; Carol turns her volume down to half\n"
    "  quenlis_conference --layout-file layouts.json --layout 2 --log info *.wav\n"
    "      Seats from layout 2 of the file, and the engine's account of what it does";

const std::vector<std::string> sample_types = {"short", "float", "double"};
const std::vector<std::string> log_levels = {"verbose", "debug", "info", "warning", "error"};

/// The texts of the options that need more than a plain conversion.
struct raw_texts {
    std::string sample_type = "float";
    std::string interleaving = "interleaved";
    std::string log_level;
    std::vector<std::string> devices, whispers, sidebars, controls;
};

template <class Enumeration>
Enumeration choice(const std::vector<std::string>& names, const std::string& name) {
    return static_cast<Enumeration>(std::find(names.begin(), names.end(), name) - names.begin());
}

CLI::Option* add_repeatable(CLI::App& app, const std::string& name, std::vector<std::string>& texts,
                            const std::string& description) {
    // One text for each mention, so that a recording behind it is not taken for another.
    return app.add_option(name, texts, description)->allow_extra_args(false);
}

void declare_participants(CLI::App& app, options& chosen) {
    const std::string group = "Participants and files";
    app.add_option("recordings", chosen.recordings, "Audio files, one talker each")
        ->required()
        ->option_text("FILE...");
    app.add_option("--listeners", chosen.listeners, "Participants that only listen")
        ->check(CLI::Range(0, 1000))
        ->option_text("N")
        ->group(group);
    app.add_option("-o,--output-dir", chosen.output_directory,
                   "Folder of the mixes, default 'mixes'; the last one counts")
        ->take_last()
        ->option_text("DIR")
        ->group(group);
}

void declare_format(CLI::App& app, options& chosen, raw_texts& texts) {
    const std::string group = "Output format";
    app.add_option("--rate", chosen.format.output_sampling_rate,
                   "Sampling rate in Hz: 8000, 16000, 24000, 32000\nor 48000 (default)")
        ->option_text("HZ")
        ->group(group);
    app.add_option(
           "--frames", chosen.format.output_number_frames,
           "Frames of one block: 10 ms (default) or 20 ms;\nalso 256 or 512 at 24000 Hz, 683 at 32000 Hz,\n"
           "512 or 1024 at 48000 Hz")
        ->option_text("N")
        ->group(group);
    app.add_option("--channels", chosen.format.output_number_channels, "1 or 2 (default)")
        ->option_text("N")
        ->group(group);
    app.add_option("--sample-type", texts.sample_type,
                   "Samples handed over: short, float (default) or double;\n"
                   "files are 16-bit for short, 32-bit float otherwise")
        ->check(CLI::IsMember(sample_types))
        ->option_text("TYPE")
        ->group(group);
    app.add_option("--interleaving", texts.interleaving,
                   "Stereo buffers handed over: interleaved (default) or planar")
        ->check(CLI::IsMember({"interleaved", "planar"}))
        ->option_text("HOW")
        ->group(group);
}

void declare_room(CLI::App& app, options& chosen, raw_texts& texts) {
    const std::string group = "Room and controls";
    app.add_option("--layout-file", chosen.layout_file, "Room layouts (JSON)")
        ->check(CLI::ExistingFile)
        ->option_text("FILE")
        ->group(group);
    app.add_option("--layout", chosen.layout_id, "Switch the room to the layout with this id")
        ->option_text("ID")
        ->group(group);
    add_repeatable(app, "--set", texts.controls, "Set a control of one participant, or of all")
        ->option_text("[WHO:]CONTROL=VALUE")
        ->group(group);
    add_repeatable(app, "--whisper", texts.whispers,
                   "Private group 1 to 100 that still hears the others at a quarter")
        ->option_text("WHO[,WHO...]=GROUP")
        ->group(group);
    add_repeatable(app, "--sidebar", texts.sidebars, "Private group 1 to 100 that hears only itself")
        ->option_text("WHO[,WHO...]=GROUP")
        ->group(group);
    add_repeatable(app, "--device", texts.devices, "headphone or speaker, for one participant or for all")
        ->option_text("[WHO:]DEVICE")
        ->group(group);
}

void declare_reporting(CLI::App& app, options& chosen, raw_texts& texts) {
    const std::string group = "Reporting";
    app.add_option("--log", texts.log_level,
                   "Show the engine's log from this level on: verbose,\ndebug, info, warning or error")
        ->check(CLI::IsMember(log_levels))
        ->option_text("LEVEL")
        ->group(group);
    app.add_flag("-q,--quiet", chosen.quiet, "Print nothing but errors")->group(group);
    app.set_help_flag("-h,--help", "Show this text")->group(group);
    app.set_version_flag("--version", std::string(qnl_get_version()), "Show the engine's version")
        ->group(group);
}

void interpret(const raw_texts& texts, options& chosen) {
    chosen.samples = choice<sample_type>(sample_types, texts.sample_type);
    chosen.format.interleaved = texts.interleaving == "interleaved";
    if (!texts.log_level.empty())
        chosen.log_level = choice<qnl_log_level>(log_levels, texts.log_level);

    const auto add_groups = [&chosen](qnl_audio_control control, const std::vector<std::string>& groups) {
        for (const std::string& text : groups)
            for (const control_change& change : parse_private_group(control, text))
                chosen.changes.push_back(change);
    };
    for (const std::string& text : texts.devices)
        chosen.changes.push_back(parse_device(text));
    add_groups(QNL_CONTROL_WHISPER_ROOM, texts.whispers);
    add_groups(QNL_CONTROL_SIDEBAR_ROOM, texts.sidebars);
    for (const std::string& text : texts.controls)
        chosen.changes.push_back(parse_control_change(text));
}

} // namespace

std::optional<options> parse_options(int argc, char** argv) {
    options chosen;
    raw_texts texts;
    CLI::App app(introduction, "quenlis_conference");
    app.footer(examples);
    app.get_formatter()->column_width(38);
    declare_participants(app, chosen);
    declare_format(app, chosen, texts);
    declare_room(app, chosen, texts);
    declare_reporting(app, chosen, texts);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        app.exit(request);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw usage_error(error.what());
    }
    if (app.count("--frames") == 0)
        chosen.format.output_number_frames = chosen.format.output_sampling_rate / 100; // 10 ms
    interpret(texts, chosen);
    return chosen;
}
