#include "dsp/vector_targets.h"

#include "dsp/vector_kernels.h"

vector_kernels active_kernels = {
    &scalar_arithmetic_kernels,
    &scalar_complex_kernels,
    &scalar_math_kernels,
    &scalar_conversion_kernels,
};

void qnl_start_vector_layer() {}

int vector_target_count() {
    return 1;
}

const char* vector_target_name(int) {
    return "scalar";
}

int active_vector_target() {
    return 0;
}

void select_vector_target(int) {}
