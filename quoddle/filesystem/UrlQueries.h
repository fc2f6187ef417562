// Questions about file URLs beyond the Url type itself: sameness after standardisation, cloud
// storage, and the path as the user should read it.
//
// `equalTo(a, b)`: whether the two paths are the same text once each is standardised
// (standardizingPath: "." and ".." resolved, a leading "~" expanded, repeated and trailing "/"
// removed). Lexical only: two paths that reach one file through a symbolic link differ, and the
// directory flag is not compared. "/a/b/." and "/a//b" are equal to "/a/b".
//
// `isUbiquitous(url)`: whether the item is kept in the user's cloud container. There is no such
// container on Linux desktops, so always false.
//
// `localizedDisplayPath(url, lastComponent, ubiquitousPath)`: the path for showing, built from the
// standardised path:
//   1. `lastComponent` true: only the last component ("/" for the root);
//   2. a path inside `ubiquitousPath` (a folder; "" for none): "Cloud Documents", translated, then
//      the rest of the path below that folder ("Cloud Documents/notes/a.txt");
//   3. a path inside the home folder ($HOME): "~" and the rest ("~/notes/a.txt", "~");
//   4. anything else: the path as it is.
// "Inside" goes by whole components: "/home/anna" is not inside "/home/ann".
#pragma once

#include <string>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod {

[[nodiscard]] QUODDLE_EXPORT bool equalTo(const Url& a, const Url& b);

[[nodiscard]] QUODDLE_EXPORT bool isUbiquitous(const Url& url);

[[nodiscard]] QUODDLE_EXPORT std::string localizedDisplayPath(const Url& url, bool lastComponent,
                                                              std::string_view ubiquitousPath);

}  // namespace quod
