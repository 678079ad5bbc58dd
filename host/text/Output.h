// Writing our own text, and what the other end can show. Not thread-safe.
#ifndef ZELSENSORS_TEXT_OUTPUT_H
#define ZELSENSORS_TEXT_OUTPUT_H

#include <cstddef>
#include <stdexcept>
#include <string_view>

#include "text/Charset.h"

namespace host {

// Our own output could not be written.
class OutputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Nobody reads it any more: the reader of a pipe has gone.
class ReaderGone : public OutputError {
  public:
    using OutputError::OutputError;
};

// Writes to a descriptor, which stays its owner's.
class Output {
  public:
    // Whoever reads it can show that charset.
    explicit Output(int descriptor, Charset charset = Charset::Utf8) : m_descriptor(descriptor), m_charset(charset) {}

    // What texts for people have to be made for.
    Charset charset() const { return m_charset; }
    int descriptor() const { return m_descriptor; }

    // Writes all of the text, as it is. Throws OutputError, and ReaderGone where SIGPIPE is ignored.
    void write(std::string_view text);

    // Throws ReaderGone where nobody reads a pipe or socket any more, without writing to it.
    void requireReader() const;

    bool isTerminal() const;
    // Whether colours are wanted: a terminal that knows them, and no NO_COLOR in the environment.
    bool takesColour() const;

    struct Size {
        std::size_t columns;
        std::size_t lines;
    };
    // The terminal's; zeros where it is not known.
    Size size() const;

  private:
    int m_descriptor;
    Charset m_charset;
};

}  // namespace host

#endif
