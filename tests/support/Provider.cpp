#include "Provider.h"

#include <algorithm>
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
        if (value == nullptr) {
            texts.emplace_back("absent");
            continue;
        }
        const std::string typed = describe(*value);
        texts.push_back(value->isText() && !value->isNull ? value->text : typed.substr(typed.find(' ') + 1));
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

Strings takeLastLog(std::size_t count) {
    Strings log = takeLog();
    EXPECT_GE(log.size(), count);
    log.erase(log.begin(), log.end() - static_cast<std::ptrdiff_t>(std::min(count, log.size())));
    return log;
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
