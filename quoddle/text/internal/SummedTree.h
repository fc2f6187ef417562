// A B-tree of leaves whose inner nodes keep, for each child, the sums of two measures of its
// subtree: a length in units and a count of lines. It is the skeleton under the text storage
// (leaves are chunks of text; lines are line terminators) and under the gutter's line index
// (leaves are runs of line lengths; lines are lines).
//
// All leaves are at the same depth. Every inner node except the root has between
// `maxChildren / 2` and `maxChildren` children, so the depth is O(log leaves) and finding the
// leaf of a position or of a line costs O(log n). The leaves themselves belong to the caller's
// type: it decides how large they are and keeps them from getting too small; the tree only asks
// each leaf for its `measures()`.
//
// The tree is never empty: it always holds at least one leaf (an empty text is one empty leaf).
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "quoddle/base/Precondition.h"

namespace quod::internal {

struct TreeMeasures {
    int64_t units = 0;
    int64_t lines = 0;

    TreeMeasures& operator+=(const TreeMeasures& other) {
        units += other.units;
        lines += other.lines;
        return *this;
    }
    friend TreeMeasures operator-(TreeMeasures a, const TreeMeasures& b) {
        return {a.units - b.units, a.lines - b.lines};
    }
};

// Which sum a search or a splice walks by.
enum class By { units, lines };

template <typename Leaf>
class SummedTree {
  public:
    static constexpr int maxChildren = 16;
    static constexpr int minChildren = maxChildren / 2;

    // A leaf and the sums of everything before it.
    struct Found {
        Leaf* leaf = nullptr;
        TreeMeasures before;
    };

    explicit SummedTree(std::unique_ptr<Leaf> leaf) {
        std::vector<std::unique_ptr<Leaf>> leaves;
        leaves.push_back(std::move(leaf));
        *this = SummedTree(std::move(leaves));
    }

    // Builds the tree bottom-up from leaves in order: O(leaves).
    explicit SummedTree(std::vector<std::unique_ptr<Leaf>> leaves) {
        QUOD_PRECONDITION(!leaves.empty(), "a tree holds at least one leaf");
        std::vector<Item> items = adopt(leaves);
        height_ = 1;
        items = pack(items);
        while (items.size() > 1) {
            ++height_;
            items = pack(items);
        }
        root_ = static_cast<Node*>(items.front().pointer);
    }

    SummedTree(SummedTree&& other) noexcept
        : root_(std::exchange(other.root_, nullptr)), height_(std::exchange(other.height_, 0)) {}
    SummedTree& operator=(SummedTree&& other) noexcept {
        if (this != &other) {
            destroy(root_, height_);
            root_ = std::exchange(other.root_, nullptr);
            height_ = std::exchange(other.height_, 0);
        }
        return *this;
    }
    SummedTree(const SummedTree&) = delete;
    SummedTree& operator=(const SummedTree&) = delete;
    ~SummedTree() { destroy(root_, height_); }

    [[nodiscard]] TreeMeasures total() const { return root_->total(); }

    // By units: the leaf holding unit `target`, or for target == total().units the last leaf; a
    // target at the border of two leaves belongs to the later one. By lines: the leaf holding line
    // `target` (from 0), that is before.lines <= target < before.lines + its lines.
    [[nodiscard]] Found find(By by, int64_t target) const {
        const Node* node = root_;
        TreeMeasures before;
        for (int level = height_;; --level) {
            const int i = node->childHolding(by, target, before);
            if (level == 1) return {static_cast<Leaf*>(node->children[i]), before};
            node = static_cast<const Node*>(node->children[i]);
        }
    }

    // Lets `change(leaf, before)` modify the leaf that find(by, target) finds, in place, then
    // brings the sums on its path up to date: O(log leaves) beyond the change itself. The change
    // answers whether it changed anything, and so does this.
    template <typename Change>
    bool modifyLeaf(By by, int64_t target, Change&& change) {
        std::array<std::pair<Node*, int>, 48> path;
        int depth = 0;
        Node* node = root_;
        TreeMeasures before;
        for (int level = height_;; --level) {
            const int i = node->childHolding(by, target, before);
            path[static_cast<std::size_t>(depth++)] = {node, i};
            if (level == 1) break;
            node = static_cast<Node*>(node->children[i]);
        }
        auto [parent, index] = path[static_cast<std::size_t>(depth - 1)];
        Leaf& leaf = *static_cast<Leaf*>(parent->children[index]);
        const TreeMeasures old = leaf.measures();
        if (!change(leaf, static_cast<const TreeMeasures&>(before))) return false;
        const TreeMeasures delta = leaf.measures() - old;
        for (int k = 0; k < depth; ++k) {
            auto [n, i] = path[static_cast<std::size_t>(k)];
            n->sums[0][i] += delta.units;
            n->sums[1][i] += delta.lines;
        }
        return true;
    }

    // Calls visit(leaf, before) for each leaf that holds a unit (or line) of [from, to), in order.
    template <typename Visit>
    void forEachLeaf(By by, int64_t from, int64_t to, Visit&& visit) const {
        if (from < to) visitRange(root_, height_, by, TreeMeasures{}, from, to, visit);
    }

    // Replaces the leaves that lie wholly inside [from, to), measured `by` units or lines, with
    // `leaves`. Both ends must be borders between leaves or ends of the tree, and from < to unless
    // the tree measures 0 (one empty leaf, which is replaced). Every leaf must measure more than 0
    // by `by` unless it is the only one. O(log leaves + leaves removed + leaves added).
    void replaceLeaves(By by, int64_t from, int64_t to, std::vector<std::unique_ptr<Leaf>> leaves) {
        const int64_t total = by == By::units ? this->total().units : this->total().lines;
        if (total == 0) {
            *this = SummedTree(std::move(leaves));
            return;
        }
        QUOD_PRECONDITION(0 <= from && from < to && to <= total, "range outside the tree");
        std::vector<Item> inserted = adopt(leaves);
        std::vector<Item> top = splice(root_, height_, by, from, to, inserted);
        QUOD_PRECONDITION(!top.empty(), "a tree holds at least one leaf");
        // Grow upwards while one node cannot hold a level, shrink while the root has one child.
        while (top.size() > 1) {
            top = pack(top);
            ++height_;
        }
        root_ = static_cast<Node*>(top.front().pointer);
        while (height_ > 1 && root_->count == 1) {
            Node* child = static_cast<Node*>(root_->children[0]);
            delete root_;
            root_ = child;
            --height_;
        }
    }

  private:
    struct Node {
        int count = 0;
        std::array<std::array<int64_t, maxChildren>, 2> sums{};  // [By] of each child
        std::array<void*, maxChildren> children{};

        [[nodiscard]] TreeMeasures total() const {
            TreeMeasures sum;
            for (int i = 0; i < count; ++i)
                sum += {sums[0][i], sums[1][i]};
            return sum;
        }

        // The child holding `target` (see find), adding the children before it to `before`.
        int childHolding(By by, int64_t target, TreeMeasures& before) const {
            const auto& measure = sums[static_cast<std::size_t>(by)];
            int64_t remaining = target - (by == By::units ? before.units : before.lines);
            int i = 0;
            while (i + 1 < count && remaining >= measure[i]) {
                remaining -= measure[i];
                before += {sums[0][i], sums[1][i]};
                ++i;
            }
            return i;
        }
    };

    // A child of a node: a Node* above level 1, a Leaf* at level 1.
    struct Item {
        void* pointer;
        TreeMeasures measures;
        [[nodiscard]] int64_t measure(By by) const {
            return by == By::units ? measures.units : measures.lines;
        }
    };

    static std::vector<Item> adopt(std::vector<std::unique_ptr<Leaf>>& leaves) {
        std::vector<Item> items;
        items.reserve(leaves.size());
        for (auto& leaf : leaves) {
            const TreeMeasures measures = leaf->measures();
            items.push_back({leaf.release(), measures});
        }
        leaves.clear();
        return items;
    }

    template <typename Visit>
    static void visitRange(const Node* node, int level, By by, TreeMeasures before, int64_t from,
                           int64_t to, Visit& visit) {
        const auto b = static_cast<std::size_t>(by);
        for (int i = 0; i < node->count && (by == By::units ? before.units : before.lines) < to;
             ++i) {
            if ((by == By::units ? before.units : before.lines) + node->sums[b][i] > from) {
                if (level == 1) {
                    visit(static_cast<const Leaf&>(*static_cast<Leaf*>(node->children[i])),
                          before);
                } else {
                    visitRange(static_cast<const Node*>(node->children[i]), level - 1, by, before,
                               from, to, visit);
                }
            }
            before += {node->sums[0][i], node->sums[1][i]};
        }
    }

    // The children of a node as items; the node is deleted.
    static std::vector<Item> release(Node* node) {
        std::vector<Item> items;
        items.reserve(static_cast<std::size_t>(node->count));
        for (int i = 0; i < node->count; ++i)
            items.push_back({node->children[i], {node->sums[0][i], node->sums[1][i]}});
        delete node;
        return items;
    }

    // Spreads items evenly over as few new nodes as can hold them; each gets at least
    // minChildren when there are that many items.
    static std::vector<Item> pack(const std::vector<Item>& items) {
        std::vector<Item> nodes;
        const auto count = static_cast<int64_t>(items.size());
        const int64_t nodeCount = (count + maxChildren - 1) / maxChildren;
        std::size_t next = 0;
        for (int64_t k = 0; k < nodeCount; ++k) {
            const int64_t take = count / nodeCount + (k < count % nodeCount ? 1 : 0);
            auto* node = new Node;
            for (int64_t j = 0; j < take; ++j, ++next) {
                const Item& item = items[next];
                const auto at = static_cast<std::size_t>(node->count++);
                node->children[at] = item.pointer;
                node->sums[0][at] = item.measures.units;
                node->sums[1][at] = item.measures.lines;
            }
            nodes.push_back({node, node->total()});
        }
        return nodes;
    }

    static void destroy(void* pointer, int level) {
        if (pointer == nullptr) return;
        if (level == 0) {
            delete static_cast<Leaf*>(pointer);
            return;
        }
        for (const Item& item : release(static_cast<Node*>(pointer)))
            destroy(item.pointer, level - 1);
    }

    // Removes the leaves inside [from, to) of the subtree `node` (of `level`), puts `inserted`
    // in their place (taking the items, so that only the first removal receives them), and answers
    // the nodes of the same level that now hold the subtree: none, one, or several.
    static std::vector<Item> splice(Node* node, int level, By by, int64_t from, int64_t to,
                                    std::vector<Item>& inserted) {
        std::vector<Item> result;
        std::size_t firstChanged = SIZE_MAX;
        std::size_t endChanged = 0;
        int64_t start = 0;
        for (const Item& child : release(node)) {
            const int64_t end = start + child.measure(by);
            if (end <= from || start >= to) {
                result.push_back(child);
            } else {
                const std::size_t at = result.size();
                std::vector<Item> replacement;
                if (start >= from && end <= to) {
                    destroy(child.pointer, level - 1);
                    replacement = buildLevel(inserted, level - 1);
                } else {
                    QUOD_PRECONDITION(level > 1, "leaf borders must bound the range");
                    replacement = splice(static_cast<Node*>(child.pointer), level - 1, by,
                                         std::max<int64_t>(from - start, 0),
                                         std::min(to, end) - start, inserted);
                }
                result.insert(result.end(), replacement.begin(), replacement.end());
                firstChanged = std::min(firstChanged, at);
                endChanged = result.size();
            }
            start = end;
        }
        if (level > 1 && firstChanged != SIZE_MAX) rebalance(result, firstChanged, endChanged);
        return result.empty() ? result : pack(result);
    }

    // The inserted leaves as items of `level` (the leaves themselves at 0, else nodes over them);
    // empty once they have been placed.
    static std::vector<Item> buildLevel(std::vector<Item>& inserted, int level) {
        std::vector<Item> items = std::move(inserted);
        inserted.clear();
        for (int k = 1; k <= level && !items.empty(); ++k)
            items = pack(items);
        return items;
    }

    // Children [first, end) of a node came back from a splice and may hold too few children of
    // their own: spread the grandchildren of that stretch and one neighbour on each side evenly.
    static void rebalance(std::vector<Item>& children, std::size_t first, std::size_t end) {
        bool underfull = false;
        for (std::size_t i = first; i < end; ++i)
            underfull = underfull || static_cast<Node*>(children[i].pointer)->count < minChildren;
        if (!underfull) return;
        if (first > 0) --first;
        if (end < children.size()) ++end;
        std::vector<Item> grandchildren;
        for (std::size_t i = first; i < end; ++i) {
            const std::vector<Item> items = release(static_cast<Node*>(children[i].pointer));
            grandchildren.insert(grandchildren.end(), items.begin(), items.end());
        }
        const std::vector<Item> nodes = pack(grandchildren);
        children.erase(children.begin() + static_cast<std::ptrdiff_t>(first),
                       children.begin() + static_cast<std::ptrdiff_t>(end));
        children.insert(children.begin() + static_cast<std::ptrdiff_t>(first), nodes.begin(),
                        nodes.end());
    }

    Node* root_ = nullptr;
    int height_ = 1;  // the root's level: 1 when its children are leaves
};

}  // namespace quod::internal
