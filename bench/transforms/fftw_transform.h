#pragma once

#include <memory>

#include "dsp/vector_primitives.h"

enum class transform_kind { complex_forward, complex_inverse, real_forward };

/// The peer that transforms are measured against, in single precision, planned by measurement.
class fftw_transform {
public:
    /// Null where FFTW was missing when this was built.
    static std::unique_ptr<fftw_transform> make(transform_kind kind, int size);

    virtual ~fftw_transform() = default;
    /// Transforms what `in` holds, unscaled: `size` complex values, or `size` floats for a real transform.
    virtual void run() = 0;
    virtual complex32f* in() = 0;
    /// All `size` values, or of a real transform the first size / 2 + 1.
    virtual const complex32f* out() const = 0;
};
