#include "source/Server.h"

#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

#include "broker/Names.h"
#include "source/CimXmlReader.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::ObjectPath;
using broker::Reply;

constexpr const char* PATH = "/cimom";

// What an HTTP status other than 200 means here, as a sentence after the server's name.
std::string meaningOf(const HttpAnswer& answer, const ServerAccess& access) {
    switch (answer.status) {
        case 401:
            return access.user.empty() ? "wants to know who asks: give --user"
                                       : "does not accept the user " + printable(access.user) + " with this password";
        case 403:
            return "does not let this user ask; its rights are given in the object manager's configuration";
        case 404:
            return std::string("has nothing at ") + PATH + "; is this the port of an object manager?";
        case 501:
            return "does not know the request; is this the port of an object manager?";
        case 503:
            return "is too busy to answer, or is just starting";
        default:
            return "refuses the request";
    }
}

[[noreturn]] void refuse(const HttpAnswer& answer, const ServerAccess& access) {
    std::string details = "HTTP status " + std::to_string(answer.status);
    const std::string error = answer.header("CIMError");
    if (!error.empty()) details += ", CIMError " + printable(percentDecoded(error));
    throw ServerError(access.url + ' ' + meaningOf(answer, access) + " (" + details + ')');
}

// Throws AnswerError for what is not plain XML in UTF-8.
void requireXml(const HttpAnswer& answer) {
    const std::string coding = answer.header("Content-Encoding");
    if (!coding.empty() && !broker::sameName(coding, "identity")) {
        throw AnswerError("the answer is packed (" + printable(coding) + "), which was not asked for");
    }
    const std::string type = answer.header("Content-Type");
    if (!type.empty() && type.find("/xml") == std::string::npos) {
        throw AnswerError("the answer is " + printable(type) + " instead of XML");
    }
}

// The status in the trailer; 0 where there is none.
int statusInTrailer(const HttpAnswer& answer) {
    const std::string text = answer.header("CIMStatusCode");
    if (text.empty()) return 0;
    int code = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), code);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || code < 0) {
        throw AnswerError("the answer has the CIMStatusCode '" + printable(text) + '\'');
    }
    return code;
}

// With an error in the trailer a body is shown as far as it goes, and the error is the answer.
Reply withTrailer(int status, const HttpAnswer& answer, const std::function<Reply()>& readBody) {
    Reply reply;
    try {
        reply = readBody();
    } catch (const AnswerError&) {
        if (status == 0) throw;
    }
    if (status == 0 || reply.status.rc != CMPI_RC_OK) return reply;
    reply.status.rc = static_cast<CMPIrc>(status);
    const std::string description = answer.header("CIMStatusCodeDescription");
    if (!description.empty()) reply.status.message = percentDecoded(description);
    return reply;
}

}  // namespace

Server::Server(const ServerAccess& access, Warning warn)
    : m_access(access), m_warn(std::move(warn)), m_client(access) {}

template <typename Write>
Reply Server::ask(const Write& write) {
    try {
        return answerTo(write(std::to_string(++m_lastMessage)));
    } catch (const UnsendableError& error) {
        Reply reply;
        reply.status = {CMPI_RC_ERR_INVALID_PARAMETER, error.what()};
        return reply;
    } catch (const AnswerError& error) {
        throw ServerError(m_access.url + " gave no usable answer: " + error.what());
    }
}

Reply Server::answerTo(const CimXmlRequest& request) {
    const HttpAnswer answer =
        m_client.post(PATH,
                      {"Content-Type: application/xml; charset=\"utf-8\"", "Accept: application/xml, text/xml",
                       "CIMOperation: MethodCall", "CIMMethod: " + request.method,
                       "CIMObject: " + percentEncoded(request.object.nameSpace), "Expect:"},
                      request.body);
    if (answer.status != 200) refuse(answer, m_access);
    return withTrailer(statusInTrailer(answer), answer, [&] { return replyIn(answer, request); });
}

Reply Server::replyIn(const HttpAnswer& answer, const CimXmlRequest& request) {
    requireXml(answer);
    CimXmlAnswer read = readCimXml(answer.body, request);
    const bool isSingle = request.method == "GetInstance" && read.reply.status.rc == CMPI_RC_OK;
    if (isSingle && read.reply.instances.size() != 1 && statusInTrailer(answer) == 0) {
        throw AnswerError("the answer has " + std::to_string(read.reply.instances.size()) +
                          " instances instead of one");
    }
    if (read.hasUnfitText && !m_hasWarned) {
        m_hasWarned = true;
        m_warn(m_access.url +
               " sends texts with control characters, or with bytes that are no UTF-8; other clients may refuse them");
    }
    return std::move(read.reply);
}

Reply Server::enumerateInstanceNames(const ObjectPath& classPath) {
    return ask([&](const std::string& id) { return enumerateInstanceNamesXml(id, classPath); });
}

Reply Server::enumerateInstances(const ObjectPath& classPath) {
    return ask([&](const std::string& id) { return enumerateInstancesXml(id, classPath); });
}

Reply Server::getInstance(const ObjectPath& path) {
    return ask([&](const std::string& id) { return getInstanceXml(id, path); });
}

Reply Server::createInstance(const ObjectPath& classPath, const broker::Instance& instance) {
    return ask([&](const std::string& id) { return createInstanceXml(id, classPath, instance); });
}

Reply Server::modifyInstance(const ObjectPath& path, const broker::Instance& instance) {
    return ask([&](const std::string& id) { return modifyInstanceXml(id, path, instance); });
}

Reply Server::deleteInstance(const ObjectPath& path) {
    return ask([&](const std::string& id) { return deleteInstanceXml(id, path); });
}

Reply Server::execQuery(const ObjectPath& classPath, const std::string& query, const std::string& language) {
    return ask([&](const std::string& id) { return execQueryXml(id, classPath, query, language); });
}

}  // namespace host
