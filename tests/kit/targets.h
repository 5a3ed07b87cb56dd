/// Runs a test's body on every instruction set of this machine.
#pragma once

#include "dsp/vector_targets.h"
#include "kit/compare.h"

#include <vector>

namespace test_kit {

/// Runs `body` with the name of each target, the scalar one first, then puts the former target back.
template <class Body>
void on_every_target(Body body) {
    const int former = active_vector_target();
    for (int target = 0; target < vector_target_count(); ++target) {
        select_vector_target(target);
        body(vector_target_name(target));
    }
    select_vector_target(former);
}

/// Fails the test unless `make` gives the samples of the scalar target on every other one too, to the bit.
template <class Make>
void expect_same_bits_on_every_target(Make make) {
    std::vector<float> reference;
    on_every_target([&](const char* name) {
        const std::vector<float> made = make();
        if (active_vector_target() == 0)
            reference = made;
        EXPECT_TRUE(same_bits(reference, made)) << name;
    });
}

} // namespace test_kit
