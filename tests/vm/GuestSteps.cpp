#include "GuestSteps.h"

#include <sys/wait.h>

#include <cstdlib>
#include <stdexcept>
#include <utility>

GuestSteps::GuestSteps(std::string output, std::map<std::string, Step> steps)
    : m_outputPath(std::move(output)), m_output(m_outputPath, std::ios::app), m_steps(std::move(steps)) {}

void GuestSteps::play(const std::string& file) {
    std::ifstream steps(file);
    if (!steps) throw std::runtime_error(file + ": no such group");
    for (std::string line; std::getline(steps, line);) playLine(line);
}

void GuestSteps::playLine(const std::string& line) {
    if (line.empty() || line.compare(0, 2, "# ") == 0) return;
    if (line.compare(0, 3, "## ") == 0) {
        m_output << line << '\n';
        return;
    }
    if (line.compare(0, 2, "! ") == 0) {
        runInShell(line.substr(2));
        return;
    }
    const std::size_t blank = line.find(' ');
    const auto step = m_steps.find(line.substr(0, blank));
    if (step == m_steps.end()) throw std::runtime_error("unknown step: " + line);
    step->second(blank == std::string::npos ? "" : line.substr(blank + 1));
    m_output << std::flush;
}

void GuestSteps::runInShell(const std::string& command) {
    m_output << std::flush;
    const int status = std::system((". /tools.sh; set -e; exec >>" + m_outputPath + "; " + command).c_str());
    if (status != 0) throw std::runtime_error("status " + std::to_string(WEXITSTATUS(status)) + ": " + command);
}
