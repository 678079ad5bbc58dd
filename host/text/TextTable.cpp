#include "text/TextTable.h"

#include <algorithm>
#include <utility>

#include "text/Utf8.h"

namespace host {

TextTable::TextTable(std::vector<Column> columns, Charset charset) : m_columns(std::move(columns)), m_charset(charset) {
    std::vector<std::string> titles;
    titles.reserve(m_columns.size());
    for (const Column& column : m_columns) titles.push_back(column.title);
    add(std::move(titles));
}

void TextTable::add(std::vector<std::string> cells) {
    for (std::string& cell : cells) cell = shownIn(m_charset, cell);
    m_rows.push_back(std::move(cells));
}

std::vector<std::string> TextTable::lines() const {
    std::vector<std::size_t> widths(m_columns.size(), 0);
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], columnsOf(row.at(i)));
    }
    std::vector<std::string> lines;
    lines.reserve(m_rows.size());
    for (const auto& row : m_rows) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::string padding(widths[i] - columnsOf(row[i]), ' ');
            if (i > 0) line += "  ";
            line += m_columns[i].align == Align::Right ? padding + row[i] : row[i] + padding;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(std::move(line));
    }
    return lines;
}

std::string TextTable::text() const {
    std::string text;
    for (const std::string& line : lines()) text += line + '\n';
    return text;
}

}  // namespace host
