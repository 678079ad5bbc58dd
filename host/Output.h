#ifndef ZELSENSORS_HOST_OUTPUT_H
#define ZELSENSORS_HOST_OUTPUT_H

#include <cstddef>
#include <string_view>

namespace host {

// Writes to a descriptor, which stays its owner's.
class Output {
  public:
    explicit Output(int descriptor) : m_descriptor(descriptor) {}

    // Writes all of the text. Throws OutputError, and ReaderGone where SIGPIPE is ignored.
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
};

}  // namespace host

#endif
