#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <string>

#include "LogLines.h"
#include "RunAnew.h"
#include "Sandbox.h"
#include "log.h"

using testing::ElementsAre;

namespace {

std::string repeat(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

class WLogTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

// In a locale whose multibyte form is UTF-8.
class WLogUtf8Test : public WLogTest {
  protected:
    void SetUp() override {
        WLogTest::SetUp();
        if (IsSkipped()) return;
        if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) GTEST_SKIP() << "the locale C.UTF-8 is not installed";
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

TEST_F(WLogTest, TextIsFormatted) {
    runAnew([] { WLog(LOG_ERROR, L"%ls=%d, %s", L"name", -3, "narrow"); });
    EXPECT_THAT(messagesAt("Error"), ElementsAre("name=-3, narrow"));
}

TEST_F(WLogTest, LevelDecides) {
    runAnew([] {
        WLog(LOG_DEBUG, L"no");
        WLog(LOG_INFO, L"yes");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("yes"));
}

TEST_F(WLogTest, CharacterThatTheLocaleLacksDropsTheMessage) {
    runAnew([] {
        LogQuick(LOG_ERROR, "before");
        WLog(LOG_ERROR, L"10 \u20ac");
        WLog(LOG_ERROR, L"after");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("before", "after"));
}

TEST_F(WLogTest, TextIsCutTo4095Characters) {
    runAnew([] {
        WLog(LOG_ERROR, L"%ls", std::wstring(4095, L'a').c_str());
        WLog(LOG_ERROR, L"%ls", std::wstring(4096, L'b').c_str());
        WLog(LOG_ERROR, L"start %ls", std::wstring(100'000, L'c').c_str());
        WLog(LOG_ERROR, L"next");
    });
    EXPECT_THAT(loggedMessages(),
                ElementsAre(std::string(4095, 'a'), std::string(4095, 'b'), "start " + std::string(4089, 'c'), "next"));
}

TEST_F(WLogTest, TooLongTextIsCutWhateverFailedBefore) {
    runAnew([] {
        LogQuick(LOG_DEBUG, "not written, but the sink is there");
        errno = EILSEQ;
        WLog(LOG_ERROR, L"%ls", std::wstring(5000, L'f').c_str());
    });
    EXPECT_THAT(loggedMessages(), ElementsAre(std::string(4095, 'f')));
}

TEST_F(WLogTest, TooLongTextWithANulOfItsOwnEndsThere) {
    runAnew([] { WLog(LOG_ERROR, L"start%lc%ls", static_cast<wint_t>(0), std::wstring(5000, L'd').c_str()); });
    EXPECT_THAT(loggedMessages(), ElementsAre("start"));
}

TEST_F(WLogUtf8Test, CharactersAreConverted) {
    runAnew([] { WLog(LOG_ERROR, L"10 \u20ac, 20 \u00b0C, \U0001f321"); });
    EXPECT_THAT(loggedMessages(), ElementsAre("10 \xe2\x82\xac, 20 \xc2\xb0"
                                              "C, \xf0\x9f\x8c\xa1"));
}

TEST_F(WLogUtf8Test, TextIsCutAtTheLastCharacterThatFitsIn4095Bytes) {
    runAnew([] {
        // 4096 bytes, so that the last character ends where the end mark belongs.
        WLog(LOG_ERROR, L"%ls", std::wstring(2048, L'\u00b0').c_str());
        WLog(LOG_ERROR, L"\u00b0%ls", std::wstring(4094, L'e').c_str());
        // 4095 bytes to the end of a character.
        WLog(LOG_ERROR, L"a%ls", std::wstring(3000, L'\u00b0').c_str());
        WLog(LOG_ERROR, L"%ls", std::wstring(3000, L'\u20ac').c_str());
        // The byte 4095 is inside a character, the byte 4096 its end; then both inside it.
        WLog(LOG_ERROR, L"a%ls", std::wstring(3000, L'\u20ac').c_str());
        WLog(LOG_ERROR, L"aa%ls", std::wstring(3000, L'\u20ac').c_str());
        WLog(LOG_ERROR, L"%ls", std::wstring(5000, L'\U0001f321').c_str());
    });
    EXPECT_THAT(loggedMessages(), ElementsAre(repeat("\xc2\xb0", 2047), "\xc2\xb0" + std::string(4093, 'e'),
                                              "a" + repeat("\xc2\xb0", 2047), repeat("\xe2\x82\xac", 1365),
                                              "a" + repeat("\xe2\x82\xac", 1364), "aa" + repeat("\xe2\x82\xac", 1364),
                                              repeat("\xf0\x9f\x8c\xa1", 1023)));
}

TEST_F(WLogUtf8Test, ArgumentThatCannotBeFormattedDropsTheMessage) {
    runAnew([] {
        WLog(LOG_ERROR, L"not UTF-8: %s", "\xff");
        WLog(LOG_ERROR, L"after");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("after"));
}

}  // namespace
