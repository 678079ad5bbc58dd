#include <dlfcn.h>

#include <cstdint>
#include <fstream>
#include <set>
#include <sstream>

#include "OpenDescriptors.h"
#include "Provider.h"
#include "Symbols.h"

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::StartsWith;

// "r--p", "rw-p" and the like, of the page at the address; empty where there is none.
std::string protectionAt(const void* address) {
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string protection;
        std::istringstream(line) >> std::hex >> begin >> dash >> end >> protection;
        if (begin <= wanted && wanted < end) return protection;
    }
    return "";
}

class LibraryTest : public ProviderTest {};

TEST_F(LibraryTest, LoadingAndUnloadingAnnounceThemselves) {
    inFreshProcess([] {
        OutputCapture output(STDOUT_FILENO);
        OutputCapture error(STDERR_FILENO);
        {
            const broker::ProviderLibrary library(PROVIDER_LIBRARY);
            EXPECT_EQ(error.take(), "CONSTRUCTOR\n");
        }
        EXPECT_EQ(error.take(), "DESTRUCTOR\n");
        EXPECT_EQ(output.take(), "");
    });
}

TEST_F(LibraryTest, FunctionTableStandsInAReadOnlyPage) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        const LoadedProvider loaded;
        EXPECT_EQ(protectionAt(loaded.provider.mi()->ft), "r--p");
        EXPECT_EQ(protectionAt(loaded.provider.mi()), "rw-p");  // the record's handle changes
    });
}

TEST_F(LibraryTest, UnloadedLibraryLeavesNothingBehind) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        const std::size_t descriptors = openDescriptors();
        {
            LoadedProvider loaded;
            EXPECT_EQ(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, CMPI_RC_OK);
            EXPECT_NE(openDescriptors(), descriptors);  // the log is open
        }
        EXPECT_EQ(dlopen(PROVIDER_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
        EXPECT_EQ(openDescriptors(), descriptors);
    });
}

TEST_F(LibraryTest, LoadedAgainItStartsAnew) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        { const LoadedProvider loaded; }
        takeLog();
        sandbox::writeLogConfiguration("Level=2\n");
        OutputCapture output(STDOUT_FILENO);
        LoadedProvider loaded;
        EXPECT_EQ(output.take().substr(0, 15), "Logger created\n");
        EXPECT_EQ(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths.size(), 1U);
        EXPECT_THAT(takeLog(), ElementsAre(StartsWith("Info Quorvel POS Sensor Drivers"),
                                           "Info SensorProvider created and initialised"));
    });
}

TEST_F(LibraryTest, HostMayExitWithoutCleaningUp) {
    const ProcessOutcome outcome = inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        static const auto* loaded = new LoadedProvider;
        EXPECT_NE(loaded->provider.mi()->hdl, nullptr);
    });
    EXPECT_THAT(outcome.standardError, testing::EndsWith("\nDESTRUCTOR\n"));
    EXPECT_THAT(outcome.standardError, testing::Not(testing::HasSubstr("drvInstanceCleanup")));
}

// The file as it was built.
TEST(LibraryFileTest, ExportsTheFactoryAlone) {
    EXPECT_THAT(exportedSymbols(PROVIDER_LIBRARY), ElementsAre("SensorProvider_Create_InstanceMI"));
}

TEST(LibraryFileTest, HasItsSonameAndNeedsOnlyTheChipLibraryAndTheSystem) {
    EXPECT_THAT(dynamicEntries(PROVIDER_LIBRARY, "SONAME"), ElementsAre("libzelsensors.so.0"));
    const std::set<std::string> needed = dynamicEntries(PROVIDER_LIBRARY, "NEEDED");
    EXPECT_THAT(needed, Contains("libzelchip.so.0"));
    EXPECT_THAT(needed, Each(AnyOf("libzelchip.so.0", "libstdc++.so.6", "libgcc_s.so.1", "libm.so.6", "libc.so.6",
                                   "ld-linux-x86-64.so.2")));
}

}  // namespace
