#include "format/FindingsFormat.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "source/Request.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

// In the order in which they first come.
std::vector<std::string> adviceIn(const std::vector<Finding>& findings) {
    std::vector<std::string> advice;
    for (const Finding& finding : findings) {
        const bool isNew = std::find(advice.begin(), advice.end(), finding.advice) == advice.end();
        if (!finding.advice.empty() && isNew) advice.push_back(finding.advice);
    }
    return advice;
}

}  // namespace

bool isAnythingToDo(const std::vector<Finding>& findings) {
    return !adviceIn(findings).empty();
}

std::string findingsText(const std::vector<Finding>& findings, Charset charset) {
    TextTable table({{"About"}, {"Which"}, {"Found"}}, charset);
    for (const Finding& finding : findings)
        table.add({printable(finding.area), printable(finding.subject), printable(finding.text)});
    const std::vector<std::string> advice = adviceIn(findings);
    std::string text = advice.empty() ? "Nothing is to be done.\n" : "To do:\n";
    for (std::size_t i = 0; i < advice.size(); ++i) text += std::to_string(i + 1) + ". " + printable(advice[i]) + '\n';
    return table.text() + '\n' + shownIn(charset, text);
}

std::string findingsJson(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings) {
        Json object = Json::object();
        object["about"] = finding.area;
        object["which"] = finding.subject;
        object["found"] = finding.text;
        object["advice"] = finding.advice.empty() ? Json() : Json(finding.advice);
        list.push_back(std::move(object));
    }
    Json document = Json::object();
    document["format"] = 1;
    document["command"] = nameOf(Command::Doctor);
    document["findings"] = std::move(list);
    document["todo"] = adviceIn(findings);
    return document.dump(2, ' ', true, Json::error_handler_t::replace) + '\n';
}

}  // namespace host
