#pragma once

#include "failure.h"

#include <string>

/// The engine has no resamplers yet, so all audio is at one rate, in and out. Once it has them this file and
/// the two calls of require_legal_rate go: the engine itself knows best which rates it takes.
inline constexpr int legal_rate = 48000;

/// Throws a usage_error that names the legal rate when `rate`, in Hz, is another.
/// @param what  the file or option that the rate belongs to
inline void require_legal_rate(const std::string& what, int rate) {
    if (rate != legal_rate)
        throw usage_error(what + ": a rate of " + std::to_string(rate) + " Hz is not supported, only " +
                          std::to_string(legal_rate) + " Hz");
}
