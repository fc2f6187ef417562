#include <gtest/gtest.h>

#include "quoddle/strings/Base64.h"
#include "quoddle/strings/Data.h"

namespace quod {
namespace {

TEST(Data, HexStringAndDigest) {
    EXPECT_EQ(hexString(Data{0x00, 0xAB, 0x0F, 0xF0, 0x99}), "00ab0ff099");
    EXPECT_EQ(hexString(Data{}), "");

    const std::pair<std::string_view, std::string_view> digests[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"}};
    for (const auto& [text, digest] : digests) {
        const std::optional<Data> computed = sha256Digest(Data(text.begin(), text.end()));
        ASSERT_TRUE(computed.has_value()) << text;
        EXPECT_EQ(hexString(*computed), digest) << text;
    }
}

TEST(Base64, EncodesUtf8AndDecodesBack) {
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u"", u""},
        {u"f", u"Zg=="},
        {u"fo", u"Zm8="},
        {u"foo", u"Zm9v"},
        {u"foob", u"Zm9vYg=="},
        {u"é😀", u"w6nwn5iA"},  // the UTF-8 bytes, not the UTF-16 units
        {u">>>", u"Pj4+"},
        {u"???", u"Pz8/"}};
    for (const auto& [text, encoded] : cases) {
        std::u16string s = text;
        toBase64(s);
        EXPECT_EQ(s, encoded);
        fromBase64(s);
        EXPECT_EQ(s, text);
    }
}

TEST(Base64, AnythingButStrictBase64OfUtf8DecodesToEmpty) {
    const std::u16string invalid[] = {u"Zg=",   u"Zg",        u"Zg==\n",
                                      u" Zg==", u"Zm 9v",  // lengths and whitespace
                                      u"Z===",  u"Zg=a",      u"Zg==Zg==",  // padding
                                      u"Zm-v",  u"Zm9\u00e9",               // outside the alphabet
                                      u"/w=="};                             // 0xFF is not UTF-8
    for (const std::u16string& text : invalid) {
        std::u16string s = text;
        fromBase64(s);
        EXPECT_EQ(s, u"") << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace quod
