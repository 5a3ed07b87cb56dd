#include "contenders.h"

#include "dsp/resampler.h"

#ifdef WITH_SOXR
#include <soxr.h>
#endif
#ifdef WITH_SPEEXDSP
#include <speex/speex_resampler.h>
#endif

namespace {

class quenlis_contender : public contender {
public:
    quenlis_contender(int input_rate, int output_rate)
        : resampler_(input_rate, output_rate, 1, output_rate / 100) {}
    void process(const float* in, float* out) override { resampler_.process(in, out); }

private:
    quenlis_resampler resampler_;
};

#ifdef WITH_SOXR
class soxr_contender : public contender {
public:
    soxr_contender(int input_rate, int output_rate)
        : frames_(static_cast<size_t>(input_rate / 100)),
          room_(static_cast<size_t>(2 * (output_rate / 100))) {
        const soxr_io_spec_t samples = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        resampler_.reset(soxr_create(input_rate, output_rate, 1, nullptr, &samples, &quality, nullptr));
    }
    void process(const float* in, float* out) override {
        soxr_process(resampler_.get(), in, frames_, nullptr, out, room_, nullptr);
    }

private:
    struct deleter {
        void operator()(soxr_t resampler) const { soxr_delete(resampler); }
    };
    size_t frames_;
    size_t room_;
    std::unique_ptr<soxr, deleter> resampler_;
};
#endif

#ifdef WITH_SPEEXDSP
class speexdsp_contender : public contender {
public:
    speexdsp_contender(int input_rate, int output_rate)
        : frames_(static_cast<spx_uint32_t>(input_rate / 100)),
          room_(static_cast<spx_uint32_t>(2 * (output_rate / 100))),
          resampler_(speex_resampler_init(1, static_cast<spx_uint32_t>(input_rate),
                                          static_cast<spx_uint32_t>(output_rate), 10, nullptr)) {}
    void process(const float* in, float* out) override {
        spx_uint32_t taken = frames_;
        spx_uint32_t made = room_;
        speex_resampler_process_float(resampler_.get(), 0, in, &taken, out, &made);
    }

private:
    struct deleter {
        void operator()(SpeexResamplerState* resampler) const { speex_resampler_destroy(resampler); }
    };
    spx_uint32_t frames_;
    spx_uint32_t room_;
    std::unique_ptr<SpeexResamplerState, deleter> resampler_;
};
#endif

} // namespace

std::unique_ptr<contender> make_quenlis(int input_rate, int output_rate) {
    return std::make_unique<quenlis_contender>(input_rate, output_rate);
}

std::unique_ptr<contender> make_soxr([[maybe_unused]] int input_rate, [[maybe_unused]] int output_rate) {
#ifdef WITH_SOXR
    return std::make_unique<soxr_contender>(input_rate, output_rate);
#else
    return nullptr;
#endif
}

std::unique_ptr<contender> make_speexdsp([[maybe_unused]] int input_rate, [[maybe_unused]] int output_rate) {
#ifdef WITH_SPEEXDSP
    return std::make_unique<speexdsp_contender>(input_rate, output_rate);
#else
    return nullptr;
#endif
}
