// A file URL: an absolute path and whether it names a directory.
//
// This stands in for the platform's URL type as far as file locations go. The path is kept as
// given apart from trailing slashes, which become the has-directory-path flag ("/a/b/" is the
// directory /a/b); a relative path is taken relative to the current folder when the URL is made.
// Two URLs are equal when their paths are equal as text and both or neither name a directory, as
// the platform compares URLs by their text: "/a/b" and "/a/./b" differ until standardised.
//
//   fileURL("/tmp/x")          asks the file system: a directory URL if /tmp/x is a folder now
//   fileURL("/tmp/x/")         a directory URL, whatever is on disk
//   fileURL("/tmp/x", false)   a file URL, whatever is on disk
//
// The empty URL (default-constructed) names nothing; its path is "" and every file-system
// question about it answers "no".
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT Url {
  public:
    Url() = default;

    [[nodiscard]] static Url fileURL(std::string_view path);
    [[nodiscard]] static Url fileURL(std::string_view path, bool isDirectory);

    // The path without trailing slashes ("/" for the root).
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] bool hasDirectoryPath() const { return isDirectory_; }
    [[nodiscard]] bool isEmpty() const { return path_.empty(); }

    // "/a/b.txt" -> "b.txt", "/a/b/" -> "b", "/" -> "/".
    [[nodiscard]] std::string lastPathComponent() const;
    // The parent folder as a directory URL: "/a/b" -> "/a/", "/a" -> "/". The root stays the
    // root (the platform would answer "/../", which names the same folder).
    [[nodiscard]] Url deletingLastPathComponent() const;
    // `component` may hold several components ("a/b"); the first form asks the file system
    // whether the result is a directory, as fileURL(path) does.
    [[nodiscard]] Url appendingPathComponent(std::string_view component) const;
    [[nodiscard]] Url appendingPathComponent(std::string_view component, bool isDirectory) const;
    // The same location with its path standardised (standardizingPath below).
    [[nodiscard]] Url standardized() const;

    // "file://" and the percent-encoded path, with a trailing "/" for a directory.
    [[nodiscard]] std::string absoluteString() const;

    friend bool operator==(const Url&, const Url&) = default;

  private:
    Url(std::string path, bool isDirectory) : path_(std::move(path)), isDirectory_(isDirectory) {}

    std::string path_;
    bool isDirectory_ = false;
};

// The platform's path standardisation, done lexically: a leading "~" or "~/" becomes the home
// folder, runs of "/" become one, "." components go, ".." removes the component before it (at the
// root it stays at the root; a relative path keeps leading ".."), and trailing slashes go.
//   "/a//b/./c/../d/" -> "/a/b/d", "/." -> "/", "a/../../b" -> "../b", "" -> ""
[[nodiscard]] QUODDLE_EXPORT std::string standardizingPath(std::string_view path);

}  // namespace quod

template <>
struct std::hash<quod::Url> {
    size_t operator()(const quod::Url& url) const noexcept {
        return std::hash<std::string>()(url.path()) ^ static_cast<size_t>(url.hasDirectoryPath());
    }
};
