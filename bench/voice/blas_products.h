/// The products of the noise canceller by a linear algebra library.
#pragma once

/// Whether the library was there when this was built.
bool has_blas();

/// All products of `frames` frames on one thread, each layer for all frames before the next layer, on values of no
/// meaning.
void run_blas_products(int frames);
