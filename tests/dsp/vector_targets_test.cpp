#include "dsp/vector_targets.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "dsp/vector_primitives.h"

namespace {

TEST(VectorTargets, ScalarComesFirstAndNamesDiffer) {
    ASSERT_GE(vector_target_count(), 1);
    EXPECT_STREQ(vector_target_name(0), "scalar");
    std::set<std::string> names;
    for (int target = 0; target < vector_target_count(); ++target)
        names.insert(vector_target_name(target));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(vector_target_count()));
}

TEST(VectorTargets, StartPicksTheBestOnceAndAgain) {
    select_vector_target(0);
    EXPECT_EQ(active_vector_target(), 0);
    qnl_start_vector_layer();
    EXPECT_EQ(active_vector_target(), vector_target_count() - 1);
    qnl_start_vector_layer();
    EXPECT_EQ(active_vector_target(), vector_target_count() - 1);
}

} // namespace
