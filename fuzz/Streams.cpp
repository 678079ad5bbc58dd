#include "Streams.h"

#include <sys/types.h>

#include <utility>

#include "Property.h"

namespace {

ssize_t append(void* cookie, const char* bytes, std::size_t count) {
    static_cast<std::string*>(cookie)->append(bytes, count);
    return static_cast<ssize_t>(count);
}

struct Sink {
    Sink() {
        cookie_io_functions_t functions{};
        functions.write = append;
        stream = fopencookie(&text, "w", functions);
        require(stream != nullptr, "a stream in memory can be made");
    }
    std::string take() {
        std::fflush(stream);
        return std::exchange(text, std::string());
    }

    std::string text;
    std::FILE* stream = nullptr;
};

// For the whole life of the process: code under test may keep the pointer.
Sink& outputSink() {
    static auto* const sink = new Sink;
    return *sink;
}
Sink& errorSink() {
    static auto* const sink = new Sink;
    return *sink;
}

}  // namespace

CapturedStreams::CapturedStreams() : m_output(stdout), m_errors(stderr) {
    stdout = outputSink().stream;
    stderr = errorSink().stream;
}

CapturedStreams::~CapturedStreams() {
    outputSink().take();
    errorSink().take();
    stdout = m_output;
    stderr = m_errors;
}

std::string CapturedStreams::takeOutput() {
    return outputSink().take();
}

std::string CapturedStreams::takeErrors() {
    return errorSink().take();
}
