#include <gtest/gtest.h>
#include <locale.h>
#include <stdlib.h>

#include <string>

#include "FreshProcess.h"
#include "text/Charset.h"

namespace {

using host::Charset;
using host::charsetOfEnvironment;
using host::shownIn;

// Variables of the test's own, given back at the end.
class CharsetOfEnvironmentTest : public testing::Test {
  protected:
    struct Variables {
        const char* all;
        const char* type;
        const char* language;
    };
    static void put(const char* name, const char* value) {
        if (value == nullptr) {
            unsetenv(name);
        } else {
            setenv(name, value, 1);
        }
    }
    static bool isUtf8With(const Variables& variables) {
        const ProcessOutcome outcome = runInFreshProcess([&variables] {
            put("LC_ALL", variables.all);
            put("LC_CTYPE", variables.type);
            put("LANG", variables.language);
            std::printf(charsetOfEnvironment() == Charset::Utf8 ? "yes" : "no");
        });
        EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
        return outcome.standardOutput == "yes";
    }
};

TEST_F(CharsetOfEnvironmentTest, WithoutAnyVariableItIsAscii) {
    EXPECT_FALSE(isUtf8With({nullptr, nullptr, nullptr}));
    EXPECT_FALSE(isUtf8With({"", "", ""}));
}

TEST_F(CharsetOfEnvironmentTest, TheFirstThatIsSetDecides) {
    EXPECT_TRUE(isUtf8With({nullptr, nullptr, "C.UTF-8"}));
    EXPECT_TRUE(isUtf8With({nullptr, "C.UTF-8", "C"}));
    EXPECT_TRUE(isUtf8With({"C.UTF-8", "C", "C"}));
    EXPECT_FALSE(isUtf8With({"C", "C.UTF-8", "C.UTF-8"}));
    EXPECT_FALSE(isUtf8With({"POSIX", nullptr, "C.UTF-8"}));
    EXPECT_FALSE(isUtf8With({"", "C", "C.UTF-8"}));
    EXPECT_TRUE(isUtf8With({"", "", "C.UTF-8"}));
}

TEST_F(CharsetOfEnvironmentTest, LocaleThatIsNotInstalledCountsByItsName) {
    EXPECT_TRUE(isUtf8With({nullptr, nullptr, "xx_XX.UTF-8"}));
    EXPECT_TRUE(isUtf8With({nullptr, "xx_XX.utf8@euro", "C"}));
    EXPECT_FALSE(isUtf8With({nullptr, nullptr, "xx_XX"}));
    EXPECT_FALSE(isUtf8With({nullptr, nullptr, "xx_XX.ISO-8859-1"}));
    EXPECT_FALSE(isUtf8With({"xx_XX.KOI8-R", nullptr, "xx_XX.UTF-8"}));
}

TEST_F(CharsetOfEnvironmentTest, LocaleOfTheProcessStays) {
    const std::string before = setlocale(LC_ALL, nullptr);
    charsetOfEnvironment();
    EXPECT_EQ(setlocale(LC_ALL, nullptr), before);
    EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
}

TEST(ShownInTest, Utf8StaysAsItIs) {
    const std::string text = "42 \u00b0C \u00fc\n";
    EXPECT_EQ(shownIn(Charset::Utf8, text), text);
}

TEST(ShownInTest, SignsOfUnitsHaveSubstitutesInAscii) {
    EXPECT_EQ(shownIn(Charset::Ascii, "\u00b0C \u00b0F in\u00b3 ft\u00b7lb \u03a9 /\u00b5s 5\u00d710^25"),
              "degC degF in3 ft.lb ohm /us 5x10^25");
}

TEST(ShownInTest, BytesOfOtherCharactersAreEscapedInAscii) {
    EXPECT_EQ(shownIn(Charset::Ascii, "plain ~\n\u00fc\u20ac\U0001F321"),
              "plain ~\n\\xc3\\xbc\\xe2\\x82\\xac\\xf0\\x9f\\x8c\\xa1");
    EXPECT_EQ(shownIn(Charset::Ascii, "\xb0"), "\\xb0");  // no UTF-8
}

}  // namespace
