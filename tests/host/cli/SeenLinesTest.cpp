#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "FileContents.h"
#include "TemporaryDirectory.h"
#include "cli/Failure.h"
#include "cli/SeenLines.h"
#include "text/Output.h"

namespace fs = std::filesystem;

namespace {

using host::SeenLines;
using Lines = std::vector<std::string>;

class SeenLinesTest : public testing::Test {
  protected:
    std::string refusal() const {
        try {
            m_seen.read();
            return "";
        } catch (const host::UsageError& error) {
            return error.what();
        }
    }

    TemporaryDirectory m_directory;
    std::string m_path = m_directory.path("state");
    SeenLines m_seen{m_path};
};

TEST_F(SeenLinesTest, LinesOfAnyBytesComeBack) {
    const Lines odd{"a",    "", "two\nlines", "\\n", "\\", std::string("\0\r\xff", 3), "zelhost log state 1: 1 lines",
                    "last "};
    for (const Lines& lines : {odd, Lines{}, Lines{""}, Lines{"\n"}}) {
        m_seen.write(lines);
        const SeenLines::Kept kept = m_seen.read();
        EXPECT_EQ(kept.complaint, "");
        EXPECT_EQ(kept.lines, lines);
    }
}

TEST_F(SeenLinesTest, TextOfTheFileIsAnInterface) {
    m_seen.write({"one", "two\nlines"});
    EXPECT_EQ(contentsOf(fs::path(m_path)), "zelhost log state 1: 2 lines\none\ntwo\\nlines\n");
    EXPECT_EQ(fs::status(m_path).permissions(), static_cast<fs::perms>(0600));
}

TEST_F(SeenLinesTest, NoFileAndAnEmptyOneKeepNothingYet) {
    EXPECT_EQ(m_seen.read().lines, std::nullopt);
    m_directory.write("state", "");
    const SeenLines::Kept kept = m_seen.read();
    EXPECT_EQ(kept.lines, std::nullopt);
    EXPECT_EQ(kept.complaint, "");
}

TEST_F(SeenLinesTest, TornFileGivesNoLinesWhereverItIsTorn) {
    m_seen.write({"one", "", "three"});
    const std::string whole = contentsOf(fs::path(m_path));
    for (std::size_t length = 1; length < whole.size(); ++length) {
        m_directory.write("state", whole.substr(0, length));
        const SeenLines::Kept kept = m_seen.read();
        EXPECT_EQ(kept.lines, std::nullopt) << length;
        EXPECT_EQ(kept.complaint.rfind(m_path + ":1: ", 0), 0U) << length;
    }
    m_directory.write("state", whole + "more\n");
    EXPECT_EQ(m_seen.read().complaint, m_path + ":1: 3 lines are announced, and 4 whole ones are there");
    m_directory.write("state", whole + "mor");
    EXPECT_EQ(m_seen.read().lines, std::nullopt) << "a line too many, without its end";
    m_directory.write("state", "zelhost log state 1: x lines\n");
    EXPECT_EQ(m_seen.read().complaint, m_path + ":1: the title is cut short");
}

TEST_F(SeenLinesTest, ForeignFileIsRefusedByNameAndValue) {
    m_directory.write("state", "root:x:0\nmore");
    EXPECT_EQ(refusal(),
              "--state: " + m_path +
                  ":1: 'root:x:0' begins no state of log --follow (zelhost log state 1: ...); the file stays "
                  "as it is");
    m_directory.write("state", "zelhost log state 2: 0 lines\n");
    EXPECT_NE(refusal(), "");
}

TEST_F(SeenLinesTest, WhatIsNoRegularFileIsRefused) {
    fs::create_directory(m_path);
    EXPECT_EQ(refusal(), "--state: " + m_path + " cannot be read: it is no regular file");
    fs::remove(m_path);
    fs::create_symlink("/dev/zero", m_path);
    EXPECT_EQ(refusal(), "--state: " + m_path + " cannot be read: it is no regular file");
    const std::string below = m_directory.write("file", "") + "/state";
    try {
        SeenLines(below).read();
        FAIL();
    } catch (const host::UsageError& error) {
        EXPECT_EQ(std::string(error.what()), "--state: " + below + " cannot be read: Not a directory");
    }
    EXPECT_THROW(SeenLines(m_directory.path("gone/state")).write({}), host::OutputError);
}

}  // namespace
