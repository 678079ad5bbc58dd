#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "FakeSource.h"
#include "FileContents.h"
#include "Instances.h"
#include "MetricsReader.h"
#include "ResourceUsage.h"
#include "TemporaryDirectory.h"
#include "cli/Metrics.h"

namespace {

using host::MetricsRounds;
using host::nextMultiple;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;
using Clock = host::Ending::Clock;

TEST(MetricsTest, RoundsBeginAtMultiplesOfTheInterval) {
    const Clock::time_point start{seconds(1000)};
    EXPECT_EQ(nextMultiple(start, seconds(15), start), start + seconds(15));
    EXPECT_EQ(nextMultiple(start, seconds(15), start + seconds(1)), start + seconds(15));
    EXPECT_EQ(nextMultiple(start, seconds(15), start + std::chrono::milliseconds(14999)), start + seconds(15));
}

TEST(MetricsTest, LongRoundCostsTheMultiplesThatItCovers) {
    const Clock::time_point start{seconds(1000)};
    EXPECT_EQ(nextMultiple(start, seconds(15), start + seconds(15)), start + seconds(30));
    EXPECT_EQ(nextMultiple(start, seconds(15), start + seconds(50)), start + seconds(60));
    EXPECT_EQ(nextMultiple(start, seconds(15), start + std::chrono::hours(24 * 365 * 50)),
              start + std::chrono::hours(24 * 365 * 50) + seconds(15));
}

// A terminal with three sensors and an event log that gets a line before each round.
class MetricsRoundsTest : public testing::Test {
  protected:
    MetricsRoundsTest() {
        m_source.names = [this](const broker::ObjectPath& /*path*/) {
            broker::Reply reply;
            reply.status.rc = m_status;
            if (m_status != CMPI_RC_OK) return reply;
            for (const broker::Instance& sensor : m_sensors) reply.paths.push_back(sensor.path);
            return reply;
        };
        m_source.instances = [this](const broker::ObjectPath& path) {
            const bool isLog = path.className == host::EVENT_LOG_CLASS;
            return replyOf(m_status, isLog ? std::vector<broker::Instance>{log()} : m_sensors);
        };
    }

    broker::Instance log() {
        m_lines.erase(m_lines.begin());
        m_lines.push_back(broker::Value::ofText("line " + std::to_string(m_count++), CMPI_chars));
        return instanceOf(
            host::EVENT_LOG_CLASS, "L",
            {{"LogLines", broker::Value::ofArray(m_lines, CMPI_chars)}, {"LogValid", broker::Value::ofBoolean(true)}});
    }

    CMPIrc m_status = CMPI_RC_OK;
    std::vector<broker::Instance> m_sensors{sensorOf("A", 4200, 2, -2, {{"UpperThresholdCritical", 9000}}),
                                            sensorOf("B\n\xff", 5, 5, 0), sensorOf("C", 7, 65, 0)};
    std::vector<broker::Value> m_lines = std::vector<broker::Value>(5, broker::Value::ofText("old", CMPI_chars));
    unsigned m_count = 0;
    FakeSource m_source;
    MetricsRounds m_rounds{m_source, "root/cimv2", {}};
};

TEST_F(MetricsRoundsTest, NewLinesAreCountedFromTheFirstRound) {
    for (unsigned round = 0; round < 4; ++round) {
        const auto page = readMetrics(m_rounds.next().text);
        EXPECT_EQ(sampleIn(page, "zelsensors_event_log_new_lines_total").value, std::to_string(round));
    }
}

TEST_F(MetricsRoundsTest, FailureIsShownAndReportedAndIsOverWithTheNextRound) {
    EXPECT_FALSE(m_rounds.next().failure);
    m_status = CMPI_RC_ERR_FAILED;
    const MetricsRounds::Page failed = m_rounds.next();
    ASSERT_TRUE(failed.failure);
    EXPECT_EQ(failed.failure->rc, CMPI_RC_ERR_FAILED);
    EXPECT_THAT(failed.text, HasSubstr("zelsensors_scrape_success{collector=\"sensors\"} 0\n"));
    EXPECT_THAT(failed.text, Not(HasSubstr("celsius")));
    m_status = CMPI_RC_OK;
    EXPECT_THAT(m_rounds.next().text, HasSubstr("zelsensors_temperature_celsius{sensor=\"A\"} 42\n"));
}

TEST_F(MetricsRoundsTest, FiftyThousandRoundsTakeNoMoreMemoryAndDescriptors) {
    const TemporaryDirectory directory;
    const host::ReplacedFile file(directory.path("page.prom"));
    for (int round = 0; round < 100; ++round) file.replace(m_rounds.next().text);
    const ResourceUsage before = ResourceUsage::now();
    for (int round = 0; round < 50'000; ++round) {
        m_status = round % 10 == 9 ? CMPI_RC_ERR_FAILED : CMPI_RC_OK;
        file.replace(m_rounds.next().text);
    }
    expectNoneGained(before, ResourceUsage::now());
    m_status = CMPI_RC_OK;
    const auto page = readMetrics(m_rounds.next().text);
    EXPECT_EQ(sampleIn(page, "zelsensors_event_log_new_lines_total").number, m_count - 1);
}

}  // namespace
