#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "quoddle/base/CheckedArithmetic.h"
#include "quoddle/base/CurrentLocale.h"
#include "quoddle/base/Range.h"
#include "quoddle/base/Signal.h"
#include "quoddle/base/SplitVector.h"

namespace quod {
namespace {

TEST(Range, HasPlatformRangeSemantics) {
    const Range range{2, 3};
    EXPECT_EQ(range.end(), 5);
    EXPECT_FALSE(range.contains(1));
    EXPECT_TRUE(range.contains(2));
    EXPECT_TRUE(range.contains(4));
    EXPECT_FALSE(range.contains(5));
    EXPECT_FALSE((Range{3, 0}).contains(3));
    EXPECT_TRUE(range.isInside(5));
    EXPECT_FALSE(range.isInside(4));
    EXPECT_FALSE((Range{-1, 1}).isInside(5));
    EXPECT_FALSE((Range{NotFound, 0}).isInside(5));
}

TEST(RangeDeathTest, OverflowingCountsStopTheProcess) {
    EXPECT_DEATH((void)(Range{NotFound, 1}.end()), "overflow");
    EXPECT_DEATH((void)checkedAdd(INT64_MAX, 1), "overflow in addition");
    EXPECT_DEATH((void)checkedSubtract(INT64_MIN, 1), "overflow in subtraction");
    EXPECT_DEATH((void)checkedMultiply(INT64_MAX / 2, 3), "overflow in multiplication");
}

TEST(SplitVector, MatchesAPlainVectorUnderRandomEdits) {
    std::mt19937 random(7);
    SplitVector<int64_t> split;
    std::vector<int64_t> model;
    for (int step = 0; step < 5000; ++step) {
        const int64_t position =
            std::uniform_int_distribution<int64_t>(0, std::ssize(model))(random);
        switch (random() % 3) {
            case 0: {
                std::vector<int64_t> values(random() % 9, step);
                split.insert(position, values);
                model.insert(model.begin() + position, values.begin(), values.end());
                break;
            }
            case 1: {
                const int64_t count = std::min<int64_t>(random() % 9, std::ssize(model) - position);
                split.erase(position, count);
                model.erase(model.begin() + position, model.begin() + position + count);
                break;
            }
            default: {
                const int64_t last =
                    std::uniform_int_distribution<int64_t>(position, std::ssize(model))(random);
                split.addToRange(position, last, 3);
                for (int64_t i = position; i < last; ++i)
                    model[i] += 3;
            }
        }
        ASSERT_EQ(split.length(), std::ssize(model));
    }
    std::vector<int64_t> copied(model.size());
    split.copyOut(copied.data(), 0, split.length());
    EXPECT_EQ(copied, model);
}

TEST(SplitVectorDeathTest, RejectsPositionsOutsideTheBuffer) {
    SplitVector<char16_t> split;
    split.insert(0, u'a');
    EXPECT_DEATH((void)split.at(1), "outside the buffer");
    EXPECT_DEATH(split.erase(0, 2), "outside the buffer");
    EXPECT_DEATH(split.insert(2, u'b'), "outside the buffer");
}

struct Emitter {
    Signal<Emitter, int> changed;
    void fire(int value) { changed.emit(value); }
};

TEST(Signal, DisconnectsWhenTheConnectionGoes) {
    Emitter emitter;
    std::vector<int> seen;
    {
        Connection connection = emitter.changed.connect([&](int value) { seen.push_back(value); });
        emitter.fire(1);
    }
    emitter.fire(2);
    EXPECT_EQ(seen, std::vector<int>{1});

    // A connection that outlives its signal disconnects harmlessly.
    auto shortLived = std::make_unique<Emitter>();
    Connection orphan = shortLived->changed.connect([](int) {});
    shortLived.reset();
    orphan.disconnect();
}

TEST(Signal, SlotsMayDisconnectThemselvesWhileCalled) {
    Emitter emitter;
    int calls = 0;
    Connection connection;
    connection = emitter.changed.connect([&](int) {
        ++calls;
        connection.disconnect();
    });
    emitter.fire(1);
    emitter.fire(2);
    EXPECT_EQ(calls, 1);
}

TEST(CurrentLocale, PosixNamesMapToDesktopLocales) {
    EXPECT_STREQ(localeFromPosixName("C").getName(), "en_US");
    EXPECT_STREQ(localeFromPosixName("C.UTF-8").getName(), "en_US");
    EXPECT_STREQ(localeFromPosixName("POSIX").getName(), "en_US");
    EXPECT_STREQ(localeFromPosixName("").getName(), "en_US");
    EXPECT_STREQ(localeFromPosixName("de_DE.UTF-8@euro").getName(), "de_DE");
    EXPECT_STREQ(localeFromPosixName("tr_TR").getName(), "tr_TR");
}

}  // namespace
}  // namespace quod
