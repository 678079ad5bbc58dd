#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "FakeSource.h"
#include "Instances.h"
#include "health/LogFollower.h"

namespace {

using broker::Value;
using host::LogFollower;
using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

class LogFollowerTest : public testing::Test {
  protected:
    LogFollowerTest() {
        m_source.instances = [this](const broker::ObjectPath& path) {
            EXPECT_EQ(path.className, "TQS_SystemEventLog");
            EXPECT_EQ(path.nameSpace, "root/other");
            std::vector<Value> texts;
            for (const std::string& line : m_log) texts.push_back(Value::ofText(line, CMPI_chars));
            return replyOf(m_status, {instanceOf(host::EVENT_LOG_CLASS, "L",
                                                 {{"LogValid", Value::ofBoolean(m_isValid)},
                                                  {"LogLines", Value::ofArray(texts, CMPI_chars)}})});
        };
    }
    LogFollower follower(const std::optional<Lines>& seen = std::nullopt, const host::LineFilter& filter = {}) {
        return {m_source, "root/other", filter, seen};
    }

    FakeSource m_source;
    Lines m_log;
    CMPIrc m_status = CMPI_RC_OK;
    bool m_isValid = true;
};

TEST_F(LogFollowerTest, EachLineComesOnce) {
    LogFollower following = follower();
    m_log = {"a", "b\xff"};
    EXPECT_THAT(following.next().lines, ElementsAre("a", "b\xff"));
    const LogFollower::Look second = following.next();
    EXPECT_THAT(second.lines, IsEmpty());
    EXPECT_FALSE(second.hasChanged);
    m_log = {"b\xff", "c"};
    EXPECT_THAT(following.next().lines, ElementsAre("c"));
    m_log = {};
    EXPECT_TRUE(following.next().hasChanged);
    m_log = {"c"};
    EXPECT_THAT(following.next().lines, ElementsAre("c"));
}

TEST_F(LogFollowerTest, GoesOnBehindWhatHasBeenSeen) {
    m_log = {"a", "b"};
    LogFollower following = follower(Lines{"x", "a"});
    EXPECT_THAT(following.next().lines, ElementsAre("b"));
    EXPECT_THAT(following.seen(), ElementsAre("a", "b"));
}

TEST_F(LogFollowerTest, UnwantedLinesAreSeenAllTheSame) {
    host::LineFilter filter;
    filter.match = "FAN";
    m_log = {"fan", "door"};
    LogFollower following = follower(std::nullopt, filter);
    EXPECT_THAT(following.next().lines, ElementsAre("fan"));
    EXPECT_THAT(following.seen(), ElementsAre("fan", "door"));
    m_log = {"fan", "door", "cover", "fans"};
    EXPECT_THAT(following.next().lines, ElementsAre("fans"));
}

TEST_F(LogFollowerTest, LastLinesAreThoseOfTheVeryFirstLook) {
    host::LineFilter filter;
    filter.last = 1;
    m_log = {"a", "b"};
    LogFollower following = follower(std::nullopt, filter);
    EXPECT_THAT(following.next().lines, ElementsAre("b"));
    m_log = {"a", "b", "c", "d"};
    EXPECT_THAT(following.next().lines, ElementsAre("c", "d"));
    EXPECT_THAT(follower(Lines{}, filter).next().lines, ElementsAre("a", "b", "c", "d"));
}

TEST_F(LogFollowerTest, FailureAndInvalidLogLoseNoLine) {
    LogFollower following = follower();
    m_log = {"a"};
    following.next();
    m_log = {"a", "b"};
    m_status = CMPI_RC_ERR_FAILED;
    EXPECT_EQ(following.next().status.rc, CMPI_RC_ERR_FAILED);
    m_status = CMPI_RC_OK;
    m_isValid = false;
    m_log = {"junk"};
    const LogFollower::Look invalid = following.next();
    EXPECT_FALSE(invalid.isValid);
    EXPECT_THAT(invalid.lines, IsEmpty());
    m_isValid = true;
    m_log = {"a", "b", "c"};
    EXPECT_THAT(following.next().lines, ElementsAre("b", "c"));
}

TEST_F(LogFollowerTest, ProviderWhoseStartHasFailedIsStartedAnew) {
    m_status = CMPI_RC_ERR_METHOD_NOT_AVAILABLE;
    m_log = {"a"};
    int restarts = 0;
    m_source.restarted = [&] {
        ++restarts;
        m_status = CMPI_RC_OK;
        return true;
    };
    EXPECT_THAT(follower().next().lines, ElementsAre("a"));
    EXPECT_EQ(restarts, 1);
    m_status = CMPI_RC_ERR_METHOD_NOT_AVAILABLE;
    m_source.restarted = [] { return false; };
    EXPECT_EQ(follower().next().status.rc, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
}

// What a run puts out and keeps, when it is killed before either, in between, after both, or not at all.
TEST_F(LogFollowerTest, NoLineIsLostInAThousandHistoriesOfRunsThatAreKilled) {
    for (unsigned seed = 1; seed <= 1'000; ++seed) {
        std::minstd_rand chance(seed);
        std::map<std::string, int> shown;
        std::map<std::string, int> mayBeDoubled;
        std::optional<Lines> state;
        Lines came;
        std::optional<LogFollower> following = follower();
        m_log.clear();
        for (int look = 0; look < 12; ++look) {
            // Only lines that have been kept go: the oldest two, or all.
            const std::size_t fresh = chance() % 3;
            const bool areOldestKept = state && state->size() > 2 && m_log.size() > 2 && (*state)[1] == m_log[1];
            if (areOldestKept && chance() % 2 == 0) m_log.erase(m_log.begin(), m_log.begin() + 2);
            if (state == m_log && chance() % 4 == 0) m_log.clear();
            for (std::size_t i = 0; i < fresh; ++i) {
                came.push_back(std::to_string(came.size()));
                m_log.push_back(came.back());
            }
            const LogFollower::Look next = following->next();
            const unsigned killed = chance() % 6;
            if (killed > 0) {
                for (const std::string& line : next.lines) ++shown[line];
            }
            if (killed > 1) state = following->seen();
            if (killed == 1) {
                for (const std::string& line : next.lines) ++mayBeDoubled[line];
            }
            if (killed < 3) following.emplace(m_source, "root/other", host::LineFilter{}, state);
        }
        for (const std::string& line : following->next().lines) ++shown[line];
        for (const std::string& line : came) {
            ASSERT_EQ(shown[line], 1 + mayBeDoubled[line]) << "history " << seed << ", line " << line;
        }
    }
}

}  // namespace
