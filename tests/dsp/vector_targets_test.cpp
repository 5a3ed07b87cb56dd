#include "dsp/vector_targets.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "dsp/vector_primitives.h"

TEST(VectorTargets, ScalarComesFirstAndStartPicksTheLastAgainAndAgain) {
    std::set<std::string> names;
    for (int target = 0; target < vector_target_count(); ++target)
        names.insert(vector_target_name(target));
    EXPECT_EQ(names.size(), static_cast<std::size_t>(vector_target_count()));
    EXPECT_STREQ(vector_target_name(0), "scalar");
    for (int start = 0; start < 2; ++start) {
        qnl_start_vector_layer();
        EXPECT_EQ(active_vector_target(), vector_target_count() - 1);
    }
    select_vector_target(0);
    EXPECT_EQ(active_vector_target(), 0);
}
