// TOML written with ASCII characters alone.
#ifndef ZELSENSORS_CHIPSIM_ASCIITOML_H
#define ZELSENSORS_CHIPSIM_ASCIITOML_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

// Why a text cannot be written so, and on which line.
class NotToml : public std::runtime_error {
  public:
    NotToml(std::uint64_t line, const std::string& what) : std::runtime_error(what), m_line(line) {}
    std::uint64_t line() const { return m_line; }

  private:
    std::uint64_t m_line;
};

// The same TOML: other characters are written as \u escapes in texts and as "?" in comments. Each line stays where it
// was. What is TOML keeps its meaning, what is none stays none. Throws NotToml for bytes that are not valid UTF-8 and
// for other characters where TOML has no place for them.
std::string asciiToml(std::string_view text);

#endif
