// Aligned columns of text.
#ifndef ZELSENSORS_TEXT_TEXTTABLE_H
#define ZELSENSORS_TEXT_TEXTTABLE_H

#include <string>
#include <vector>

#include "text/Charset.h"

namespace host {

enum class Align { Left, Right };

// Rows of text in columns as wide as their widest cell as the charset shows it, two blanks apart.
class TextTable {
  public:
    struct Column {
        std::string title;
        Align align = Align::Left;
    };
    TextTable(std::vector<Column> columns, Charset charset);

    // As many cells as there are columns. The text must be fit for a terminal (see printable()).
    void add(std::vector<std::string> cells);

    // The titles first; no blanks and no newline at the end of a line.
    std::vector<std::string> lines() const;
    // The lines, each with a newline.
    std::string text() const;

  private:
    std::vector<Column> m_columns;
    Charset m_charset;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace host

#endif
