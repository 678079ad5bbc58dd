// `zelhost sensors --servers` against libcurl alone making the same exchanges, each as a process of its own, in turn.
//
//   ServersBench SERVERS RUNS   prints medians: the servers answer as one was recorded, a tenth of them is not there;
//                               first they take as long as terminals behind a shop's line, then no time
//   ServersBench --bare FILE    makes the exchanges with the servers that the file names
#include <curl/curl.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "source/CimXmlOverHttp.h"
#include "source/Fleet.h"
#include "source/RawServer.h"
#include "source/Servers.h"

namespace {

constexpr std::size_t AT_ONCE = host::Servers::MOST_AT_ONCE;
constexpr std::size_t DEAD_OF = 10;  // one of so many

using Clock = std::chrono::steady_clock;
// Two round trips of 20 ms, for the connection and the request, and what a small processor needs for its sensors.
constexpr std::chrono::milliseconds FAR_AWAY(50);

void require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

std::string recordedBody() {
    std::ifstream stream(RECORDED, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    const std::size_t end = text.str().find("\r\n\r\n");
    require(end != std::string::npos, "no recorded answer");
    return text.str().substr(end + 4);
}

// The recorded answer under the request's message id, after so long.
Fleet::Behaviour answering(std::size_t servers, std::chrono::milliseconds delay) {
    const std::string mark = "MESSAGE ID=\"";
    const std::string body = recordedBody();
    const std::size_t at = body.find(mark) + mark.size();
    const std::string before = body.substr(0, at);
    const std::string behind = body.substr(body.find('"', at));
    std::vector<std::optional<Clock::time_point>> asked(servers);
    return [=](std::size_t server, const std::string& request) mutable -> std::optional<Fleet::Deed> {
        std::optional<Clock::time_point>& since = asked[server];
        if (!since) since = Clock::now();
        if (Clock::now() - *since < delay) return std::nullopt;
        since.reset();
        const std::size_t id = request.find(mark) + mark.size();
        return Fleet::Deed{httpAnswer(before + request.substr(id, request.find('"', id) - id) + behind)};
    };
}

std::size_t dropBody(const char*, std::size_t, std::size_t count, void*) {
    return count;
}

// As many at a time as zelhost asks, on the same terms, and nothing done with what comes.
int askBare(const char* file) {
    std::ifstream stream(file);
    std::vector<std::string> urls;
    for (std::string line; std::getline(stream, line);) urls.push_back(line + "/cimom");
    const host::HttpRequest request =
        httpRequestOf(host::enumerateInstancesXml("1001", {"", "root/cimv2", "TQS_NumericSensor", {}}));
    curl_global_init(CURL_GLOBAL_DEFAULT);
    curl_slist* headers = nullptr;
    for (const std::string& each : request.headers) headers = curl_slist_append(headers, each.c_str());
    CURLM* multi = curl_multi_init();
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, static_cast<long>(AT_ONCE));
    curl_multi_setopt(multi, CURLMOPT_MAX_TOTAL_CONNECTIONS, static_cast<long>(AT_ONCE));
    std::vector<CURL*> idle;
    for (std::size_t i = 0; i < AT_ONCE; ++i) {
        CURL* curl = curl_easy_init();
        curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(curl, CURLOPT_PROXY, "");
        curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, dropBody);
        curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request.body.c_str());
        idle.push_back(curl);
    }
    std::size_t begun = 0;
    std::size_t answered = 0;
    for (std::size_t ended = 0; ended < urls.size();) {
        while (!idle.empty() && begun < urls.size()) {
            curl_easy_setopt(idle.back(), CURLOPT_URL, urls[begun++].c_str());
            curl_multi_add_handle(multi, idle.back());
            idle.pop_back();
        }
        int left = 0;
        curl_multi_perform(multi, &left);
        const std::size_t before = ended;
        while (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
            if (message->data.result == CURLE_OK) ++answered;
            CURL* curl = message->easy_handle;
            curl_multi_remove_handle(multi, curl);
            idle.push_back(curl);
            ++ended;
        }
        if (ended == before) curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
    }
    for (CURL* curl : idle) curl_easy_cleanup(curl);
    curl_multi_cleanup(multi);
    curl_slist_free_all(headers);
    return answered == urls.size() - urls.size() / DEAD_OF ? 0 : 2;
}

struct Cost {
    double wall = 0;    // milliseconds
    double cpu = 0;     // milliseconds
    double memory = 0;  // MiB, the most that was resident
};

double millisecondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
}

// Throws where the program does not end with that status.
Cost costOf(const std::vector<std::string>& arguments, int status) {
    std::vector<char*> pointers;
    for (const std::string& each : arguments) pointers.push_back(const_cast<char*>(each.c_str()));
    pointers.push_back(nullptr);
    const auto begin = std::chrono::steady_clock::now();
    const pid_t process = fork();
    if (process == 0) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
    int ended = 0;
    rusage usage{};
    require(wait4(process, &ended, 0, &usage) == process, "a program could not be run");
    const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - begin;
    require(WIFEXITED(ended) && WEXITSTATUS(ended) == status, "a program ended otherwise than it should");
    return {wall.count(), millisecondsOf(usage.ru_utime) + millisecondsOf(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) / 1024};
}

double median(const std::vector<Cost>& costs, double Cost::*what) {
    std::vector<double> values;
    for (const Cost& each : costs) values.push_back(each.*what);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void show(const char* what, double ours, double bare, const char* goal) {
    std::printf("%-28s %12.1f %12.1f %7.2f%s\n", what, ours, bare, ours / bare, goal);
}

void compare(const std::string& self, std::size_t servers, std::size_t runs, std::chrono::milliseconds delay) {
    const std::size_t living = servers - servers / DEAD_OF;
    const Fleet fleet(living, answering(living, delay), AT_ONCE);
    const std::filesystem::path list = std::filesystem::temp_directory_path() / ("servers-" + std::to_string(getpid()));
    {
        std::ofstream stream(list);
        std::size_t next = 0;
        for (std::size_t i = 0; i < servers; ++i) {
            const bool isDead = i % DEAD_OF == DEAD_OF - 1;
            stream << (isDead ? "http://127.0.0.1:" + std::to_string(closedPort()) : fleet.url(next++)) << '\n';
        }
    }
    std::vector<Cost> ours;
    std::vector<Cost> bare;
    for (std::size_t i = 0; i < runs; ++i) {
        bare.push_back(costOf({self, "--bare", list}, 0));
        ours.push_back(costOf({ZELHOST, "sensors", "--servers", list}, 1));
    }
    std::filesystem::remove(list);
    const double wall = median(ours, &Cost::wall) / median(bare, &Cost::wall);
    std::printf("%zu servers, a tenth not there; the others answer after %d ms\n", servers,
                static_cast<int>(delay.count()));
    std::printf("%-28s %12s %12s %7s\n", "", "zelhost", "bare curl", "ratio");
    show("wall time, ms", median(ours, &Cost::wall), median(bare, &Cost::wall),
         wall <= 1.5 ? "  at most 1.50: met" : "  at most 1.50: MISSED");
    show("CPU time, ms", median(ours, &Cost::cpu), median(bare, &Cost::cpu), "");
    show("memory, MiB", median(ours, &Cost::memory), median(bare, &Cost::memory), "");
}

}  // namespace

int main(int count, char** arguments) try {
    require(count == 3, "usage: ServersBench SERVERS RUNS | --bare FILE");
    if (std::string(arguments[1]) == "--bare") return askBare(arguments[2]);
    for (const std::chrono::milliseconds delay : {FAR_AWAY, std::chrono::milliseconds(0)}) {
        compare("/proc/self/exe", std::stoul(arguments[1]), std::stoul(arguments[2]), delay);
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
