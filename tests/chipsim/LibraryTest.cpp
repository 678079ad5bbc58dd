// What the library shows to the dynamic linker.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <set>
#include <string>

#include "Symbols.h"
#include "chip.h"

namespace {

TEST(LibraryTest, ExportsTheInterfaceAndTheMarkOfASimulationAlone) {
    EXPECT_EQ(
        exportedSymbols(CHIP_LIBRARY),
        (std::set<std::string>{"_ZN10CPOSSystem10s_instanceE", "_ZN10CPOSSystem5IsZanEv", "_ZN10CPOSSystem8IsGrebelEv",
                               "_ZN5CChip10InitialiseEv", "_ZN5CChip10ReadSensorEjR14CSensorReading",
                               "_ZN5CChip17GetSystemEventLogER15CSystemEventLog",
                               "_ZN5CChip20GetSensorInformationEjR18CSensorInformation",
                               "_ZN5CChip22EnumerateSensorHandlesER17CSensorHandleList", "_ZN5CChipC1Ev",
                               "_ZN5CChipC2Ev", "_ZN5CChipD1Ev", "_ZN5CChipD2Ev", "zelchip_is_simulated"}));
}

TEST(LibraryTest, SonameIsTheTerminalLibrarys) {
    EXPECT_EQ(dynamicEntries(CHIP_LIBRARY, "SONAME"), std::set<std::string>{"libzelchip.so.0"});
}

TEST(LibraryTest, NeedsTheLanguagesLibrariesAlone) {
    const std::set<std::string> languages = {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6",
                                             "ld-linux-x86-64.so.2"};
    for (const std::string& library : dynamicEntries(CHIP_LIBRARY, "NEEDED")) {
        EXPECT_EQ(languages.count(library), 1U) << library;
    }
}

template <typename Function>
Function symbol(void* library, const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}

TEST(LibraryTest, CanBeUnloadedAfterUse) {
    unsetenv("ZELCHIP_SCENARIO");
    for (int round = 0; round < 2; ++round) {
        void* library = dlopen(CHIP_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
        ASSERT_NE(library, nullptr) << dlerror();
        // A member function takes its object as the first argument.
        alignas(CChip) unsigned char chip[sizeof(CChip)];
        symbol<void (*)(void*)>(library, "_ZN5CChipC1Ev")(chip);
        EXPECT_EQ(symbol<sscode (*)(void*)>(library, "_ZN5CChip10InitialiseEv")(chip), 0U);
        symbol<void (*)(void*)>(library, "_ZN5CChipD1Ev")(chip);
        void* system = dlsym(library, "_ZN10CPOSSystem10s_instanceE");
        EXPECT_FALSE(symbol<bool (*)(void*)>(library, "_ZN10CPOSSystem8IsGrebelEv")(system));
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(CHIP_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
}

}  // namespace
