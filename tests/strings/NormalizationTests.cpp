// Composed forms: the text itself when nothing in it combines, ICU's NFC otherwise, in UTF-16
// and in UTF-8.
#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <random>
#include <string>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/Normalization.h"

namespace quod {
namespace {

// The answers equal ICU's for text that only just avoids combining characters, and for text
// that has them: decomposed accents, precomposed ones, Hangul jamo, marks in either order.
TEST(Normalization, ComposesAsIcuDoes) {
    // Text below U+0300 is taken as composed without asking ICU; no character there may combine.
    for (UChar32 c = 0; c < 0x300; ++c)
        ASSERT_EQ(u_getIntPropertyValue(c, UCHAR_NFC_QUICK_CHECK), UNORM_YES) << c;

    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
    ASSERT_TRUE(U_SUCCESS(status));
    const std::u16string pieces[] = {u"e",      u"E",      u"\u00E9", u"\u0301", u"\u0323",
                                     u"\u02FF", u"\u0300", u"\u1100", u"\u1161", u"\uAC00",
                                     u"\u00C5", u"A",      u"\u030A", u" ",      u"\u212B"};
    std::mt19937 random(4);
    for (int round = 0; round < 3000; ++round) {
        std::u16string text;
        for (auto count = random() % 8; count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        icu::UnicodeString source(text.data(), static_cast<int32_t>(text.size()));
        const icu::UnicodeString composed = nfc->normalize(source, status);
        const std::u16string expected(composed.getBuffer(),
                                      static_cast<std::size_t>(composed.length()));
        EXPECT_EQ(canonicalComposition(text), expected) << testing::PrintToString(text);
        EXPECT_EQ(isCanonicalComposition(text), expected == text) << testing::PrintToString(text);
        // The same text in UTF-8 gets the same answers, in UTF-8.
        EXPECT_EQ(canonicalComposition(toUtf8(text)), toUtf8(expected));
        EXPECT_EQ(isCanonicalComposition(toUtf8(text)), expected == text);
    }
}

}  // namespace
}  // namespace quod
