#include "conference/geometry.h"

#include "frame/integers.h"

#include <cmath>

namespace {

constexpr float pi = 3.1415927F;

float to_degrees(float radians) {
    return radians * 180.0F / pi;
}

struct direction {
    float azimuth;
    float elevation;
};

// The second case is on purpose not the mirror of the first.
direction fold_elevation(direction angles) {
    if (angles.elevation > 90.0F) {
        angles.elevation = 180.0F - angles.elevation;
        angles.azimuth += 180.0F;
    }
    if (angles.elevation < -90.0F) {
        angles.elevation += 180.0F;
        angles.azimuth += 180.0F;
    }
    return angles;
}

float wrap_azimuth(float azimuth) {
    if (azimuth > 180.0F)
        azimuth -= 360.0F;
    if (azimuth < -180.0F)
        azimuth += 360.0F;
    return azimuth;
}

qnl_heading cut(direction angles) {
    return {saturating_truncate(angles.azimuth), saturating_truncate(angles.elevation)};
}

// The common part of both directions: the azimuth from +z and the elevation over the sideways distance.
direction unfolded_direction(float x, float y, float z, float horizontal_distance, bool sideways) {
    const float azimuth = to_degrees(std::acos(z / horizontal_distance));
    if (sideways)
        return {azimuth, to_degrees(std::atan(y / x))};
    const float slope = std::atan(y / z);
    return {azimuth, to_degrees(z < 0.0F ? -slope : slope)};
}

// The angle of (y, z) in the vertical plane, in degrees from +z.
float pitch_of(int32_t dy, int32_t dz) {
    if (dz == 0)
        return dy > 0 ? 90.0F : dy < 0 ? -90.0F : 0.0F;
    if (dy == 0 && dz < 0)
        return -180.0F;
    const float angle = to_degrees(std::atan(static_cast<float>(dy) / static_cast<float>(dz)));
    return dz < 0 ? angle - 180.0F : angle;
}

} // namespace

qnl_heading heading_towards(qnl_position position, qnl_position centre) {
    const auto dx = static_cast<float>(wrapping_subtract(centre.x, position.x));
    const auto dy = static_cast<float>(wrapping_subtract(centre.y, position.y));
    const auto dz = static_cast<float>(wrapping_subtract(centre.z, position.z));
    const float r = std::sqrt(dz * dz + dx * dx);
    if (r == 0.0F)
        return {0, dy > 0.0F ? 90 : dy < 0.0F ? -90 : 0};

    direction angles = unfolded_direction(dx, dy, dz, r, dx != 0.0F);
    if (centre.x < position.x)
        angles = {-angles.azimuth, -angles.elevation};
    angles = fold_elevation(angles);
    angles.azimuth = wrap_azimuth(angles.azimuth);
    return cut(angles);
}

spherical_position cartesian_to_spherical(const qnl_seat& source, const qnl_seat& listener) {
    const int32_t dx = wrapping_subtract(source.position.x, listener.position.x);
    const int32_t dy = wrapping_subtract(source.position.y, listener.position.y);
    const int32_t dz = wrapping_subtract(source.position.z, listener.position.z);
    const auto x = static_cast<float>(dx);
    auto y = static_cast<float>(dy);
    auto z = static_cast<float>(dz);

    if (listener.heading.elevation_heading != 0) {
        const float turned = pitch_of(dy, dz) - static_cast<float>(listener.heading.elevation_heading);
        const float r = std::sqrt(z * z + y * y);
        const float p = turned / 180.0F * pi;
        y = r * std::sin(p);
        z = r * std::cos(p);
    }

    const float distance = std::sqrt((y * y + x * x) + z * z);
    const float horizontal_distance = std::sqrt(z * z + x * x);
    direction angles{0.0F, 0.0F};
    if (horizontal_distance != 0.0F)
        angles = unfolded_direction(x, y, z, horizontal_distance, dx != 0);
    else if (y != 0.0F)
        angles.elevation = y > 0.0F ? 90.0F : -90.0F;

    if (listener.position.x > source.position.x)
        angles = {-angles.azimuth, -angles.elevation};
    if (dx != 0 || z != 0.0F)
        angles.azimuth -= static_cast<float>(listener.heading.azimuth_heading);
    angles = fold_elevation(angles);
    angles.azimuth = wrap_azimuth(angles.azimuth);
    const qnl_heading whole = cut(angles);
    return {whole.azimuth_heading, whole.elevation_heading, saturating_truncate(distance)};
}
