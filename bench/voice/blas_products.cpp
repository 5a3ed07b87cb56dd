#include "blas_products.h"

#ifdef WITH_OPENBLAS
#include "canceller_layers.h"

#include <cblas.h>

bool has_blas() {
    openblas_set_num_threads(1);
    return true;
}

void run_blas_products(int frames) {
    static float in[512] = {1.0F};
    static float out[512];
    for (const canceller_layer& layer : canceller_layers)
        for (int frame = 0; frame < frames; ++frame)
            cblas_sgemv(CblasRowMajor, CblasTrans, layer.inputs, layer.outputs, 1.0F, layer.weights,
                        layer.outputs, in, 1, 0.0F, out, 1);
}
#else
bool has_blas() {
    return false;
}

void run_blas_products(int /*frames*/) {}
#endif
