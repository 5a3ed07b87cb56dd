#pragma once

// One signature for all operations compared: sources, destination (which operations in place read as well), a
// constant and the count of elements. Complex operands come as floats, two per element.

using operation_call = void (*)(const float* a, const float* b, float* d, float c, int n);

struct named_call {
    const char* name;
    operation_call call;
};

constexpr int operation_count = 41;

/// The public functions of the vector layer.
extern const named_call layer_calls[operation_count];

/// The same operations as loops left to the compiler, in the same order, by instruction set and way of
/// compiling.
namespace sse2_plain {
extern const named_call loops[operation_count];
}
namespace sse2_unrolled {
extern const named_call loops[operation_count];
}
namespace sse4_plain {
extern const named_call loops[operation_count];
}
namespace sse4_unrolled {
extern const named_call loops[operation_count];
}
namespace avx2_plain {
extern const named_call loops[operation_count];
}
namespace avx2_unrolled {
extern const named_call loops[operation_count];
}
namespace avx3_plain {
extern const named_call loops[operation_count];
}
namespace avx3_unrolled {
extern const named_call loops[operation_count];
}
