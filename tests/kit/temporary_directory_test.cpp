#include "kit/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace {

using test_kit::temporary_directory;

TEST(temporary_directory, keeps_bytes_as_they_are_and_leaves_nothing_behind) {
    std::string path;
    {
        const temporary_directory directory;
        const temporary_directory other;
        EXPECT_NE(directory.path(), other.path());
        path = directory.write("rooms.json", std::string("a\0\r\n\xff", 5));
        EXPECT_EQ(path, directory.path_of("rooms.json"));
        EXPECT_EQ(std::filesystem::file_size(path), 5U);
        directory.write("rooms.json", "");
        EXPECT_EQ(std::filesystem::file_size(path), 0U);
        EXPECT_THROW(directory.write("absent/file", ""), std::runtime_error);
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
}

} // namespace
