#include <gtest/gtest.h>

#include <cstdlib>

#include "quoddle/strings/PathStrings.h"

namespace quod {
namespace {

TEST(PathStrings, LastPathComponentIsLexical) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"/tmp/scratch.tiff", "scratch.tiff"},
        {"/tmp/", "tmp"},
        {"scratch///", "scratch"},
        {"//a//b////", "b"},
        {"/./..//./..//", ".."},
        {"~", "~"},
        {"scratch", "scratch"},
        {"", ""},
        {"/", "/"},
        {"//", "/"},
        {"/////", "/"}};
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(lastPathComponent(path), expected) << path;
    }
}

TEST(PathStrings, ShortensEveryOccurrenceOfTheHomeFolder) {
    const std::tuple<std::string_view, std::string_view, std::string_view> cases[] = {
        {"/home/kim/notes.txt", "/home/kim", "~/notes.txt"},
        {"cp /home/kim/a /home/kim/b", "/home/kim", "cp ~/a ~/b"},
        {"/home/kim", "/home/kim/", "~"},
        {"/srv/data", "/home/kim", "/srv/data"},
        {"/home/kim/x", "", "/home/kim/x"},
        {"/home/kim/x", "/", "/home/kim/x"}};
    for (const auto& [text, home, expected] : cases) {
        EXPECT_EQ(shortenHomeFolder(text, home), expected) << text << " home " << home;
    }
    // Without a home folder given, the environment's is used.
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        const std::string path = std::string(home) + "/x";
        EXPECT_EQ(shortenHomeFolder(path), shortenHomeFolder(path, home));
    }
}

}  // namespace
}  // namespace quod
