// Takes the fuzzer's bytes apart, from the front to the back, so that a change of one byte stays a small change and
// samples can be written by hand. At the end there are only zeros and empty texts.
#ifndef ZELSENSORS_FUZZ_INPUT_H
#define ZELSENSORS_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>

class Input {
  public:
    // The bytes stay the caller's and must outlive this object.
    Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool isEmpty() const { return m_next == m_end; }
    std::uint8_t byte() { return isEmpty() ? std::uint8_t{0} : *m_next++; }
    // Little-endian.
    std::uint16_t number16() {
        const unsigned low = byte();
        return static_cast<std::uint16_t>(low | static_cast<unsigned>(byte()) << 8);
    }
    std::uint32_t number32() {
        const std::uint32_t low = number16();
        return low | static_cast<std::uint32_t>(number16()) << 16;
    }
    bool flag() { return (byte() & 1) != 0; }
    // From 0 to `count` - 1.
    unsigned choice(unsigned count) { return byte() % count; }

    // A byte with the length, then the text.
    std::string text() {
        std::string taken;
        for (unsigned left = byte(); left > 0 && !isEmpty(); --left) taken += static_cast<char>(byte());
        return taken;
    }
    // A text, and a byte: how often it is repeated. Lengths of tens of thousands are thus within reach of a short
    // input.
    std::string longText() {
        const std::string unit = text();
        std::string taken;
        for (unsigned left = byte(); left > 0; --left) taken += unit;
        return taken + text();
    }

  private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

#endif
