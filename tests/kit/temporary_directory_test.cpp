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
        const std::string bytes("a\0\r\n\xff", 5);
        path = directory.write("rooms.json", bytes);
        EXPECT_EQ(path, directory.path_of("rooms.json"));
        EXPECT_EQ(directory.read("rooms.json"), bytes);
        directory.write("rooms.json", "");
        EXPECT_EQ(directory.read("rooms.json"), "");
        EXPECT_THROW(directory.read("absent"), std::runtime_error);
        EXPECT_THROW(directory.write("absent/file", ""), std::runtime_error);
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
}

} // namespace
