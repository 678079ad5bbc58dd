// The pages before the programs that take them on a terminal: promtool, and node_exporter's textfile collector.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "FileContents.h"
#include "Instances.h"
#include "MetricsReader.h"
#include "TemporaryDirectory.h"
#include "format/MetricsFormat.h"

namespace fs = std::filesystem;

namespace {

using host::EventLog;
using host::MetricsRound;
using host::Sensor;
using testing::HasSubstr;

constexpr const char* PROMTOOL = PROGRAMS "/usr/bin/promtool";
constexpr const char* NODE_EXPORTER = PROGRAMS "/usr/bin/prometheus-node-exporter";

#define REQUIRE_PROGRAM(path) \
    if (!fs::exists(path)) GTEST_SKIP() << "SKIPPED: there is no " << path << "; ./check unpacks it"

MetricsRound smallRoundOf(const std::vector<broker::Instance>& sensors) {
    MetricsRound round;
    for (const broker::Instance& sensor : sensors) round.sensors.sensors.push_back(Sensor::of(sensor));
    round.eventLog.log = EventLog{true, false, {"a"}};
    round.eventLog.newLines = 3;
    return round;
}

std::string metricsText(const MetricsRound& round) {
    return host::MetricsPages({}).next(round);
}

broker::Instance sensorNamed(const std::string& name, unsigned short unit = 2) {
    return sensorOf(name, 4211, unit, -2, {{"UpperThresholdCritical", 9000}, {"LowerThresholdFatal", -100}});
}

struct NamedPage {
    std::string name;
    std::string text;
    std::size_t sensors;  // that have a series in it
};

std::vector<NamedPage> pages() {
    std::vector<broker::Instance> thousand;
    for (int i = 0; i < 1000; ++i) thousand.push_back(sensorNamed("Probe " + std::to_string(i)));
    std::vector<broker::Instance> odd;
    for (const char* name : {"a \"quoted\" name", "back\\slash", "new\nline", "\\n", "\xff", "\\xff", "Grün", "tab\t\r",
                             "{le=\"1\"} 2", "# EOF", "", "trailing\\"}) {
        odd.push_back(sensorNamed(name));
    }
    odd.push_back(sensorNamed(std::string(10240, '"')));
    std::vector<broker::Instance> units;
    for (unsigned short unit = 0; unit < 70; ++unit) units.push_back(sensorNamed(std::to_string(unit), unit));
    MetricsRound failed = smallRoundOf({});
    failed.sensors.status.rc = failed.eventLog.status.rc = CMPI_RC_ERR_FAILED;
    failed.eventLog.log.reset();
    return {{"thousand", metricsText(smallRoundOf(thousand)), 1000},
            {"odd", metricsText(smallRoundOf(odd)), odd.size()},
            {"units", metricsText(smallRoundOf(units)), units.size()},
            {"none", metricsText(smallRoundOf({})), 0},
            {"failed", metricsText(failed), 0}};
}

TEST(PromtoolTest, FindsNothingInAnyPage) {
    REQUIRE_PROGRAM(PROMTOOL);
    const TemporaryDirectory directory;
    for (const NamedPage& page : pages()) {
        const std::string file = directory.write(page.name, page.text);
        const std::string command =
            std::string(PROMTOOL) + " check metrics <" + file + " >" + directory.path("said") + " 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << page.name;
        EXPECT_EQ(contentsOf(fs::path(directory.path("said"))), "") << page.name;
    }
}

// A connection to a port of this machine; -1 where nobody listens.
int connectedTo(unsigned short port) {
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return connection;
    close(connection);
    return -1;
}

unsigned short freePort() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(listener, reinterpret_cast<const sockaddr*>(&address), size);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    close(listener);
    return ntohs(address.sin_port);
}

// node_exporter with the textfile collector alone.
class NodeExporter {
  public:
    explicit NodeExporter(const std::string& directory) : m_log(directory + "/exporter.log") {
        // The port may be taken by another program before it listens there.
        while (m_process < 0 || !isListening()) start(directory);
    }
    ~NodeExporter() {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
    }
    NodeExporter(const NodeExporter&) = delete;
    NodeExporter& operator=(const NodeExporter&) = delete;

    std::string metrics() const {
        const int connection = connectedTo(m_port);
        const std::string request = "GET /metrics HTTP/1.0\r\nHost: localhost\r\n\r\n";
        if (write(connection, request.data(), request.size()) != static_cast<ssize_t>(request.size())) return "";
        std::string answer;
        char block[65536];
        for (ssize_t count = 0; (count = read(connection, block, sizeof block)) > 0;) {
            answer.append(block, static_cast<std::size_t>(count));
        }
        close(connection);
        return answer;
    }
    std::string log() const { return contentsOf(fs::path(m_log)); }

  private:
    void start(const std::string& directory) {
        m_port = freePort();
        std::vector<std::string> words{NODE_EXPORTER, "--web.listen-address=127.0.0.1:" + std::to_string(m_port),
                                       "--collector.disable-defaults", "--collector.textfile",
                                       "--collector.textfile.directory=" + directory};
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, m_log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
        const int error = posix_spawn(&m_process, NODE_EXPORTER, &files, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&files);
        if (error != 0) throw std::runtime_error("node_exporter cannot be started");
    }
    // False where it has ended.
    bool isListening() {
        while (waitpid(m_process, nullptr, WNOHANG) == 0) {
            if (const int connection = connectedTo(m_port); connection >= 0) {
                close(connection);
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        m_process = -1;
        return false;
    }

    std::string m_log;
    unsigned short m_port = 0;
    pid_t m_process = -1;
};

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
}

TEST(NodeExporterTest, TakesEveryPageWhole) {
    REQUIRE_PROGRAM(NODE_EXPORTER);
    const TemporaryDirectory directory;
    const NodeExporter exporter(directory.path());
    for (const NamedPage& page : pages()) {
        const std::string file = directory.write("zelsensors.prom", page.text);
        const std::string shown = exporter.metrics();
        EXPECT_THAT(shown, HasSubstr("\nnode_textfile_scrape_error 0\n")) << page.name;
        EXPECT_EQ(countOf(shown, "\nzelsensors_sensor_severity{"), page.sensors) << page.name;
        EXPECT_EQ(countOf(shown, "\nzelsensors_"), countOf('\n' + page.text, "\nzelsensors_")) << page.name;
    }
    EXPECT_EQ(countOf(exporter.log(), "level=error"), 0U) << exporter.log();
}

// That it would say so if it did not.
TEST(NodeExporterTest, DropsAPageThatIsSpoilt) {
    REQUIRE_PROGRAM(NODE_EXPORTER);
    const TemporaryDirectory directory;
    const NodeExporter exporter(directory.path());
    const std::string page = pages().front().text;
    directory.write("zelsensors.prom", page.substr(0, page.size() - 1));
    EXPECT_THAT(exporter.metrics(), HasSubstr("\nnode_textfile_scrape_error 1\n"));
}

TEST(MetricsReaderTest, TakesEveryPage) {
    for (const NamedPage& page : pages()) EXPECT_NO_THROW(readMetrics(page.text)) << page.name;
}

TEST(MetricsReaderTest, RefusesWhatIsNoPage) {
    const std::string head = "# HELP a_b H\n# TYPE a_b gauge\n";
    EXPECT_NO_THROW(readMetrics(head + "a_b 1\n"));
    for (const std::string& wrong : {std::string(),
                                     head,
                                     head + "a_b 1",
                                     head + "a_b x\n",
                                     head + "a_b NaN\n",
                                     head + "a_b 1 2\n",
                                     head + "a_c 1\n",
                                     head + "a_b{c=\"\xff\"} 1\n",
                                     head + "a_b{c=\"\\t\"} 1\n",
                                     head + "a_b{c=\"\"\"} 1\n",
                                     head + "a_b{c=\"\\\"} 1\n",
                                     head + "a_b{c=\"1\",c=\"2\"} 1\n",
                                     head + "a_b{c=\"1\",} 1\n",
                                     head + "a_b{c-d=\"1\"} 1\n",
                                     head + "a_b 1\na_b 2\n",
                                     head + "a_b 1\n" + head + "a_b{c=\"d\"} 1\n",
                                     head + "\na_b 1\n",
                                     head + "a_b 1\r\n",
                                     std::string("# TYPE a_b gauge\na_b 1\n"),
                                     std::string("# HELP a_b H\n# TYPE a_b counter\na_b 1\n")}) {
        EXPECT_THROW(readMetrics(wrong), std::runtime_error) << wrong;
    }
}

}  // namespace
