#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "health/NewLines.h"

namespace {

using host::firstNewLine;
using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

Lines newLines(const Lines& before, const Lines& now) {
    const std::size_t first = firstNewLine(before, now);
    return {now.begin() + static_cast<std::ptrdiff_t>(first), now.end()};
}

TEST(NewLinesTest, UnchangedLogHasNone) {
    EXPECT_THAT(newLines({"a", "b"}, {"a", "b"}), IsEmpty());
    EXPECT_THAT(newLines({}, {}), IsEmpty());
}

TEST(NewLinesTest, AppendedLinesAreNew) {
    EXPECT_THAT(newLines({"a"}, {"a", "b", "c"}), ElementsAre("b", "c"));
    EXPECT_THAT(newLines({}, {"a"}), ElementsAre("a"));
    EXPECT_THAT(newLines({"a", "a"}, {"a", "a", "a"}), ElementsAre("a"));
}

TEST(NewLinesTest, WhatFollowsTheOverlapIsNewWhenTheOldestAreDropped) {
    EXPECT_THAT(newLines({"a", "b", "c"}, {"b", "c", "d"}), ElementsAre("d"));
    EXPECT_THAT(newLines({"a", "b", "c"}, {"c", "d", "e"}), ElementsAre("d", "e"));
    EXPECT_THAT(newLines({"a", "b", "c"}, {"b", "c"}), IsEmpty());
    EXPECT_THAT(newLines({"a", "b"}, {"c", "d"}), ElementsAre("c", "d"));
}

TEST(NewLinesTest, LongestOverlapOfRepeatedLinesCounts) {
    EXPECT_THAT(newLines({"x", "a", "b", "a"}, {"a", "b", "a", "c"}), ElementsAre("c"));
    EXPECT_THAT(newLines({"b", "a", "a", "a"}, {"a", "a", "b"}), ElementsAre("b"));
    EXPECT_THAT(newLines({"a", "b", "x", "a", "b", "a", "b"}, {"a", "b", "a", "b", "y"}), ElementsAre("y"));
}

TEST(NewLinesTest, WhatFollowsTheCommonBeginningIsNewWhenLinesHaveChanged) {
    EXPECT_THAT(newLines({"a", "b", "c"}, {"a", "b", "d", "e"}), ElementsAre("d", "e"));
    EXPECT_THAT(newLines({"a", "b", "c"}, {"a", "b"}), IsEmpty());
}

TEST(NewLinesTest, AllAreNewAfterTheLogWasCleared) {
    EXPECT_THAT(newLines({"a", "b"}, {}), IsEmpty());
    EXPECT_THAT(newLines({"a", "b"}, {"c"}), ElementsAre("c"));
}

// A log with room for some lines, to which lines come that differ from each other.
class History {
  public:
    explicit History(unsigned seed) : m_chance(seed), m_room(1 + m_chance() % 12) {}

    const Lines& lines() const { return m_lines; }
    // What came and is still there.
    const Lines& unseen() const { return m_unseen; }

    // Up to the next look the log is cleared or not, and gets some lines.
    void goOn() {
        m_unseen.clear();
        if (m_chance() % 8 == 0) m_lines.clear();
        for (unsigned left = m_chance() % (m_room + 3); left > 0; --left) add();
    }

  private:
    void add() {
        if (m_lines.size() == m_room) m_lines.erase(m_lines.begin());
        m_lines.push_back(std::to_string(m_count++));
        if (m_unseen.size() == m_room) m_unseen.erase(m_unseen.begin());
        m_unseen.push_back(m_lines.back());
    }

    std::minstd_rand m_chance;
    std::size_t m_room;
    unsigned m_count = 0;
    Lines m_lines;
    Lines m_unseen;
};

TEST(NewLinesTest, NoLineIsLostOrTakenTwiceInAHundredThousandHistories) {
    for (unsigned seed = 1; seed <= 100'000; ++seed) {
        History history(seed);
        Lines before;
        for (int look = 0; look < 8; ++look) {
            history.goOn();
            ASSERT_EQ(newLines(before, history.lines()), history.unseen()) << "history " << seed << ", look " << look;
            before = history.lines();
        }
    }
}

TEST(NewLinesTest, LongLogsOfEqualLinesTakeNoLongTime) {
    Lines before(100'000, "a");
    Lines now = before;
    before.insert(before.begin(), "b");
    now.emplace_back("c");
    EXPECT_EQ(firstNewLine(before, now), 100'000U);
}

}  // namespace
