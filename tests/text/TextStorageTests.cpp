#include "quoddle/text/TextStorage.h"

#include <gtest/gtest.h>

namespace quod {
namespace {

TEST(TextStorage, Basic) {
    TextStorage storage(u"a\nb");
    EXPECT_EQ(storage.lineCount(), 2);
}

}  // namespace
}  // namespace quod
