// The opening and closing units of a structure, such as "(" and ")" or a quote mark twice, and the
// direction in which to search for the partner: `forward` searches towards the end of the text.
// Plain data; the default value holds two NULs.
#pragma once

namespace quod {

struct StructureUniChar {
    char16_t starts = 0;
    char16_t stops = 0;
    bool forward = false;

    StructureUniChar() = default;
    StructureUniChar(char16_t start, char16_t stop, bool forward = false)
        : starts(start), stops(stop), forward(forward) {}

    bool operator==(const StructureUniChar&) const = default;
};

}  // namespace quod
