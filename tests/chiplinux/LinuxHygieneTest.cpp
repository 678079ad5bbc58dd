// What the library asks of others.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Symbols.h"

namespace {

TEST(LinuxHygieneTest, NothingEndsTheProcessOrChangesItForItsHost) {
    const std::set<std::string> needed = undefinedSymbols(LINUX_LIBRARY);
    for (const char* function : {"exit", "_exit", "quick_exit", "abort", "setlocale", "signal", "sigaction", "chdir",
                                 "setenv", "putenv", "fork", "system", "popen", "pthread_create", "sensors_init"})
        EXPECT_EQ(needed.count(function), 0U) << function;
}

}  // namespace
