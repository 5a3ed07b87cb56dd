#pragma once

#if defined(__SSE2__) || defined(_M_X64)
#include <xmmintrin.h>
#endif
#include <cstdint>

/// For the scope of one audio call, denormal results of this thread's float and double arithmetic become zero
/// and denormal operands count as zero; the host's setting comes back on every way out. Without it, silence
/// that decays through a filter costs many times what speech costs. Never allocates; takes a few nanoseconds.
/// On processors other than x86-64 and 64-bit Arm it does nothing.
class flush_to_zero {
public:
    flush_to_zero() : host_setting_(control()) { set_control(host_setting_ | flush_bits); }
    ~flush_to_zero() { set_control(host_setting_); }

    flush_to_zero(const flush_to_zero&) = delete;
    flush_to_zero& operator=(const flush_to_zero&) = delete;

private:
#if defined(__SSE2__) || defined(_M_X64)
    using control_word = std::uint32_t;
    static constexpr control_word flush_bits = 0x8000U | 0x0040U; // flush to zero, denormals are zero
    static control_word control() {
        return _mm_getcsr();
    }
    static void set_control(control_word word) {
        _mm_setcsr(word);
    }
#elif defined(__aarch64__)
    using control_word = std::uint64_t;
    static constexpr control_word flush_bits = std::uint64_t{1} << 24; // covers results and operands
    static control_word control() {
        control_word word;
        __asm__ volatile("mrs %0, fpcr" : "=r"(word));
        return word;
    }
    static void set_control(control_word word) {
        __asm__ volatile("msr fpcr, %0" : : "r"(word) : "memory");
    }
#else
    using control_word = std::uint32_t;
    static constexpr control_word flush_bits = 0;
    static control_word control() {
        return 0;
    }
    static void set_control(control_word) {}
#endif

    control_word host_setting_;
};
