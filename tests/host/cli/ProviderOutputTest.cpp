#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "FileContents.h"
#include "FreshProcess.h"
#include "cli/Failure.h"
#include "cli/ProviderOutput.h"

namespace {

using host::ProviderOutput;

void chatter() {
    std::printf("to output\n");
    std::fflush(stdout);
    std::fprintf(stderr, "to error\n");
}

void writeTo(int descriptor, const std::string& text) {
    EXPECT_EQ(write(descriptor, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

TEST(ProviderOutputTest, StaysApartWhileOursGoesOut) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        const ProviderOutput apart("");
        chatter();
        writeTo(apart.standardOutput(), "ours\n");
        writeTo(apart.standardError(), "complaint\n");
    });
    EXPECT_EQ(outcome.standardOutput, "ours\n");
    EXPECT_EQ(outcome.standardError, "complaint\n");
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST(ProviderOutputTest, WithoutDestinationTheStartIsCollectedApart) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        ProviderOutput apart("");
        chatter();
        std::printf("buffered");
        apart.endStart();
        EXPECT_EQ(apart.start(), "to output\nto error\nbuffered");
        EXPECT_EQ(apart.collected(), "");
        chatter();
        EXPECT_EQ(apart.collected(), "to output\nto error\n");
        apart.forget();
        EXPECT_EQ(apart.collected(), "");
        std::fprintf(stderr, "more\n");
        EXPECT_EQ(apart.collected(), "more\n");
        EXPECT_EQ(apart.start(), "to output\nto error\nbuffered");
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
    EXPECT_EQ(outcome.standardOutput, "");
}

TEST(ProviderOutputTest, ChosenDestinationsGetTheRestToo) {
    const std::string file = std::filesystem::temp_directory_path() / ("zelhost-all-" + std::to_string(getpid()));
    const ProcessOutcome outcome = runInFreshProcess([&file] {
        {
            ProviderOutput apart("-");
            apart.endStart();
            apart.forget();
            chatter();
            EXPECT_EQ(apart.collected(), "to output\nto error\n");
        }
        ProviderOutput apart(file);
        apart.endStart();
        chatter();
        EXPECT_EQ(apart.collected(), "");
    });
    EXPECT_EQ(contentsOf(file), "to output\nto error\n");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
    std::filesystem::remove(file);
}

TEST(ProviderOutputTest, IsCollectedInOrderWithWhatStillWasBuffered) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        const ProviderOutput apart("-");
        chatter();
        std::printf("buffered");
        EXPECT_EQ(apart.collected(), "to output\nto error\nbuffered");
    });
    EXPECT_EQ(outcome.standardOutput, "");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
}

TEST(ProviderOutputTest, GoesToAFileThatIsReplaced) {
    std::string file = std::filesystem::temp_directory_path() / "zelhost-lines-XXXXXX";
    close(mkstemp(file.data()));
    std::ofstream(file) << "old and longer than what is new\n";
    const ProcessOutcome outcome = runInFreshProcess([&file] {
        const ProviderOutput apart(file);
        chatter();
        std::printf("buffered");
    });
    EXPECT_EQ(contentsOf(file), "to output\nto error\nbuffered");
    EXPECT_EQ(outcome.standardOutput + outcome.standardError, "");
    std::filesystem::remove(file);
}

TEST(ProviderOutputTest, DescriptorsAreGivenBack) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        std::printf("before\n");
        { const ProviderOutput apart(""); }
        chatter();
    });
    EXPECT_EQ(outcome.standardOutput, "before\nto output\n");
    EXPECT_EQ(outcome.standardError, "to error\n");
}

TEST(ProviderOutputTest, OursAreNotInherited) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        const ProviderOutput apart("");
        EXPECT_GT(apart.standardOutput(), STDERR_FILENO);
        EXPECT_NE(fcntl(apart.standardOutput(), F_GETFD) & FD_CLOEXEC, 0);
        EXPECT_NE(fcntl(apart.standardError(), F_GETFD) & FD_CLOEXEC, 0);
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
}

TEST(ProviderOutputTest, ClosedDescriptorsStayUnusedAndAreClosedAgain) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        {
            const ProviderOutput apart("-");
            EXPECT_EQ(apart.standardOutput(), -1);
            chatter();
            EXPECT_EQ(apart.collected(), "to output\nto error\n");
        }
        EXPECT_EQ(fcntl(STDOUT_FILENO, F_GETFD), -1);
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
}

TEST(ProviderOutputTest, FileThatCannotBeWrittenIsWrongUsage) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        EXPECT_THROW(ProviderOutput("/dev/no-such-directory/file"), host::UsageError);
        std::printf("still here\n");
    });
    EXPECT_EQ(outcome.standardOutput, "still here\n");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
}

}  // namespace
