#include <gmock/gmock.h>

#include <cstring>

#include "SandboxEntry.h"

namespace {

// The build lists a program's tests, and a build needs no namespace of its own.
bool onlyListsTests(int argc, char** argv) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--gtest_list_tests") == 0) return true;
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (!onlyListsTests(argc, argv)) sandbox::enter();
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
