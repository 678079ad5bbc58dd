#include "cli/KeyReader.h"

#include <optional>

namespace host {
namespace {

constexpr char ESCAPE = '\x1b';
constexpr std::size_t LONGEST_SEQUENCE = 32;  // no terminal sends a longer one for a key

bool isFinal(char c) {
    return c >= 0x40 && c <= 0x7e;
}

// Whether all of the sequence has come: ESC and a character, or ESC [ or ESC O up to the final character.
bool isComplete(const std::string& sequence) {
    if (sequence.size() < 2) return false;
    if (sequence[1] != '[' && sequence[1] != 'O') return true;
    return (sequence.size() > 2 && isFinal(sequence.back())) || sequence.size() >= LONGEST_SEQUENCE;
}

std::optional<Key> numbered(const std::string& parameters) {
    const std::string number = parameters.substr(0, parameters.find(';'));
    if (number == "1" || number == "7") return Key::Home;
    if (number == "4" || number == "8") return Key::End;
    if (number == "5") return Key::PageUp;
    if (number == "6") return Key::PageDown;
    return std::nullopt;
}

// Parameters say which modifier is held; it changes nothing.
std::optional<Key> keyOf(const std::string& sequence) {
    if (sequence.size() < 3) return std::nullopt;
    switch (sequence.back()) {
        case 'A':
            return Key::Up;
        case 'B':
            return Key::Down;
        case 'H':
            return Key::Home;
        case 'F':
            return Key::End;
        case '~':
            return numbered(sequence.substr(2, sequence.size() - 3));
        default:
            return std::nullopt;
    }
}

}  // namespace

std::vector<Key> KeyReader::keysIn(std::string_view bytes) {
    std::vector<Key> keys;
    for (const char c : bytes) {
        if (c == ESCAPE) {
            m_pending = c;  // also where a sequence broke off
        } else if (m_pending.empty()) {
            if (c == 'q') keys.push_back(Key::Quit);
        } else {
            m_pending += c;
            if (!isComplete(m_pending)) continue;
            // The escape key by itself, and then another key.
            if (m_pending == "\x1bq") keys.push_back(Key::Quit);
            if (const std::optional<Key> key = keyOf(m_pending)) keys.push_back(*key);
            m_pending.clear();
        }
    }
    return keys;
}

}  // namespace host
