#pragma once

#include <memory>

#include "dsp/vector_primitives.h"

enum class transform_kind { complex_forward, complex_inverse, real_forward, real_inverse };

/// How much the peer tries out before it settles on a way.
enum class fftw_planning { estimated, measured, patient };

/// The peer that transforms are measured against, in single precision.
class fftw_transform {
public:
    /// Null where FFTW was missing when this was built.
    static std::unique_ptr<fftw_transform> make(transform_kind kind, int size,
                                                fftw_planning planning = fftw_planning::measured);

    virtual ~fftw_transform() = default;
    /// Transforms what `in` holds, unscaled.
    virtual void run() = 0;
    /// `size` complex values, of a real transform `size` floats or size / 2 + 1 bins; `out` likewise.
    virtual complex32f* in() = 0;
    virtual const complex32f* out() const = 0;
};
