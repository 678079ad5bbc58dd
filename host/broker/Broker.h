// A small CMPI broker, complete for instance providers: object paths, instances, strings, arrays, dates, arguments,
// contexts, results, cloning and comparison. It offers CMPI level 200.
//
// Ownership is a real broker's: what a provider makes through the broker's functions is freed when the request in which
// it was made ends; what it clones stays until it is released, and counts as left over until then.
//
// Thread-safety: several threads may work with one broker at a time, each on requests of its own. Options, fault plans
// and recording are to be set while no request runs.
#ifndef ZELSENSORS_BROKER_BROKER_H
#define ZELSENSORS_BROKER_BROKER_H

#include <cmpift.h>
#include <cmpimacs.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "broker/Model.h"

namespace broker {

// Ways in which brokers in use differ.
struct BrokerOptions {
    std::string name = "zelhost";
    int brokerVersion = 200;                         // some write 0
    int tableVersion = 200;                          // some write 1
    bool hasLevel200Slots = true;                    // false: slots newer than level 100 are null
    CMPIrc notFound = CMPI_RC_ERR_NO_SUCH_PROPERTY;  // some answer CMPI_RC_ERR_NOT_FOUND
    // An element whose type is not the array's is refused (13); while this is false, CMPI_chars and CMPI_string
    // convert.
    bool strictElementTypes = false;
    bool integerKeysAsSint64 = false;  // true: an integer key comes back as CMPI_sint64
    bool charsStayChars = false;       // true: text set as CMPI_chars is handed out as CMPI_chars, not as CMPI_string
    bool refusesNullElements = false;  // true: setElementAt with a null value answers 4
};

// One call of a provider into the broker, as recorded.
struct RecordedCall {
    std::string function;  // the slot's name in its CMPI table, such as "setProperty"
    std::string name;      // the key, property or class name that the call carries, or empty
    Value value;           // the value that it carries, or null
};

// What a planned fault does to the call that it hits.
enum class Fault {
    Refuse,      // answer the planned status (and null where a pointer is returned)
    ReturnNull,  // answer null with status 0, as a careless broker might; as Refuse where no pointer is returned
    Throw,       // throw a std::runtime_error out of the broker
};

class Broker {
  public:
    explicit Broker(BrokerOptions options = {});
    ~Broker();  // frees everything that is left, clones included
    Broker(const Broker&) = delete;
    Broker& operator=(const Broker&) = delete;

    // What a provider's factory is given. Valid as long as this object.
    const CMPIBroker* handle() const;

    // Plans a fault for the n-th call (1 is the next one) of a slot by its name in the CMPI table. Slots are counted
    // together across the tables that share a name, except where qualified: "instance.getObjectPath". The tables are
    // called broker (with the factories), path, instance, string, array, dateTime, context, args and result; the thread
    // functions cannot be made to fail. A plan is used up by its call; several may be planned, and each counts the same
    // calls.
    void planFault(const std::string& slot, unsigned nth, Fault fault, CMPIrc rc = CMPI_RC_ERR_FAILED);
    void clearFaults();
    std::size_t faultsLeft() const;  // planned faults that no call has met

    void startRecording();                            // forgets earlier records
    std::vector<RecordedCall> recordedCalls() const;  // in the order of the calls

    // Objects that the provider made and that are not freed yet, clones not counted. 0 between requests, unless
    // something was made outside all of them.
    std::size_t liveObjects() const;
    // Clones that nobody has released.
    std::size_t liveClones() const;

    struct State;
    State& state() { return *m_state; }

  private:
    std::unique_ptr<State> m_state;
};

// One request's objects on the calling thread: while it lives, everything that is made through the broker on this
// thread belongs to it, and is freed with it. Requests may nest; the innermost owns.
class Request {
  public:
    explicit Request(Broker& broker);
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    const CMPIContext* context() const;  // with CMPIInitNameSpace "root/cimv2" and CMPIInvocationFlags 0
    const CMPIResult* result() const;    // collects what the provider returns into reply()

    // Objects for the provider's arguments; they live as long as the request and are not counted. Types of keys and
    // properties are kept as they are given, whatever the options: a value of type CMPI_chars is handed out with that
    // type (value.chars), one of CMPI_string as a CMPIString.
    CMPIObjectPath* makePath(const ObjectPath& path);
    CMPIInstance* makeInstance(const Instance& instance);

    // What the provider has returned so far. The status is the caller's to fill.
    const Reply& reply() const;

  private:
    struct Objects;
    std::unique_ptr<Objects> m_objects;
};

// Copies out of CMPI objects of this broker.
ObjectPath copyOut(const CMPIObjectPath* path);
Instance copyOut(const CMPIInstance* instance);
Status copyOut(const CMPIStatus& status);

}  // namespace broker

#endif
