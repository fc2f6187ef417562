#include "quoddle/strings/StringEditing.h"

#include <unicode/stringoptions.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <cstdint>
#include <limits>

#include "quoddle/base/Precondition.h"
#include "quoddle/strings/CharacterSets.h"
#include "quoddle/strings/TextBoundaries.h"

namespace quod {
namespace {

bool includesStart(StringEdge edge) {
    return edge != StringEdge::end;
}
bool includesEnd(StringEdge edge) {
    return edge != StringEdge::start;
}

bool isCharacterBoundary(std::u16string_view text, int64_t position) {
    return composedCharacterRange(text, {position, 0}).location == position;
}

// ICU strings count in int32_t; longer text is a caller's mistake, not a user error.
int32_t icuLength(std::u16string_view text) {
    QUOD_PRECONDITION(text.size() <= static_cast<std::size_t>(std::numeric_limits<int32_t>::max()),
                      "text too long for ICU");
    return static_cast<int32_t>(text.size());
}

std::u16string toString(const icu::UnicodeString& text) {
    return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

std::u16string foldCase(std::u16string_view text) {
    const int32_t length = icuLength(text);
    // ICU rejects the null data an empty view may have.
    if (length == 0) {
        return {};
    }
    UErrorCode status = U_ZERO_ERROR;
    const int32_t folded =
        u_strFoldCase(nullptr, 0, text.data(), length, U_FOLD_CASE_DEFAULT, &status);
    std::u16string result(static_cast<std::size_t>(folded), u'\0');
    status = U_ZERO_ERROR;
    u_strFoldCase(result.data(), folded, text.data(), length, U_FOLD_CASE_DEFAULT, &status);
    // Folding well-formed or ill-formed UTF-16 cannot fail once the buffer is big enough.
    QUOD_PRECONDITION(U_SUCCESS(status), "case folding failed");
    return result;
}

}  // namespace

void chop(std::u16string& s, std::u16string_view string, StringEdge fromEdge) {
    const std::size_t length = string.size();
    if (includesStart(fromEdge) && s.starts_with(string) &&
        isCharacterBoundary(s, static_cast<int64_t>(length))) {
        s.erase(0, length);
    }
    if (includesEnd(fromEdge) && s.ends_with(string) &&
        isCharacterBoundary(s, static_cast<int64_t>(s.size() - length))) {
        s.erase(s.size() - length);
    }
}

void insert(std::u16string& s, std::u16string_view string, StringEdge atEdge) {
    if (includesStart(atEdge)) {
        s.insert(0, string);
    }
    if (includesEnd(atEdge)) {
        s.append(string);
    }
}

std::u16string quote(std::u16string_view s) {
    if (s.find(u' ') == std::u16string_view::npos) {
        return std::u16string(s);
    }
    std::u16string quoted;
    quoted.reserve(s.size() + 2);
    if (!s.starts_with(u'"')) {
        quoted += u'"';
    }
    quoted += s;
    if (!s.ends_with(u'"')) {
        quoted += u'"';
    }
    return quoted;
}

std::u16string trim(std::u16string_view s, bool alsoNewline, StringEdge edge) {
    // Every member of both sets lies in the BMP, so testing units is testing code points: a
    // surrogate is never whitespace and never stops a trim in the middle of a pair.
    const auto strips = [alsoNewline](char16_t unit) {
        return isWhitespace(unit) || (alsoNewline && isNewline(unit));
    };
    std::size_t start = 0;
    std::size_t end = s.size();
    if (includesStart(edge)) {
        while (start < end && strips(s[start])) {
            ++start;
        }
    }
    if (includesEnd(edge)) {
        while (end > start && strips(s[end - 1])) {
            --end;
        }
    }
    return std::u16string(s.substr(start, end - start));
}

std::u16string firstUppercased(std::u16string_view s, const icu::Locale& locale) {
    const int32_t length = icuLength(s);
    if (length == 0) {
        return {};
    }
    // A non-empty text has a first character, so the offset is there.
    const auto first = static_cast<int32_t>(offsetOfCharacter(s, 1).value_or(length));
    icu::UnicodeString head(s.data(), first);
    icu::UnicodeString tail(s.data() + first, length - first);
    head.toUpper(locale);
    tail.toLower(locale);
    return toString(head.append(tail));
}

bool containsCaseInsensitive(std::u16string_view s, std::u16string_view other) {
    if (other.empty()) {
        return false;
    }
    return foldCase(s).find(foldCase(other)) != std::u16string::npos;
}

std::u16string replacingOccurrences(std::u16string_view text, std::u16string_view target,
                                    std::u16string_view replacement) {
    if (target.empty()) return std::u16string(text);
    std::u16string result;
    result.reserve(text.size());
    std::size_t start = 0;
    for (std::size_t at = text.find(target); at != std::u16string_view::npos;
         at = text.find(target, start)) {
        result.append(text.substr(start, at - start)).append(replacement);
        start = at + target.size();
    }
    result.append(text.substr(start));
    return result;
}

bool equalsCaseInsensitive(std::u16string_view s, std::u16string_view other) {
    return foldCase(s) == foldCase(other);
}

}  // namespace quod
