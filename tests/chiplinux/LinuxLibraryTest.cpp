// The library's file: what a host sees that loads it.
#include <dlfcn.h>

#include <filesystem>
#include <fstream>
#include <new>

#include "LinuxChipTest.h"
#include "OpenDescriptors.h"
#include "Symbols.h"
#include "TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

TEST(LinuxLibraryTest, HasTheSonameAndTheSymbolsOfTheSimulatedOneButItsMarkAndADiagnosis) {
    const std::string list = "nm --dynamic --defined-only --format=posix ";
    std::set<std::string> symbols = symbolsOf(list + LINUX_LIBRARY);
    std::set<std::string> ofTheSimulatedOne = symbolsOf(list + SIMULATED_LIBRARY);
    EXPECT_EQ(ofTheSimulatedOne.erase("zelchip_is_simulated"), 1U);
    EXPECT_EQ(symbols.erase("zelchip_diagnose"), 1U);
    EXPECT_EQ(symbols, ofTheSimulatedOne);
    EXPECT_EQ(symbols.size(), 12U);
    EXPECT_THAT(outputOf("readelf --dynamic --wide " LINUX_LIBRARY), HasSubstr("soname: [libzelchip.so.0]"));
}

// Loads the library as a host does, and calls it through its mangled names.
class LoadedLibraryTest : public LinuxChipTest {
  protected:
    struct Library {
        explicit Library(const std::string& path) : handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            if (handle == nullptr) throw std::runtime_error(dlerror());
        }
        ~Library() { dlclose(handle); }
        Library(const Library&) = delete;
        Library& operator=(const Library&) = delete;

        template <typename... Arguments>
        sscode call(const char* name, Arguments... arguments) const {
            const auto function = reinterpret_cast<sscode (*)(Arguments...)>(dlsym(handle, name));
            return function(arguments...);
        }
        void* handle;
    };

    static void serveOnce() {
        const Library library(LINUX_LIBRARY);
        alignas(CChip) unsigned char room[sizeof(CChip)] = {};
        void* chip = room;
        library.call("_ZN5CChipC1Ev", chip);
        EXPECT_EQ(library.call("_ZN5CChip10InitialiseEv", chip), 0U);
        CSensorHandleList handles;
        EXPECT_EQ(library.call("_ZN5CChip22EnumerateSensorHandlesER17CSensorHandleList", chip, &handles), 0U);
        ASSERT_EQ(handles.size(), 1U);
        CSensorReading reading{0, READING_PRESET};
        EXPECT_EQ(library.call("_ZN5CChip10ReadSensorEjR14CSensorReading", chip, handles.front(), &reading), 0U);
        EXPECT_EQ(reading.value, 25500);
        library.call("_ZN5CChipD1Ev", chip);
    }

    static std::size_t mappings() {
        std::ifstream maps("/proc/self/maps");
        std::size_t lines = 0;
        for (std::string line; std::getline(maps, line);)
            if (line.find(".so") != std::string::npos) ++lines;
        return lines;
    }
};

TEST_F(LoadedLibraryTest, NothingIsLeftByLoadingAndUnloading) {
    sensortree::addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}});
    for (int i = 0; i < 10; ++i) serveOnce();
    const std::size_t before = mappings();
    const auto descriptors = openDescriptors();
    for (int i = 0; i < 300 && !HasFatalFailure(); ++i) serveOnce();
    EXPECT_EQ(mappings(), before);
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(LoadedLibraryTest, WithoutItsModuleItIsNotInitialised) {
    const TemporaryDirectory directory;
    fs::copy(fs::canonical(LINUX_LIBRARY), directory.path() / "libzelchip.so.0");
    const Library library(directory.path() / "libzelchip.so.0");
    alignas(CChip) unsigned char room[sizeof(CChip)] = {};
    void* chip = room;
    library.call("_ZN5CChipC1Ev", chip);
    EXPECT_EQ(library.call("_ZN5CChip10InitialiseEv", chip), 0xE1000003U);
    library.call("_ZN5CChipD1Ev", chip);
}

}  // namespace
