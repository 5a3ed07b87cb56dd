#pragma once

#include "cancellation.h"
#include "spectrum.h"
#include "spherical_head.h"

/// The filters of one row as they stand in the table: rounded and cut to length.
class row_evaluation {
public:
    explicit row_evaluation(const filter_row& row);

    /// The energy of a channel between two frequencies in Hz at its own ear over that at the other ear, in
    /// dB.
    double separation(const ear_responses& ears, double from, double to) const;

    /// The least separation of any single frequency between the two.
    double least_separation(const ear_responses& ears, double from, double to) const;

    struct peak {
        double gain; ///< in dB
        double frequency;
    };

    /// The largest gain over frequency: the energy in both loudspeakers over that in both inputs, whatever
    /// these are.
    peak largest_boost() const;

private:
    // At a bin, the energy at the own ear and at the other.
    struct ear_energies {
        double own;
        double other;
    };
    ear_energies heard(const ear_responses& ears, int bin) const;

    spectrum same_;
    spectrum cross_;
};
