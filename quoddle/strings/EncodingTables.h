// The compiled-in encoding data: the platform's charset-name table, the ICU alias keys it falls
// back on, and every named encoding with its display name and converter.
//
// Internal to the encoding code. The rows come from quoddle/strings/data/*.tsv, turned into C++ at
// build time and sorted at compile time; a table with a duplicate key does not compile. Every
// string here is static, so the views stay valid for the life of the process.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "quoddle/strings/StringEncoding.h"

namespace quod::internal {

struct CharsetNameRow {
    std::string_view name;  // lower case
    EncodingNumber encoding;
};

struct CodePageRow {
    std::uint32_t codePage;
    EncodingNumber encoding;
};

struct CharsetKeyRow {
    std::string_view key;  // ICU's normalised alias form
    EncodingNumber encoding;
    // The platform does not find a name that begins with this one (lower case; empty for none).
    std::string_view skippedWhenNameBeginsWith;
};

struct EncodingRow {
    EncodingNumber encoding;
    std::string_view name;          // English display name; never empty
    bool available;                 // part of the platform's list of available encodings
    std::string_view icuConverter;  // empty when ICU has no converter for it
};

// Every encoding with a display name, sorted by number.
[[nodiscard]] std::span<const EncodingRow> namedEncodings();

// Binary searches: the names that the platform's own table matches exactly, the Windows code pages
// it knows, ICU's alias keys, and the named encodings. Null when absent.
[[nodiscard]] const CharsetNameRow* findExactCharsetName(std::string_view lowerCaseName);
[[nodiscard]] const CodePageRow* findCodePage(std::uint32_t codePage);
[[nodiscard]] const CharsetKeyRow* findCharsetKey(std::string_view key);
[[nodiscard]] const EncodingRow* findNamedEncoding(EncodingNumber encoding);

}  // namespace quod::internal
