// Writes the data sets that are worked out by rule rather than trained.
#include "data_sets.h"

#include <exception>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '-') {
        std::cerr << "usage: constructed_data <data folder>\n"
                     "Writes auto_eq/, noise_canceller/ and recurrent_denoiser/ into the folder: the "
                     "long-term speech\n"
                     "spectrum of the equaliser, and networks that pass the voice through, the ground that "
                     "training\n"
                     "starts from. The same bytes each time.\n";
        return argc == 2 && std::string(argv[1]) == "--help" ? 0 : 2;
    }
    try {
        write_speech_spectrum(argv[1]);
        write_noise_canceller(argv[1]);
        write_recurrent_model(argv[1]);
    } catch (const std::exception& failure) {
        std::cerr << "constructed_data: " << failure.what() << '\n';
        return 1;
    }
}
