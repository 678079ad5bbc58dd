// Plays a file of steps in the guest, and writes what comes of them to a file or a device.
//
// Of the file's lines, those with "## " begin a section, and "# " a remark; "! COMMAND" runs a command in the shell
// with the guest's tools, and its failure ends the play. All other lines are a step's name and its argument.
#ifndef ZELSENSORS_TESTS_GUESTSTEPS_H
#define ZELSENSORS_TESTS_GUESTSTEPS_H

#include <fstream>
#include <functional>
#include <map>
#include <string>

class GuestSteps {
  public:
    using Step = std::function<void(const std::string& argument)>;

    GuestSteps(std::string output, std::map<std::string, Step> steps);

    // Plays the whole file. Throws std::runtime_error for a step that fails or is unknown.
    void play(const std::string& file);

    // Where the steps write.
    std::ostream& output() { return m_output; }

  private:
    void playLine(const std::string& line);
    void runInShell(const std::string& command);

    std::string m_outputPath;
    std::ofstream m_output;
    std::map<std::string, Step> m_steps;
};

#endif
