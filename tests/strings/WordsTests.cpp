#include <gtest/gtest.h>

#include "quoddle/strings/Words.h"

namespace quod {
namespace {

TEST(Words, SegmentsAsTheEnglishWordRulesDo) {
    const std::pair<std::u16string, std::vector<std::u16string>> cases[] = {
        {u"Hello, world! It's 3.14 e.g. foo_bar foo-bar a:b x.y",
         {u"Hello", u"world", u"It's", u"3.14", u"e.g", u"foo_bar", u"foo", u"bar", u"a", u"b",
          u"x.y"}},
        {u"日本語のテキストです。カタカナ 한국어 ไทยภาษา 😀 ½",
         {u"日本語", u"の", u"テキスト", u"です", u"カタカナ", u"한국어", u"ไทย", u"ภาษา"}},
        {u"price $5 or 5% C++ foo@bar.com #tag don’t e-mail 1st",
         {u"price", u"5", u"or", u"5", u"C", u"foo@bar.com", u"tag", u"don’t", u"e", u"mail",
          u"1st"}},
        {u"", {}},
        {u" ,.;😀 ", {}}};
    const icu::Locale english("en_US");
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(words(text, english), expected) << testing::PrintToString(text);
        EXPECT_EQ(wordCount(text, english), std::ssize(expected)) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace quod
