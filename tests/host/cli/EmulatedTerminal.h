// A pseudo-terminal, and what a person would see on it.
#ifndef ZELSENSORS_TESTS_HOST_EMULATEDTERMINAL_H
#define ZELSENSORS_TESTS_HOST_EMULATEDTERMINAL_H

#include <termios.h>
#include <vterm.h>

#include <memory>
#include <string>
#include <vector>

class EmulatedTerminal {
  public:
    EmulatedTerminal(int columns, int lines);
    ~EmulatedTerminal();
    EmulatedTerminal(const EmulatedTerminal&) = delete;
    EmulatedTerminal& operator=(const EmulatedTerminal&) = delete;

    // Otherwise no pseudo-terminal can be had here.
    bool isUsable() const { return m_programs >= 0; }
    // What the program's standard input and output are to be.
    int programs() const { return m_programs; }
    termios settings() const;

    // The kernel tells the program, which is to draw anew.
    void resize(int columns, int lines);
    void type(const std::string& keys);

    // Reads on until so many more pictures have been drawn completely.
    void awaitPictures(unsigned count);
    // Reads on until a line contains the text.
    void awaitText(const std::string& text);
    // What the program left behind that has ended.
    void readRest();

    // The lines as they are seen, without the blanks at their ends.
    std::vector<std::string> lines() const;
    bool contains(const std::string& text) const;
    bool isCursorVisible() const { return m_isCursorVisible; }

  private:
    struct Ending {
        void operator()(VTerm* terminal) const { vterm_free(terminal); }
    };
    bool readSome();
    std::string line(int row) const;

    int m_own;
    int m_programs = -1;
    int m_columns;
    int m_rows;
    std::unique_ptr<VTerm, Ending> m_terminal;
    VTermScreen* m_screen;
    std::string m_unfinished;  // since the last whole picture
    unsigned m_pictures = 0;   // drawn and not awaited yet
    bool m_isCursorVisible = true;
};

#endif
