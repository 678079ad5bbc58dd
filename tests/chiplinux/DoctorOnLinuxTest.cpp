// What `zelhost doctor` finds on a Linux machine: the program, provider and chip library as they are delivered, in a
// made-up machine.
#include <sensors/sensors.h>
#include <sys/mount.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "LinuxChipTest.h"
#include "ProgramRun.h"
#include "TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;

using Lines = std::vector<std::string>;

// A file of the kernel's that says something else while this lives.
class OtherFile {
  public:
    OtherFile(std::string path, const std::string& contents) : m_path(std::move(path)) {
        const std::string file = m_directory.write("contents", contents);
        if (mount(file.c_str(), m_path.c_str(), nullptr, MS_BIND, nullptr) != 0)
            throw std::system_error(errno, std::generic_category(), "mount on " + m_path);
    }
    ~OtherFile() { umount(m_path.c_str()); }
    OtherFile(const OtherFile&) = delete;
    OtherFile& operator=(const OtherFile&) = delete;

  private:
    TemporaryDirectory m_directory;
    std::string m_path;
};

// `arguments` for zelhost, which has root's name there but not its power over files.
ProgramEnd runWithoutPower(Arguments arguments) {
    arguments.insert(arguments.begin(), {"--bounding-set=-dac_override,-dac_read_search", ZELHOST});
    return runProgram(arguments, {}, "/usr/bin/setpriv");
}

const std::string LIBRARY = std::string("libsensors ") + libsensors_version;
constexpr char NO_DRIVER_WANTED[] = "vendor_id\t: Other\nflags\t\t: fpu\n";

class DoctorOnLinuxTest : public LinuxChipTest {
  protected:
    struct Findings {
        Lines rows;  // without those of the host's own matters, with one blank between columns
        Lines advice;
        int exitCode = -1;
    };

    void SetUp() override {
        LinuxChipTest::SetUp();
        if (!IsSkipped()) beOn(NO_DRIVER_WANTED);
    }

    // The processor, as /proc/cpuinfo tells of it.
    void beOn(const std::string& processor) {
        m_processor.reset();
        m_processor = std::make_unique<OtherFile>("/proc/cpuinfo", processor);
    }

    static std::string narrowed(const std::string& line) {
        std::string narrow;
        for (const char c : line)
            if (c != ' ' || narrow.empty() || narrow.back() != ' ') narrow += c;
        return narrow;
    }

    static bool isHosts(const std::string& row) {
        for (const char* area : {"About", "chip library", "settings", "log"})
            if (row.rfind(std::string(area) + ' ', 0) == 0) return true;
        return false;
    }

    static Findings found() {
        const ProgramEnd end = runProgram({"doctor", "--chip", "linux"});
        EXPECT_EQ(end.errors, "");
        Findings findings;
        findings.exitCode = end.exitCode;
        std::istringstream text(end.output);
        bool isTable = true;
        for (std::string line; std::getline(text, line);) {
            if (line.empty())
                isTable = false;
            else if (!isTable)
                findings.advice.push_back(line);
            else if (!isHosts(line))
                findings.rows.push_back(narrowed(line));
        }
        return findings;
    }

    std::unique_ptr<OtherFile> m_processor;
};

const std::string NO_SETTINGS = "libsensors /etc/sensors3.conf there is none, and none is needed";
const std::string NO_LOG =
    "event log the firmware's there is none, or none that the kernel has a way to, or it is not valid";
const std::string LOG_ANSWER = "provider TQS_SystemEventLog 0 lines, not valid";

TEST_F(DoctorOnLinuxTest, NothingIsToBeDoneWhereAllSensorsCanBeRead) {
    sensortree::addAdapter(0, "SMBus stub driver");
    sensortree::addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}, {"temp1_max", "80000"}});
    sensortree::addI2c(1, "lm85", 0, 0x2e, {{"in0_input", "3000"}, {"fan1_input", "900"}});
    const Findings findings = found();
    EXPECT_THAT(findings.rows,
                ElementsAre(LIBRARY + " finds 2 chips", NO_SETTINGS, "chip lm75-i2c-0-48 1 sensor; SMBus stub driver",
                            "chip lm85-i2c-0-2e 2 sensors; SMBus stub driver", NO_LOG,
                            "provider TQS_NumericSensor 3 sensors", LOG_ANSWER));
    EXPECT_THAT(findings.advice, ElementsAre("Nothing is to be done."));
    EXPECT_EQ(findings.exitCode, 0);
}

TEST_F(DoctorOnLinuxTest, WhatIsLeftOutIsReportedWithItsReason) {
    sandbox::writeLibsensorsConfiguration("chip \"board-*\"\n    ignore in1\n");
    sensortree::addVirtual(0, "board",
                           {{"in0_input", "3000"},
                            {"in1_input", "0"},
                            {"energy1_input", "5"},
                            {"intrusion0_alarm", "1"},
                            {"cpu0_vid", "1200"},
                            {"fan1_min", "600"}});
    const Findings findings = found();
    EXPECT_THAT(
        findings.rows,
        ElementsAre(LIBRARY + " finds 1 chip", "libsensors /etc/sensors3.conf it is read",
                    "chip board-virtual-0 1 sensor; Virtual device",
                    "left out board-virtual-0 fan1 the driver gives no reading for it",
                    "left out board-virtual-0 energy1 energy counts up for ever, past what a reading can hold",
                    "left out board-virtual-0 cpu0_vid a nominal voltage, not a measured one",
                    "left out board-virtual-0 intrusion0 nearly all boards latch the intrusion switch, mostly set",
                    "left out board-virtual-0 in1 an ignore line of libsensors's settings hides it", NO_LOG,
                    "provider TQS_NumericSensor 1 sensor", LOG_ANSWER));
    EXPECT_EQ(findings.exitCode, 0);
}

TEST_F(DoctorOnLinuxTest, SensorsThatCannotBeReadAreSomethingToDo) {
    sensortree::addVirtual(
        0, "board", {{"in0_input", "3000"}, {"temp1_input", "-128000"}, {"temp1_fault", "1"}, {"temp2_input", ""}});
    fs::resize_file("/sys/devices/virtual/hwmon/hwmon0/temp2_input", 0);
    const Findings findings = found();
    EXPECT_THAT(findings.rows, Contains("chip board-virtual-0 1 sensor; Virtual device"));
    EXPECT_THAT(findings.rows, Contains("left out board-virtual-0 temp1 the chip marks it faulty"));
    EXPECT_THAT(findings.rows, Contains("left out board-virtual-0 temp2 it cannot be read: Can't read"));
    EXPECT_THAT(
        findings.advice,
        ElementsAre("To do:",
                    "1. where a sensor cannot be read or is marked faulty: look at the kernel's log (dmesg), and "
                    "whether something is connected there; if nothing is to be, hide it by an ignore line, as "
                    "sensors3.conf(5) says"));
    EXPECT_EQ(findings.exitCode, 1);
}

TEST_F(DoctorOnLinuxTest, MistakesInLibsensorssSettingsAreReportedByFileAndLine) {
    sensortree::addVirtual(0, "board", {{"in0_input", "3000"}});
    sandbox::writeLibsensorsConfiguration("chip \"board-*\"\n    label in0 \"+3.3 V\"\n");
    std::ofstream("/etc/sensors.d/mine.conf") << "chip \"board-*\"\n    colour in0 red\n";
    const Findings findings = found();
    EXPECT_THAT(findings.rows, Contains("libsensors /etc/sensors3.conf it is read"));
    EXPECT_THAT(findings.rows, Contains(testing::StartsWith("libsensors /etc/sensors.d/mine.conf line 2: ")));
    EXPECT_THAT(findings.advice, ElementsAre("To do:",
                                             "1. mend /etc/sensors.d/mine.conf, line 2: sensors3.conf(5) says "
                                             "what may stand there"));
}

TEST_F(DoctorOnLinuxTest, SettingsThatAreRefusedAsAWholeAreReported) {
    sensortree::addAdapter(0, "SMBus stub driver");
    sensortree::addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}});
    sandbox::writeLibsensorsConfiguration("chip \"lm75-i2c-7-48\"\n    label temp1 \"A\"\n");
    const Findings findings = found();
    EXPECT_EQ(findings.rows.at(0), LIBRARY + " it refuses its settings as a whole");
    EXPECT_THAT(findings.rows, Contains(testing::StartsWith("libsensors /etc/sensors3.conf line 1: ")));
    EXPECT_EQ(findings.advice.at(1), "1. mend /etc/sensors3.conf, line 1: sensors3.conf(5) says what may stand there");
    EXPECT_THAT(findings.rows, Contains(testing::HasSubstr("Initialise Service Driver failed - sscode=0xe1000009")));
}

// In a container, for the test to find the same wherever it runs.
class DoctorWithoutChipsTest : public DoctorOnLinuxTest {
  protected:
    void SetUp() override {
        DoctorOnLinuxTest::SetUp();
        if (IsSkipped()) return;
        ASSERT_EQ(mount("tmpfs", "/run", "tmpfs", MS_NOSUID, nullptr), 0);
        std::ofstream("/run/.containerenv") << '\n';
        m_isMounted = true;
    }
    void TearDown() override {
        if (m_isMounted) umount("/run");
    }

    bool m_isMounted = false;
};

const std::string CONTAINER = "machine - it is a container, which mostly sees no sensors";
const std::string ASK_OUTSIDE = "1. in a container: ask on the machine itself, outside of it";

TEST_F(DoctorWithoutChipsTest, KernelWithoutHardwareMonitoringIsReported) {
    const Findings findings = found();
    EXPECT_THAT(findings.rows,
                ElementsAre(LIBRARY + " finds 0 chips", NO_SETTINGS, CONTAINER,
                            "chip - the kernel has no hardware monitoring: there is no /sys/class/hwmon", NO_LOG,
                            "provider TQS_NumericSensor 0 sensors; it answers 1 CMPI_RC_ERR_FAILED", LOG_ANSWER));
    EXPECT_THAT(
        findings.advice,
        ElementsAre("To do:", ASK_OUTSIDE,
                    "2. mount /sys if it is not; otherwise boot a kernel with hardware monitoring, such as that of "
                    "the package linux-image-amd64, since kernels for the cloud have none"));
    EXPECT_EQ(findings.exitCode, 1);
}

TEST_F(DoctorWithoutChipsTest, MachineWithoutDriversIsReportedHowToFindThem) {
    fs::create_directories("/sys/class/hwmon");
    const Findings findings = found();
    EXPECT_THAT(findings.rows, Contains("chip - no driver is loaded that knows one"));
    EXPECT_THAT(
        findings.advice,
        ElementsAre("To do:", ASK_OUTSIDE,
                    "2. run sensors-detect, of the package lm-sensors: it looks for chips and names their drivers; "
                    "put those into /etc/modules-load.d/sensors.conf, and load them with modprobe"));
}

TEST_F(DoctorWithoutChipsTest, VirtualMachineIsReported) {
    fs::create_directories("/sys/class/hwmon");
    beOn("vendor_id\t: AuthenticAMD\nflags\t\t: fpu hypervisor\n");
    const Findings findings = found();
    EXPECT_THAT(findings.rows, Contains("machine - it is virtual, and such a machine mostly has no sensors"));
    EXPECT_THAT(findings.rows, Not(Contains(testing::StartsWith("driver "))));
}

TEST_F(DoctorOnLinuxTest, DriversThatTheProcessorAndTheDisksCouldDoWithAreNamed) {
    sensortree::addVirtual(0, "board", {{"in0_input", "3000"}});
    fs::create_directories("/sys/class/block/sda/device");
    std::ofstream("/sys/class/block/sda/device/vendor") << "ATA     \n";
    beOn("vendor_id\t: AuthenticAMD\nflags\t\t: fpu\n");
    const Findings findings = found();
    EXPECT_THAT(findings.rows, Contains("driver k10temp it is not loaded, and would show the processor's temperature"));
    EXPECT_THAT(findings.rows,
                Contains("driver drivetemp it is not loaded, and would show the temperatures of SATA disks"));
    EXPECT_EQ(findings.advice.at(1),
              "1. modprobe k10temp; if its sensors come, add the line k10temp to "
              "/etc/modules-load.d/sensors.conf, which loads it at each boot");
    beOn("vendor_id\t: GenuineIntel\nflags\t\t: fpu dtherm ida\n");
    EXPECT_THAT(found().rows, Contains("driver coretemp it is not loaded, and would show the processor's temperature"));
    sensortree::addVirtual(1, "coretemp", {{"temp1_input", "40000"}});
    sensortree::addVirtual(2, "drivetemp", {{"temp1_input", "40000"}});
    EXPECT_THAT(found().rows, Not(Contains(testing::StartsWith("driver "))));
}

class EventLogDoctorTest : public DoctorOnLinuxTest {
  protected:
    void SetUp() override {
        DoctorOnLinuxTest::SetUp();
        if (IsSkipped()) return;
        sensortree::addVirtual(0, "board", {{"in0_input", "3000"}});
        fs::create_directories(m_entry / "system_event_log");
    }

    // A structure with this status, and its log.
    void write(char status, const std::string& log) const {
        std::string structure(21, '\0');
        structure[0] = 15;
        structure[1] = 23;
        structure[4] = 16;  // bytes of the log's area
        structure[10] = 3;
        structure[11] = status;
        std::ofstream(m_entry / "raw", std::ios::binary) << structure;
        std::ofstream(m_entry / "system_event_log/raw_event_log", std::ios::binary) << log;
    }

    const fs::path m_entry = "/sys/firmware/dmi/entries/15-0";
    const std::string m_record{"\x08\x0c\x26\x02\x17\x06\x56\x51\x02\x01\x00\x00", 12};
};

TEST_F(EventLogDoctorTest, StateOfTheFirmwaresLogIsReported) {
    write(1, m_record + '\xff');
    EXPECT_THAT(found().rows, Contains("event log the firmware's 1 line"));
    EXPECT_EQ(found().exitCode, 0);
    const std::string clear = "1. clear the event log in the firmware's set-up";
    write(3, m_record + '\xff');
    EXPECT_THAT(found().rows, Contains("event log the firmware's 1 line; it is full"));
    EXPECT_THAT(found().advice, ElementsAre("To do:", clear));
    write(1, m_record + m_record + "rubbish");
    EXPECT_THAT(found().rows, Contains("event log the firmware's 2 lines, but it is not valid"));
    EXPECT_THAT(found().advice, ElementsAre("To do:", clear));
}

TEST_F(EventLogDoctorTest, WhoeverMayNotReadTheLogIsReported) {
    write(1, m_record + '\xff');
    fs::permissions(m_entry / "raw", fs::perms::none);
    const ProgramEnd end = runWithoutPower({"doctor", "--chip", "linux"});
    EXPECT_EQ(end.exitCode, 1) << end.errors;
    EXPECT_THAT(end.output, testing::HasSubstr("this user may not read it"));
    EXPECT_THAT(end.output, testing::EndsWith("\nTo do:\n1. let root run what shall show the event log\n"));
}

// What ./run ends with.
class ThisMachineTest : public LinuxChipTest {
  protected:
    static ProgramEnd shown() { return runProgram({ZELHOST}, {}, THIS_MACHINE); }
    static std::string sentence(const std::string& reason) {
        return "This machine shows none, since " + reason + "; " ZELHOST " doctor --chip linux says what to do.\n";
    }
};

TEST_F(ThisMachineTest, ItsSensorsAreShown) {
    sensortree::addVirtual(0, "board", {{"in0_input", "3000"}});
    const ProgramEnd end = shown();
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, testing::HasSubstr("\nboard in0(a2ee41f7)"));
    EXPECT_THAT(end.output, testing::Not(testing::HasSubstr("shows none")));
}

TEST_F(ThisMachineTest, OneSentenceSaysWhyThereAreNone) {
    EXPECT_EQ(shown().output, sentence("the kernel shows no hardware monitoring here, as in most containers"));
    fs::create_directories("/sys/class/hwmon");
    EXPECT_EQ(shown().output, sentence("no driver has found a sensor chip, as in most virtual machines"));
    sensortree::addVirtual(0, "board", {{"in0_input", "3000"}});
    fs::resize_file("/sys/devices/virtual/hwmon/hwmon0/in0_input", 0);
    EXPECT_EQ(shown().output, sentence("no sensor can be read"));
    EXPECT_EQ(shown().exitCode, 0);
}

}  // namespace
