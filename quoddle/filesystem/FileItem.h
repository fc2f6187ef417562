// One node of an in-memory copy of a folder hierarchy, for outline views of folders.
//
// Constructing the node for a folder builds the whole tree below it at once: one directory read
// per folder, children in Finder-like name order ("a2" < "a10" < "b", by
// `localizedStandardOrder` in the current locale; names that collate the same keep the order the
// file system listed them in). A URL that is not a directory URL (`hasDirectoryPath`) is a leaf.
// Symbolic links are never followed: a link to a folder, a dangling link and a link to an ancestor
// are all leaves, so a build always ends. Hidden entries (names beginning with ".") are left out
// unless the "FoldersShowsHidden" preference is on; the preference is read once per process, on
// the first build, so changing it affects trees built in a later run only.
//
// Nothing is reported: a folder that cannot be read, and a build that was cancelled, give nodes
// without children, exactly like empty folders.
//
// Cancelling. Pass an `Operation` and cancel it from another thread to abandon a build part-way.
// It is polled once at the start of each node, in the order the nodes are reached (each folder's
// entries in listing order, a child's whole subtree before its next sibling). So a cancelled build
// finishes listing the folder in progress, and every node reached after the cancellation is there
// but empty: a folder either has all its entries or none. The operation must outlive the
// constructor and nothing more.
//
// Depth. The build keeps its own stack of open folders instead of recursing, so a deep hierarchy
// costs heap, not call stack. Copying and destroying a tree do recurse, one frame per level, but a
// folder whose path is longer than PATH_MAX cannot be listed, so no tree is deeper than about
// 2,000 levels.
//
// Nodes are not refreshed; build a new tree to see later changes. A tree is a plain value
// (copyable, movable, not locked): build it on a background thread, then hand it over.
//
//   Operation operation;
//   FileItem root(Url::fileURL("/home/me/project/"), &operation);
//   root.isRoot = true;
//   for (const FileItem* item : root.allChildren()) show(item->name);
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/filesystem/FileManager.h"
#include "quoddle/filesystem/Operation.h"
#include "quoddle/filesystem/Url.h"

namespace quod {

class QUODDLE_EXPORT FileItem {
  public:
    explicit FileItem(Url url, const Operation* operation = nullptr);

    Url url;
    // The last path component of `url` when the node was made.
    std::string name;
    // The name of an icon in the desktop's icon theme ("folder", "text-x-generic"), which every
    // toolkit can look up (QIcon::fromTheme, GtkIconTheme). The tree never sets it: a view fills
    // it in, typically when a row is first shown.
    std::optional<std::string> icon;
    std::vector<FileItem> children;
    // Never set by the tree: the client marks the node it built as the root.
    bool isRoot = false;

    // Every node below this one, this one excluded: first the children in order, then each child's
    // own `allChildren` in turn. For a root with children A (children A1, A2) and B (child B1):
    // A, B, A1, A2, B1. The pointers stay valid until the tree is changed or destroyed.
    [[nodiscard]] std::vector<const FileItem*> allChildren() const;
    [[nodiscard]] std::vector<FileItem*> allChildren();

    // The listing options every build uses, from "FoldersShowsHidden" as it was on first use.
    [[nodiscard]] static DirectoryEnumerationOptions enumerationOptions();

  private:
    struct Leaf {};
    FileItem(Url url, Leaf);
};

namespace internal {

// The rule behind `FileItem::enumerationOptions()`: skip-subdirectory-descendants (1) when hidden
// entries are shown, plus skip-hidden-files (5) when they are not.
[[nodiscard]] DirectoryEnumerationOptions fileItemEnumerationOptions(bool foldersShowsHidden);

}  // namespace internal
}  // namespace quod
