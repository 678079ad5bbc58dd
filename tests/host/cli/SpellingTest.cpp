#include <gtest/gtest.h>

#include "cli/Spelling.h"

namespace {

using host::nearestTo;

TEST(NearestToTest, OneOrTwoLettersMayBeWrong) {
    EXPECT_EQ(nearestTo("instnces", {"names", "instances"}), "instances");    // left out
    EXPECT_EQ(nearestTo("instancess", {"names", "instances"}), "instances");  // added
    EXPECT_EQ(nearestTo("imstamces", {"names", "instances"}), "instances");   // replaced, twice
    EXPECT_EQ(nearestTo("lgo", {"log"}), "log");                              // exchanged
    EXPECT_EQ(nearestTo("INSTANCEZ", {"names", "instances"}), "instances");   // case does not count
}

TEST(NearestToTest, TheNearerOneIsTaken) {
    EXPECT_EQ(nearestTo("--provder", {"--provide", "--provider"}), "--provider");
    EXPECT_EQ(nearestTo("cat", {"bat", "hat"}), "bat");
}

TEST(NearestToTest, FarWordsAreNotMeant) {
    EXPECT_EQ(nearestTo("imstamcez", {"instances"}), "");
    EXPECT_EQ(nearestTo("ab", {"log"}), "");
    EXPECT_EQ(nearestTo("xy", {"ab"}), "");
    EXPECT_EQ(nearestTo("", {"a"}), "");
    EXPECT_EQ(nearestTo("a", {}), "");
}

}  // namespace
