#include "quoddle/strings/EncodingTables.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quod::internal {
namespace {

// Defines the unsorted row arrays exactCharsetNameRows, codePageRows, charsetKeyRows and
// encodingRows, generated from the data files at build time.
#include "EncodingTables.inc"

template <typename Row, std::size_t size, typename Key>
constexpr std::array<Row, size> sortedBy(const Row (&rows)[size], Key key) {
    std::array<Row, size> sorted = std::to_array(rows);
    std::sort(sorted.begin(), sorted.end(),
              [key](const Row& a, const Row& b) { return key(a) < key(b); });
    return sorted;
}

template <typename Rows, typename Key>
constexpr bool keysAreUnique(const Rows& rows, Key key) {
    return std::adjacent_find(rows.begin(), rows.end(), [key](const auto& a, const auto& b) {
               return key(a) == key(b);
           }) == rows.end();
}

constexpr auto byName = [](const CharsetNameRow& row) { return row.name; };
constexpr auto byCodePage = [](const CodePageRow& row) { return row.codePage; };
constexpr auto byKey = [](const CharsetKeyRow& row) { return row.key; };
constexpr auto byEncoding = [](const EncodingRow& row) { return row.encoding; };

constexpr auto sortedExactNames = sortedBy(exactCharsetNameRows, byName);
constexpr auto sortedCodePages = sortedBy(codePageRows, byCodePage);
constexpr auto sortedKeys = sortedBy(charsetKeyRows, byKey);
constexpr auto sortedEncodings = sortedBy(encodingRows, byEncoding);

// A repeated key would make a lookup's answer depend on the sort: refuse the data instead.
static_assert(keysAreUnique(sortedExactNames, byName), "charset-names.tsv repeats a name");
static_assert(keysAreUnique(sortedCodePages, byCodePage), "charset-names.tsv repeats a code page");
static_assert(keysAreUnique(sortedKeys, byKey), "charset-keys.tsv repeats a key");
static_assert(keysAreUnique(sortedEncodings, byEncoding), "encodings.tsv repeats a number");
static_assert(std::none_of(encodingRows, std::end(encodingRows),
                           [](const EncodingRow& row) { return row.name.empty(); }),
              "encodings.tsv has an encoding without a display name");

template <typename Rows, typename Key, typename Value>
const typename Rows::value_type* find(const Rows& rows, Key key, const Value& value) {
    const auto found = std::lower_bound(
        rows.begin(), rows.end(), value,
        [key](const typename Rows::value_type& row, const Value& v) { return key(row) < v; });
    return found != rows.end() && key(*found) == value ? &*found : nullptr;
}

}  // namespace

std::span<const EncodingRow> namedEncodings() {
    return sortedEncodings;
}

const CharsetNameRow* findExactCharsetName(std::string_view lowerCaseName) {
    return find(sortedExactNames, byName, lowerCaseName);
}

const CodePageRow* findCodePage(std::uint32_t codePage) {
    return find(sortedCodePages, byCodePage, codePage);
}

const CharsetKeyRow* findCharsetKey(std::string_view key) {
    return find(sortedKeys, byKey, key);
}

const EncodingRow* findNamedEncoding(EncodingNumber encoding) {
    return find(sortedEncodings, byEncoding, encoding);
}

}  // namespace quod::internal
