#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "FailingCLibrary.h"
#include "FakeDrives.h"
#include "FullLog.h"
#include "LogLines.h"
#include "Sandbox.h"
#include "SmartIo.h"
#include "log.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string NODE = "/dev/nvme0";

// A command that the kernel, or with a positive number the drive, refuses.
drives::Expectation refused(drives::Expectation one, int returned, int error = 0) {
    one.answer.returned = returned;
    one.answer.error = error;
    one.answer.data.clear();
    return one;
}

drives::Expectation withResult(drives::Expectation one, std::uint32_t result) {
    one.answer.result = result;
    return one;
}

class SmartIoIdentifyTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        drives::makeNode(NODE);
    }

    // Identifies the drive, which is to answer as given, and looks at the outcome.
    static void identify(const std::vector<drives::Expectation>& answers, bool succeeds,
                         const std::function<void(const IdentifyData&)>& check = nullptr) {
        runWithFullLog([&] {
            drives::expect(answers);
            IdentifyData data;
            EXPECT_EQ(SmartIo::getIdentifyNVMeData(NODE, data), succeeds);
            if (check != nullptr) check(data);
        });
    }

    static std::vector<drives::Expectation> upToController(const drives::Drive& drive) {
        return {drives::namespaceIdQuery(NODE, drive.namespaceId), drives::identifyController(NODE, drive)};
    }

    // A drive whose thresholds have these results, the rest being of no interest.
    static void identifyWithThresholds(const drives::Expectation& under, const drives::Expectation& over,
                                       int underCelsius, int overCelsius) {
        drives::Drive drive;
        drive.numberOfNamespaces = 0;
        std::vector<drives::Expectation> answers = upToController(drive);
        answers.push_back(under);
        answers.push_back(over);
        identify(answers, true, [&](const IdentifyData& data) {
            EXPECT_EQ(data.underTemperatureThreshold, underCelsius);
            EXPECT_EQ(data.overTemperatureThreshold, overCelsius);
        });
    }
};

}  // namespace

TEST(IdentifyDataRecordTest, FreshOneKnowsNothing) {
    const IdentifyData data;
    EXPECT_EQ(data.serialNumber + data.modelNumber + data.firmwareVersion, "");
    EXPECT_EQ(data.namespaceId, -1);
}

TEST_F(SmartIoIdentifyTest, AsksForIdentityAndThresholdsInOrder) {
    const drives::Drive drive;
    identify(drives::identification(NODE, drive), true, [](const IdentifyData& data) {
        EXPECT_EQ(data.namespaceId, -1);
        EXPECT_EQ(data.underTemperatureThreshold, 0);
        EXPECT_EQ(data.overTemperatureThreshold, 70);
        EXPECT_EQ(lastSetfdFlags(), FD_CLOEXEC);
    });
    EXPECT_THAT(loggedMessages(),
                ElementsAre("NvmeSsd::getIdentifyNVMeData - Under Temperature Threshold RESULT: 273\n",
                            "NvmeSsd::getIdentifyNVMeData - Over Temperature Threshold RESULT: 343\n",
                            "Model Number: ZEL SSD" + std::string(33, ' '),
                            "Serial Number: SN0001" + std::string(14, ' '), "Firmware Version: 1.0     "));
    EXPECT_EQ(messagesAt("Debug").size(), 5U);
}

TEST_F(SmartIoIdentifyTest, TextsKeepTheirFullWidth) {
    drives::Drive drive;
    drive.serial = std::string("S\0\0", 3);
    drive.model = "MODEL OF THIRTY-NINE CHARACTERS, BLANK ";
    drive.firmware = "12345678";
    identify(drives::identification(NODE, drive), true, [](const IdentifyData& data) {
        EXPECT_EQ(data.serialNumber, std::string("S\0\0", 3) + std::string(17, ' '));
        EXPECT_EQ(data.modelNumber, "MODEL OF THIRTY-NINE CHARACTERS, BLANK  ");
        EXPECT_EQ(data.firmwareVersion, "12345678");
    });
    EXPECT_EQ(loggedMessages()[3], "Serial Number: S");
}

TEST_F(SmartIoIdentifyTest, ShortModelNumberKeepsItsTrailingBlanks) {
    drives::Drive drive;
    drive.model = "M";
    identify(drives::identification(NODE, drive), true,
             [](const IdentifyData& data) { EXPECT_EQ(data.modelNumber, "M" + std::string(39, ' ')); });
}

TEST_F(SmartIoIdentifyTest, OpensWithoutWaiting) {
    sandbox::reset();
    ASSERT_EQ(mkfifo(NODE.c_str(), 0600), 0);  // has no writer, for which a waiting open would wait
    identify(drives::identification(NODE, drives::Drive()), true);
}

// A daemon may have closed its standard input.
TEST_F(SmartIoIdentifyTest, DescriptorZeroIsAsGoodAsAnyOther) {
    runWithFullLog([] {
        LogQuick(LOG_ERROR, "has its descriptor now");
        close(STDIN_FILENO);
        drives::expect(drives::identification(NODE, drives::Drive()));
        IdentifyData data;
        EXPECT_TRUE(SmartIo::getIdentifyNVMeData(NODE, data));
    });
}

TEST_F(SmartIoIdentifyTest, KnownNamespaceIsAskedFor) {
    drives::Drive drive;
    drive.namespaceId = 5;
    drive.numberOfNamespaces = 1;
    identify(drives::identification(NODE, drive), true,
             [](const IdentifyData& data) { EXPECT_EQ(data.namespaceId, 5); });
}

TEST_F(SmartIoIdentifyTest, KnownNamespaceThatCannotBeIdentifiedIsAFailure) {
    drives::Drive drive;
    drive.namespaceId = 5;
    std::vector<drives::Expectation> answers = upToController(drive);
    answers.push_back(refused(drives::identifyNamespace(NODE, 5), -1, EIO));
    identify(answers, false);
    EXPECT_THAT(messagesAt("Error"),
                ElementsAre("SmartIo::nvme_read_identify - NVME_IOCTL_ADMIN_CMD failed: Input/output error",
                            "SmartIo::getIdentifyNVMeData - nvme_read_identify failed id_ns"));
}

TEST_F(SmartIoIdentifyTest, GuessedNamespaceMayFail) {
    drives::Drive drive;
    std::vector<drives::Expectation> answers = drives::identification(NODE, drive);
    answers[2] = refused(answers[2], -1, EIO);
    identify(answers, true);
    EXPECT_THAT(messagesAt("Error"),
                ElementsAre("SmartIo::nvme_read_identify - NVME_IOCTL_ADMIN_CMD failed: Input/output error"));
}

TEST_F(SmartIoIdentifyTest, NamespaceIsGuessedOnlyWhereTheDriveHasExactlyOne) {
    for (const std::uint32_t number : {0U, 2U, 0x101U, 0x10001U, 0x1000001U}) {
        drives::Drive drive;
        drive.numberOfNamespaces = number;
        // identification() has an Identify Namespace for exactly one namespace only.
        identify(drives::identification(NODE, drive), true);
    }
    EXPECT_THAT(messagesAt("Error"), IsEmpty());
}

TEST_F(SmartIoIdentifyTest, ControllerThatCannotBeIdentifiedIsAFailure) {
    identify(
        {drives::namespaceIdQuery(NODE, -1), refused(drives::identifyController(NODE, drives::Drive()), -1, EPERM)},
        false);
    EXPECT_THAT(messagesAt("Error"),
                ElementsAre("SmartIo::nvme_read_identify - NVME_IOCTL_ADMIN_CMD failed: Operation not permitted",
                            "SmartIo::getIdentifyNVMeData - nvme_read_identify failed"));
}

TEST_F(SmartIoIdentifyTest, ResultThatIsNotZeroIsAFailure) {
    for (const std::uint32_t result : {1U, 7U, 0xFFFFFFFEU}) {
        identify(
            {drives::namespaceIdQuery(NODE, -1), withResult(drives::identifyController(NODE, drives::Drive()), result)},
            false);
    }
    EXPECT_THAT(messagesAt("Error"), ElementsAre("SmartIo::nvme_read_identify - result failed: 1",
                                                 "SmartIo::getIdentifyNVMeData - nvme_read_identify failed",
                                                 "SmartIo::nvme_read_identify - result failed: 7",
                                                 "SmartIo::getIdentifyNVMeData - nvme_read_identify failed",
                                                 "SmartIo::nvme_read_identify - result failed: -2",
                                                 "SmartIo::getIdentifyNVMeData - nvme_read_identify failed"));
}

TEST_F(SmartIoIdentifyTest, DrivesStatusOnIdentifyIsNotLookedAt) {
    drives::Drive drive;
    std::vector<drives::Expectation> answers = drives::identification(NODE, drive);
    answers[1].answer.returned = 0x4002;
    answers[2].answer.returned = 0x400b;
    identify(answers, true);
    EXPECT_THAT(messagesAt("Error"), IsEmpty());
}

TEST_F(SmartIoIdentifyTest, RefusedUnderTemperatureThresholdIsAFailure) {
    std::vector<drives::Expectation> answers = drives::identification(NODE, drives::Drive());
    answers.pop_back();
    answers.back() = refused(answers.back(), 0x4002);
    identify(answers, false);
    EXPECT_THAT(loggedMessages(),
                ElementsAre("NvmeSsd::getIdentifyNVMeData - error reading Under Temperature Threshold"));
    EXPECT_EQ(messagesAt("Error").size(), 1U);
}

TEST_F(SmartIoIdentifyTest, RefusedOverTemperatureThresholdIsAFailure) {
    std::vector<drives::Expectation> answers = drives::identification(NODE, drives::Drive());
    answers.back() = refused(answers.back(), 1);
    identify(answers, false);
    EXPECT_THAT(messagesAt("Error"),
                ElementsAre("NvmeSsd::getIdentifyNVMeData - error reading Over Temperature Threshold"));
    EXPECT_EQ(loggedMessages().size(), 2U);
}

TEST_F(SmartIoIdentifyTest, ThresholdThatTheKernelRefusesReadsAsZeroKelvin) {
    identifyWithThresholds(refused(drives::underThreshold(NODE, 300), -1, EIO),
                           refused(drives::overThreshold(NODE, 300), -1, EIO), -273, -273);
    EXPECT_THAT(messagesAt("Error"), IsEmpty());
    EXPECT_EQ(loggedMessages()[0], "NvmeSsd::getIdentifyNVMeData - Under Temperature Threshold RESULT: 0\n");
    EXPECT_EQ(loggedMessages()[1], "NvmeSsd::getIdentifyNVMeData - Over Temperature Threshold RESULT: 0\n");
}

TEST_F(SmartIoIdentifyTest, ThresholdsAreTheLowSixteenBitsLess273) {
    identifyWithThresholds(drives::underThreshold(NODE, 0x00000110), drives::overThreshold(NODE, 0x0000015E), -1, 77);
    identifyWithThresholds(drives::underThreshold(NODE, 0x0000015E), drives::overThreshold(NODE, 0x00000110), 77, -1);
    identifyWithThresholds(drives::underThreshold(NODE, 0xABCD015E), drives::overThreshold(NODE, 0xFFFF0110), 77, -1);
    // The sixteenth bit is one of them, and no sign.
    identifyWithThresholds(drives::underThreshold(NODE, 0x0000FFFF), drives::overThreshold(NODE, 0x12348110), 65262,
                           32767);
    identifyWithThresholds(drives::underThreshold(NODE, 0x7FFF8000), drives::overThreshold(NODE, 0x00007FFF), 32495,
                           32494);
    // The result is logged whole, and never as a negative number.
    const std::vector<std::string> messages = loggedMessages();
    EXPECT_EQ(messages[10], "NvmeSsd::getIdentifyNVMeData - Under Temperature Threshold RESULT: 2882339166\n");
    EXPECT_EQ(messages[11], "NvmeSsd::getIdentifyNVMeData - Over Temperature Threshold RESULT: 4294902032\n");
}

TEST_F(SmartIoIdentifyTest, MissingDeviceIsAFailure) {
    sandbox::reset();
    identify({}, false);
    EXPECT_THAT(loggedMessages(), ElementsAre("SmartIo::getIdentifyNVMeData - Open /dev/nvme0 failed, 2"));
    EXPECT_EQ(messagesAt("Error").size(), 1U);
}

TEST_F(SmartIoIdentifyTest, DescriptorThatCannotBeKeptFromChildrenIsAFailure) {
    runWithFullLog([] {
        const FailingCall keeping(Function::Fcntl, 1, EBADF);
        IdentifyData data;
        EXPECT_FALSE(SmartIo::getIdentifyNVMeData(NODE, data));
    });
    EXPECT_THAT(messagesAt("Error"), ElementsAre("SmartIo::getIdentifyNVMeData - fcntl /dev/nvme0 failed, 9"));
}

TEST_F(SmartIoIdentifyTest, IdentifyClearsTheBufferBeforeItAsks) {
    runWithFullLog([] {
        const int device = open(NODE.c_str(), O_RDONLY);
        drives::Expectation expected = drives::identifyNamespace(NODE, 3);
        expected.command.data_len = 8;
        expected.answer.data = {0x11, 0x22};
        drives::expect(expected);
        std::string buffer(10, 'x');
        EXPECT_TRUE(SmartIo::nvme_read_identify(device, 3, 0, buffer.data(), 8));
        EXPECT_EQ(buffer, std::string("\x11\x22\0\0\0\0\0\0xx", 10));
        close(device);
    });
}
