// What the tests of failures at every point share: the terminal, the requests, and a way to send one of them while
// something fails, and only while it is served.
#ifndef ZELSENSORS_TESTS_FAULTS_FAULTYSTART_H
#define ZELSENSORS_TESTS_FAULTS_FAULTYSTART_H

#include <ostream>

#include "Provider.h"

// A request, and what it is answered when nothing fails.
struct RequestCase {
    enum class Entry { Names, Instances, Instance };

    std::string what;
    Entry entry;
    broker::ObjectPath path;
    CMPIrc status;
    std::size_t count;  // of paths or instances
};

std::ostream& operator<<(std::ostream& stream, const RequestCase& requestCase);

// Every read request on both classes of OwnChip.cpp's terminal with one drive, and those that cannot be served.
const std::vector<RequestCase>& allRequestCases();

struct Answered {
    CMPIrc status = CMPI_RC_OK;
    unsigned doneCalls = 0;
    std::size_t count = 0;  // of paths or instances
};

CMPIStatus enter(const CMPIInstanceMI* mi, RequestCase::Entry entry, const broker::Request& request,
                 const CMPIObjectPath* path);

// `around` is called with the entry's call and is to make it.
template <typename Around>
Answered send(broker::Broker& broker, const CMPIInstanceMI* mi, const RequestCase& requestCase, Around around) {
    broker::Request request(broker);
    const CMPIObjectPath* path = request.makePath(requestCase.path);
    CMPIStatus status{};
    around([&] { status = enter(mi, requestCase.entry, request, path); });
    return {status.rc, request.reply().doneCalls, request.reply().paths.size() + request.reply().instances.size()};
}

// All requests are answered as they should be when nothing fails.
void expectAllAnswered(broker::Broker& broker, const CMPIInstanceMI* mi);
void expectAnswered(broker::Broker& broker, const CMPIInstanceMI* mi, const RequestCase& requestCase);
// Every line of the log is whole. Empties it, by deleting it.
void checkAndDeleteLog();

// Runs each body in a process of its own, on a terminal with one drive: the log at its most detailed, the readings of
// drives switched on, and the clock at 1000 s.
class FaultyStartTest : public ProviderTest {
  protected:
    static ProcessOutcome onTheTerminal(const std::function<void()>& body);
};

#endif
