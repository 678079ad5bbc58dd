// What somebody presses on a terminal.
#ifndef ZELSENSORS_CLI_KEYREADER_H
#define ZELSENSORS_CLI_KEYREADER_H

#include <string>
#include <string_view>
#include <vector>

namespace host {

enum class Key { Up, Down, PageUp, PageDown, Home, End, Quit };

// Finds keys in what terminals send for them: the sequences of ECMA-48 terminals, of vt220 and of rxvt, in normal and
// application mode. Other keys are passed over.
class KeyReader {
  public:
    // The keys that these bytes complete; a sequence may come in pieces.
    std::vector<Key> keysIn(std::string_view bytes);

  private:
    std::string m_pending;  // the beginning of a sequence, from its escape character
};

}  // namespace host

#endif
