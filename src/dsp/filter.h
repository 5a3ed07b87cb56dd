/// Recursive filters of any order, sample by sample, and the design of second-order ones.
#pragma once

#include "dsp/vector_primitives.h"

#include <cstdint>

/// A recursive filter in direct form I, in single precision throughout. One thread at a time.
class quenlis_filter {
public:
    /// Three coefficients each, all zero: the output is silence.
    quenlis_filter();

    /// @param number  count of feedback and of feed-forward coefficients, at least 1
    /// @param a       `number` feedback coefficients; a[0] is taken to be 1 and never read
    /// @param b       `number` feed-forward coefficients
    /// Allocates both coefficient arrays and both histories; nothing else of the class allocates.
    quenlis_filter(int number, const float* a, const float* b);
    virtual ~quenlis_filter() = default;
    quenlis_filter(const quenlis_filter&) = delete;
    quenlis_filter& operator=(const quenlis_filter&) = delete;

    /// out[t] = b[0] in[t] + the sum over k from 1 of (b[k] in[t - k] - a[k] out[t - k]).
    /// @param count  samples; below 1 nothing happens
    /// `out` may be `in`.
    virtual void process(const float* in, float* out, int count);

    /// Copies `number` values into each coefficient array. The histories and the count of coefficients stay, so
    /// a change is heard without a break.
    /// @param number  at most the count that the object was made for; this is not checked
    virtual void set_coefficients(int number, const float* a, const float* b);
    virtual float* get_a_coefficients() { return a_.get(); }
    virtual float* get_b_coefficients() { return b_.get(); }
    virtual int get_number_coefficients() { return number_; }

    /// Forgets all input and output so far; the coefficients stay.
    virtual void reset();

private:
    qnl_buffer_32f input_history_;  // x(t - k) at index k, index 0 unused
    qnl_buffer_32f output_history_; // y(t - k) at index k, index 0 unused
    qnl_buffer_32f a_;
    qnl_buffer_32f b_;
    int32_t number_;
};

/// A second-order filter designed from a kind, a gain, a frequency and a quality factor, after R. Bristow-Johnson,
/// "Cookbook formulae for audio equalizer biquad filter coefficients". The shelves ignore Q on purpose.
class quenlis_biquad : public quenlis_filter {
public:
    /// @param type    0 low-pass, 1 high-pass, 2 band-pass with a peak of 0 dB, 3 notch, 4 peaking, 5 low shelf,
    ///                6 high shelf. Any other number is not refused: such a filter gives NaN, which is wanted
    /// @param dbGain  gain in dB of the types 4 to 6
    /// @param freq    centre or corner frequency in Hz
    /// @param srate   sample rate in Hz
    /// @param Q       quality factor of the types 0 to 4
    quenlis_biquad(int type, float dbGain, float freq, float srate, float Q);

    int get_type() const { return type_; }
    float get_dbGain() const { return dbGain_; }
    float get_freq() const { return freq_; }
    float get_Q() const { return Q_; }

    /// Each stores its value and designs anew with the other values. The histories stay.
    void edit_type(int type);
    void edit_dbGain(float dbGain);
    void edit_freq(float freq);
    void edit_Q(float Q);

    /// Designs from the arguments and installs the result. The arguments are not stored, on purpose: a later edit
    /// of one value goes back to the stored others.
    void edit_BiQuad(int type, float dbGain, float freq, float srate, float Q);

private:
    void design();

    int32_t type_;
    float dbGain_;
    float freq_;
    float srate_;
    float Q_;
};
