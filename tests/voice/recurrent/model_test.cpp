#include "voice/recurrent/model.h"

#include "kit/host.h"

#include <memory>

namespace {

using owned_model = std::unique_ptr<rnnoise_model, decltype(&rnnoise_model_free)>;

owned_model read_file(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "r"), &std::fclose);
    return {rnnoise_model_from_file(file.get()), &rnnoise_model_free};
}

owned_model read(const std::string& text) {
    const test_kit::temporary_directory folder;
    return read_file(folder.write("model.txt", text));
}

const std::string header = "rnnoise-nu model file version 1\n";

std::string numbers(int count, int value) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += std::to_string(value) + ' ';
    return text;
}

std::string dense(int inputs, int neurons, int activation, int weight = 1) {
    return numbers(1, inputs) + numbers(1, neurons) + numbers(1, activation) + '\n' +
           numbers(inputs * neurons, weight) + numbers(neurons, 2);
}

std::string gru(int inputs, int neurons, int activation) {
    return numbers(1, inputs) + numbers(1, neurons) + numbers(1, activation) + '\n' +
           numbers(inputs * 3 * neurons, 3) + numbers(neurons * 3 * neurons, 4) + numbers(3 * neurons, 5);
}

std::string small_model(const std::string& first_layer = dense(2, 3, 0)) {
    return header + first_layer + gru(3, 2, 2) + gru(4, 1, 7) + gru(5, 128, 1) + dense(0, 0, 128) +
           dense(2, 1, 1);
}

TEST(ModelText, FillsTheRecordInItsOrder) {
    const owned_model model = read(small_model() + "text behind is not read");
    ASSERT_TRUE(model);
    EXPECT_EQ(model->input_dense_size, 3);
    EXPECT_EQ(model->input_dense->input_count, 2);
    EXPECT_EQ(model->input_dense->input_weights[5], 1);
    EXPECT_EQ(model->input_dense->bias[2], 2);
    EXPECT_EQ(model->vad_gru->activation, 2);
    EXPECT_EQ(model->vad_gru->input_weights[17], 3);
    EXPECT_EQ(model->vad_gru->recurrent_weights[11], 4);
    EXPECT_EQ(model->vad_gru->bias[5], 5);
    EXPECT_EQ(model->noise_gru->activation, 0) << "7 is the hyperbolic tangent";
    EXPECT_EQ(model->denoise_gru_size, 128);
    EXPECT_EQ(model->denoise_gru->activation, 1);
    EXPECT_EQ(model->denoise_output_size, 0);
    EXPECT_EQ(model->vad_output_size, 1);
}

TEST(ModelText, CutsWeightsToEightBitsAndIgnoresLines) {
    for (const auto& [written, stored] :
         {std::pair{-128, -128}, {127, 127}, {200, -56}, {300, 44}, {-129, 127}}) {
        const owned_model model = read(small_model(dense(2, 3, 0, written)));
        ASSERT_TRUE(model);
        EXPECT_EQ(model->input_dense->input_weights[0], stored);
    }
    std::string one_line = small_model();
    std::replace(one_line.begin() + static_cast<long>(header.size()), one_line.end(), '\n', ' ');
    EXPECT_TRUE(read(one_line));
}

TEST(ModelText, ThatIsNoneGivesNullAndLeavesNothingBehind) {
    const std::string good = small_model();
    const test_kit::allocation_counter heap;
    for (const std::string& bad :
         {std::string(), std::string("rnnoise-nu model file version 2\n") + good.substr(header.size()),
          std::string("something else"), small_model(dense(129, 1, 0)), small_model(dense(1, 129, 0)),
          small_model(dense(1, 1, 129)), small_model("-1 1 0 "), small_model("2 3 0 1 2 three")})
        EXPECT_FALSE(read(bad)) << bad.substr(0, 60);
    for (size_t length = 0; length < good.size() - 2; length = length * 2 + 1)
        EXPECT_FALSE(read(good.substr(0, length))) << length;
    rnnoise_model_free(nullptr);
    EXPECT_EQ(heap.allocations(), heap.releases());
}

TEST(BuiltInModel, EqualsItsText) {
    const owned_model model = read_file(QUENLIS_SOURCE_DIR "/data/recurrent_denoiser/model.txt");
    ASSERT_TRUE(model);
    const rnn_gru_layer& read_layer = *model->denoise_gru;
    const rnn_gru_layer& built_in = *rnnoise_model_orig.denoise_gru;
    ASSERT_EQ(built_in.input_count, 114);
    ASSERT_EQ(built_in.neuron_count, 96);
    EXPECT_TRUE(
        std::equal(built_in.input_weights, built_in.input_weights + 114 * 288, read_layer.input_weights));
    EXPECT_TRUE(std::equal(built_in.recurrent_weights, built_in.recurrent_weights + 96 * 288,
                           read_layer.recurrent_weights));
    EXPECT_TRUE(std::equal(built_in.bias, built_in.bias + 288, read_layer.bias));
    EXPECT_EQ(rnnoise_model_orig.denoise_output->activation, 1);
    EXPECT_EQ(rnnoise_model_orig.vad_output->input_weights[23], model->vad_output->input_weights[23]);
}

} // namespace
