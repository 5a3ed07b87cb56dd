#pragma once

#include "audio_file.h"
#include "audio_port.h"
#include "level_meter.h"
#include "options.h"

#include <quenlis.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// One participant with the files at both ends.
struct member {
    int id = 0; ///< counted from 1
    std::string name;
    int seat = 0;                  ///< counted from 1; below 1 for none
    std::optional<recording> talk; ///< nothing for a listener
    std::unique_ptr<mix_file> mix;
    std::unique_ptr<audio_port> port;
    std::vector<float> spoken; ///< the block being pushed; interleaved
    std::vector<float> heard;  ///< the block that was pulled; interleaved
    bool talking = false;      ///< whether `spoken` holds something of the recording
    level_meter level_in;
    level_meter level_out;
    long blocks_without_audio = 0;
};

/// How long it took.
struct run_times {
    double audio; ///< seconds of conference
    double wall;  ///< seconds for all of it
    double calls; ///< seconds of pushing and pulling, the host's own conversion of samples included
};

/// A room full of recordings. Everything runs on the calling thread.
class conference {
public:
    /// Opens all files, starts the engine, seats everybody and makes the changes of controls.
    /// Throws a usage_error for a participant that does not exist and a failure for everything else.
    explicit conference(const options& chosen);

    /// Plays until the last recording has ended. In every block period all push, then all pull, so no queue
    /// keeps anything from one period to the next. A recording that ends within a block is padded with
    /// silence; after that its talker only listens.
    ///
    /// @param progress  called after each period with the share that is done, 0 to 1
    /// Throws a failure.
    run_times run(const std::function<void(double)>& progress);

    const std::vector<member>& members() const { return members_; }

private:
    struct destroyer {
        void operator()(qnl_handle engine) const { qnl_destroy_library(engine); }
    };

    void invite(const options& chosen);
    member& add_member(const std::string& name);
    void start_engine(const options& chosen);
    void join(member& person);
    void open_mixes(const options& chosen);
    void apply(const control_change& change);
    const member& find(const std::string& participant) const;
    void note_seats();

    bool read_talk();
    void exchange_blocks();
    void write_mixes();

    qnl_library_configuration format_;
    sample_type samples_;
    std::vector<member> members_;
    std::unique_ptr<quenlis_sound_manager, destroyer> engine_;
};
