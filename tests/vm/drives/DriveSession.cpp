// Plays the steps of a group in the guest: an object manager with the provider loaded, on a clock that only steps move.
//
//     drive_session FILE OUTPUT
//
// OUTPUT takes what it reports; the provider writes lines of its own to standard output. The steps, besides those of
// GuestSteps:
//
//     start          makes the provider and shows the drive sensors
//     stop           has the provider clean up
//     read N         a second later, gets the instance of drive N (from 1) and shows its reading
//     again N        the same without the second
//     others         a second later, gets all other sensors and the event log
//     enumerate      a second later, enumerates the instances
//     names          enumerates the names
//     log            shows what was logged since the last time
//     user ID        goes on as this user; 0 comes back
//     mark           sends the first drive a command that nobody else sends (for who watches from outside)
//     settle         waits until the kernel has looked through the namespaces of the first two drives
//     reads COUNT    as `read` of each drive in turn, so often in all, then shows the last readings
//     direct COUNT   the same on the provider's own class, which is quicker under emulation
//     restarts COUNT stop and start, so often
//     descriptors    shows how many more file descriptors are open than when the provider was first loaded
//
// After each step but the mass ones it shows what was logged as an error, and the lines about /dev/ that the provider
// wrote to standard error.
#include <dirent.h>
#include <fcntl.h>
#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "FakeClock.h"
#include "GuestSteps.h"
#include "NvmeSsd.h"
#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"

namespace {

using Strings = std::vector<std::string>;

constexpr char SENSOR_CLASS[] = "TQS_NumericSensor";
constexpr char LOG_CLASS[] = "TQS_SystemEventLog";
constexpr char LOG_FILE[] = "/var/log/tarn/tarn.log";
constexpr char LOG_NAME[] = "Quorvel POS System Event Log";

// A file that grows, read piece by piece.
class GrowingFile {
  public:
    explicit GrowingFile(std::string path) : m_path(std::move(path)) {}

    Strings newLines() {
        std::ifstream file(m_path);
        file.seekg(m_taken);
        Strings lines;
        std::string line;
        while (std::getline(file, line)) {
            m_taken += static_cast<std::streamoff>(line.size()) + 1;
            lines.push_back(line);
        }
        return lines;
    }

    void skip() { m_taken = std::ifstream(m_path, std::ios::ate).tellg(); }

  private:
    std::string m_path;
    std::streamoff m_taken = 0;
};

broker::ObjectPath pathOf(const std::string& className) {
    broker::ObjectPath path;
    path.nameSpace = "root/cimv2";
    path.className = className;
    return path;
}

broker::ObjectPath pathOf(const std::string& className, const std::string& name) {
    broker::ObjectPath path = pathOf(className);
    path.keys.push_back({"Name", broker::Value::ofText(name)});
    return path;
}

std::string textOf(const broker::Instance& instance, const char* property) {
    const broker::Value* value = instance.findProperty(property);
    if (value == nullptr) return "absent";
    return value->isText() ? value->text : std::to_string(value->signedNumber);
}

std::string readingOf(const broker::Reply& reply) {
    if (reply.status.rc != CMPI_RC_OK || reply.instances.size() != 1)
        return "status " + std::to_string(reply.status.rc);
    return textOf(reply.instances[0], "CurrentReading");
}

bool isDrive(const std::string& name) {
    return name.compare(0, 3, "SSD") == 0;
}

unsigned openDescriptors() {
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir("/proc/self/fd"), closedir);
    unsigned count = 0;
    while (readdir(directory.get()) != nullptr) ++count;
    return count;
}

class Session {
  public:
    explicit Session(const char* output) : m_steps(output, steps()) {}

    void play(const char* file) { m_steps.play(file); }

  private:
    broker::InstanceProvider& provider() const {
        if (m_provider == nullptr) throw std::runtime_error("no provider; a start is missing");
        return *m_provider;
    }

    void start() {
        if (m_library == nullptr) {
            m_descriptors = openDescriptors();
            m_library = std::make_unique<broker::ProviderLibrary>("/lib/libzelsensors.so.0");
        }
        m_provider = std::make_unique<broker::InstanceProvider>(*m_library, "SensorProvider", m_broker);
        // The clock stands still, so this shows what the provider read when it started.
        const broker::Reply reply = provider().enumerateInstances(pathOf(SENSOR_CLASS));
        m_drives.clear();
        m_others.clear();
        for (const broker::Instance& instance : reply.instances) {
            const std::string name = textOf(instance, "Name");
            (isDrive(name) ? m_drives : m_others).push_back(name);
        }
        m_atStart = reply;
    }

    void showStart() {
        start();
        if (m_drives.empty()) m_output << "no drive sensors\n";
        for (const broker::Instance& instance : m_atStart.instances) {
            const std::string name = textOf(instance, "Name");
            if (!isDrive(name)) continue;
            m_output << name << ", device " << textOf(instance, "DeviceID") << ": "
                     << textOf(instance, "CurrentReading") << ", limits " << textOf(instance, "LowerThresholdCritical")
                     << " to " << textOf(instance, "UpperThresholdCritical") << '\n';
        }
    }

    std::string read(unsigned drive) {
        return readingOf(provider().getInstance(pathOf(SENSOR_CLASS, m_drives.at(drive - 1))));
    }

    void showReading(unsigned drive) { m_output << "SSD" << drive << ": " << read(drive) << '\n'; }

    void showOthers() {
        m_output << "others:";
        for (const std::string& name : m_others)
            m_output << ' ' << readingOf(provider().getInstance(pathOf(SENSOR_CLASS, name))) << ',';
        const broker::Reply log = provider().getInstance(pathOf(LOG_CLASS, LOG_NAME));
        const broker::Value* lines = log.instances.size() == 1 ? log.instances[0].findProperty("LogLines") : nullptr;
        m_output << ' ' << (lines == nullptr ? 0 : lines->elements.size()) << " log lines\n";
    }

    void enumerate() {
        const broker::Reply reply = provider().enumerateInstances(pathOf(SENSOR_CLASS));
        for (const broker::Instance& instance : reply.instances)
            m_output << textOf(instance, "Name") << ": " << textOf(instance, "CurrentReading") << '\n';
        m_output << "status " << reply.status.rc << '\n';
    }

    void showNames() {
        for (const broker::ObjectPath& path : provider().enumerateInstanceNames(pathOf(SENSOR_CLASS)).paths)
            m_output << path.findKey("Name")->text << '\n';
    }

    // Lines of the log are "time<TAB>P[...] T[...]<TAB>level<TAB>message"; a message may hold newlines.
    static Strings newMessages(GrowingFile& log) {
        Strings messages;
        for (const std::string& line : log.newLines()) {
            const std::size_t second = line.find('\t', line.find('\t') + 1);
            if (second == std::string::npos) {
                if (!line.empty()) messages.push_back(line);
                continue;
            }
            const std::size_t third = line.find('\t', second + 1);
            std::string level = line.substr(second + 1, third - second - 1);
            level.erase(level.find_last_not_of(' ') + 1);
            messages.push_back(level + ' ' + line.substr(third + 1));
        }
        return messages;
    }

    void showLog() {
        for (const std::string& message : newMessages(m_log)) m_output << message << '\n';
    }

    void showTroubles() {
        for (const std::string& message : newMessages(m_logForTroubles)) {
            if (message.compare(0, 6, "Error ") == 0) m_output << message << '\n';
        }
        for (const std::string& line : m_errors.newLines()) {
            if (line.compare(0, 5, "/dev/") == 0) m_output << line << '\n';
        }
    }

    static void becomeUser(unsigned id) {
        if (seteuid(id) != 0) throw std::runtime_error("seteuid failed");
    }

    static void send(const char* drive, nvme_admin_cmd command) {
        const int descriptor = open(drive, O_RDONLY | O_CLOEXEC);
        const int status = ioctl(descriptor, NVME_IOCTL_ADMIN_CMD, &command);
        close(descriptor);
        if (status < 0) throw std::runtime_error(std::string(drive) + " cannot be sent a command");
    }

    // Get Features, number of queues, saved value.
    static void mark() {
        nvme_admin_cmd command{};
        command.opcode = 0x0A;
        command.cdw10 = 0x207;
        send("/dev/nvme0", command);
    }

    // Format NVM of a namespace that cannot be: the drive refuses it, but after this command the kernel looks through
    // the namespaces anew and waits for the end of that.
    static void settle() {
        nvme_admin_cmd command{};
        command.opcode = 0x80;
        command.nsid = 0xFFFFFFF0;
        send("/dev/nvme0", command);
        send("/dev/nvme1", command);
    }

    void readMany(unsigned count) {
        std::map<unsigned, std::string> last;
        const auto drives = static_cast<unsigned>(m_drives.size());
        for (unsigned i = 0; i < count; ++i) {
            fakeclock::advanceMilliseconds(1000);
            last[i % drives + 1] = read(i % drives + 1);
        }
        for (const auto& [drive, reading] : last) m_output << "SSD" << drive << ": " << reading << '\n';
        forgetTroubles();
    }

    void readDirectly(unsigned count) {
        std::map<unsigned, unsigned> last;
        const auto drives = static_cast<unsigned>(m_drives.size());
        for (unsigned i = 0; i < count; ++i)
            last[i % drives + 1] = m_ownDrives.getSsdTemperature(static_cast<int>(i % drives));
        for (const auto& [drive, reading] : last) m_output << "SSD" << drive << ": " << reading << '\n';
        forgetTroubles();
    }

    void restart(unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            m_provider.reset();
            start();
        }
        forgetTroubles();
    }

    void forgetTroubles() {
        m_logForTroubles.skip();
        m_errors.skip();
    }

    void showDescriptors() { m_output << "descriptors: " << openDescriptors() - m_descriptors << " more\n"; }

    static void aSecondLater() { fakeclock::advanceMilliseconds(1000); }

    using NumberedStep = std::function<void(unsigned)>;

    // What each step takes is a number, or nothing.
    std::map<std::string, GuestSteps::Step> steps() {
        const std::map<std::string, NumberedStep> numbered{
            {"start", [this](unsigned) { showStart(); }},
            {"stop", [this](unsigned) { m_provider.reset(); }},
            {"read", [this](unsigned number) { aSecondLater(), showReading(number); }},
            {"again", [this](unsigned number) { showReading(number); }},
            {"others", [this](unsigned) { aSecondLater(), showOthers(); }},
            {"enumerate", [this](unsigned) { aSecondLater(), enumerate(); }},
            {"names", [this](unsigned) { showNames(); }},
            {"log", [this](unsigned) { showLog(); }},
            {"user", [](unsigned number) { becomeUser(number); }},
            {"mark", [](unsigned) { mark(); }},
            {"settle", [](unsigned) { settle(); }},
            {"reads", [this](unsigned number) { readMany(number); }},
            {"direct", [this](unsigned number) { readDirectly(number); }},
            {"restarts", [this](unsigned number) { restart(number); }},
            {"descriptors", [this](unsigned) { showDescriptors(); }},
        };
        std::map<std::string, GuestSteps::Step> steps;
        for (const auto& [name, step] : numbered) {
            steps[name] = [this, step = step](const std::string& argument) {
                step(argument.empty() ? 0 : static_cast<unsigned>(std::stoul(argument)));
                showTroubles();
            };
        }
        return steps;
    }

    GuestSteps m_steps;
    std::ostream& m_output = m_steps.output();
    GrowingFile m_log{LOG_FILE};
    GrowingFile m_logForTroubles{LOG_FILE};
    GrowingFile m_errors{"/run/errors"};
    NvmeSsd m_ownDrives;  // of this program, not of the loaded provider
    broker::Broker m_broker;
    std::unique_ptr<broker::ProviderLibrary> m_library;
    std::unique_ptr<broker::InstanceProvider> m_provider;
    broker::Reply m_atStart;
    Strings m_drives;  // names, in the order of the list
    Strings m_others;
    unsigned m_descriptors = 0;
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return EXIT_FAILURE;
    timeval now{};
    gettimeofday(&now, nullptr);
    fakeclock::set(now);
    try {
        Session(arguments[2]).play(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
