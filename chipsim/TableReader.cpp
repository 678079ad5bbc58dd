#include "TableReader.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "AsciiToml.h"
#include "ScenarioError.h"
#include "Toml.h"

namespace {

constexpr Range ANY_CODE = {0, 65535};

std::string joined(const std::vector<std::string_view>& words) {
    std::string text;
    for (const std::string_view word : words) text.append(text.empty() ? "" : ", ").append(word);
    return text;
}

std::string wordList(const WordList& words) {
    std::vector<std::string_view> list;
    for (const Word& word : words) list.push_back(word.word);
    return joined(list);
}

std::optional<int> numberOf(const WordList& words, std::string_view text) {
    const auto found = std::find_if(words.begin(), words.end(), [&](const Word& word) { return word.word == text; });
    return found == words.end() ? std::nullopt : std::optional<int>(found->number);
}

const char* typeName(const toml::node& node) {
    switch (node.type()) {
        case toml::node_type::table:
            return "a table";
        case toml::node_type::array:
            return "an array";
        case toml::node_type::string:
            return "a string";
        case toml::node_type::integer:
            return "an integer";
        case toml::node_type::floating_point:
            return "a floating-point number";
        case toml::node_type::boolean:
            return "a boolean";
        default:
            return "a date or time";
    }
}

[[noreturn]] void fail(std::string_view file, std::uint64_t line, const std::string& wrong,
                       const std::string& expected) {
    std::string message(file);
    message += ':' + std::to_string(line) + ": " + wrong + ", expected " + expected;
    // A quoted key may hold any character, but the message is one line.
    std::replace_if(
        message.begin(), message.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
    throw Mistake(line, message);
}

struct File {
    std::string name;
    toml::table root;
    std::vector<Mistake> mistakes;
};

File parsed(std::string_view text, const std::string& name) {
    try {
        return {name, toml::parse(asciiToml(text), std::string_view(name)), {}};
    } catch (const NotToml& error) {
        fail(name, error.line(), error.what(), "valid TOML");
    } catch (const toml::parse_error& error) {
        fail(name, error.source().begin.line, std::string(error.description()), "valid TOML");
    }
}

}  // namespace

struct TableReader::Table {
    std::shared_ptr<File> file;
    const toml::table& nodes;
    std::string where;

    const toml::node& at(std::string_view key) const { return *nodes.get(key); }
    const toml::node& required(std::string_view key, const std::string& expected) const;
    std::int64_t numberIn(std::string_view key, const toml::node& node, const Range& range,
                          const std::string& expected) const;

    std::string inWords(std::string_view key) const { return "'" + std::string(key) + "' in " + where; }
    [[noreturn]] void wrong(std::string_view key, const std::string& what, const std::string& expected) const;
    [[noreturn]] void wrongType(std::string_view key, const std::string& expected) const;
    [[noreturn]] void wrongElement(std::string_view key, const toml::node& element, const std::string& expected) const;
};

const toml::node& TableReader::Table::required(std::string_view key, const std::string& expected) const {
    const toml::node* node = nodes.get(key);
    if (node == nullptr) {
        fail(file->name, std::max<std::uint64_t>(nodes.source().begin.line, 1),
             "'" + std::string(key) + "' is missing in " + where, expected);
    }
    return *node;
}

std::int64_t TableReader::Table::numberIn(std::string_view key, const toml::node& node, const Range& range,
                                          const std::string& expected) const {
    const bool isElement = &node != nodes.get(key);
    const std::string subject = (isElement ? "an element of " : "") + inWords(key) + " is ";
    const std::uint64_t line = node.source().begin.line;
    const auto* value = node.as_integer();
    if (value == nullptr) fail(file->name, line, subject + typeName(node), expected);
    if (value->get() < range.lowest || value->get() > range.highest) {
        fail(file->name, line, subject + std::to_string(value->get()), expected);
    }
    return value->get();
}

void TableReader::Table::wrong(std::string_view key, const std::string& what, const std::string& expected) const {
    fail(file->name, at(key).source().begin.line, inWords(key) + " is " + what, expected);
}

void TableReader::Table::wrongType(std::string_view key, const std::string& expected) const {
    wrong(key, typeName(at(key)), expected);
}

void TableReader::Table::wrongElement(std::string_view key, const toml::node& element,
                                      const std::string& expected) const {
    fail(file->name, element.source().begin.line, "an element of " + inWords(key) + " is " + typeName(element),
         expected);
}

std::string describe(const Range& range) {
    return "an integer from " + std::to_string(range.lowest) + " to " + std::to_string(range.highest);
}

TableReader::TableReader(std::shared_ptr<const Table> table) : m_table(std::move(table)) {}

TableReader TableReader::ofFile(std::string_view text, const std::string& name) {
    try {
        const auto file = std::make_shared<File>(parsed(text, name));
        return TableReader(std::make_shared<const Table>(Table{file, file->root, "the file"}));
    } catch (const Mistake& mistake) {
        throw ScenarioError(mistake.what());
    }
}

bool TableReader::collect(const std::function<void()>& reading) const {
    try {
        reading();
        return true;
    } catch (const Mistake& mistake) {
        m_table->file->mistakes.push_back(mistake);
        return false;
    }
}

bool TableReader::hasMistakes() const {
    return !m_table->file->mistakes.empty();
}

void TableReader::throwMistakes() const {
    std::vector<Mistake>& mistakes = m_table->file->mistakes;
    if (mistakes.empty()) return;
    std::stable_sort(mistakes.begin(), mistakes.end(),
                     [](const Mistake& left, const Mistake& right) { return left.line() < right.line(); });
    std::string text;
    for (const Mistake& mistake : mistakes) text.append(text.empty() ? "" : "\n").append(mistake.what());
    throw ScenarioError(text);
}

void TableReader::allowOnly(const std::vector<std::string_view>& keys) const {
    for (const auto& [name, node] : m_table->nodes) {
        if (std::find(keys.begin(), keys.end(), name.str()) != keys.end()) continue;
        const toml::key& key = name;
        collect([&] {
            fail(m_table->file->name, key.source().begin.line,
                 "unknown key '" + std::string(key.str()) + "' in " + m_table->where, "one of " + joined(keys));
        });
    }
}

bool TableReader::has(std::string_view key) const {
    return m_table->nodes.contains(key);
}

void TableReader::wrong(std::string_view key, const std::string& what, const std::string& expected) const {
    m_table->wrong(key, what, expected);
}

std::int64_t TableReader::number(std::string_view key, const Range& range) const {
    return m_table->numberIn(key, m_table->required(key, describe(range)), range, describe(range));
}

std::int64_t TableReader::number(std::string_view key, const Range& range, std::int64_t otherwise) const {
    return has(key) ? number(key, range) : otherwise;
}

int TableReader::integer(std::string_view key) const {
    return static_cast<int>(number(key, ANY_INT));
}

int TableReader::integer(std::string_view key, int otherwise) const {
    return has(key) ? integer(key) : otherwise;
}

std::vector<int> TableReader::integers(std::string_view key) const {
    std::vector<int> values;
    const std::string expected = "an array of integers, not empty";
    const toml::array* array = m_table->required(key, expected).as_array();
    if (array == nullptr) m_table->wrongType(key, expected);
    if (array->empty()) wrong(key, "empty", expected);
    const std::string expectedElements = "an array whose elements are " + describe(ANY_INT);
    for (const toml::node& element : *array) {
        values.push_back(static_cast<int>(m_table->numberIn(key, element, ANY_INT, expectedElements)));
    }
    return values;
}

bool TableReader::boolean(std::string_view key, bool otherwise) const {
    if (!has(key)) return otherwise;
    const auto* value = m_table->at(key).as_boolean();
    if (value == nullptr) m_table->wrongType(key, "true or false");
    return value->get();
}

std::string TableReader::text(std::string_view key) const {
    const auto* value = m_table->required(key, "a string").as_string();
    if (value == nullptr) m_table->wrongType(key, "a string");
    return value->get();
}

std::vector<std::string> TableReader::texts(std::string_view key) const {
    std::vector<std::string> values;
    if (!has(key)) return values;
    const toml::array* array = m_table->at(key).as_array();
    if (array == nullptr) m_table->wrongType(key, "an array of strings");
    for (const toml::node& element : *array) {
        const auto* value = element.as_string();
        if (value == nullptr) m_table->wrongElement(key, element, "an array of strings");
        values.push_back(value->get());
    }
    return values;
}

int TableReader::word(std::string_view key, const WordList& words) const {
    const std::string expected = "one of " + wordList(words);
    const auto* value = m_table->required(key, expected).as_string();
    if (value == nullptr) m_table->wrongType(key, expected);
    const auto found = numberOf(words, value->get());
    if (!found) wrong(key, '"' + value->get() + '"', expected);
    return *found;
}

int TableReader::word(std::string_view key, const WordList& words, int otherwise) const {
    return has(key) ? word(key, words) : otherwise;
}

unsigned short TableReader::code(std::string_view key, const WordList& words) const {
    if (!has(key)) return 0;
    const toml::node& node = m_table->at(key);
    const std::string expected = describe(ANY_CODE) + " or one of " + wordList(words);
    if (!node.is_string()) return static_cast<unsigned short>(m_table->numberIn(key, node, ANY_CODE, expected));
    const std::string& value = node.as_string()->get();
    const auto found = numberOf(words, value);
    if (!found) wrong(key, '"' + value + '"', expected);
    return static_cast<unsigned short>(*found);
}

std::vector<TableReader> TableReader::tables(std::string_view key) const {
    std::vector<TableReader> readers;
    if (!has(key)) return readers;
    const std::string header = "[[" + std::string(key) + "]]";
    const toml::array* array = m_table->at(key).as_array();
    if (array == nullptr) m_table->wrongType(key, header + " tables");
    for (const toml::node& element : *array) {
        const toml::table* nodes = element.as_table();
        if (nodes == nullptr) m_table->wrongElement(key, element, header + " tables");
        readers.push_back(TableReader(std::make_shared<const Table>(Table{m_table->file, *nodes, header})));
    }
    return readers;
}

TableReader TableReader::table(std::string_view key, const std::string& where, const std::string& expected) const {
    const toml::table* nodes = m_table->required(key, expected).as_table();
    if (nodes == nullptr) m_table->wrongType(key, expected);
    return TableReader(std::make_shared<const Table>(Table{m_table->file, *nodes, where}));
}

bool TableReader::holdsInteger(std::string_view key) const {
    return has(key) && m_table->at(key).is_integer();
}

std::uint64_t TableReader::lineOf(std::string_view key) const {
    return m_table->at(key).source().begin.line;
}
