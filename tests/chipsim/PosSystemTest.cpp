#include <thread>

#include "ChipTest.h"
#include "FreshProcess.h"

namespace {

class PosSystemTest : public ChipTest {
  protected:
    // "grebel zan" as 0 or 1 each, asked in a process that has not asked before.
    static std::string answers() {
        const ProcessOutcome outcome = runInFreshProcess([] {
            std::printf("%d %d", static_cast<int>(CPOSSystem::s_instance.IsGrebel()),
                        static_cast<int>(CPOSSystem::s_instance.IsZan()));
        });
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.standardError, "");
        return outcome.standardOutput;
    }
};

TEST_F(PosSystemTest, ModelIsTheScenarios) {
    useScenario("model = \"grebel\"\n");
    EXPECT_EQ(answers(), "1 0");
    useScenario("model = \"zan\"\n");
    EXPECT_EQ(answers(), "0 1");
    useScenario("model = \"none\"\n");
    EXPECT_EQ(answers(), "0 0");
}

TEST_F(PosSystemTest, NoModelIsTheDefault) {
    useScenario("");
    EXPECT_EQ(answers(), "0 0");
}

TEST_F(PosSystemTest, BuiltInTerminalIsOfNoModel) {
    EXPECT_EQ(answers(), "0 0");
}

TEST_F(PosSystemTest, FaultyScenarioHasNoModelAndLeavesTheMessageToTheChip) {
    useScenario("model = \"grebel\"\nseed = -1\n");
    EXPECT_EQ(answers(), "0 0");
    setenv("ZELCHIP_SCENARIO", "/nowhere/scenario.toml", 1);
    EXPECT_EQ(answers(), "0 0");
}

TEST_F(PosSystemTest, ModelIsReadOnceByTheFirstQuestion) {
    useScenario("model = \"grebel\"\n");
    const ProcessOutcome outcome = runInFreshProcess([this] {
        EXPECT_TRUE(CPOSSystem::s_instance.IsGrebel());
        useScenario("model = \"zan\"\n");
        EXPECT_FALSE(CPOSSystem::s_instance.IsZan());
        EXPECT_TRUE(CPOSSystem::s_instance.IsGrebel());
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
}

TEST_F(PosSystemTest, FirstQuestionMayComeFromSeveralThreads) {
    useScenario("model = \"zan\"\n");
    const ProcessOutcome outcome = runInFreshProcess([] {
        std::vector<char> answers(8);
        std::vector<std::thread> threads;
        for (char& answer : answers) threads.emplace_back([&answer] { answer = CPOSSystem::s_instance.IsZan(); });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(std::count(answers.begin(), answers.end(), 1), 8);
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
}

}  // namespace
