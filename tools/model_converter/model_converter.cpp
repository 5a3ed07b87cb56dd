// Turns the text of a recurrent model into the source of the built-in model, as part of the build.
#include "voice/recurrent/model.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using owned_model = std::unique_ptr<rnnoise_model, decltype(&rnnoise_model_free)>;

owned_model read_model(const char* path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "r"), &std::fclose);
    if (!file)
        throw std::runtime_error("cannot be opened");
    owned_model model(rnnoise_model_from_file(file.get()), &rnnoise_model_free);
    if (!model)
        throw std::runtime_error("is not a model in the model text format, version 1");
    return model;
}

template <class Layer>
void require_shape(const char* name, const Layer& layer, int inputs, int neurons) {
    if (layer.input_count != inputs || layer.neuron_count != neurons)
        throw std::runtime_error(std::string("layer ") + name + " must have " + std::to_string(inputs) +
                                 " inputs and " + std::to_string(neurons) + " neurons, not " +
                                 std::to_string(layer.input_count) + " and " +
                                 std::to_string(layer.neuron_count));
}

void require_shapes(const rnnoise_model& model) {
    require_shape("input_dense", *model.input_dense, 42, 24);
    require_shape("vad_gru", *model.vad_gru, 24, 24);
    require_shape("noise_gru", *model.noise_gru, 90, 48);
    require_shape("denoise_gru", *model.denoise_gru, 114, 96);
    require_shape("denoise_output", *model.denoise_output, 96, 22);
    require_shape("vad_output", *model.vad_output, 24, 1);
}

class source_file {
public:
    explicit source_file(const char* path) : out_(path) {
        out_ << "// Made of the model text by model_converter.\n"
                "#include \"voice/recurrent/model.h\"\n\n"
                "namespace {\n";
    }

    void write_dense(const std::string& name, const rnn_dense_layer& layer) {
        write_array(name + "_bias", layer.bias, layer.neuron_count);
        write_array(name + "_weights", layer.input_weights, layer.input_count * layer.neuron_count);
        out_ << "const rnn_dense_layer " << name << " = {" << name << "_bias, " << name << "_weights, ";
        write_shape(layer);
    }

    void write_gru(const std::string& name, const rnn_gru_layer& layer) {
        write_array(name + "_bias", layer.bias, 3 * layer.neuron_count);
        write_array(name + "_weights", layer.input_weights, layer.input_count * 3 * layer.neuron_count);
        write_array(name + "_recurrent_weights", layer.recurrent_weights,
                    layer.neuron_count * 3 * layer.neuron_count);
        out_ << "const rnn_gru_layer " << name << " = {" << name << "_bias, " << name << "_weights, " << name
             << "_recurrent_weights, ";
        write_shape(layer);
    }

    void write_record() {
        out_ << "} // namespace\n\nextern const rnnoise_model rnnoise_model_orig = {";
        for (const char* const name :
             {"input_dense", "vad_gru", "noise_gru", "denoise_gru", "denoise_output", "vad_output"})
            out_ << name << ".neuron_count, &" << name << ", ";
        out_ << "};\n";
        if (!out_.flush())
            throw std::runtime_error("could not be written as source");
    }

private:
    void write_array(const std::string& name, const std::int8_t* values, int count) {
        out_ << "alignas(64) const std::int8_t " << name << "[] = {";
        for (int i = 0; i < count; ++i)
            out_ << static_cast<int>(values[i]) << (i % 32 == 31 ? ",\n" : ",");
        out_ << "};\n";
    }

    template <class Layer>
    void write_shape(const Layer& layer) {
        out_ << layer.input_count << ", " << layer.neuron_count << ", " << layer.activation << "};\n";
    }

    std::ofstream out_;
};

void write_source(const rnnoise_model& model, const char* path) {
    source_file source(path);
    source.write_dense("input_dense", *model.input_dense);
    source.write_gru("vad_gru", *model.vad_gru);
    source.write_gru("noise_gru", *model.noise_gru);
    source.write_gru("denoise_gru", *model.denoise_gru);
    source.write_dense("denoise_output", *model.denoise_output);
    source.write_dense("vad_output", *model.vad_output);
    source.write_record();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: model_converter <model text> <source file>\n";
        return 2;
    }
    try {
        const owned_model model = read_model(argv[1]);
        require_shapes(*model);
        write_source(*model, argv[2]);
    } catch (const std::exception& failure) {
        std::cerr << "The model " << argv[1] << ' ' << failure.what() << '\n';
        return 1;
    }
}
