// Object paths as clients send them: any namespace and class, keys of any name, type and value. The input is a path
// and, sometimes, a broker call that is to go wrong. The status must be the one that a plain reading of the path gives,
// among 0, 1, 3 and 5; exactly one done ends the request and nothing is left behind.
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Chip.h"
#include "ConfigurationFiles.h"
#include "Drives.h"
#include "Input.h"
#include "Property.h"
#include "ProviderUnderTest.h"
#include "Streams.h"

namespace {

using broker::ObjectPath;
using broker::Reply;
using broker::Value;
using Operation = ProviderUnderTest::Operation;

constexpr char LOG_NAME[] = "Quorvel POS System Event Log";
constexpr std::array SENSOR_NAMES = {"CPU(0000001a)", "Fan 1(0000001b)", "(0000001c)"};
constexpr unsigned DEEPEST = 3;  // of values in values

// A terminal of three sensors, for the whole life of the process.
struct Machine {
    Machine() {
        configuration::setLogFile("Level=4\nIsConsole=1\n");  // standard error is captured
        chip::Answers& answers = chip::answers();
        answers.handles = {0x1a, 0x1b, 0x1c};
        answers.information = [](unsigned handle, CSensorInformation& information) {
            information.name = handle == 0x1a ? "CPU" : handle == 0x1b ? "Fan 1" : "";
            return sscode{0};
        };
        answers.read = [](unsigned handle, int& value) {
            value = static_cast<int>(handle);
            return sscode{0};
        };
        answers.eventLog.lines = {"one", "", "three"};
        chip::setClock(1700000000000);
        drives::set({}, 0);
        const CapturedStreams streams;
        provider = std::make_unique<ProviderUnderTest>(broker);
        chip::takeReads();
    }

    broker::Broker broker;
    std::unique_ptr<ProviderUnderTest> provider;
};

Machine& machine() {
    static auto* const made = new Machine;
    return *made;
}

std::string takeText(Input& input) {
    return input.choice(8) == 7 ? input.longText() : input.text();
}

// Mostly the right one, spelt in many ways.
std::string takeNameSpace(Input& input) {
    static constexpr std::array names = {"root/cimv2", "ROOT/CIMV2", "root/CIMv2", "root/cimv", "root/cimv22", ""};
    const unsigned choice = input.choice(8);
    return choice < names.size() ? names[choice] : takeText(input);
}

std::string takeClassName(Input& input) {
    static constexpr std::array names = {"TQS_NumericSensor", "TQS_SystemEventLog", "TQS_numericSensor", ""};
    const unsigned choice = input.choice(6);
    return choice < names.size() ? names[choice] : takeText(input);
}

std::string takeKeyName(Input& input) {
    static constexpr std::array names = {"Name", "name", "NAME", "CreationClassName", ""};
    const unsigned choice = input.choice(8);
    return choice < names.size() ? names[choice] : takeText(input);
}

std::string takeKeyText(Input& input) {
    const unsigned choice = input.choice(8);
    if (choice < SENSOR_NAMES.size()) return SENSOR_NAMES[choice];
    return choice == 3 ? LOG_NAME : takeText(input);
}

ObjectPath takePath(Input& input, unsigned depth);

Value takeArray(Input& input, unsigned depth);

// Of any type that CMPI has, and of some that it has not.
Value takeValue(Input& input, unsigned depth) {
    static constexpr std::array<CMPIType, 22> types = {
        CMPI_string,   CMPI_chars,  CMPI_string,   CMPI_chars,  CMPI_boolean, CMPI_char16,  CMPI_uint8,  CMPI_uint16,
        CMPI_uint32,   CMPI_uint64, CMPI_sint8,    CMPI_sint16, CMPI_sint32,  CMPI_sint64,  CMPI_real32, CMPI_real64,
        CMPI_dateTime, CMPI_ref,    CMPI_instance, CMPI_null,   CMPI_ptr,     CMPI_charsptr};
    if (depth < DEEPEST && input.choice(8) == 7) return takeArray(input, depth);
    Value value;
    value.type = input.choice(16) == 15 ? input.number16() : types[input.choice(types.size())];
    // What has no place for a content here is null, as is every tenth of the rest.
    const bool needsContent = value.type == CMPI_ref || value.type == CMPI_instance;
    value.isNull = value.isArray() || (needsContent && depth >= DEEPEST) || input.choice(10) == 9;
    if (value.isNull) return value;
    if (value.isText() || value.type == CMPI_dateTime) value.text = takeKeyText(input);
    value.unsignedNumber = input.number32();
    value.signedNumber = static_cast<int>(input.number32());
    value.real = static_cast<double>(value.signedNumber) / 7;
    if (needsContent) {
        value.path = std::make_shared<const ObjectPath>(takePath(input, depth + 1));
        value.instance = std::make_shared<const broker::Instance>(broker::Instance{*value.path, {}});
    }
    return value;
}

Value takeArray(Input& input, unsigned depth) {
    std::vector<Value> elements;
    for (unsigned left = input.choice(4); left > 0; --left) elements.push_back(takeValue(input, depth + 1));
    const CMPIType type = elements.empty() ? CMPIType{CMPI_string} : elements[0].type;
    return Value::ofArray(elements, static_cast<CMPIType>(type & ~CMPI_ARRAY));
}

ObjectPath takePath(Input& input, unsigned depth) {
    ObjectPath path;
    path.nameSpace = takeNameSpace(input);
    path.className = takeClassName(input);
    path.host = input.text();
    for (unsigned left = input.choice(4); left > 0; --left) {
        const std::string name = takeKeyName(input);
        path.keys.push_back({name, takeValue(input, depth)});
    }
    return path;
}

std::string lower(const std::string& text) {
    std::string result = text;
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

// What stands in the key "Name", where it is a text. A C string ends at its first NUL.
bool hasName(const ObjectPath& path, std::string& name) {
    for (const broker::NamedValue& key : path.keys) {
        if (lower(key.name) != "name") continue;
        if (key.value.isNull || (key.value.type != CMPI_string && key.value.type != CMPI_chars)) return false;
        name = key.value.text.c_str();
        return true;
    }
    return false;
}

struct Expected {
    CMPIrc rc;
    std::size_t paths;
    std::size_t instances;
};

Expected expectedOf(Operation operation, const ObjectPath& path) {
    const std::string className = path.className.c_str();
    const bool isLog = className == "TQS_SystemEventLog";
    if (lower(path.nameSpace.c_str()) != "root/cimv2") return {CMPI_RC_ERR_INVALID_NAMESPACE, 0, 0};
    if (!isLog && className != "TQS_NumericSensor") return {CMPI_RC_ERR_INVALID_CLASS, 0, 0};
    if (operation == Operation::Names) return {CMPI_RC_OK, isLog ? 1 : SENSOR_NAMES.size(), 0};
    if (operation == Operation::Instances) return {CMPI_RC_OK, 0, isLog ? 1 : SENSOR_NAMES.size()};
    std::string name;
    if (!hasName(path, name)) return {CMPI_RC_ERR_FAILED, 0, 0};
    if (isLog && name == LOG_NAME) return {CMPI_RC_OK, 0, 1};
    for (const char* sensorName : SENSOR_NAMES) {
        if (!isLog && name == sensorName) return {CMPI_RC_OK, 0, 1};
    }
    return {CMPI_RC_ERR_FAILED, 0, 0};
}

// Whether something is to go wrong. A broker that fails at the done itself counts none.
bool takeFault(Input& input) {
    static constexpr std::array slots = {"getNameSpace", "getClassName",     "getKey",         "newObjectPath",
                                         "addKey",       "newInstance",      "setProperty",    "newArray",
                                         "setElementAt", "returnObjectPath", "returnInstance", "getCharPtr"};
    static constexpr std::array faults = {broker::Fault::Refuse, broker::Fault::ReturnNull, broker::Fault::Throw};
    if (input.choice(4) != 3) return false;
    const char* slot = slots[input.choice(slots.size())];
    const unsigned nth = 1 + input.choice(32);
    const broker::Fault fault = faults[input.choice(faults.size())];
    machine().broker.planFault(slot, nth, fault, static_cast<CMPIrc>(1 + input.choice(20)));
    return true;
}

void compare(const Reply& reply, const Expected& expected, bool hadFault) {
    requireSame(reply.doneCalls, 1, "the number of dones");
    if (!hadFault) {
        requireSame(reply.status.rc, expected.rc, "the status");
        requireSame(static_cast<long long>(reply.paths.size()), static_cast<long long>(expected.paths), "the paths");
        requireSame(static_cast<long long>(reply.instances.size()), static_cast<long long>(expected.instances),
                    "the instances");
        return;
    }
    // A fault makes a failure of it, or goes unnoticed where the provider does not look at the call's answer.
    require(reply.status.rc == expected.rc || reply.status.rc == CMPI_RC_ERR_FAILED, "the status after a fault");
    require(reply.paths.size() <= expected.paths && reply.instances.size() <= expected.instances,
            "the number of answers after a fault");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Machine& terminal = machine();
    Input input(data, size);
    CapturedStreams streams;
    const auto operation = static_cast<Operation>(input.choice(3));
    const bool hasFault = takeFault(input);
    const ObjectPath path = takePath(input, 0);
    const Reply reply = terminal.provider->ask(operation, path);
    const bool hadFault = hasFault && terminal.broker.faultsLeft() == 0;
    terminal.broker.clearFaults();
    compare(reply, expectedOf(operation, path), hadFault);
    return 0;
}
