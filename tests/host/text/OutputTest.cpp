#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "text/Output.h"

namespace {

using host::Output;

TEST(OutputTest, WritesMoreThanAPipeHolds) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const std::string text(1000000, 'x');
    std::thread writer([&] {
        Output(ends[1]).write(text);
        close(ends[1]);
    });
    fcntl(ends[0], F_SETFL, 0);
    std::string read(2 * text.size(), '\0');
    std::size_t total = 0;
    for (ssize_t n; (n = ::read(ends[0], read.data() + total, read.size() - total)) > 0;)
        total += static_cast<std::size_t>(n);
    writer.join();
    close(ends[0]);
    EXPECT_EQ(total, text.size());
}

TEST(OutputTest, FullDiskIsAFailure) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    EXPECT_THROW(Output(full).write("x"), host::OutputError);
    close(full);
}

TEST(OutputTest, ReaderThatIsGoneIsAFailureOfItsOwn) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    const auto before = signal(SIGPIPE, SIG_IGN);
    EXPECT_THROW(Output(ends[1]).write("x"), host::ReaderGone);
    signal(SIGPIPE, before);
    close(ends[1]);
}

TEST(OutputTest, MissingDescriptorIsAFailure) {
    EXPECT_THROW(Output(-1).write("x"), host::OutputError);
}

TEST(OutputTest, FileIsNoTerminal) {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    EXPECT_FALSE(Output(null).isTerminal());
    EXPECT_FALSE(Output(null).takesColour());
    EXPECT_EQ(Output(null).size().columns, 0U);
    close(null);
}

}  // namespace
