// The sink in a library that is loaded and unloaded, and at the end of its process.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "LogLines.h"
#include "OpenDescriptors.h"
#include "RunAnew.h"
#include "Sandbox.h"

using testing::ElementsAre;

namespace {

void (*s_logFromModule)(const char* message) = nullptr;

void* load() {
    void* const module = dlopen(LOADED_MODULE, RTLD_NOW | RTLD_GLOBAL);
    if (module == nullptr) throw std::runtime_error(dlerror());
    s_logFromModule = reinterpret_cast<void (*)(const char*)>(dlsym(module, "logFromModule"));
    return module;
}

class UnloadTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

TEST_F(UnloadTest, UnloadingDeletesTheSinkAndLoadingMakesAnother) {
    const std::string output = runAnew([] {
        for (const char* message : {"first", "second"}) {
            void* const module = load();
            s_logFromModule(message);
            EXPECT_EQ(openDescriptors("/var/log/tarn/tarn.log"), 1U);
            dlclose(module);
            EXPECT_EQ(dlopen(LOADED_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
            EXPECT_EQ(openDescriptors("/var/log/tarn/tarn.log"), 0U);
        }
    });
    EXPECT_EQ(output, "Logger created\nLogger created\n");
    EXPECT_THAT(loggedMessages(), ElementsAre("first", "second"));
}

TEST_F(UnloadTest, UnloadingWithoutASinkDoesNothing) {
    EXPECT_EQ(runAnew([] { dlclose(load()); }), "");
}

TEST_F(UnloadTest, SinkOutlivesTheExitHandlers) {
    const std::string output = runAnew([] {
        std::atexit([] { s_logFromModule("last"); });  // before the library's own, so it runs after them
        load();
        s_logFromModule("first");
    });
    EXPECT_EQ(output, "Logger created\nlink count=1\n");
    EXPECT_THAT(loggedMessages(), ElementsAre("first", "last"));
}

}  // namespace
