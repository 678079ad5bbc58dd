#ifndef ZELSENSORS_TEXT_OUTPUT_H
#define ZELSENSORS_TEXT_OUTPUT_H

#include <cstddef>
#include <string_view>

#include "text/Charset.h"

namespace host {

// Writes to a descriptor, which stays its owner's.
class Output {
  public:
    // Whoever reads it can show that charset.
    explicit Output(int descriptor, Charset charset = Charset::Utf8) : m_descriptor(descriptor), m_charset(charset) {}

    // What texts for people have to be made for.
    Charset charset() const { return m_charset; }

    // Writes all of the text, as it is. Throws OutputError, and ReaderGone where SIGPIPE is ignored.
    void write(std::string_view text);

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
