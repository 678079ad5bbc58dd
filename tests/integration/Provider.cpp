#include "Provider.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "broker/Names.h"

std::string format(const char* form, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, form);
    std::vsnprintf(text, sizeof text, form, arguments);
    va_end(arguments);
    return text;
}

std::string chipSensor(unsigned handle, const std::string& label, const std::vector<int>& readings,
                       const std::string& more) {
    std::string values;
    for (const int reading : readings) values += std::to_string(reading) + ", ";
    return "[[sensor]]\nhandle = " + std::to_string(handle) + "\nname = \"" + label +
           "\"\nreading = { kind = \"series\", every = \"call\", then = \"hold\", values = [" + values + "] }\n" +
           more + "\n";
}

std::string chipFault(const std::string& operation, const std::string& more) {
    return "[[fault]]\noperation = \"" + operation + "\"\n" + more + "\n";
}

void useScenario(const std::string& toml) {
    const char* path = "/dev/shm/scenario.toml";
    std::ofstream(path) << toml;
    setenv("ZELCHIP_SCENARIO", path, 1);
}

broker::ObjectPath classPath(const std::string& className, const std::string& nameSpace) {
    broker::ObjectPath path;
    path.nameSpace = nameSpace;
    path.className = className;
    return path;
}

broker::ObjectPath namedPath(const std::string& className, const broker::Value& name) {
    broker::ObjectPath path = classPath(className);
    path.keys.push_back({"Name", name});
    return path;
}

broker::ObjectPath namedPath(const std::string& className, const std::string& name) {
    return namedPath(className, broker::Value::ofText(name));
}

namespace {

std::string contentOf(const broker::Value& value) {
    if (value.isNull) return "null";
    if (value.isArray()) {
        std::string all;
        for (const broker::Value& element : value.elements) all += (all.empty() ? "" : ",") + contentOf(element);
        return "{" + all + "}";
    }
    if (value.isText()) return value.text;
    if (value.path != nullptr) return namesOf({*value.path}).front();
    if (value.instance != nullptr) return namesOf({value.instance->path}).front();
    return value.isSigned() ? std::to_string(value.signedNumber) : std::to_string(value.unsignedNumber);
}

std::string typeOf(CMPIType type) {
    if (type == CMPI_chars) return "chars";
    if (type == CMPI_charsA) return "chars[]";
    return broker::nameOfType(type);
}

}  // namespace

std::string describe(const broker::Value& value) {
    return typeOf(value.type) + ":" + contentOf(value);
}

Strings describe(const std::vector<broker::NamedValue>& values) {
    Strings texts;
    for (const broker::NamedValue& one : values) texts.push_back(one.name + "=" + describe(one.value));
    return texts;
}

Strings describe(const std::vector<broker::RecordedCall>& calls) {
    Strings texts;
    for (const broker::RecordedCall& call : calls) {
        texts.push_back(call.function);
        if (!call.name.empty()) texts.back() += " " + call.name;
        if (!call.value.isNull) texts.back() += " " + describe(call.value);
    }
    return texts;
}

Strings namesOf(const std::vector<broker::ObjectPath>& paths) {
    Strings names;
    for (const broker::ObjectPath& path : paths) {
        const broker::Value* name = path.findKey("Name");
        names.push_back(name == nullptr ? "no name" : name->text);
    }
    return names;
}

Strings propertyOf(const broker::Reply& reply, const std::string& property) {
    Strings texts;
    for (const broker::Instance& instance : reply.instances) {
        const broker::Value* value = instance.findProperty(property);
        texts.push_back(value == nullptr ? "absent" : contentOf(*value));
    }
    return texts;
}

LoadedProvider::LoadedProvider(broker::BrokerOptions options)
    : broker(options), library(PROVIDER_LIBRARY), provider(library, "SensorProvider", broker) {}

Strings takeLog() {
    static std::size_t taken = 0;
    const std::string log = sandbox::readLog();
    Strings texts;
    for (const LogLine& line : parseLog(log.substr(taken))) texts.push_back(line.level + " " + line.message);
    taken = log.size();
    return texts;
}

void ProviderTest::SetUp() {
    REQUIRE_SANDBOX();
    sandbox::writeLogConfiguration("Level=4\n");
    drives::clear();
}

ProcessOutcome ProviderTest::inFreshProcess(const std::function<void()>& body) {
    ProcessOutcome outcome = runInFreshProcess([&body] {
        fakeclock::set({1000, 0});
        body();
        drives::verifyAllMet();
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardOutput << outcome.standardError;
    return outcome;
}
