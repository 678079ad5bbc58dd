// Characters that are not ASCII, wherever TOML has a place for them.
#include "ChipTest.h"

namespace {

class TextsTest : public ChipTest {
  protected:
    // The event log's only line, from the value that the scenario gives it.
    std::string lineOf(const std::string& value) const {
        CSystemEventLog log{};
        EXPECT_EQ(chipOn("[event-log]\nlines = [" + value + "]\n")->GetSystemEventLog(log), 0U);
        return log.lines.size() == 1 ? log.lines[0] : std::to_string(log.lines.size()) + " lines";
    }
};

TEST_F(TextsTest, KeepCharactersOfAnyLength) {
    EXPECT_EQ(lineOf("\"é 、 \xF0\x9F\x8C\xA1 \xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF\""),
              "é 、 \xF0\x9F\x8C\xA1 \xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF");
}

TEST_F(TextsTest, KeepEscapesBesideThem) {
    EXPECT_EQ(lineOf("\"\\\"é\\\\é\\u00e9\\t'\""), "\"é\\éé\t'");
}

TEST_F(TextsTest, InSingleQuotesAreTakenAsTheyStand) {
    EXPECT_EQ(lineOf(R"('é "\u00e9" \')"), R"(é "\u00e9" \)");
}

TEST_F(TextsTest, OfSeveralLinesLoseTheFirstLineEnd) {
    EXPECT_EQ(lineOf("\"\"\"\né\n\"\"é\"\"\"\"\""), "é\n\"\"é\"\"");
    EXPECT_EQ(lineOf("'''\né\n\"\"\"\\n''é'''''"), "é\n\"\"\"\\n''é''");
}

TEST_F(TextsTest, OfSeveralLinesMayBreakBeforeThem) {
    EXPECT_EQ(lineOf("\"\"\"a \\\n  é\"\"\""), "a é");
}

TEST_F(TextsTest, EmptyOnesEndWhereTheyBegin) {
    EXPECT_EQ(lineOf("\"\"]#é\n#["), "");
    EXPECT_EQ(lineOf("'']#é\n#["), "");
}

TEST_F(TextsTest, CommentsMayHoldThemAndQuotes) {
    EXPECT_EQ(lineOf("# isn't \"é\n'#é' # '''é\n"), "#é");
}

TEST_F(TextsTest, AByteOrderMarkIsNotPartOfTheFile) {
    EXPECT_EQ(handlesOf(*chipOn("\xEF\xBB\xBFmodel = \"none\"\n")), CSensorHandleList());
}

}  // namespace
