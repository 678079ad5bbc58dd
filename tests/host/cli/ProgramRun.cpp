#include "ProgramRun.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <system_error>

#include "MemoryFile.h"

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::string nameOf(const std::string& variable) {
    return variable.substr(0, variable.find('='));
}

// The test's own, but for what would change the output, and with `more` in the place of those of the same names.
std::vector<std::string> environmentWith(const std::vector<std::string>& more) {
    std::set<std::string> leftOut{"ZELCHIP_SCENARIO", "NO_COLOR", "TERM", "LANG", "LC_CTYPE", "LC_ALL"};
    for (const std::string& variable : more) leftOut.insert(nameOf(variable));
    std::vector<std::string> all{"LANG=C.UTF-8"};
    for (char** each = environ; *each != nullptr; ++each) {
        if (leftOut.count(nameOf(*each)) == 0) all.emplace_back(*each);
    }
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

void takePlace(int given, int standard) {
    if (given < 0) {
        close(standard);
    } else {
        dup2(given, standard);
    }
}

[[noreturn]] void becomeProgram(const char* program, char** arguments, char** environment, const Surroundings& place) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT, SIGTSTP}) signal(number, SIG_DFL);
    if (place.input >= 0) dup2(place.input, STDIN_FILENO);
    if (place.controls) {
        setsid();
        ioctl(STDIN_FILENO, TIOCSCTTY, 0);
    }
    takePlace(place.output, STDOUT_FILENO);
    takePlace(place.errors, STDERR_FILENO);
    execve(program, arguments, environment);
    _exit(127);
}

}  // namespace

pid_t startProgram(const Arguments& arguments, const Surroundings& surroundings, const std::string& program) {
    const std::string path = program.empty() ? ZELHOST : program;
    Arguments all = arguments;
    all.insert(all.begin(), path);
    const std::vector<char*> argumentPointers = pointersTo(all);
    std::vector<std::string> environment = environmentWith(surroundings.environment);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    const pid_t process = fork();
    if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (process == 0) {
        becomeProgram(path.c_str(), const_cast<char**>(argumentPointers.data()),
                      const_cast<char**>(environmentPointers.data()), surroundings);
    }
    return process;
}

int waitForProgram(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

ProgramEnd runProgram(const Arguments& arguments, const std::vector<std::string>& environment,
                      const std::string& program) {
    const int output = makeMemoryFile();
    const int errors = makeMemoryFile();
    ProgramEnd end;
    end.exitCode = waitForProgram(startProgram(arguments, {output, errors, environment}, program));
    end.output = takeContents(output);
    end.errors = takeContents(errors);
    close(output);
    close(errors);
    return end;
}
