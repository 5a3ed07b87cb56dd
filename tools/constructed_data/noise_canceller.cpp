#include "data_sets.h"
#include "table_file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>

namespace {

constexpr std::size_t frame = 480;
constexpr std::size_t hop = 240;
constexpr std::size_t transform = 512;
constexpr std::size_t bins = 257;
constexpr std::size_t encoding = 256;
constexpr std::size_t units = 128;
constexpr std::size_t gates = 4 * units;
constexpr float mask_bias = -0.1F; // of both masks: half open, where training can move them either way

using table = std::vector<float>;

/// Writes tables by name into one folder.
class folder {
public:
    explicit folder(std::filesystem::path path) : path_(std::move(path)) {}

    void write(const std::string& name, const table& values) const {
        write_table_file(path_ / (name + "_48k.f32"), values);
    }

    /// A layer of cells with the usual start: uniform weights by X. Glorot and Y. Bengio (2010), on a coarse grid, and
    /// forget gates that begin open.
    void write_cells(const std::string& name, std::size_t inputs) {
        write(name + "_weights", random_table(inputs));
        write(name + "_recurrent_weights", random_table(units));
        table bias(gates);
        std::fill_n(bias.begin() + units, units, 1.0F);
        write(name + "_bias", bias);
    }

private:
    table random_table(std::size_t inputs) {
        constexpr float grid = 512.0F;
        const auto limit =
            static_cast<std::uint32_t>(grid * std::sqrt(6.0 / static_cast<double>(inputs + gates)));
        table values(inputs * gates);
        for (float& value : values)
            value = (static_cast<float>(random_() % (2 * limit + 1)) - static_cast<float>(limit)) / grid;
        return values;
    }

    std::filesystem::path path_;
    std::mt19937 random_{1};
};

/// Function k of the modified discrete cosine transform with a sine window, at sample n of a frame (J. P. Princen and
/// A. B. Bradley, 1986): its own inverse when frames overlap by half.
double lapped_cosine(std::size_t k, std::size_t n) {
    const double position = static_cast<double>(n) + 0.5;
    const double window = std::sin(M_PI * position / frame);
    return window * std::sqrt(2.0 / hop) *
           std::cos(M_PI / hop * (position + hop / 2.0) * (static_cast<double>(k) + 0.5));
}

table analysis() {
    table weights(transform * encoding);
    for (std::size_t n = 0; n < frame; ++n)
        for (std::size_t k = 0; k < hop; ++k)
            weights[n * encoding + k] = static_cast<float>(lapped_cosine(k, n));
    return weights;
}

/// Makes up for both masks.
table synthesis() {
    const double opening = 1.0 / (1.0 + std::exp(-static_cast<double>(mask_bias)));
    table weights(encoding * frame);
    for (std::size_t k = 0; k < hop; ++k)
        for (std::size_t n = 0; n < frame; ++n)
            weights[k * frame + n] = static_cast<float>(lapped_cosine(k, n) / (opening * opening));
    return weights;
}

} // namespace

void write_noise_canceller(const std::filesystem::path& data) {
    folder tables(data / "noise_canceller");
    tables.write_cells("lstm", bins);
    tables.write_cells("lstm_1", units);
    tables.write("dense_bias", table(bins, mask_bias));
    tables.write("dense_weights", table(units * bins));
    tables.write("conv1d_weights", analysis());
    tables.write("instant_layer_normalization_gamma_weights", table(encoding, 1.0F));
    tables.write("instant_layer_normalization_beta_weights", table(encoding));
    tables.write_cells("lstm_2", encoding);
    tables.write_cells("lstm_3", units);
    tables.write("dense_1_bias", table(encoding, mask_bias));
    tables.write("dense_1_weights", table(units * encoding));
    tables.write("conv1d_1_weights", synthesis());
}
