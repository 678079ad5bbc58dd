#include <cstdlib>
#include <set>

#include "ChipTest.h"

namespace {

constexpr int INT_LOWEST = -2147483647 - 1;
constexpr int INT_HIGHEST = 2147483647;

class MovementTest : public ChipTest {
  protected:
    // The first values of the only sensor of a scenario.
    std::vector<int> valuesWith(const std::string& reading, unsigned count) const {
        return valuesOf(*chipOn(sensor("1", reading)), 1, count);
    }
};

using Values = std::vector<int>;

TEST_F(MovementTest, PlainNumberIsAConstant) {
    EXPECT_EQ(valuesWith("-17", 3), (Values{-17, -17, -17}));
}

TEST_F(MovementTest, ConstantStays) {
    EXPECT_EQ(valuesWith("{ kind = \"constant\", value = 42 }", 2), (Values{42, 42}));
}

TEST_F(MovementTest, ConstantTakesEveryValueOfAnInt) {
    EXPECT_EQ(valuesWith("-2147483648", 1), Values{INT_LOWEST});
    EXPECT_EQ(valuesWith("2147483647", 1), Values{INT_HIGHEST});
}

TEST_F(MovementTest, SeriesRepeats) {
    EXPECT_EQ(valuesWith("{ kind = \"series\", values = [5, -3, 8], every = \"call\" }", 7),
              (Values{5, -3, 8, 5, -3, 8, 5}));
}

TEST_F(MovementTest, SeriesHoldsItsLastValue) {
    EXPECT_EQ(valuesWith("{ kind = \"series\", values = [5, -3, 8], every = \"call\", then = \"hold\" }", 5),
              (Values{5, -3, 8, 8, 8}));
}

TEST_F(MovementTest, SeriesGoesBackWithoutRepeatingItsEnds) {
    EXPECT_EQ(valuesWith("{ kind = \"series\", values = [1, 2, 3], every = \"call\", then = \"back\" }", 9),
              (Values{1, 2, 3, 2, 1, 2, 3, 2, 1}));
}

TEST_F(MovementTest, SeriesOfOneValueGoesBackToItself) {
    EXPECT_EQ(valuesWith("{ kind = \"series\", values = [9], every = \"call\", then = \"back\" }", 3),
              (Values{9, 9, 9}));
}

TEST_F(MovementTest, SineSwingsRoundItsMiddle) {
    EXPECT_EQ(valuesWith("{ kind = \"sine\", middle = 100, amplitude = 10, period = 8, every = \"call\" }", 9),
              (Values{100, 107, 110, 107, 100, 93, 90, 93, 100}));
}

TEST_F(MovementTest, SineReachesTheEndsOfAnInt) {
    EXPECT_EQ(valuesWith("{ kind = \"sine\", middle = 0, amplitude = 2147483647, period = 4, every = \"call\" }", 4),
              (Values{0, INT_HIGHEST, 0, -INT_HIGHEST}));
}

TEST_F(MovementTest, RampRepeatsFromItsStart) {
    EXPECT_EQ(valuesWith("{ kind = \"ramp\", from = 0, to = 10, steps = 4, every = \"call\" }", 7),
              (Values{0, 2, 5, 7, 10, 0, 2}));
}

TEST_F(MovementTest, RampHoldsItsEnd) {
    EXPECT_EQ(valuesWith("{ kind = \"ramp\", from = 0, to = -10, steps = 4, every = \"call\", then = \"hold\" }", 7),
              (Values{0, -2, -5, -7, -10, -10, -10}));
}

TEST_F(MovementTest, RampGoesBack) {
    EXPECT_EQ(valuesWith("{ kind = \"ramp\", from = 7, to = 9, steps = 2, every = \"call\", then = \"back\" }", 6),
              (Values{7, 8, 9, 8, 7, 8}));
}

TEST_F(MovementTest, RampSpansAllOfAnInt) {
    EXPECT_EQ(valuesWith("{ kind = \"ramp\", from = -2147483648, to = 2147483647, steps = 2, every = \"call\" }", 3),
              (Values{INT_LOWEST, -1, INT_HIGHEST}));
}

TEST_F(MovementTest, EachSensorCountsItsOwnCalls) {
    const std::string series = "{ kind = \"series\", values = [1, 2, 3], every = \"call\" }";
    const auto chip = chipOn(sensor("1", series) + sensor("2", series));
    EXPECT_EQ(valuesOf(*chip, 1, 2), (Values{1, 2}));
    EXPECT_EQ(valuesOf(*chip, 2, 1), Values{1});
    EXPECT_EQ(valuesOf(*chip, 1, 1), Values{3});
}

TEST_F(MovementTest, EachChipStartsAnew) {
    const auto first = chipOn(sensor("1", "{ kind = \"series\", values = [1, 2, 3], every = \"call\" }"));
    EXPECT_EQ(valuesOf(*first, 1, 2), (Values{1, 2}));
    EXPECT_EQ(valuesOf(*initialisedChip(), 1, 1), Values{1});
}

TEST_F(MovementTest, CopiesRunOneStepAheadOfEachOther) {
    const auto chip =
        chipOn(sensor("1", "{ kind = \"series\", values = [10, 20, 30], every = \"call\" }") + "count = 4\n");
    EXPECT_EQ(valuesOf(*chip, 1, 2), (Values{10, 20}));
    EXPECT_EQ(valuesOf(*chip, 2, 2), (Values{20, 30}));
    EXPECT_EQ(valuesOf(*chip, 4, 2), (Values{10, 20}));
}

// By the clock.

class ClockMovementTest : public MovementTest {
  protected:
    static void setMilliseconds(long long sinceEpoch) {
        timeval now{};
        now.tv_sec = sinceEpoch / 1000;
        now.tv_usec = sinceEpoch % 1000 * 1000;
        fakeclock::set(now);
    }
};

TEST_F(ClockMovementTest, StepIsTheTimeSince1970DividedByItsLength) {
    const auto chip =
        chipOn(sensor("1", "{ kind = \"series\", values = [0, 1, 2, 3], every = \"clock\", step-ms = 250 }"));
    for (const long long time : {0LL, 249LL, 250LL, 999LL, 1000LL, 1794000000500LL}) {
        setMilliseconds(time);
        EXPECT_EQ(valueOf(*chip, 1), time / 250 % 4) << time;
    }
}

TEST_F(ClockMovementTest, ClockAndOneSecondAreTheDefaults) {
    const auto chip = chipOn(sensor("1", "{ kind = \"series\", values = [0, 1, 2] }"));
    setMilliseconds(1794000000999);
    EXPECT_EQ(valuesOf(*chip, 1, 3), (Values{0, 0, 0}));
    fakeclock::advanceMilliseconds(1);
    EXPECT_EQ(valueOf(*chip, 1), 1);
}

TEST_F(ClockMovementTest, SineRampAndWalkFollowTheClock) {
    const auto chip = chipOn(sensor("1", "{ kind = \"sine\", middle = 0, amplitude = 10, period = 4 }") +
                             sensor("2", "{ kind = \"ramp\", from = 0, to = 9, steps = 9, then = \"back\" }") +
                             sensor("3", "{ kind = \"random-walk\", start = 0, step = 5, min = -50, max = 50 }"));
    setMilliseconds(5000);
    EXPECT_EQ(valuesOf(*chip, 1, 2), (Values{10, 10}));
    EXPECT_EQ(valuesOf(*chip, 2, 2), (Values{5, 5}));
    const int walked = valueOf(*chip, 3);
    setMilliseconds(1998000 * 7LL + 5000);  // seven times there and back
    EXPECT_EQ(valueOf(*chip, 3), walked);
    setMilliseconds(13000);
    EXPECT_EQ(valueOf(*chip, 2), 5);
}

TEST_F(ClockMovementTest, TwoChipsAgree) {
    const auto one = chipOn(sensor("1", "{ kind = \"random-walk\", start = 0, step = 5, min = -50, max = 50 }"));
    const auto other = initialisedChip();
    setMilliseconds(123456000);
    valuesOf(*one, 1, 5);
    EXPECT_EQ(valueOf(*one, 1), valueOf(*other, 1));
}

// Random walks.

const std::string WALK = "{ kind = \"random-walk\", start = 100, step = 3, min = 95, max = 108, every = \"call\" }";

TEST_F(MovementTest, WalkIsTheSameOnEverySystem) {
    EXPECT_EQ(valuesWith(WALK, 12), (Values{100, 102, 100, 97, 95, 97, 95, 97, 99, 101, 104, 103}));
}

TEST_F(MovementTest, WalkKeepsItsStepAndItsBounds) {
    const Values values = valuesWith(WALK, 1000);
    for (std::size_t i = 1; i < values.size(); ++i) EXPECT_LE(std::abs(values[i] - values[i - 1]), 3) << i;
    const std::set<int> seen(values.begin(), values.end());
    EXPECT_EQ(*seen.begin(), 95);
    EXPECT_EQ(*seen.rbegin(), 108);
}

TEST_F(MovementTest, WalkGoesBackAfterAThousandValues) {
    Values values = valuesWith(WALK, 1999);
    EXPECT_EQ(values[1998], values[0]);
    Values there(values.begin(), values.begin() + 1000);
    Values back(values.begin() + 999, values.end());
    std::reverse(back.begin(), back.end());
    EXPECT_EQ(there, back);
}

TEST_F(MovementTest, WalkDependsOnTheSeed) {
    const Values byDefault = valuesWith(WALK, 50);
    const Values ofOne = valuesOf(*chipOn("seed = 1\n" + sensor("1", WALK)), 1, 50);
    const Values ofTwo = valuesOf(*chipOn("seed = 2\n" + sensor("1", WALK)), 1, 50);
    EXPECT_EQ(byDefault, ofOne);
    EXPECT_NE(ofOne, ofTwo);
}

TEST_F(MovementTest, WalksOfTwoSensorsDiffer) {
    const auto chip = chipOn(sensor("1", WALK) + sensor("2", WALK));
    EXPECT_NE(valuesOf(*chip, 1, 50), valuesOf(*chip, 2, 50));
}

TEST_F(MovementTest, WalksOfCopiesDifferAndStartAlike) {
    const auto chip = chipOn(sensor("1", WALK) + "count = 2\n");
    const Values first = valuesOf(*chip, 1, 50);
    const Values second = valuesOf(*chip, 2, 50);
    EXPECT_EQ(first[0], 100);
    EXPECT_EQ(second[0], 100);
    EXPECT_NE(first, second);
}

TEST_F(MovementTest, WalkWithTheGreatestStepStaysInAnInt) {
    const Values values = valuesWith(
        "{ kind = \"random-walk\", start = 0, step = 2147483647, min = -2147483648, max = 2147483647, every = \"call\" "
        "}",
        1000);
    EXPECT_NE(std::count(values.begin(), values.end(), INT_HIGHEST), 0);
    EXPECT_NE(std::count(values.begin(), values.end(), INT_LOWEST), 0);
}

class RecordedTest : public MovementTest {
  protected:
    // The only sensor's values so many milliseconds after the chip was initialised.
    std::vector<int> valuesAt(const std::vector<long>& times) const {
        fakeclock::set({1000, 0});
        const auto chip = chipOn("[recording]\ntimes-ms = [0, 1000, 2500]\n" +
                                 sensor("1", "{ kind = \"recorded\", values = [7, -8, 9] }"));
        return fakeclock::at(times, [&] { return valueOf(*chip, 1); });
    }
};

TEST_F(RecordedTest, EachValueHoldsFromItsTimeOnAndTheLastForEver) {
    EXPECT_EQ(valuesAt({0, 999, 1000, 2499, 2500, 90000000}), (Values{7, 7, -8, -8, 9, 9}));
}

TEST_F(RecordedTest, ClockSetBackGivesTheFirstValue) {
    EXPECT_EQ(valuesAt({2500, -5000, 1000}), (Values{9, 7, -8}));
}

TEST_F(RecordedTest, TimesCountFromTheFirstInitialiseOfEachChip) {
    fakeclock::set({1000, 0});
    const std::string scenario =
        "[recording]\ntimes-ms = [0, 1000]\n" + sensor("1", "{ kind = \"recorded\", values = [1, 2] }");
    const auto first = chipOn(scenario);
    fakeclock::advanceMilliseconds(1000);
    EXPECT_EQ(first->Initialise(), 0U);
    const auto second = chipOn(scenario);
    EXPECT_EQ(valueOf(*first, 1), 2);
    EXPECT_EQ(valueOf(*second, 1), 1);
}

TEST_F(RecordedTest, CopiesRunAheadAndHoldTheLastValue) {
    fakeclock::set({1000, 0});
    const auto chip = chipOn("[recording]\ntimes-ms = [0, 1000]\n" +
                             sensor("1", "{ kind = \"recorded\", values = [1, 2] }\ncount = 3"));
    EXPECT_EQ(valueOf(*chip, 1), 1);
    EXPECT_EQ(valueOf(*chip, 2), 2);
    EXPECT_EQ(valueOf(*chip, 3), 2);
}

}  // namespace
