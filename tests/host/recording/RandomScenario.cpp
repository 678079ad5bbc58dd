#include "RandomScenario.h"

#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <set>

namespace {

constexpr const char* NUMBERS[] = {"accuracy",
                                   "hysteresis",
                                   "max-readable",
                                   "min-readable",
                                   "nominal-reading",
                                   "resolution",
                                   "lower-threshold-non-critical",
                                   "lower-threshold-critical",
                                   "lower-threshold-fatal",
                                   "upper-threshold-non-critical",
                                   "upper-threshold-critical",
                                   "upper-threshold-fatal"};

class Maker {
  public:
    explicit Maker(unsigned seed) : m_random(seed) {}

    std::string scenario() {
        std::string text;
        for (std::int64_t count = number(0, 6); count > 0; --count) text += sensor();
        if (isChosen()) text += eventLog();
        if (isChosen() && !m_handles.empty()) text += failingRead();
        return text;
    }

  private:
    std::int64_t number(std::int64_t lowest, std::int64_t highest) {
        return std::uniform_int_distribution<std::int64_t>(lowest, highest)(m_random);
    }
    bool isChosen() { return number(0, 1) == 1; }

    // Not the lowest, which stands for a number that is not available.
    std::string anyInteger() {
        const bool isSmall = isChosen();
        return std::to_string(isSmall ? number(-300, 300)
                                      : number(std::numeric_limits<int>::min() + 1, std::numeric_limits<int>::max()));
    }

    // Any characters but NUL and surrogates, in TOML's notation.
    std::string anyText() {
        std::string text = "\"";
        for (std::int64_t length = number(0, 12); length > 0; --length) {
            static constexpr std::int64_t limits[] = {0x7f, 0xff, 0xd7ff, 0x10ffff};
            std::int64_t character = number(1, limits[number(0, 3)]);
            if (character >= 0xd800 && character <= 0xdfff) character = '?';
            char code[16];
            std::snprintf(code, sizeof code, "\\U%08llx", static_cast<unsigned long long>(character));
            text += code;
        }
        return text + '"';
    }

    std::string sensor() {
        const std::int64_t handle = isChosen() ? number(0, 20) : number(0, std::numeric_limits<std::uint32_t>::max());
        if (!m_handles.insert(handle).second) return "";
        std::string text = "[[sensor]]\nhandle = " + std::to_string(handle) + "\nname = " + anyText() + '\n';
        text += "reading = " + reading() + '\n';
        if (isChosen()) text += "sensor-type = " + std::to_string(number(0, isChosen() ? 12 : 65535)) + '\n';
        if (isChosen()) text += "other-sensor-type-description = " + anyText() + '\n';
        if (isChosen()) text += "base-units = " + std::to_string(number(0, isChosen() ? 66 : 65535)) + '\n';
        if (isChosen()) text += "rate-units = " + std::to_string(number(0, isChosen() ? 9 : 65535)) + '\n';
        if (isChosen()) text += "unit-modifier = " + anyInteger() + '\n';
        if (isChosen()) text += "is-linear = " + std::string(isChosen() ? "true" : "false") + '\n';
        for (const char* key : NUMBERS) {
            if (isChosen()) text += std::string(key) + " = " + anyInteger() + '\n';
        }
        return text;
    }

    std::string reading() {
        if (isChosen()) return anyInteger();
        std::string values = anyInteger();
        for (std::int64_t count = number(0, 5); count > 0; --count) values += ", " + anyInteger();
        const std::string step = isChosen() ? "every = \"call\"" : "step-ms = " + std::to_string(number(200, 5000));
        return "{ kind = \"series\", values = [" + values + "], " + step + " }";
    }

    std::string eventLog() {
        std::string text = "[event-log]\nvalid = " + std::string(isChosen() ? "true" : "false") +
                           "\nfull = " + std::string(isChosen() ? "true" : "false") +
                           "\nmultiple-event-count-increment = " + std::to_string(number(0, 255)) +
                           "\nmultiple-event-time-window = " + std::to_string(number(0, 255)) + "\nlines = [";
        for (std::int64_t count = number(0, 5); count > 0; --count) text += anyText() + ", ";
        return text + "]\n";
    }

    // After the read of the provider's start.
    std::string failingRead() {
        return "[[fault]]\noperation = \"read\"\nhandle = " + std::to_string(*m_handles.begin()) +
               "\nfrom-call = " + std::to_string(number(3, 6)) + "\ncalls = " + std::to_string(number(1, 5)) +
               "\nstatus = 1\n";
    }

    std::mt19937 m_random;
    std::set<std::int64_t> m_handles;
};

}  // namespace

std::string randomScenario(unsigned seed) {
    return Maker(seed).scenario();
}
