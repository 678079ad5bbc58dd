// Every call into the C library in turn fails, in every way that it can.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "FailingCLibrary.h"
#include "FaultyStart.h"
#include "OpenDescriptors.h"
#include "StreamsTo.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned MORE_CALLS_THAN_THERE_ARE = 1000;

// Calls `attempt(n, error)` for n = 1, 2, ... until it answers that the call did not come. How many calls came.
template <typename Attempt>
unsigned atEveryCall(const FailingFunction& failing, Attempt attempt) {
    for (unsigned nth = 1; nth < MORE_CALLS_THAN_THERE_ARE; ++nth)
        for (const int error : failing.errors) {
            SCOPED_TRACE(testing::Message() << failing.name << " number " << nth << " fails with " << error);
            if (!attempt(nth, error) || testing::Test::HasFatalFailure()) return nth - 1;
        }
    return MORE_CALLS_THAN_THERE_ARE;
}

class FailureCallsTest : public FaultyStartTest {};

// None of these calls is one that a request depends on: it is answered as ever.
TEST_F(FailureCallsTest, RequestsAreAnsweredAsEver) {
    onTheTerminal([] {
        LoadedProvider loaded;
        expectAllAnswered(loaded.broker, loaded.provider.mi());
        const std::size_t descriptors = openDescriptors();
        for (const FailingFunction& failing : allFailingFunctions()) {
            unsigned calls = 0;
            for (const RequestCase& requestCase : allRequestCases()) {
                SCOPED_TRACE(requestCase.what);
                calls += atEveryCall(failing, [&](unsigned nth, int error) {
                    checkAndDeleteLog();
                    fakeclock::advanceMilliseconds(3000);
                    bool came = false;
                    const Answered answered =
                        send(loaded.broker, loaded.provider.mi(), requestCase, [&](const auto& call) {
                            const FailingCall failingCall(failing.function, nth, error);
                            call();
                            came = failingCall.hasCome();
                        });
                    EXPECT_EQ(answered.status, requestCase.status);
                    EXPECT_EQ(answered.count, requestCase.count);
                    EXPECT_EQ(answered.doneCalls, 1U);
                    return came;
                });
            }
            // Configuration and devices are looked for at the start only.
            const bool isForTheStart = failing.function == Function::Getline || failing.function == Function::Glob ||
                                       failing.function == Function::Fcntl;
            EXPECT_EQ(calls == 0, isForTheStart) << failing.name;
            expectAllAnswered(loaded.broker, loaded.provider.mi());
        }
        EXPECT_EQ(openDescriptors(), descriptors);
    });
}

// The provider starts without what it could not have: settings, a drive, lines of the log.
TEST_F(FailureCallsTest, ProviderStartsAllTheSame) {
    onTheTerminal([] {
        const std::size_t descriptors = openDescriptors();
        for (const FailingFunction& failing : allFailingFunctions()) {
            const unsigned calls = atEveryCall(failing, [&](unsigned nth, int error) {
                checkAndDeleteLog();
                broker::Broker broker;
                const broker::ProviderLibrary library(PROVIDER_LIBRARY);
                CMPIStatus status{CMPI_RC_ERR_FAILED, nullptr};
                CMPIInstanceMI* mi = nullptr;
                bool came = false;
                {
                    const FailingCall failingCall(failing.function, nth, error);
                    mi = library.factory("SensorProvider")(broker.handle(), nullptr, &status);
                    came = failingCall.hasCome();
                }
                EXPECT_EQ(status.rc, CMPI_RC_OK);
                const Answered names = send(broker, mi, allRequestCases().front(), [](const auto& call) { call(); });
                EXPECT_EQ(names.status, CMPI_RC_OK);
                EXPECT_THAT(names.count, testing::AnyOf(2, 3));
                mi->ft->cleanup(mi, nullptr, 1);
                return came;
            });
            EXPECT_GE(calls, 1U) << failing.name;
        }
        EXPECT_EQ(openDescriptors(), descriptors);
    });
}

TEST_F(FailureCallsTest, ReadErrorInAConfigurationKeepsTheSettingsBeforeIt) {
    onTheTerminal([] {
        sandbox::writeLogConfiguration("Level=3\nLevel=0\n");
        sandbox::writeSensorConfiguration("NvmeReadings=1\nNvmeReadings=0\n");
        const auto start = [](unsigned failingLine, std::size_t sensors) {
            const FailingCall failingCall(Function::Getline, failingLine, EIO);
            LoadedProvider loaded;
            EXPECT_TRUE(failingCall.hasCome());
            const Answered names =
                send(loaded.broker, loaded.provider.mi(), allRequestCases().front(), [](const auto& call) { call(); });
            EXPECT_EQ(names.count, sensors);
        };
        takeLog();
        start(2, 2);  // the second line of the log's configuration
        EXPECT_THAT(takeLog(), testing::Contains("Debug SensorProvider::initialise"));
        start(5, 3);  // the second of the sensors', after two lines of the log's and its end
        EXPECT_THAT(takeLog(), testing::IsEmpty());
    });
}

int brokenPipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe(ends), 0);
    close(ends[0]);
    return ends[1];
}

TEST_F(FailureCallsTest, StandardStreamsThatTakeNothingDoNotMatter) {
    onTheTerminal([] {
        std::signal(SIGPIPE, SIG_IGN);  // as every daemon has it
        for (const auto& bad : {std::function<int()>([] { return open("/dev/full", O_WRONLY | O_CLOEXEC); }),
                                std::function<int()>(brokenPipe)}) {
            const StreamsTo streams(bad());
            LoadedProvider loaded;
            for (int i = 0; i < 100; ++i) expectAllAnswered(loaded.broker, loaded.provider.mi());
        }
    });
}

// In the kernel, where the C library writes what it was handed.
class RefusedByTheKernelTest : public FailureCallsTest {
  protected:
    void SetUp() override {
        FailureCallsTest::SetUp();
        if (IsSkipped()) return;
        const std::string without = withSystemCallRefused(SYS_write, -1, EIO, [] {});
        if (!without.empty()) GTEST_SKIP() << without;
    }
};

TEST_F(RefusedByTheKernelTest, UnwritableLogLosesLinesAlone) {
    onTheTerminal([] {
        LoadedProvider loaded;
        int log = -1;
        for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            if (fs::read_symlink(entry, gone) == "/var/log/tarn/tarn.log") log = std::stoi(entry.path().filename());
        }
        ASSERT_GE(log, 0);
        for (const int error : WRITE_ERRORS) {
            SCOPED_TRACE(error);
            takeLog();
            const std::string without = withSystemCallRefused(
                SYS_write, log, error, [&] { expectAllAnswered(loaded.broker, loaded.provider.mi()); });
            ASSERT_EQ(without, "");
            EXPECT_THAT(takeLog(), testing::IsEmpty());
            expectAllAnswered(loaded.broker, loaded.provider.mi());
            EXPECT_THAT(takeLog(), testing::Not(testing::IsEmpty()));
        }
    });
}

TEST_F(RefusedByTheKernelTest, UnreadableConfigurationKeepsTheDefaults) {
    onTheTerminal([] {
        const int lowestFree = dup(STDIN_FILENO);
        close(lowestFree);
        for (const int error : READ_ERRORS) {
            SCOPED_TRACE(error);
            takeLog();
            broker::Broker broker;
            const broker::ProviderLibrary library(PROVIDER_LIBRARY);
            CMPIInstanceMI* mi = nullptr;
            const std::string without = withSystemCallRefused(SYS_read, lowestFree, error, [&] {
                mi = library.factory("SensorProvider")(broker.handle(), nullptr, nullptr);
            });
            ASSERT_EQ(without, "");
            EXPECT_THAT(takeLog(), testing::ElementsAre(testing::StartsWith("Info Quorvel"),
                                                        "Info Processing additionals for Grebel machine",
                                                        "Info SensorProvider created and initialised"));
            expectAllAnswered(broker, mi);
            mi->ft->cleanup(mi, nullptr, 1);
        }
    });
}

}  // namespace
