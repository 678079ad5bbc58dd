// The chip library that answers a provider which is loaded here.
#ifndef ZELSENSORS_SOURCE_CHIPLIBRARY_H
#define ZELSENSORS_SOURCE_CHIPLIBRARY_H

#include <string>
#include <vector>

#include "source/Finding.h"

namespace host {

// What the terminal's chip library is called; the loader searches for it under this name.
constexpr const char* CHIP_LIBRARY = "libzelchip.so.0";

struct ChipChoice {
    std::string path = CHIP_LIBRARY;  // as dlopen takes it
    std::string substitute;           // a path: taken where the loader finds no `path`; empty: none
    bool isRequired = false;          // otherwise a provider is loaded without one, which may need none
};

// What the loader finds under that name.
struct FoundLibrary {
    std::string path;   // empty: none, or none that can be loaded
    std::string error;  // why the one that there is cannot be loaded; empty where it can, or there is none
};

// Asks the loader in a child process: a library that was loaded once may stay, and would serve whatever is loaded
// afterwards. Before the first thread. Throws std::system_error where there can be no child.
FoundLibrary findSystemChipLibrary();

// Loaded before the provider: a library that needs libzelchip.so.0 gets the one that is there already.
class ChipLibrary {
  public:
    // Throws broker::LoadError.
    explicit ChipLibrary(const ChipChoice& choice);
    ~ChipLibrary();
    ChipLibrary(const ChipLibrary&) = delete;
    ChipLibrary& operator=(const ChipLibrary&) = delete;

    // What the library says of itself, wherever it lies.
    bool isSimulated() const;
    // What the library tells of itself and the machine; nothing where it has no such function, as a terminal's own has
    // none.
    std::vector<Finding> diagnosis() const;
    bool isSubstitute() const { return m_isSubstitute; }
    // The file that was loaded; empty where there is none.
    std::string path() const;

  private:
    void* m_handle = nullptr;
    bool m_isSubstitute = false;
};

}  // namespace host

#endif
