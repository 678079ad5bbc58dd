// A terminal that is drawn upon, and its keys.
#ifndef ZELSENSORS_CLI_SCREEN_H
#define ZELSENSORS_CLI_SCREEN_H

#include <termios.h>

#include <string>

#include "text/Output.h"

namespace host {

// While it lives, the terminal has no cursor and wraps no lines. If standard input is a terminal too, and ours to read
// (not in a job in the background), its keys come at once and are not shown; Ctrl-C and the like still send their
// signals. At the end all is as it was, also where a signal ends the process that dumps core (an abort, a crash in a
// provider, Ctrl-\); other signals are the caller's matter. One at a time.
class Screen {
  public:
    // Clears the terminal. Throws OutputError.
    explicit Screen(Output& output);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // Gives the terminal back, and takes it again: for somebody else's turn, such as a shell's while we are stopped.
    void leave();
    void enter();

    // The descriptor to read keys from; -1 for none.
    int keys() const { return m_readsKeys ? m_input : -1; }
    // What keys() gives is no longer of use: the terminal has gone.
    void endKeys() { m_readsKeys = false; }

  private:
    void takeKeys();

    Output& m_output;
    int m_input;
    termios m_before{};
    bool m_isInputKnown;  // m_before is what it was
    bool m_readsKeys = false;
};

}  // namespace host

#endif
