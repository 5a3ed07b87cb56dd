#include "fftw_transform.h"

#ifdef QUENLIS_HAS_FFTW
#include <fftw3.h>

namespace {

class planned_transform : public fftw_transform {
public:
    planned_transform(transform_kind kind, int size, unsigned effort)
        : in_(qnl_make_buffer_32fc(size)),
          out_(qnl_make_buffer_32fc(size)),
          plan_(plan(kind, size, effort)) {}
    ~planned_transform() override { fftwf_destroy_plan(plan_); }
    planned_transform(const planned_transform&) = delete;
    planned_transform& operator=(const planned_transform&) = delete;

    void run() override { fftwf_execute(plan_); }
    complex32f* in() override { return in_.get(); }
    const complex32f* out() const override { return out_.get(); }

private:
    fftwf_plan plan(transform_kind kind, int size, unsigned effort) {
        auto* const from = reinterpret_cast<fftwf_complex*>(in_.get());
        auto* const to = reinterpret_cast<fftwf_complex*>(out_.get());
        fftwf_forget_wisdom();
        switch (kind) {
        case transform_kind::complex_forward:
            return fftwf_plan_dft_1d(size, from, to, FFTW_FORWARD, effort);
        case transform_kind::complex_inverse:
            return fftwf_plan_dft_1d(size, from, to, FFTW_BACKWARD, effort);
        case transform_kind::real_forward:
            return fftwf_plan_dft_r2c_1d(size, reinterpret_cast<float*>(from), to, effort);
        default:
            return fftwf_plan_dft_c2r_1d(size, from, reinterpret_cast<float*>(to),
                                         effort | FFTW_PRESERVE_INPUT);
        }
    }

    qnl_buffer_32fc in_;
    qnl_buffer_32fc out_;
    fftwf_plan plan_;
};

} // namespace

std::unique_ptr<fftw_transform> fftw_transform::make(transform_kind kind, int size, fftw_planning planning) {
    constexpr unsigned efforts[] = {FFTW_ESTIMATE, FFTW_MEASURE, FFTW_PATIENT};
    return std::make_unique<planned_transform>(kind, size, efforts[static_cast<int>(planning)]);
}

#else

std::unique_ptr<fftw_transform> fftw_transform::make(transform_kind /*kind*/, int /*size*/,
                                                     fftw_planning /*planning*/) {
    return nullptr;
}

#endif
