#include "dsp/equaliser.h"

quenlis_EQ::quenlis_EQ()
    : response_(qnl_make_buffer_32fc(size_)),
      spectrum_(qnl_make_buffer_32fc(size_)),
      real_transform_(size_, true),
      complex_transform_(size_, false) {}

void quenlis_EQ::add_filter(int number, const float* a, const float* b) {
    filters_.push_back(std::make_unique<quenlis_filter>(number, a, b));
    complex32f denominator[size_];
    complex32f numerator[size_];
    qnl_set(response_.get(), {1.0F, 0.0F}, size_);
    for (const auto& filter : filters_) {
        const int coefficients = filter->get_number_coefficients();
        real_transform_.RFFT(filter->get_a_coefficients(), coefficients, denominator, size_);
        real_transform_.flush();
        real_transform_.RFFT(filter->get_b_coefficients(), coefficients, numerator, size_);
        real_transform_.flush();
        qnl_divide_I(denominator, numerator, size_);
        qnl_multiply_I(numerator, response_.get(), size_);
    }
}

void quenlis_EQ::process(const float* in, float* out, int count) {
    real_transform_.RFFT(in, count, spectrum_.get(), size_);
    qnl_multiply_I(response_.get(), spectrum_.get(), size_);
    complex_transform_.IFFT_no_save(spectrum_.get(), out, count);
}
