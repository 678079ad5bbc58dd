// The file in which `log --follow` keeps the lines that it has seen, for its next start.
#ifndef ZELSENSORS_CLI_SEENLINES_H
#define ZELSENSORS_CLI_SEENLINES_H

#include <optional>
#include <string>
#include <vector>

#include "text/ReplacedFile.h"

namespace host {

// A text of lines: "zelhost log state 1: N lines", then each of the N lines with its bytes as they are, but a line feed
// as \n and a backslash as \\. Only one program may use it at a time.
class SeenLines {
  public:
    explicit SeenLines(const std::string& path) : m_path(path), m_file(path, ReplacedFile::Kind::Lasting) {}

    struct Kept {
        std::optional<std::vector<std::string>> lines;  // none: there is no such file yet, or it is empty or torn
        std::string complaint;                          // of a torn one: what is wrong with it
    };
    // Throws UsageError, which names the file, for one that cannot be read or that is something else: it stays as it
    // is.
    Kept read() const;

    // Replaces it; survives a failure of the power at any time. Throws OutputError, which names the file.
    void write(const std::vector<std::string>& lines) const;

  private:
    std::string m_path;
    ReplacedFile m_file;
};

}  // namespace host

#endif
