#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "health/Decimal.h"

namespace {

using host::scaledDecimal;

TEST(DecimalTest, NoModifierLeavesTheNumber) {
    EXPECT_EQ(scaledDecimal(0, 0), "0");
    EXPECT_EQ(scaledDecimal(-17, 0), "-17");
}

TEST(DecimalTest, NegativeModifierKeepsAllDigits) {
    EXPECT_EQ(scaledDecimal(12036, -3), "12.036");
    EXPECT_EQ(scaledDecimal(4200, -2), "42.00");
    EXPECT_EQ(scaledDecimal(-5, -1), "-0.5");
}

TEST(DecimalTest, ShortNumberIsFilledWithZeros) {
    EXPECT_EQ(scaledDecimal(7, -3), "0.007");
    EXPECT_EQ(scaledDecimal(123, -3), "0.123");
    EXPECT_EQ(scaledDecimal(0, -2), "0.00");
}

TEST(DecimalTest, PositiveModifierAppendsZerosButNotToZero) {
    EXPECT_EQ(scaledDecimal(-12, 3), "-12000");
    EXPECT_EQ(scaledDecimal(0, 3), "0");
}

TEST(DecimalTest, IsExactWhereFloatingPointIsNot) {
    EXPECT_EQ(scaledDecimal(std::numeric_limits<std::int64_t>::max(), -18), "9.223372036854775807");
    EXPECT_EQ(scaledDecimal(std::numeric_limits<std::int64_t>::min(), -1), "-922337203685477580.8");
    EXPECT_EQ(scaledDecimal(std::numeric_limits<std::int32_t>::min(), 0), "-2147483648");
}

TEST(DecimalTest, AbsurdModifierIsWrittenOut) {
    EXPECT_EQ(scaledDecimal(5, 18), "5000000000000000000");
    EXPECT_EQ(scaledDecimal(5, 19), "5×10^19");
    EXPECT_EQ(scaledDecimal(-5, -18), "-0.000000000000000005");
    EXPECT_EQ(scaledDecimal(-5, -19), "-5×10^-19");
    EXPECT_EQ(scaledDecimal(1, std::numeric_limits<std::int32_t>::min()), "1×10^-2147483648");
}

}  // namespace
