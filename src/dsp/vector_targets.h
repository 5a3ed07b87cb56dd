#pragma once

/// The choice of instruction set, for tests and benchmarks; the engine itself calls qnl_start_vector_layer
/// and leaves it there. Target 0 is the plain scalar code, the last one is the best this processor has.

/// Number of targets that this build and this processor offer, at least 1.
int vector_target_count();

/// Name of target `index` (below the count), for messages.
const char* vector_target_name(int index);

/// Index of the target in use.
int active_vector_target();

/// Uses target `index` (below the count) from now on, in the whole process. No other thread may be inside the
/// vector layer meanwhile.
void select_vector_target(int index);
