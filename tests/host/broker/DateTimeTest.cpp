#include <chrono>

#include "BrokerFixture.h"

namespace {

constexpr CMPIUint64 SECOND = 1000000;

class DateTimeTest : public BrokerTest {
  protected:
    CMPIDateTime* fromChars(const char* text) { return mb->eft->newDateTimeFromChars(mb, text, &status); }
    CMPIUint64 binaryOf(const CMPIDateTime* date) { return date->ft->getBinaryFormat(date, &status); }
    std::string textOfBinary(CMPIUint64 microseconds, bool isInterval) {
        const CMPIDateTime* date = mb->eft->newDateTimeFromBinary(mb, microseconds, isInterval ? 1 : 0, &status);
        return date == nullptr ? "(none)" : textOf(date->ft->getStringFormat(date, nullptr));
    }
};

}  // namespace

TEST_F(DateTimeTest, TimesAreWrittenInUtc) {
    EXPECT_EQ("19700101000000.000000+000", textOfBinary(0, false));
    EXPECT_EQ("20240229235959.000042+000", textOfBinary(1709251199 * SECOND + 42, false));
    EXPECT_EQ("99991231235959.999999+000", textOfBinary(253402300800 * SECOND - 1, false));
}

TEST_F(DateTimeTest, IntervalsAreWrittenInDays) {
    EXPECT_EQ("00000000000000.000000:000", textOfBinary(0, true));
    EXPECT_EQ("00000001010101.000007:000", textOfBinary(90061 * SECOND + 7, true));
    EXPECT_EQ("99999999235959.999999:000", textOfBinary(100000000 * 86400ULL * SECOND - 1, true));
}

TEST_F(DateTimeTest, DatesWithoutFormAreRefused) {
    EXPECT_EQ("(none)", textOfBinary(253402300800 * SECOND, false));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, status.rc);
    EXPECT_EQ("(none)", textOfBinary(100000000 * 86400ULL * SECOND, true));
}

TEST_F(DateTimeTest, TimesAreReadWithTheirOffset) {
    const CMPIDateTime* utc = fromChars("20240229235959.000042+000");
    EXPECT_EQ(1709251199 * SECOND + 42, binaryOf(utc));
    EXPECT_EQ(0, utc->ft->isInterval(utc, nullptr));
    EXPECT_EQ(1709251199 * SECOND - 3600 * SECOND, binaryOf(fromChars("20240229235959.000000+060")));
    EXPECT_EQ(1709251199 * SECOND + 5400 * SECOND, binaryOf(fromChars("20240229235959.000000-090")));
}

TEST_F(DateTimeTest, TextIsGivenBackAsItWas) {
    const CMPIDateTime* date = fromChars("20240229235959.000000-090");
    EXPECT_EQ("20240229235959.000000-090", textOf(date->ft->getStringFormat(date, nullptr)));
}

TEST_F(DateTimeTest, IntervalsAreRead) {
    const CMPIDateTime* interval = fromChars("00000001010101.000007:000");
    EXPECT_EQ(90061 * SECOND + 7, binaryOf(interval));
    EXPECT_EQ(1, interval->ft->isInterval(interval, nullptr));
}

TEST_F(DateTimeTest, TimesBefore1970HaveNoBinaryForm) {
    const CMPIDateTime* date = fromChars("19691231235959.000000+000");
    ASSERT_NE(nullptr, date);
    EXPECT_EQ(0U, binaryOf(date));
    EXPECT_EQ(CMPI_RC_ERR_FAILED, status.rc);
}

TEST_F(DateTimeTest, TextThatIsNoDateIsRefused) {
    for (const char* text :
         {"", "20240229", "20230229000000.000000+000", "20241301000000.000000+000", "20240229240000.000000+000",
          "20240229006000.000000+000", "20240229000060.000000+000", "20240229000000,000000+000",
          "20240229000000.000000*000", "2024022900000x.000000+000", "00000001010101.000007:001"}) {
        EXPECT_EQ(nullptr, fromChars(text)) << text;
        EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, status.rc) << text;
    }
    EXPECT_EQ(nullptr, fromChars(nullptr));
}

TEST_F(DateTimeTest, NewDateTimeIsNow) {
    const auto seconds = [] {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return static_cast<CMPIUint64>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
    };
    const CMPIUint64 before = seconds();
    const CMPIUint64 made = binaryOf(mb->eft->newDateTime(mb, nullptr));
    EXPECT_LE(before, made);
    EXPECT_GE(seconds(), made);
}

TEST_F(DateTimeTest, CloneIsReleased) {
    CMPIDateTime* clone = fromChars("20240229235959.000000+000");
    clone = clone->ft->clone(clone, nullptr);
    EXPECT_EQ(1709251199 * SECOND, binaryOf(clone));
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
}
