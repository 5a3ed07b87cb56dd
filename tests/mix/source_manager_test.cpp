// A listener's table of sources and its queued changes.
#include "mix/source_manager.h"

#include "kit/audio.h"

namespace {

class SourceManager : public testing::Test {
protected:
    sSource* add(int32_t id, int32_t channels) {
        sSource* const source = sources_.create_source(id, channels);
        EXPECT_EQ(sources_.sm_add_source(source), id);
        return source;
    }

    const quenlis_common_object common_ = quenlis_common_object::derive({48000, 480, 2, false, 3});
    source_manager sources_{&common_, 480};
};

TEST_F(SourceManager, AppliesEachChangeOnceProcessedAndSplitsDistancesAt300) {
    sSource* const source = add(1, 2);
    EXPECT_EQ(source->changed + source->renderer_changed, 2) << "new sources are to be rendered afresh";
    source->changed = 0;
    sources_.sm_set_direction(1, 10, 20);
    sources_.sm_set_azimuth(1, 30);
    sources_.sm_set_channel_offset(1, 1, 5, 6);
    EXPECT_EQ(sources_.sm_get_azimuth(1) + source->changed, 0);
    sources_.process_source_manager();
    EXPECT_EQ(source->azimuth + source->elevation, 30 + 20);
    EXPECT_EQ(source->channels[1].first_offset * 10 + source->channels[1].second_offset, 56);
    EXPECT_EQ(source->changed, 1);
    sources_.sm_set_elevation(1, -4);
    sources_.process_source_manager();
    EXPECT_EQ(source->elevation, -4);
    for (const auto& [distance, near_part] : {std::pair{299, 299}, {300, 300}, {1000, 300}}) {
        sources_.sm_set_distance(1, distance);
        sources_.sm_set_distance(1, -1); // dropped
        sources_.process_source_manager();
        EXPECT_EQ(source->near_distance, near_part);
        EXPECT_EQ(source->far_distance, distance - near_part);
    }
}

TEST_F(SourceManager, DropsWhatFitsNoSource) {
    sSource* const mono = add(1, 1);
    mono->changed = 0;
    for (const int32_t channels : {3, 0})
        EXPECT_EQ(sources_.sm_add_source(sources_.create_source(7, channels)), -1);
    action* const unknown = source_manager::get_item_mem();
    unknown->action_type = 6;
    unknown->source_id = 1;
    sources_.add_action(unknown);
    sources_.sm_set_azimuth(2, 1);
    sources_.process_source_manager();
    EXPECT_EQ(mono->changed, 0);
    for (const int32_t channel : {1, 2, -1})
        sources_.sm_set_channel_offset(1, channel, 9, 9);
    sources_.process_source_manager();
    EXPECT_EQ(mono->changed, 1) << "told of, although there is no such channel";
    EXPECT_EQ(mono->channels[0].first_offset + mono->channels[1].first_offset, 0);
}

} // namespace
