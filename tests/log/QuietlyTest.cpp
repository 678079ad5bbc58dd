#include <gtest/gtest.h>

#include <stdexcept>

#include "Quietly.h"

namespace {

TEST(QuietlyTest, ActionIsCalledOnce) {
    int calls = 0;
    quietly([&] { ++calls; });
    EXPECT_EQ(calls, 1);
}

TEST(QuietlyTest, NothingIsThrown) {
    EXPECT_NO_THROW(quietly([] { throw std::runtime_error("no disk"); }));
    EXPECT_NO_THROW(quietly([] { throw 1; }));
}

}  // namespace
