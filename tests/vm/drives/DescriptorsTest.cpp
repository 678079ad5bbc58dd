// Ten thousand reads, most of them failing in one of the possible ways, leave no file descriptor behind.
#include "Guest.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class DescriptorsTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"descriptors", 3}); }

    // Each phase reads through the loaded provider, then directly.
    static Strings twice(const Strings& readings, const std::string& descriptors) {
        Strings lines = readings;
        lines.insert(lines.end(), readings.begin(), readings.end());
        lines.push_back("descriptors: " + descriptors + " more");
        return lines;
    }
};

// One more is the provider's log.
TEST_F(DescriptorsTest, DoNotGrowWithSuccesses) {
    EXPECT_THAT(section("all drives answer"),
                ElementsAreArray(twice({"SSD1: 50", "SSD2: 50", "SSD3: 50", "SSD4: 28"}, "1")));
}

// The second drive is gone, a file is in the third one's place, and the fourth one refuses. The session's own log,
// opened by its first error, is the other one of two more.
TEST_F(DescriptorsTest, DoNotGrowWithFailures) {
    EXPECT_THAT(section("failures mixed in"),
                ElementsAreArray(twice({"SSD1: 50", "SSD2: 0", "SSD3: 65263", "SSD4: 0"}, "2")));
}

TEST_F(DescriptorsTest, DoNotGrowWithoutPrivileges) {
    EXPECT_THAT(section("unprivileged"),
                ElementsAreArray(twice({"SSD1: 65263", "SSD2: 0", "SSD3: 65263", "SSD4: 65263"}, "2")));
}

TEST_F(DescriptorsTest, DoNotGrowWithStartsThatLeaveDrivesOut) {
    EXPECT_THAT(section("failing starts"), ElementsAre("descriptors: 2 more"));
}

}  // namespace
