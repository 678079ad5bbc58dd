#include "verify/VerifyFormat.h"

#include <cstddef>
#include <nlohmann/json.hpp>

#include "source/Request.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string summaryOf(const ClassReport& report) {
    return report.className + ": " + counted(report.names, "name") + ", " + counted(report.instances, "instance") +
           ", " + counted(report.singles, "single request") + ", " + counted(report.problems.size(), "problem") + '\n';
}

Json jsonOf(const ClassReport& report) {
    Json problems = Json::array();
    for (const Problem& problem : report.problems) {
        Json object = Json::object();
        object["request"] = problem.request;
        object["path"] = problem.path;
        object["text"] = problem.text;
        if (!problem.cause.empty()) object["cause"] = problem.cause;
        problems.push_back(std::move(object));
    }
    Json object = Json::object();
    object["class"] = report.className;
    object["names"] = report.names;
    object["instances"] = report.instances;
    object["singles"] = report.singles;
    object["problems"] = std::move(problems);
    return object;
}

}  // namespace

std::string verificationText(const Verification& verification) {
    std::string text;
    for (const ClassReport& report : verification.classes) {
        for (const Problem& problem : report.problems) {
            text += problem.request + ' ' + problem.path + ": " + problem.text + '\n';
            if (!problem.cause.empty()) text += "    likely cause: " + problem.cause + '\n';
        }
        text += summaryOf(report);
    }
    return text;
}

std::string verificationJson(const Verification& verification, std::optional<bool> isSimulated) {
    Json classes = Json::array();
    for (const ClassReport& report : verification.classes) classes.push_back(jsonOf(report));
    Json document = Json::object();
    document["command"] = nameOf(Command::Verify);
    document["namespace"] = verification.nameSpace;
    document["simulated"] = isSimulated ? Json(*isSimulated) : Json();
    document["conforms"] = verification.conforms();
    document["classes"] = std::move(classes);
    return document.dump(2, ' ', true, Json::error_handler_t::replace) + '\n';
}

}  // namespace host
