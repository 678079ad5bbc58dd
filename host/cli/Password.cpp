#include "cli/Password.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "cli/Failure.h"
#include "text/Utf8.h"

namespace host {
namespace {

constexpr std::size_t LONGEST_PASSWORD = 4096;

class Descriptor {
  public:
    Descriptor(const char* path, int flags) : m_number(open(path, flags | O_CLOEXEC | O_NOCTTY)) {}
    ~Descriptor() {
        if (m_number >= 0) close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return m_number; }

  private:
    int m_number;
};

// A terminal that shows nothing of what is typed, and gives ^C as a character; no signal may end us while it is so. The
// end makes it as it was.
class SilentTerminal {
  public:
    explicit SilentTerminal(int terminal) : m_terminal(terminal) {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) sigaddset(&ending, signal);
        pthread_sigmask(SIG_BLOCK, &ending, &m_maskBefore);
        tcgetattr(terminal, &m_before);
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ISIG);
        silent.c_lflag |= ICANON;
        silent.c_cc[VEOL] = INTERRUPT;  // ends the line, as Enter does
        tcsetattr(terminal, TCSAFLUSH, &silent);
    }
    ~SilentTerminal() {
        tcsetattr(m_terminal, TCSAFLUSH, &m_before);
        pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

    static constexpr char INTERRUPT = '\x03';

  private:
    int m_terminal;
    termios m_before{};
    sigset_t m_maskBefore{};
};

// Up to the end of the line, or of what there is; -1 as errno says.
ssize_t readLine(int descriptor, std::string& line) {
    char byte = 0;
    for (;;) {
        const ssize_t count = read(descriptor, &byte, 1);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return count;
        if (count == 0 || byte == '\n' || line.size() > LONGEST_PASSWORD) return static_cast<ssize_t>(line.size());
        line += byte;
        if (byte == SilentTerminal::INTERRUPT) return static_cast<ssize_t>(line.size());
    }
}

void say(int terminal, const std::string& text) {
    // Where this fails, so does the reading.
    if (write(terminal, text.data(), text.size()) < 0) return;
}

std::string typedPassword(const std::string& user, const std::string& server) {
    const Descriptor terminal("/dev/tty", O_RDWR);
    if (terminal.number() < 0) {
        throw UsageError(std::string("there is no terminal to ask for the password; give --password-file, or ") +
                         PASSWORD_VARIABLE + " in the environment");
    }
    std::string password;
    {
        const SilentTerminal silence(terminal.number());
        say(terminal.number(), "Password of " + printable(user) + " at " + printable(server) + ": ");
        if (readLine(terminal.number(), password) < 0) password.clear();
        say(terminal.number(), "\n");
    }
    if (password.empty() || password.back() == SilentTerminal::INTERRUPT) throw UsageError("no password was typed");
    return password;
}

std::string passwordInFile(const std::string& file) {
    const std::string what = "the password file " + printable(file);
    const Descriptor descriptor(file.c_str(), O_RDONLY | O_NONBLOCK);
    struct stat status {};
    if (descriptor.number() < 0 || fstat(descriptor.number(), &status) != 0) {
        throw UsageError(what + " cannot be read (" + std::strerror(errno) + ')');
    }
    if (!S_ISREG(status.st_mode)) throw UsageError(what + " is not a regular file");
    if (status.st_uid != geteuid()) throw UsageError(what + " belongs to somebody else");
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw UsageError(what + " is open to others than its owner; chmod 600 closes it");
    }
    std::string password;
    if (readLine(descriptor.number(), password) < 0) {
        throw UsageError(what + " cannot be read (" + std::strerror(errno) + ')');
    }
    if (!password.empty() && password.back() == '\r') password.pop_back();
    if (password.empty()) throw UsageError(what + " has an empty first line");
    return password;
}

}  // namespace

std::string passwordOf(const std::string& user, const std::string& server, const std::string& file) {
    if (!file.empty()) return passwordInFile(file);
    const char* given = std::getenv(PASSWORD_VARIABLE);
    return given != nullptr ? given : typedPassword(user, server);
}

}  // namespace host
