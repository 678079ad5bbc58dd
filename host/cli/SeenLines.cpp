#include "cli/SeenLines.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

#include "cli/Failure.h"

namespace host {
namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view TITLE = "zelhost log state 1: ";
constexpr std::string_view TITLE_END = " lines";

std::string escapedLine(const std::string& line) {
    std::string text;
    for (const char byte : line) {
        if (byte == '\n') {
            text += "\\n";
        } else if (byte == '\\') {
            text += "\\\\";
        } else {
            text += byte;
        }
    }
    return text;
}

std::string unescapedLine(std::string_view text) {
    std::string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '\\' && i + 1 < text.size();
        if (isEscape) ++i;
        line += isEscape && text[i] == 'n' ? '\n' : text[i];
    }
    return line;
}

// Those that end with a line feed.
std::vector<std::string_view> wholeLines(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    return lines;
}

std::optional<std::size_t> countIn(std::string_view title) {
    if (title.size() < TITLE.size() + TITLE_END.size()) return std::nullopt;
    const std::string_view number = title.substr(TITLE.size(), title.size() - TITLE.size() - TITLE_END.size());
    std::size_t count = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), count);
    const bool isNumber = result.ec == std::errc() && result.ptr == number.data() + number.size();
    if (!isNumber || title.substr(title.size() - TITLE_END.size()) != TITLE_END) return std::nullopt;
    return count;
}

// Or the beginning of one.
bool isOurs(std::string_view text) {
    const std::size_t length = std::min(text.size(), TITLE.size());
    return text.substr(0, length) == TITLE.substr(0, length);
}

std::string quotedBeginning(const std::string& text) {
    return "'" + text.substr(0, std::min<std::size_t>(text.find('\n'), 40)) + "'";
}

SeenLines::Kept keptIn(const std::string& text, const std::string& path) {
    const std::vector<std::string_view> lines = wholeLines(text);
    const std::optional<std::size_t> count = lines.empty() ? std::nullopt : countIn(lines.front());
    if (!count) return {std::nullopt, path + ":1: the title is cut short"};
    if (lines.size() - 1 != *count || text.back() != '\n') {
        return {std::nullopt, path + ":1: " + std::to_string(*count) + " lines are announced, and " +
                                  std::to_string(lines.size() - 1) + " whole ones are there"};
    }
    Lines kept;
    std::transform(lines.begin() + 1, lines.end(), std::back_inserter(kept), unescapedLine);
    return {kept, ""};
}

UsageError unreadable(const std::string& path, const std::string& reason) {
    return UsageError("--state: " + path + " cannot be read: " + reason);
}

}  // namespace

SeenLines::Kept SeenLines::read() const {
    struct stat status {};
    if (lstat(m_path.c_str(), &status) != 0) {
        if (errno == ENOENT) return {};
        throw unreadable(m_path, std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) throw unreadable(m_path, "it is no regular file");
    std::ifstream file(m_path, std::ios::binary);
    if (!file) throw unreadable(m_path, std::strerror(errno));
    // Somebody else's file may be of any size.
    std::string text(TITLE.size(), '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (!isOurs(text)) {
        throw UsageError("--state: " + m_path + ":1: " + quotedBeginning(text) + " begins no state of log --follow (" +
                         std::string(TITLE) + "...); the file stays as it is");
    }
    text.append(std::istreambuf_iterator<char>(file), {});
    if (file.bad()) throw unreadable(m_path, std::strerror(errno));
    return text.empty() ? Kept() : keptIn(text, m_path);
}

void SeenLines::write(const std::vector<std::string>& lines) const {
    std::string text = std::string(TITLE) + std::to_string(lines.size()) + std::string(TITLE_END) + '\n';
    for (const std::string& line : lines) text += escapedLine(line) + '\n';
    m_file.replace(text);
}

}  // namespace host
