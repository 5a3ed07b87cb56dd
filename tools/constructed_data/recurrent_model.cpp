#include "data_sets.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <vector>

// Weights and biases count in 256ths. Half of the first layer's units are constant and half follow the energy; what is
// built on the constant ones drives the gains open and the gates shut, so that nothing remembers.

namespace {

constexpr int highest = 127;
constexpr int lowest = -128;
constexpr int hyperbolic_tangent = 0;
constexpr int sigmoid = 1;
constexpr int rectifier = 2;

constexpr std::size_t features = 42;
constexpr std::size_t small_layer = 24;
constexpr std::size_t half = small_layer / 2;
constexpr std::size_t noise_units = 48;
constexpr std::size_t denoise_units = 96;
constexpr std::size_t bands = 22;

/// A layer of weights: one row for each input.
class matrix {
public:
    matrix(std::size_t inputs, std::size_t outputs) : outputs_(outputs), weights_(inputs * outputs) {}

    /// Sets the weights from inputs [in, in_end) to outputs [out, out_end).
    void connect(std::size_t in, std::size_t in_end, std::size_t out, std::size_t out_end, int weight) {
        for (std::size_t i = in; i < in_end; ++i)
            for (std::size_t o = out; o < out_end; ++o)
                weights_[i * outputs_ + o] = weight;
    }

    const std::vector<int>& weights() const { return weights_; }

private:
    std::size_t outputs_;
    std::vector<int> weights_;
};

class model_file {
public:
    explicit model_file(const std::filesystem::path& file) : out_(file) {
        out_ << "rnnoise-nu model file version 1\n";
    }

    void write_dense(std::size_t inputs, std::size_t neurons, int activation, const matrix& weights,
                     const std::vector<int>& bias) {
        out_ << inputs << ' ' << neurons << ' ' << activation << '\n';
        write(weights.weights());
        write(bias);
    }

    void write_recurrent(std::size_t inputs, std::size_t neurons, const matrix& weights,
                         const std::vector<int>& bias) {
        out_ << inputs << ' ' << neurons << ' ' << rectifier << '\n';
        write(weights.weights());
        write(std::vector<int>(neurons * 3 * neurons));
        write(bias);
    }

    bool finish() {
        out_.close();
        return static_cast<bool>(out_);
    }

private:
    void write(const std::vector<int>& values) {
        for (std::size_t i = 0; i < values.size(); ++i)
            out_ << values[i] << (i % 32 == 31 || i + 1 == values.size() ? '\n' : ' ');
    }

    std::ofstream out_;
};

/// Units [0, half) are constant, the others rise with the loudness of three frames, feature 0.
void write_input_dense(model_file& model) {
    constexpr int slope = 16;
    matrix weights(features, small_layer);
    weights.connect(0, 1, half, small_layer, slope);
    std::vector<int> bias(small_layer);
    std::fill_n(bias.begin(), half, highest);
    model.write_dense(features, small_layer, hyperbolic_tangent, weights, bias);
}

/// Units [0, half) follow the energy above a threshold, the others are constant.
void write_vad_gru(model_file& model) {
    constexpr std::size_t gate = small_layer;
    constexpr std::size_t candidate = 2 * gate;
    matrix weights(small_layer, 3 * gate);
    weights.connect(0, half, 0, gate, lowest);
    weights.connect(0, half, candidate, candidate + gate, highest);
    weights.connect(half, small_layer, candidate, candidate + half, highest);
    std::vector<int> bias(3 * gate);
    std::fill_n(bias.begin(), gate, lowest);
    std::fill_n(bias.begin() + candidate, gate, highest);
    model.write_recurrent(small_layer, small_layer, weights, bias);
}

void write_noise_gru(model_file& model) {
    constexpr std::size_t inputs = 2 * small_layer + features;
    model.write_recurrent(inputs, noise_units, matrix(inputs, 3 * noise_units),
                          std::vector<int>(3 * noise_units));
}

/// Every unit is large and constant, made of the constant ones of the voice layer.
void write_denoise_gru(model_file& model) {
    constexpr std::size_t inputs = small_layer + noise_units + features;
    matrix weights(inputs, 3 * denoise_units);
    weights.connect(half, small_layer, 0, denoise_units, lowest);
    weights.connect(half, small_layer, 2 * denoise_units, 3 * denoise_units, highest);
    model.write_recurrent(inputs, denoise_units, weights, std::vector<int>(3 * denoise_units));
}

void write_outputs(model_file& model) {
    constexpr int silence = -40;
    matrix gains(denoise_units, bands);
    gains.connect(0, denoise_units, 0, bands, highest);
    model.write_dense(denoise_units, bands, sigmoid, gains, std::vector<int>(bands));
    matrix voice(small_layer, 1);
    voice.connect(0, half, 0, 1, highest);
    voice.connect(half, small_layer, 0, 1, silence);
    model.write_dense(small_layer, 1, sigmoid, voice, {lowest});
}

} // namespace

void write_recurrent_model(const std::filesystem::path& data) {
    const std::filesystem::path folder = data / "recurrent_denoiser";
    std::filesystem::create_directories(folder);
    const std::filesystem::path file = folder / "model.txt";
    const std::filesystem::path unfinished = folder / "model.txt.unfinished";
    model_file model(unfinished);
    write_input_dense(model);
    write_vad_gru(model);
    write_noise_gru(model);
    write_denoise_gru(model);
    write_outputs(model);
    if (!model.finish())
        throw std::runtime_error("cannot write " + unfinished.string());
    std::filesystem::rename(unfinished, file);
}
