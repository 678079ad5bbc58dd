// The start of the provider when there is no memory: the n-th allocation that gives null instead of throwing fails.
#include <algorithm>
#include <new>

#include "Provider.h"

namespace {

int s_callsToFailure = 0;  // 0: none fails

}  // namespace

// Stands in for the C++ library's own, for the loaded library too.
__attribute__((visibility("default"))) void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (s_callsToFailure > 0 && --s_callsToFailure == 0) return nullptr;
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class AllocationFailureTest : public ProviderTest {
  protected:
    // Starts the provider with each allocation failing in turn, one to a process, and runs the body where the start
    // logged `text`.
    static void wherever(const std::string& text,
                         const std::function<void(LoadedProvider&, const Strings& log)>& body) {
        bool met = false;
        for (int nth = 1; nth <= 6; ++nth) {
            sandbox::reset();
            sandbox::writeLogConfiguration("Level=4\n");
            const ProcessOutcome outcome = inFreshProcess([&] {
                useScenario(chipSensor(1, "CPU", {50}));
                s_callsToFailure = nth;
                LoadedProvider loaded;
                s_callsToFailure = 0;
                const Strings log = takeLog();
                if (std::find(log.begin(), log.end(), text) == log.end()) return;
                std::puts("met");
                body(loaded, log);
            });
            met = met || outcome.standardOutput.find("met\n") != std::string::npos;
        }
        EXPECT_TRUE(met) << "no allocation's failure leads to: " << text;
    }

    static void expectReadsRefused(LoadedProvider& loaded) {
        EXPECT_EQ(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).status.rc, 16);
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, 16);
        EXPECT_EQ(loaded.provider.getInstance(namedPath(LOG_CLASS, LOG_NAME)).status.rc, 16);
    }
};

TEST_F(AllocationFailureTest, WithoutAProviderObjectReadsAreRefused) {
    wherever("Error SensorProvider_Create_InstanceMI - Provider malloc failed",
             [](LoadedProvider& loaded, const Strings& log) {
                 EXPECT_THAT(log, Not(Contains("Debug SensorProvider::constructor")));
                 expectReadsRefused(loaded);
                 takeLog();
                 loaded.provider.cleanUp(true);
                 EXPECT_THAT(takeLog(), ElementsAre("Debug drvInstanceCleanup - provider=(nil), terminating=1"));
             });
}

TEST_F(AllocationFailureTest, WithoutAChipObjectReadsAreRefused) {
    wherever("Debug failed to construct Chip object", [](LoadedProvider& loaded, const Strings&) {
        expectReadsRefused(loaded);
        takeLog();
        const void* provider = loaded.provider.mi()->hdl;
        loaded.provider.cleanUp(true);
        EXPECT_THAT(takeLog(), ElementsAre(format("Debug drvInstanceCleanup - provider=%p, terminating=1", provider),
                                           "Debug SensorProvider::destructor - chip=0x(nil)",
                                           "Info SensorProvider - provider destroyed"));
    });
}

}  // namespace
