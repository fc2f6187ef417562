#include "quoddle/filesystem/FileItem.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include "quoddle/base/Utf.h"
#include "quoddle/preferences/Defaults.h"
#include "quoddle/strings/LocalizedCompare.h"

namespace quod {
namespace {

// A folder whose entries are being turned into children. Invariant: `node` is the last child of
// the folder below it on the stack, which appends nothing until this one is done, so the pointer
// stays valid.
struct OpenFolder {
    FileItem* node;
    std::vector<Url> entries;
    std::size_t next = 0;
};

// Stable, so names that collate the same keep the listing's order.
void sortByName(std::vector<FileItem>& items) {
    if (items.size() < 2) return;
    std::vector<std::u16string> names;
    names.reserve(items.size());
    for (const FileItem& item : items)
        names.push_back(toUtf16(item.name));
    const std::vector<std::u16string_view> views(names.begin(), names.end());
    std::vector<FileItem> sorted;
    sorted.reserve(items.size());
    for (const std::size_t index : localizedStandardOrder(views, SortOrder::ascending))
        sorted.push_back(std::move(items[index]));
    items = std::move(sorted);
}

// Node, its children, then each child's descendants in turn: expanding nodes in depth-first
// pre-order and emitting each one's children gives exactly that order.
template <typename Node>
std::vector<Node*> descendants(Node& root) {
    std::vector<Node*> result;
    std::vector<Node*> toExpand{&root};
    while (!toExpand.empty()) {
        Node* node = toExpand.back();
        toExpand.pop_back();
        for (auto& child : node->children)
            result.push_back(&child);
        for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
            toExpand.push_back(&*child);
    }
    return result;
}

}  // namespace

FileItem::FileItem(Url url, Leaf) : url(std::move(url)), name(this->url.lastPathComponent()) {}

FileItem::FileItem(Url url, const Operation* operation) : FileItem(std::move(url), Leaf{}) {
    const DirectoryEnumerationOptions options = enumerationOptions();
    std::vector<OpenFolder> stack;
    // The start of a node's construction: the only place cancellation is looked at.
    const auto open = [&](FileItem& node) {
        if (operation && operation->isCancelled()) return;
        if (!node.url.hasDirectoryPath()) return;
        auto entries = FileManager::contentsOfDirectory(node.url, options);
        if (!entries || entries->empty()) return;
        node.children.reserve(entries->size());
        stack.push_back({&node, std::move(*entries)});
    };
    // Visits nodes in the order the recursive definition would build them, so cancellation cuts
    // the tree at the same place.
    open(*this);
    while (!stack.empty()) {
        OpenFolder& folder = stack.back();
        if (folder.next == folder.entries.size()) {
            sortByName(folder.node->children);
            stack.pop_back();
            continue;
        }
        folder.node->children.push_back(FileItem(std::move(folder.entries[folder.next++]), Leaf{}));
        open(folder.node->children.back());
    }
}

std::vector<const FileItem*> FileItem::allChildren() const {
    return descendants(*this);
}

std::vector<FileItem*> FileItem::allChildren() {
    return descendants(*this);
}

DirectoryEnumerationOptions FileItem::enumerationOptions() {
    static const DirectoryEnumerationOptions options =
        internal::fileItemEnumerationOptions(Defaults::foldersShowsHidden.get());
    return options;
}

namespace internal {

DirectoryEnumerationOptions fileItemEnumerationOptions(bool foldersShowsHidden) {
    const auto options = DirectoryEnumerationOptions::skipsSubdirectoryDescendants;
    return foldersShowsHidden ? options : options | DirectoryEnumerationOptions::skipsHiddenFiles;
}

}  // namespace internal
}  // namespace quod
