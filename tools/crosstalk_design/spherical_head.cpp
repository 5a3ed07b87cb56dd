#include "spherical_head.h"

#include <algorithm>
#include <cstddef>

namespace {

using complex = std::complex<double>;

constexpr double speed_of_sound = 343.0; // metres a second

// The ears sit a little behind and below the middle of the head, 3 cm below on the average (V. R. Algazi,
// R. O. Duda, D. M. Thompson and C. Avendano, "The CIPIC HRTF database", IEEE WASPAA 2001). That also keeps
// them out of the bright spot that a perfect sphere has opposite the source: with ears 15 degrees below the
// middle, what leaks to the far ear would grow again between 66 and 77 degrees.
constexpr double ear_azimuth = 100.0;   // degrees from the nose
constexpr double ear_elevation = -20.0; // degrees

// Bin 0 has no finite terms, and down there the response no longer changes.
constexpr double lowest_frequency = 1.0;

complex quotient(const complex& a, const complex& b) {
    return a * std::conj(b) / std::norm(b);
}

// Spherical Hankel functions h(0) to h(orders) of x, without their common factor exp(i x).
std::vector<complex> hankel(double x, int orders) {
    std::vector<complex> h = {complex(0.0, -1.0 / x), complex(-1.0 / x, -1.0 / (x * x))};
    for (int n = 1; n < orders; n++)
        h.push_back((2.0 * n + 1.0) / x * h[n] - h[n - 1]);
    return h;
}

// Their derivatives.
std::vector<complex> hankel_slopes(double x, int orders) {
    const std::vector<complex> h = hankel(x, orders);
    std::vector<complex> slopes = {-h[1]};
    for (int n = 1; n <= orders; n++)
        slopes.push_back(h[n - 1] - (n + 1.0) / x * h[n]);
    return slopes;
}

std::vector<complex> modes_at(double frequency, double radius, double distance) {
    const double waves_in_radius = frequency * radius / speed_of_sound;
    const double at_surface = two_pi * waves_in_radius;
    const double at_source = at_surface * distance / radius;
    // Beyond the order k a the terms fall faster than any power; below, as powers of radius / distance.
    const int orders = static_cast<int>(1.5 * at_surface) + 25;
    const auto arriving = hankel(at_source, orders);
    const auto slopes = hankel_slopes(at_surface, orders);
    const complex scale = phasor(-waves_in_radius) * (-distance / radius / at_surface);
    std::vector<complex> modes;
    for (int n = 0; n <= orders; n++)
        modes.push_back(scale * (2.0 * n + 1.0) * quotient(arriving[n], slopes[n]));
    return modes;
}

std::vector<double> legendre_polynomials(double x, std::size_t count) {
    std::vector<double> p = {1.0, x};
    for (std::size_t n = 1; p.size() < count; n++)
        p.push_back(((2.0 * n + 1.0) * x * p[n] - n * p[n - 1]) / (n + 1.0));
    return p;
}

} // namespace

spherical_head::spherical_head(double radius, double distance) {
    for (int bin = 0; bin < grid_bins; bin++)
        modes_.push_back(modes_at(std::max(bin_frequency(bin), lowest_frequency), radius, distance));
}

spectrum spherical_head::response(double cos_incidence) const {
    const auto p = legendre_polynomials(cos_incidence, modes_.back().size());
    spectrum pressure;
    for (const auto& modes : modes_) {
        complex sum = 0.0;
        for (std::size_t n = 0; n < modes.size(); n++)
            sum += modes[n] * p[n];
        // The series is written for waves exp(-i w t).
        pressure.push_back(std::conj(sum));
    }
    return pressure;
}

ear_responses respond(const spherical_head& head, double half_span) {
    const auto cos_incidence = [](double azimuth) {
        return phasor(azimuth / 360.0).real() * phasor(ear_elevation / 360.0).real();
    };
    return {head.response(cos_incidence(ear_azimuth - half_span)),
            head.response(cos_incidence(ear_azimuth + half_span))};
}
