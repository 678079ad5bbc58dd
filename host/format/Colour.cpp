#include "format/Colour.h"

namespace host {
namespace {

std::string colourOf(Severity severity) {
    switch (severity) {
        case Severity::Normal:
            return "";
        case Severity::NonCritical:
            return "\x1b[33m";
        case Severity::Critical:
            return "\x1b[31m";
        case Severity::Fatal:
            return "\x1b[1;31m";
    }
    return "";
}

}  // namespace

std::string coloured(const std::string& text, Severity severity, bool hasReading) {
    const std::string colour = hasReading ? colourOf(severity) : "\x1b[35m";
    return colour.empty() ? text : colour + text + "\x1b[0m";
}

}  // namespace host
