// Reads the tables of a TOML file strictly: an unknown key, a missing one, and a value of another type or out of range
// are mistakes, each reported with file and line, what is wrong, and what was expected. What reads a value throws the
// mistake; collect() takes it down, so that the rest of the file is read too.
#ifndef ZELSENSORS_CHIPSIM_TABLEREADER_H
#define ZELSENSORS_CHIPSIM_TABLEREADER_H

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Words.h"

struct Range {
    std::int64_t lowest;
    std::int64_t highest;
};

constexpr Range ANY_INT = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};

// One mistake of a file.
class Mistake : public std::runtime_error {
  public:
    Mistake(std::uint64_t line, const std::string& what) : std::runtime_error(what), m_line(line) {}
    std::uint64_t line() const { return m_line; }

  private:
    std::uint64_t m_line;
};

// "an integer from 0 to 255"
std::string describe(const Range& range);

// One table. Copies read the same one; each keeps the whole file, and the mistakes of all its tables. What reads throws
// Mistake.
class TableReader {
  public:
    // The file's root table. `name` is how messages call the file. Throws ScenarioError for what is no TOML.
    static TableReader ofFile(std::string_view text, const std::string& name);

    // Does the reading, and takes down the mistake that it throws; false then. For what can be judged by itself:
    // nothing that is read afterwards may rest on a value that the mistake has kept away.
    bool collect(const std::function<void()>& reading) const;
    // Of any of the file's tables, so far.
    bool hasMistakes() const;
    // Throws ScenarioError where mistakes have been taken down.
    void throwMistakes() const;

    // Takes down every key that is none of these.
    void allowOnly(const std::vector<std::string_view>& keys) const;
    bool has(std::string_view key) const;

    // For a rule of the caller's own: the message says that the key "is `what`".
    [[noreturn]] void wrong(std::string_view key, const std::string& what, const std::string& expected) const;

    // Those with `otherwise` give it where the key is missing.
    std::int64_t number(std::string_view key, const Range& range) const;
    std::int64_t number(std::string_view key, const Range& range, std::int64_t otherwise) const;
    int integer(std::string_view key) const;
    int integer(std::string_view key, int otherwise) const;
    std::vector<int> integers(std::string_view key) const;  // never empty
    bool boolean(std::string_view key, bool otherwise) const;
    std::string text(std::string_view key) const;
    std::vector<std::string> texts(std::string_view key) const;  // none where the key is missing

    // The number of one of the words.
    int word(std::string_view key, const WordList& words) const;
    int word(std::string_view key, const WordList& words, int otherwise) const;
    // A CIM code, as a number or a word; 0 where the key is missing.
    unsigned short code(std::string_view key, const WordList& words) const;

    // The tables of [[key]]; none where the key is missing.
    std::vector<TableReader> tables(std::string_view key) const;
    // `where` is how messages call that table.
    TableReader table(std::string_view key, const std::string& where, const std::string& expected) const;

    bool holdsInteger(std::string_view key) const;
    std::uint64_t lineOf(std::string_view key) const;  // the key must be there

  private:
    struct Table;  // the parser's types stay in the source file
    explicit TableReader(std::shared_ptr<const Table> table);

    std::shared_ptr<const Table> m_table;
};

#endif
