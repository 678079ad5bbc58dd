#include <gtest/gtest.h>

#include "LayoutCheck.h"

namespace {

int s_figuresChecked;

void expectFigure(const char* what, long long expected, long long actual) {
    ++s_figuresChecked;
    EXPECT_EQ(actual, expected) << what;
}

class CmpiLayoutTest : public testing::Test {
  protected:
    void SetUp() override {
        if (sizeof(void*) != 8) {
            GTEST_SKIP() << "the figures are those of systems with pointers of 8 bytes";
        }
        s_figuresChecked = 0;
    }
};

// The counts are what layout.tsv holds for the level: two figures for a member, a size or a scalar, one for the others.

TEST_F(CmpiLayoutTest, FiguresHoldAtLevel100) {
    checkLayoutAtLevel100(expectFigure);
    EXPECT_EQ(s_figuresChecked, 713);
}

TEST_F(CmpiLayoutTest, FiguresHoldAtLevel200) {
    checkLayoutAtLevel200(expectFigure);
    EXPECT_EQ(s_figuresChecked, 856);
}

TEST_F(CmpiLayoutTest, FiguresHoldAtLevel210) {
    checkLayoutAtLevel210(expectFigure);
    EXPECT_EQ(s_figuresChecked, 930);
}

}  // namespace
