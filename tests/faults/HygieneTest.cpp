// How the library file is made, as far as every build has it. What the delivered build has on top, tools/hygiene
// checks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Symbols.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string lineWith(const std::string& text, const std::string& word) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.find(word) != std::string::npos) return line;
    return "no line with " + word;
}

TEST(HygieneTest, RelocationsAreResolvedAtTheStartAndThenReadOnly) {
    EXPECT_THAT(outputOf("readelf --program-headers --wide " PROVIDER_LIBRARY), HasSubstr("GNU_RELRO"));
    EXPECT_THAT(outputOf("readelf --dynamic --wide " PROVIDER_LIBRARY),
                testing::AnyOf(HasSubstr("BIND_NOW"), HasSubstr("Flags: NOW")));
}

TEST(HygieneTest, StackIsNotExecutable) {
    EXPECT_THAT(lineWith(outputOf("readelf --program-headers --wide " PROVIDER_LIBRARY), "GNU_STACK"),
                HasSubstr(" RW "));
}

TEST(HygieneTest, NoSegmentIsBothWritableAndExecutable) {
    EXPECT_THAT(outputOf("readelf --program-headers --wide " PROVIDER_LIBRARY), Not(HasSubstr(" RWE ")));
}

TEST(HygieneTest, TextIsNotRelocated) {
    EXPECT_THAT(outputOf("readelf --dynamic --wide " PROVIDER_LIBRARY), Not(HasSubstr("TEXTREL")));
}

TEST(HygieneTest, NothingEndsTheProcessOrChangesItForItsHost) {
    const std::set<std::string> needed = undefinedSymbols(PROVIDER_LIBRARY);
    for (const char* function : {"exit",   "_exit",  "quick_exit", "abort",  "setlocale", "signal",  "sigaction",
                                 "chdir",  "setenv", "putenv",     "fork",   "system",    "popen",   "pthread_create",
                                 "dlopen", "gets",   "strcpy",     "strcat", "sprintf",   "vsprintf"})
        EXPECT_EQ(needed.count(function), 0U) << function;
}

}  // namespace
