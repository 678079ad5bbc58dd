// Which characters the reader of our texts can show.
#ifndef ZELSENSORS_TEXT_CHARSET_H
#define ZELSENSORS_TEXT_CHARSET_H

#include <string>
#include <string_view>

namespace host {

enum class Charset { Utf8, Ascii };

// What LC_ALL, LC_CTYPE and LANG say; ASCII for every charset but UTF-8. A locale that is not installed counts by its
// name. The locale of the process stays as it is: the provider shares it.
Charset charsetOfEnvironment();

// Text that is fit for a terminal (see printable()), as this charset can show it. In ASCII the signs of units have
// substitutes, such as "deg" for the degree sign; each byte of other characters becomes \xNN.
std::string shownIn(Charset charset, std::string_view text);

}  // namespace host

#endif
