// Recording from a source that a test makes up: what is written where it ends in the middle.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>

#include "FakeSource.h"
#include "FileContents.h"
#include "Instances.h"
#include "TemporaryDirectory.h"
#include "cli/Record.h"

namespace {

using testing::HasSubstr;

class RecordTest : public testing::Test {
  protected:
    RecordTest() {
        m_options.record.file = m_directory.path("till17.toml");
        m_options.record.duration = 3600;
        m_options.every = 0.001;
        m_source.names = [](const broker::ObjectPath& /*path*/) {
            broker::Reply reply;
            reply.paths.push_back(sensorOf("A(00000001)", 0, 0, 0).path);
            return reply;
        };
        // A round ends with the event log.
        m_source.instances = [this](const broker::ObjectPath& path) {
            broker::Reply reply;
            if (path.className == host::SENSOR_CLASS) {
                reply.instances.push_back(sensorOf("A(00000001)", m_rounds + 1, 2, 0));
            } else if (++m_rounds == m_fatalRound) {
                throw std::runtime_error("cannot be loaded again");
            }
            return reply;
        };
    }

    void record() {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        host::Output progress(nowhere, host::Charset::Utf8);
        host::record(m_options, m_source, "A test's.", progress, [](const std::string& /*text*/) {});
        close(nowhere);
    }

    TemporaryDirectory m_directory;
    host::Options m_options;
    FakeSource m_source;
    int m_rounds = 0;
    int m_fatalRound = 0;
};

TEST_F(RecordTest, WhatWasRecordedBeforeTheSourceThrewIsWritten) {
    m_fatalRound = 3;
    EXPECT_THROW(record(), std::runtime_error);
    EXPECT_THAT(contentsOf(m_options.record.file),
                HasSubstr("reading = { kind = \"recorded\", values = [\n    1, 2] }\n"));
}

TEST_F(RecordTest, NothingIsWrittenWhereTheFirstRoundThrew) {
    m_fatalRound = 1;
    EXPECT_THROW(record(), std::runtime_error);
    EXPECT_NE(access(m_options.record.file.c_str(), F_OK), 0);
}

}  // namespace
