// Headings and spherical positions.
#include "conference/geometry.h"

#include "kit/audio.h"

#include <tuple>

namespace {

constexpr int lowest = std::numeric_limits<int32_t>::min();
constexpr int highest = std::numeric_limits<int32_t>::max();

qnl_seat at(qnl_position position, qnl_heading heading = {0, 0}) {
    return {1, position, heading};
}

TEST(Geometry, PlacesSourcesAroundAListener) {
    const std::tuple<qnl_position, qnl_heading, int, int, int> table[] = {
        {{10, 0, 0}, {0, 0}, 90, 0, 10},    {{-10, 0, 0}, {0, 0}, -90, 0, 10},
        {{0, 0, 10}, {0, 0}, 0, 0, 10},     {{0, 0, -10}, {0, 0}, 180, 0, 10},
        {{0, 10, 0}, {0, 0}, 0, 90, 10},    {{0, -10, 0}, {0, 0}, 0, -90, 10},
        {{3, 0, 4}, {0, 0}, 36, 0, 5},      {{3, 4, 0}, {0, 0}, 90, 53, 5},
        {{-3, 4, 0}, {0, 0}, -90, 53, 5},   {{0, 0, 0}, {0, 0}, 0, 0, 0},
        {{10, 0, 0}, {90, 0}, 0, 0, 10},    {{0, 0, 10}, {0, 30}, 0, -30, 10},
        {{0, 10, 0}, {90, 0}, 0, 90, 10},   {{0, 0, -10}, {-90, 0}, -90, 0, 10},
        {{-10, 0, 0}, {90, 0}, -180, 0, 10}};
    for (const auto& [source, listener, azimuth, elevation, distance] : table) {
        const auto heard = cartesian_to_spherical(at(source), at({0, 0, 0}, listener));
        SCOPED_TRACE(testing::Message() << source.x << ' ' << source.y << ' ' << source.z);
        EXPECT_THAT(heard, testing::FieldsAre(azimuth, elevation, distance));
    }
}

TEST(Geometry, LooksAtTheCentre) {
    const std::tuple<qnl_position, int, int> table[] = {
        {{0, 0, -5}, 0, 0},    {{0, 0, 5}, 180, 0},  {{5, 0, 0}, -90, 0},   {{-5, 0, 0}, 90, 0},
        {{0, 0, 0}, 0, 0},     {{0, -3, 0}, 0, 90},  {{0, 3, 0}, 0, -90},   {{-4, -4, 0}, 90, 45},
        {{4, -4, 0}, -90, 45}, {{0, -5, -5}, 0, 45}, {{0, -5, 5}, 180, 45},
    };
    for (const auto& [position, azimuth, elevation] : table) {
        const qnl_heading heading = heading_towards(position, {0, 0, 0});
        SCOPED_TRACE(testing::Message() << position.x << ' ' << position.y << ' ' << position.z);
        EXPECT_THAT(heading, testing::FieldsAre(azimuth, elevation));
    }
}

TEST(Geometry, StaysInRangeAtTheEndsOfTheNumbers) {
    const int ends[] = {lowest, -1, 0, 1, highest};
    for (int i = 0; i < 5 * 5 * 5; ++i) {
        const qnl_position here = {ends[i % 5], ends[i / 5 % 5], ends[i / 25]};
        const qnl_position there = {here.z, here.x, here.y};
        for (const qnl_heading heading : {qnl_heading{0, 0}, {180, 90}, {-180, -90}, {lowest, highest}})
            EXPECT_GE(cartesian_to_spherical(at(here), at(there, heading)).distance, 0);
        const qnl_heading looked = heading_towards(here, there);
        EXPECT_LE(std::abs(looked.azimuth_heading), 180);
        EXPECT_LE(std::abs(looked.elevation_heading), 90);
    }
    EXPECT_EQ(cartesian_to_spherical(at({highest, highest, highest}), at({0, 0, 0})).distance, highest)
        << "a distance beyond 32 bits saturates";
    EXPECT_EQ(cartesian_to_spherical(at({highest, 0, 0}), at({lowest, 0, 0})).distance, 1)
        << "a difference beyond 32 bits wraps";
}

} // namespace
