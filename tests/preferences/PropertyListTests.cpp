#include <gtest/gtest.h>
#include <plist/plist.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "quoddle/preferences/PropertyList.h"

namespace quod {
namespace {

// ---- Random value trees for round trips ----

rc::Gen<PlistValue> leaf() {
    return rc::gen::oneOf(
        rc::gen::map(rc::gen::arbitrary<bool>(), [](bool v) { return PlistValue(v); }),
        rc::gen::map(rc::gen::element<int64_t>(INT64_MIN, INT64_MAX, 0, -1, 255, 256, 65536,
                                               int64_t{1} << 40),
                     [](int64_t v) { return PlistValue(v); }),
        rc::gen::map(rc::gen::arbitrary<int64_t>(), [](int64_t v) { return PlistValue(v); }),
        rc::gen::map(rc::gen::element(-0.0, 0.0, 1.5, -1e308, 5e-324,
                                      std::numeric_limits<double>::infinity(),
                                      -std::numeric_limits<double>::infinity(),
                                      std::numeric_limits<double>::quiet_NaN()),
                     [](double v) { return PlistValue(v); }),
        rc::gen::map(rc::gen::arbitrary<double>(), [](double v) { return PlistValue(v); }),
        rc::gen::map(rc::gen::element<std::string>("", "plain", std::string("nul\0inside", 10),
                                                   "emoji 😀 é", "<&>\"'", "\t\n\r\x01\x1f"),
                     [](std::string v) { return PlistValue(std::move(v)); }),
        rc::gen::map(rc::gen::container<std::vector<uint8_t>>(rc::gen::arbitrary<uint8_t>()),
                     [](std::vector<uint8_t> v) { return PlistValue(Data(std::move(v))); }),
        rc::gen::map(rc::gen::inRange<int64_t>(-4'000'000'000, 4'000'000'000),
                     [](int64_t seconds) { return PlistValue(PlistDate{double(seconds)}); }));
}

rc::Gen<PlistValue> tree(int depth) {
    if (depth == 0) return leaf();
    return rc::gen::oneOf(
        leaf(),
        rc::gen::map(rc::gen::container<PlistArray>(rc::gen::lazy([=] { return tree(depth - 1); })),
                     [](PlistArray v) { return PlistValue(std::move(v)); }),
        rc::gen::map(rc::gen::container<std::map<std::string, PlistValue>>(
                         rc::gen::element<std::string>("a", "key", "ключ", "", "x y"),
                         rc::gen::lazy([=] { return tree(depth - 1); })),
                     [](std::map<std::string, PlistValue> v) {
                         return PlistValue(PlistDictionary(v.begin(), v.end()));
                     }));
}

RC_GTEST_PROP(PropertyListProperty, RoundTripsExactlyThroughXmlAndBinary, ()) {
    const PlistValue value = *rc::gen::resize(12, tree(3));
    const auto fromXml = parsePropertyList(xmlPropertyList(value));
    RC_ASSERT(fromXml.has_value());
    RC_ASSERT(*fromXml == value);
    const Data binary = binaryPropertyList(value);
    const auto fromBinary = parsePropertyList(std::span<const uint8_t>(binary));
    RC_ASSERT(fromBinary.has_value());
    RC_ASSERT(*fromBinary == value);
}

PlistValue nested(int depth) {
    PlistValue value = PlistValue(int64_t{depth});
    for (int level = 0; level < depth; ++level)
        value = PlistValue(PlistArray{value});
    return value;
}

TEST(PropertyList, KeepsDeepNestingAndLargeBlobsWithinTheLimits) {
    const PlistValue deep = nested(100);
    EXPECT_EQ(parsePropertyList(xmlPropertyList(deep)), deep);
    const Data binary = binaryPropertyList(deep);
    EXPECT_EQ(parsePropertyList(std::span<const uint8_t>(binary)), deep);
    const PlistValue blob = PlistValue(Data(1 << 20, 0xA5));
    EXPECT_EQ(parsePropertyList(xmlPropertyList(blob)), blob);
}

TEST(PropertyList, RefusesHostileInputQuickly) {
    const auto start = std::chrono::steady_clock::now();
    std::string deepXml = "<plist>";
    for (int i = 0; i < 100'000; ++i)
        deepXml += "<array>";
    EXPECT_EQ(parsePropertyList(deepXml), std::nullopt);

    // 100,000 nested arrays in binary: object i is an array holding object i + 1.
    const int depth = 100'000;
    Data deepBinary{'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    std::vector<uint32_t> offsets;
    for (int i = 0; i < depth; ++i) {
        offsets.push_back(static_cast<uint32_t>(deepBinary.size()));
        deepBinary.push_back(0xA1);
        for (int shift = 24; shift >= 0; shift -= 8)
            deepBinary.push_back(uint8_t((i + 1) >> shift));
    }
    offsets.push_back(static_cast<uint32_t>(deepBinary.size()));
    deepBinary.push_back(0x08);
    const uint64_t table = deepBinary.size();
    for (uint32_t offset : offsets) {
        for (int shift = 24; shift >= 0; shift -= 8)
            deepBinary.push_back(uint8_t(offset >> shift));
    }
    const uint64_t trailer[] = {uint64_t(offsets.size()), 0, table};
    deepBinary.insert(deepBinary.end(), {0, 0, 0, 0, 0, 0, 4, 4});
    for (uint64_t field : trailer) {
        for (int shift = 56; shift >= 0; shift -= 8)
            deepBinary.push_back(uint8_t(field >> shift));
    }
    EXPECT_EQ(parsePropertyList(std::span<const uint8_t>(deepBinary)), std::nullopt);

    // A small file whose arrays all share their children would expand to 2^60 nodes.
    Data shared{'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    std::vector<uint8_t> sharedOffsets;
    for (int i = 0; i < 60; ++i) {
        sharedOffsets.push_back(static_cast<uint8_t>(shared.size()));
        shared.insert(shared.end(), {0xA2, uint8_t(i + 1), uint8_t(i + 1)});
    }
    sharedOffsets.push_back(static_cast<uint8_t>(shared.size()));
    shared.push_back(0x09);
    const auto sharedTable = static_cast<uint8_t>(shared.size());
    shared.insert(shared.end(), sharedOffsets.begin(), sharedOffsets.end());
    shared.insert(shared.end(), {0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 61,
                                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, sharedTable});
    EXPECT_EQ(parsePropertyList(std::span<const uint8_t>(shared)), std::nullopt);

    for (const std::string_view damaged :
         {"", "not a plist", "<plist><dict><key>a</key></dict></plist>",
          "<plist><integer>1x</integer></plist>", "<plist><data>@@@@</data></plist>",
          "<plist><string>&bogus;</string></plist>", "<plist><string>unclosed</plist>", "bplist00",
          "<plist><true/><true/></plist>"}) {
        EXPECT_EQ(parsePropertyList(damaged), std::nullopt) << damaged;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(PropertyList, ReadsWhatAnIndependentWriterProduced) {
    // Built and serialised by libplist, read back by our readers.
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "Name", plist_new_string("Quillmere é"));
    plist_dict_set_item(root, "TabWidth", plist_new_uint(4));
    plist_dict_set_item(root, "Ratio", plist_new_real(0.25));
    plist_dict_set_item(root, "Resume", plist_new_bool(1));
    const char bytes[] = {1, 2, 3};
    plist_dict_set_item(root, "Blob", plist_new_data(bytes, 3));
    plist_t list = plist_new_array();
    plist_array_append_item(list, plist_new_string("a"));
    plist_array_append_item(list, plist_new_uint(70000));
    plist_dict_set_item(root, "List", list);
    char* binary = nullptr;
    uint32_t binaryLength = 0;
    plist_to_bin(root, &binary, &binaryLength);
    char* xml = nullptr;
    uint32_t xmlLength = 0;
    plist_to_xml(root, &xml, &xmlLength);

    const PlistValue expected(PlistDictionary{
        {"Name", "Quillmere é"},
        {"TabWidth", int64_t{4}},
        {"Ratio", 0.25},
        {"Resume", true},
        {"Blob", Data{1, 2, 3}},
        {"List", PlistArray{"a", int64_t{70000}}},
    });
    EXPECT_EQ(parsePropertyList(std::string_view(binary, binaryLength)), expected);
    EXPECT_EQ(parsePropertyList(std::string_view(xml, xmlLength)), expected);
    plist_to_bin_free(binary);
    plist_to_xml_free(xml);
    plist_free(root);

    // And the other way: libplist reads our binary output.
    const Data ours = binaryPropertyList(expected);
    plist_t parsed = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(ours.data()), static_cast<uint32_t>(ours.size()),
                   &parsed);
    ASSERT_NE(parsed, nullptr);
    char* name = nullptr;
    plist_get_string_val(plist_dict_get_item(parsed, "Name"), &name);
    EXPECT_STREQ(name, "Quillmere é");
    uint64_t width = 0;
    plist_get_uint_val(plist_dict_get_item(parsed, "TabWidth"), &width);
    EXPECT_EQ(width, 4u);
    std::free(name);
    plist_free(parsed);
}

TEST(PropertyList, PlatformEqualityComparesNumbersByValue) {
    EXPECT_TRUE(isEqualTo(PlistValue(true), PlistValue(int64_t{1})));
    EXPECT_TRUE(isEqualTo(PlistValue(2.0), PlistValue(int64_t{2})));
    EXPECT_FALSE(isEqualTo(PlistValue(std::nan("")), PlistValue(std::nan(""))));
    EXPECT_FALSE(isEqualTo(PlistValue("1"), PlistValue(int64_t{1})));
    EXPECT_TRUE(
        isEqualTo(PlistValue(PlistArray{1.0, "x"}), PlistValue(PlistArray{int64_t{1}, "x"})));
    EXPECT_FALSE(
        isEqualTo(PlistValue(PlistDictionary{{"a", 1}}), PlistValue(PlistDictionary{{"b", 1}})));
    EXPECT_FALSE(PlistValue(-0.0) == PlistValue(0.0));  // exact equality keeps the sign
    EXPECT_TRUE(isEqualTo(PlistValue(-0.0), PlistValue(0.0)));
}

}  // namespace
}  // namespace quod
