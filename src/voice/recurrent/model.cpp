#include "voice/recurrent/model.h"

#include <memory>
#include <new>
#include <vector>

namespace {

constexpr int largest_size = 128; // of counts and codes alike

/// A model from a file, with the storage behind its records. The record is the base: its address is the model's.
struct loaded_model : rnnoise_model {
    rnn_dense_layer input_dense_layer{};
    rnn_gru_layer vad_gru_layer{};
    rnn_gru_layer noise_gru_layer{};
    rnn_gru_layer denoise_gru_layer{};
    rnn_dense_layer denoise_output_layer{};
    rnn_dense_layer vad_output_layer{};
    std::vector<std::unique_ptr<std::int8_t[]>> arrays;

    loaded_model()
        : rnnoise_model{0, &input_dense_layer, 0, &vad_gru_layer,        0, &noise_gru_layer,
                        0, &denoise_gru_layer, 0, &denoise_output_layer, 0, &vad_output_layer} {}
};

bool read_header(std::FILE* stream) {
    int version = 0;
    return std::fscanf(stream, "rnnoise-nu model file version %d\n", &version) == 1 && version == 1;
}

/// Reads what follows the header, number by number.
class model_reader {
public:
    model_reader(std::FILE* stream, loaded_model& model) : stream_(stream), model_(model) {}

    bool read_layers() {
        return read_dense(model_.input_dense_layer, model_.input_dense_size) &&
               read_gru(model_.vad_gru_layer, model_.vad_gru_size) &&
               read_gru(model_.noise_gru_layer, model_.noise_gru_size) &&
               read_gru(model_.denoise_gru_layer, model_.denoise_gru_size) &&
               read_dense(model_.denoise_output_layer, model_.denoise_output_size) &&
               read_dense(model_.vad_output_layer, model_.vad_output_size);
    }

private:
    bool read_size(std::int32_t& size) {
        int value = 0;
        if (std::fscanf(stream_, "%d", &value) != 1 || value < 0 || value > largest_size)
            return false;
        size = value;
        return true;
    }

    bool read_activation(std::int32_t& activation) {
        if (!read_size(activation))
            return false;
        if (activation != 1 && activation != 2)
            activation = 0;
        return true;
    }

    bool read_array(const std::int8_t*& array, std::int32_t count) {
        model_.arrays.push_back(std::make_unique<std::int8_t[]>(static_cast<std::size_t>(count)));
        std::int8_t* const values = model_.arrays.back().get();
        array = values;
        for (std::int32_t i = 0; i < count; ++i) {
            int value = 0;
            if (std::fscanf(stream_, "%d", &value) != 1)
                return false;
            values[i] = static_cast<std::int8_t>(value);
        }
        return true;
    }

    template <class Layer>
    bool read_shape(Layer& layer, std::int32_t& size) {
        if (!read_size(layer.input_count) || !read_size(layer.neuron_count) ||
            !read_activation(layer.activation))
            return false;
        size = layer.neuron_count;
        return true;
    }

    bool read_dense(rnn_dense_layer& layer, std::int32_t& size) {
        return read_shape(layer, size) && read_array(layer.input_weights, layer.input_count * size) &&
               read_array(layer.bias, size);
    }

    bool read_gru(rnn_gru_layer& layer, std::int32_t& size) {
        return read_shape(layer, size) && read_array(layer.input_weights, layer.input_count * 3 * size) &&
               read_array(layer.recurrent_weights, size * 3 * size) && read_array(layer.bias, 3 * size);
    }

    std::FILE* stream_;
    loaded_model& model_;
};

} // namespace

rnnoise_model* rnnoise_model_from_file(std::FILE* stream) {
    if (!read_header(stream))
        return nullptr;
    try {
        auto model = std::make_unique<loaded_model>();
        return model_reader(stream, *model).read_layers() ? model.release() : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void rnnoise_model_free(rnnoise_model* model) {
    delete static_cast<loaded_model*>(model);
}
