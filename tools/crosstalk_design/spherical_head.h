#pragma once

#include "spectrum.h"

#include <vector>

/// The sound pressure on a rigid sphere from a point source, as a stand-in for a listener's head:
/// R. O. Duda and W. L. Martens, "Range dependence of the response of a spherical head model",
/// J. Acoust. Soc. Am. 104(5), 1998.
class spherical_head {
public:
    /// A sphere of `radius` metres whose sources all stand `distance` metres from its centre.
    spherical_head(double radius, double distance);

    /// The pressure at the point of the sphere that lies `cos_incidence` (a cosine: 1 facing the source, -1 behind)
    /// from the direction of the source, relative to the free field at the centre of the sphere.
    spectrum response(double cos_incidence) const;

private:
    // For each bin the factors of the Legendre polynomials.
    std::vector<std::vector<std::complex<double>>> modes_;
};

/// What reaches an ear from the two loudspeakers of a symmetric pair.
struct ear_responses {
    spectrum near; ///< from the loudspeaker of its own side
    spectrum far;  ///< from the other one
};

/// The same for both ears: loudspeakers `half_span` degrees to the left and right of the nose, level with the centre of the
/// head.
ear_responses respond(const spherical_head& head, double half_span);
