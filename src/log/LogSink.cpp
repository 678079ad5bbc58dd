#include "LogSink.h"

#include <cstdio>
#include <mutex>

LogHandler* s_logHandler = nullptr;

namespace {

std::mutex s_creation;

// The order in which the library's clean-up runs distinguishes unloading from the end of the process. dlclose runs its
// termination functions first and the destructors of its static objects after them; exit runs the destructors first, as
// it does with all exit handlers, and the termination functions when it finalises the libraries.
bool s_unloading = false;

[[gnu::destructor]] void noticeTermination() {
    s_unloading = true;
}

class SinkOwner {
  public:
    ~SinkOwner() {
        if (s_unloading) delete __atomic_exchange_n(&s_logHandler, nullptr, __ATOMIC_ACQ_REL);
    }
};

const SinkOwner SINK_OWNER;

}  // namespace

LogHandler& createLogHandler() {
    const std::lock_guard<std::mutex> lock(s_creation);
    if (s_logHandler == nullptr) {
        std::puts("Logger created");
        __atomic_store_n(&s_logHandler, new FileLogHandler, __ATOMIC_RELEASE);
    }
    return *s_logHandler;
}
