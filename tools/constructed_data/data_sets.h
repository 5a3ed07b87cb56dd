/// The data sets of this tool, each written into its folder below a data folder. All throw std::exception when a file
/// cannot be written.
#pragma once

#include <filesystem>

/// auto_eq/target_values.f32: a smooth curve through a few points of a long-term average speech spectrum.
void write_speech_spectrum(const std::filesystem::path& data);

/// noise_canceller/: twenty tables whose masks are constant and whose two transforms are the analysis and synthesis of
/// a lapped orthogonal transform, so that the overlapped frames restore the input. The recurrent layers do real work
/// that reaches no output.
void write_noise_canceller(const std::filesystem::path& data);

/// recurrent_denoiser/model.txt: gains always open, voice whenever the frame is louder than a quiet room.
void write_recurrent_model(const std::filesystem::path& data);
