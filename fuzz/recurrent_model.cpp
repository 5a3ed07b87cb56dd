// Any bytes as the text of a recurrent model: null, or a model that a denoiser runs with, however its layers fit.
#include "voice/recurrent/denoiser.h"

#include <cstdint>
#include <cstdio>
#include <memory>

namespace {

void run_frames(const rnnoise_model* model) {
    constexpr int frames = 3;
    rnnoise_state* const state = rnnoise_create(model);
    float frame[denoiser_spectrum::frame_size];
    for (int i = 0; i < frames; ++i) {
        for (int k = 0; k < denoiser_spectrum::frame_size; ++k)
            frame[k] = k % 100 == 0 ? 10000.0F : 0.0F;
        rnnoise_process_frame(state, frame, frame);
    }
    rnnoise_destroy(state);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0)
        return 0; // a stream over no memory cannot be opened
    // The stream only reads.
    auto* const memory = const_cast<std::uint8_t*>(bytes); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(fmemopen(memory, size, "r"), &std::fclose);
    rnnoise_model* const model = rnnoise_model_from_file(stream.get());
    if (model != nullptr)
        run_frames(model);
    rnnoise_model_free(model);
    return 0;
}
