#include "EmulatedTerminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace {

constexpr const char* END_OF_PICTURE = "\x1b[J";

void appendUtf8(std::string& text, char32_t c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xc0 | (c >> 6));
        text += static_cast<char>(0x80 | (c & 0x3f));
    } else {
        text += static_cast<char>(0xe0 | (c >> 12));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3f));
        text += static_cast<char>(0x80 | (c & 0x3f));
    }
}

}  // namespace

// The instance's own multiplexer: /dev/ptmx does not find its directory when it is bound into another /dev.
EmulatedTerminal::EmulatedTerminal(int columns, int lines)
    : m_own(open("/dev/pts/ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC)),
      m_columns(columns),
      m_rows(lines),
      m_terminal(vterm_new(lines, columns)),
      m_screen(vterm_obtain_screen(m_terminal.get())) {
    vterm_set_utf8(m_terminal.get(), 1);
    vterm_screen_reset(m_screen, 1);
    if (m_own < 0 || grantpt(m_own) != 0 || unlockpt(m_own) != 0) return;
    m_programs = open(ptsname(m_own), O_RDWR | O_NOCTTY | O_CLOEXEC);
    resize(columns, lines);
}

EmulatedTerminal::~EmulatedTerminal() {
    if (m_programs >= 0) close(m_programs);
    if (m_own >= 0) close(m_own);
}

termios EmulatedTerminal::settings() const {
    termios settings{};
    tcgetattr(m_programs, &settings);
    return settings;
}

void EmulatedTerminal::resize(int columns, int lines) {
    m_columns = columns;
    m_rows = lines;
    vterm_set_size(m_terminal.get(), lines, columns);
    const winsize size{static_cast<unsigned short>(lines), static_cast<unsigned short>(columns), 0, 0};
    ioctl(m_own, TIOCSWINSZ, &size);
}

void EmulatedTerminal::type(const std::string& keys) {
    if (write(m_own, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
        throw std::runtime_error("the terminal does not take the keys");
    }
}

bool EmulatedTerminal::readSome() {
    char block[4096];
    const ssize_t count = read(m_own, block, sizeof block);
    if (count <= 0) return false;
    const std::string text(block, static_cast<std::size_t>(count));
    vterm_input_write(m_terminal.get(), text.data(), text.size());
    m_unfinished += text;
    const std::size_t shown = m_unfinished.rfind("\x1b[?25h");
    const std::size_t hidden = m_unfinished.rfind("\x1b[?25l");
    if (shown != hidden)
        m_isCursorVisible = hidden == std::string::npos || (shown != std::string::npos && shown > hidden);
    for (std::size_t end = m_unfinished.find(END_OF_PICTURE); end != std::string::npos;
         end = m_unfinished.find(END_OF_PICTURE)) {
        m_unfinished.erase(0, end + 1);
        ++m_pictures;
    }
    return true;
}

void EmulatedTerminal::awaitPictures(unsigned count) {
    while (m_pictures < count) {
        if (!readSome()) throw std::runtime_error("the program is gone");
    }
    m_pictures -= count;
}

void EmulatedTerminal::awaitText(const std::string& text) {
    while (!contains(text)) {
        if (!readSome()) throw std::runtime_error("the program is gone");
    }
}

void EmulatedTerminal::readRest() {
    fcntl(m_own, F_SETFL, O_NONBLOCK);
    while (readSome()) continue;
    fcntl(m_own, F_SETFL, 0);
    m_pictures = 0;
}

std::string EmulatedTerminal::line(int row) const {
    std::string text;
    for (int column = 0; column < m_columns; ++column) {
        VTermScreenCell cell{};
        vterm_screen_get_cell(m_screen, {row, column}, &cell);
        appendUtf8(text, cell.chars[0] == 0 || cell.width == 0 ? U' ' : static_cast<char32_t>(cell.chars[0]));
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::vector<std::string> EmulatedTerminal::lines() const {
    std::vector<std::string> all;
    for (int row = 0; row < m_rows; ++row) all.push_back(line(row));
    return all;
}

bool EmulatedTerminal::contains(const std::string& text) const {
    const std::vector<std::string> all = lines();
    return std::any_of(all.begin(), all.end(),
                       [&text](const std::string& line) { return line.find(text) != std::string::npos; });
}
