// Every allocation in turn fails, alone or with all that follow it.
#include <cwchar>
#include <new>

#include "FailingMemory.h"
#include "FaultyStart.h"
#include "log.h"

namespace {

constexpr Shortage SHORTAGES[] = {Shortage::OneAllocation, Shortage::AllFromThere};
constexpr unsigned MORE_ALLOCATIONS_THAN_THERE_ARE = 5000;

const char* wordOf(Shortage shortage) {
    return shortage == Shortage::OneAllocation ? "allocation alone" : "allocation and all after it";
}

// Calls `attempt(n, shortage)` for n = 1, 2, ... until it answers that no allocation failed.
template <typename Attempt>
void atEveryAllocation(Attempt attempt, Shortage shortage) {
    unsigned nth = 1;
    for (; nth < MORE_ALLOCATIONS_THAN_THERE_ARE; ++nth) {
        SCOPED_TRACE(testing::Message() << nth << ". " << wordOf(shortage));
        if (!attempt(nth, shortage) || testing::Test::HasFatalFailure()) break;
    }
    EXPECT_GT(nth, 2U) << "nothing failed";
    EXPECT_LT(nth, MORE_ALLOCATIONS_THAN_THERE_ARE);
}

// All of it twice: what is kept for ever is there after the first time.
template <typename Attempt>
void atEveryAllocationWithoutLeaks(Attempt attempt) {
    long before = 0;
    for (int round = 0; round < 2; ++round) {
        before = liveBlocks();
        for (const Shortage shortage : SHORTAGES) atEveryAllocation(attempt, shortage);
    }
    EXPECT_EQ(liveBlocks(), before) << "blocks leaked";
}

class FailureMemoryTest : public FaultyStartTest {
  protected:
    // Serves the request with an allocation failing. Whether one failed.
    static bool attemptRequest(LoadedProvider& loaded, const RequestCase& requestCase, unsigned nth,
                               Shortage shortage) {
        checkAndDeleteLog();  // so the request opens the log anew
        fakeclock::advanceMilliseconds(3000);
        bool failed = false;
        const Answered answered = send(loaded.broker, loaded.provider.mi(), requestCase, [&](const auto& call) {
            const FailingMemory failing(nth, shortage);
            call();
            failed = failing.hasFailed();
        });
        EXPECT_TRUE(answered.status == requestCase.status || answered.status == CMPI_RC_ERR_FAILED) << answered.status;
        if (answered.status == CMPI_RC_OK) {
            EXPECT_EQ(answered.count, requestCase.count);
        }
        EXPECT_EQ(answered.doneCalls, 1U);
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
        expectAnswered(loaded.broker, loaded.provider.mi(), requestCase);
        return failed;
    }

    // The whole life of the library, with an allocation failing in the factory. Whether one failed.
    static bool attemptFactory(unsigned nth, Shortage shortage) {
        checkAndDeleteLog();
        broker::Broker broker;
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        const auto factory = library.factory("SensorProvider");
        CMPIStatus status{CMPI_RC_ERR_FAILED, nullptr};
        bool failed = false;
        CMPIInstanceMI* mi = nullptr;
        {
            const FailingMemory failing(nth, shortage);
            mi = factory(broker.handle(), nullptr, &status);
            failed = failing.hasFailed();
        }
        EXPECT_NE(mi, nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        if (mi == nullptr) return false;
        EXPECT_EQ(factory(broker.handle(), nullptr, nullptr), mi);  // and so the lock is free
        expectServiceOrRefusal(broker, mi);
        mi->ft->cleanup(mi, nullptr, 1);
        EXPECT_EQ(factory(broker.handle(), nullptr, nullptr), mi);
        expectAllAnswered(broker, mi);
        mi->ft->cleanup(mi, nullptr, 1);
        return failed;
    }

    // What the provider serves after a start that went wrong somewhere: refusals, or sensors with the drive or without.
    static void expectServiceOrRefusal(broker::Broker& broker, const CMPIInstanceMI* mi) {
        const Answered names = send(broker, mi, allRequestCases().front(), [](const auto& call) { call(); });
        if (names.status == CMPI_RC_OK) {
            EXPECT_THAT(names.count, testing::AnyOf(2, 3));
            EXPECT_EQ(names.doneCalls, 1U);
        } else {
            EXPECT_EQ(names.status, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
            EXPECT_EQ(names.doneCalls, 0U);
        }
    }
};

TEST_F(FailureMemoryTest, RequestsFailOrAnswerAndTheNextOneWorks) {
    for (const RequestCase& requestCase : allRequestCases()) {
        onTheTerminal([&requestCase] {
            SCOPED_TRACE(requestCase.what);
            LoadedProvider loaded;
            atEveryAllocationWithoutLeaks(
                [&](unsigned nth, Shortage shortage) { return attemptRequest(loaded, requestCase, nth, shortage); });
        });
        sandbox::reset();
    }
}

TEST_F(FailureMemoryTest, FactoryAnswersItsRecordAndStartsAfterACleanup) {
    onTheTerminal([] { atEveryAllocationWithoutLeaks(attemptFactory); });
}

TEST_F(FailureMemoryTest, CleanupAlwaysDestroysTheProvider) {
    onTheTerminal([] {
        broker::Broker broker;
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        const auto factory = library.factory("SensorProvider");
        atEveryAllocationWithoutLeaks([&](unsigned nth, Shortage shortage) {
            checkAndDeleteLog();
            CMPIInstanceMI* mi = factory(broker.handle(), nullptr, nullptr);
            expectAnswered(broker, mi, allRequestCases().front());
            bool failed = false;
            {
                const FailingMemory failing(nth, shortage);
                EXPECT_EQ(mi->ft->cleanup(mi, nullptr, 1).rc, CMPI_RC_OK);
                failed = failing.hasFailed();
            }
            const Answered names = send(broker, mi, allRequestCases().front(), [](const auto& call) { call(); });
            EXPECT_EQ(names.status, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
            return failed;
        });
    });
}

class FailureMemoryLogTest : public FailureMemoryTest {
  protected:
    // Makes the call with every allocation failing in turn, and then once more.
    static void expectSurvived(const std::function<void()>& log, const std::string& message) {
        onTheTerminal([&] {
            atEveryAllocationWithoutLeaks([&](unsigned nth, Shortage shortage) {
                checkAndDeleteLog();  // so the call opens the file anew
                bool failed = false;
                {
                    const FailingMemory failing(nth, shortage);
                    try {
                        log();
                    } catch (const std::bad_alloc&) {  // as the log's header says
                    }
                    failed = failing.hasFailed();
                }
                checkAndDeleteLog();
                log();
                EXPECT_EQ(loggedMessages(), Strings{message});
                return failed;
            });
        });
    }
};

TEST_F(FailureMemoryLogTest, FormattedMessageIsWrittenByTheCallAfterAFailure) {
    expectSurvived([] { Log(LOG_ERROR, "number %d of the messages that are formatted", 7); },
                   "number 7 of the messages that are formatted");
}

TEST_F(FailureMemoryLogTest, WideMessageIsWrittenByTheCallAfterAFailure) {
    expectSurvived([] { WLog(LOG_ERROR, L"number %d of the messages that are wide", 7); },
                   "number 7 of the messages that are wide");
}

TEST_F(FailureMemoryLogTest, QuickMessageIsWrittenByTheCallAfterAFailure) {
    expectSurvived([] { LogQuick(LOG_ERROR, "a message that goes out just as it stands"); },
                   "a message that goes out just as it stands");
}

}  // namespace
