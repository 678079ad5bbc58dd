#include "MetricsReader.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <set>
#include <stdexcept>

namespace {

bool isLetter(char sign) {
    return (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z') || sign == '_';
}

bool isDigit(char sign) {
    return sign >= '0' && sign <= '9';
}

// How many bytes follow the first of a character; -1 where none may begin so.
int followers(unsigned char first) {
    if (first < 0x80) return 0;
    if (first >= 0xc2 && first <= 0xdf) return 1;
    if (first >= 0xe0 && first <= 0xef) return 2;
    return first >= 0xf0 && first <= 0xf4 ? 3 : -1;
}

// Overlong forms, surrogates and what lies beyond U+10FFFF.
bool isForbidden(unsigned char first, unsigned char second) {
    return (first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) || (first == 0xf0 && second < 0x90) ||
           (first == 0xf4 && second > 0x8f);
}

bool isUtf8(const std::string& text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i++]);
        const int count = followers(first);
        if (count < 0) return false;
        if (count > 0 && i < text.size() && isForbidden(first, static_cast<unsigned char>(text[i]))) return false;
        for (int k = 0; k < count; ++k, ++i) {
            if (i >= text.size() || (static_cast<unsigned char>(text[i]) & 0xc0U) != 0x80) return false;
        }
    }
    return true;
}

bool hasControl(const std::string& text) {
    for (const char sign : text) {
        if (static_cast<unsigned char>(sign) < 0x20 || sign == 0x7f) return true;
    }
    return false;
}

// One line, taken apart from the front.
class Line {
  public:
    Line(std::string text, std::size_t number) : m_text(std::move(text)), m_number(number) {
        require(isUtf8(m_text), "the line is UTF-8");
        require(!hasControl(m_text), "the line has no control characters");
    }

    void require(bool holds, const std::string& what) const {
        if (!holds) throw std::runtime_error("line " + std::to_string(m_number) + ": it does not hold that " + what);
    }
    bool takes(const std::string& text) {
        if (m_text.compare(m_next, text.size(), text) != 0) return false;
        m_next += text.size();
        return true;
    }
    void take(const std::string& text) { require(takes(text), "'" + text + "' comes next"); }
    std::string name(bool hasColon) {
        const std::size_t begin = m_next;
        while (m_next < m_text.size() && (isLetter(m_text[m_next]) || (hasColon && m_text[m_next] == ':') ||
                                          (m_next > begin && isDigit(m_text[m_next])))) {
            ++m_next;
        }
        require(m_next > begin, "a name comes next");
        return m_text.substr(begin, m_next - begin);
    }
    std::string quoted() {
        take("\"");
        std::string text;
        while (!takes("\"")) {
            require(m_next < m_text.size(), "the text has an end");
            const char sign = m_text[m_next++];
            text += sign == '\\' ? unescaped() : sign;
        }
        return text;
    }
    std::string rest() { return m_text.substr(m_next); }

  private:
    char unescaped() {
        if (takes("n")) return '\n';
        if (takes("\"")) return '"';
        take("\\");
        return '\\';
    }

    std::string m_text;
    std::size_t m_number;
    std::size_t m_next = 0;
};

MetricsSample readSample(Line& line) {
    MetricsSample sample;
    sample.family = line.name(true);
    if (line.takes("{")) {
        do {
            const std::string label = line.name(false);
            line.take("=");
            line.require(sample.labels.emplace(label, line.quoted()).second, "a label stands once in a sample");
        } while (line.takes(","));
        line.take("}");
    }
    line.take(" ");
    sample.value = line.rest();
    const char* end = sample.value.data() + sample.value.size();
    const auto result = std::from_chars(sample.value.data(), end, sample.number);
    line.require(result.ec == std::errc() && result.ptr == end && std::isfinite(sample.number),
                 "the value is a number");
    return sample;
}

MetricsFamily readHead(Line& help, Line type) {
    MetricsFamily family;
    help.take("# HELP ");
    family.name = help.name(true);
    help.take(" ");
    family.help = help.rest();
    help.require(!family.help.empty() && family.help.find('\\') == std::string::npos, "the help has words alone");
    type.take("# TYPE " + family.name + " ");
    family.type = type.rest();
    type.require(family.type == "gauge" || family.type == "counter", "the type is one of ours");
    const std::string total = "_total";
    const bool hasTotal = family.name.size() > total.size() &&
                          family.name.compare(family.name.size() - total.size(), total.size(), total) == 0;
    type.require(hasTotal == (family.type == "counter"), "a counter, and it alone, is named a total");
    return family;
}

std::vector<Line> linesOf(const std::string& page) {
    if (page.empty() || page.back() != '\n') throw std::runtime_error("the page does not end with a line");
    std::vector<Line> lines;
    for (std::size_t begin = 0; begin < page.size();) {
        const std::size_t end = page.find('\n', begin);
        lines.emplace_back(page.substr(begin, end - begin), lines.size() + 1);
        begin = end + 1;
    }
    return lines;
}

}  // namespace

std::vector<MetricsFamily> readMetrics(const std::string& page) {
    std::vector<MetricsFamily> families;
    std::set<std::string> names;
    std::vector<Line> lines = linesOf(page);
    for (std::size_t i = 0; i < lines.size();) {
        lines[i].require(i + 2 < lines.size(), "a family has a HELP line, a TYPE line and a sample");
        MetricsFamily family = readHead(lines[i], lines[i + 1]);
        lines[i].require(names.insert(family.name).second, "a family stands once in a page");
        std::set<std::map<std::string, std::string>> series;
        for (i += 2; i < lines.size() && lines[i].rest().rfind("# ", 0) != 0; ++i) {
            family.samples.push_back(readSample(lines[i]));
            lines[i].require(family.samples.back().family == family.name, "a sample stands in its family");
            lines[i].require(series.insert(family.samples.back().labels).second, "a series stands once in a page");
        }
        lines[i - 1].require(!family.samples.empty(), "a family has a sample");
        families.push_back(std::move(family));
    }
    return families;
}

MetricsSample sampleIn(const std::vector<MetricsFamily>& families, const std::string& name,
                       const std::map<std::string, std::string>& labels) {
    for (const MetricsFamily& family : families) {
        for (const MetricsSample& sample : family.samples) {
            if (family.name == name && sample.labels == labels) return sample;
        }
    }
    return {};
}
