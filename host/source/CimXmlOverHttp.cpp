#include "source/CimXmlOverHttp.h"

#include <charconv>
#include <string>
#include <system_error>

#include "broker/Names.h"
#include "text/Utf8.h"

namespace host {
namespace {

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

CimXmlAnswer bodyOf(const HttpAnswer& answer, const CimXmlRequest& request, int statusInTrailer) {
    requireXml(answer);
    CimXmlAnswer read = readCimXml(answer.body, request);
    const broker::Reply& reply = read.reply;
    const bool isSingle = request.method == "GetInstance" && reply.status.rc == CMPI_RC_OK;
    if (isSingle && reply.instances.size() != 1 && statusInTrailer == 0) {
        throw AnswerError("the answer has " + std::to_string(reply.instances.size()) + " instances instead of one");
    }
    return read;
}

// With an error in the trailer a body is shown as far as it goes, and the error is the answer.
CimXmlAnswer answerIn(const HttpAnswer& answer, const CimXmlRequest& request) {
    const int status = statusInTrailer(answer);
    CimXmlAnswer read;
    try {
        read = bodyOf(answer, request, status);
    } catch (const AnswerError&) {
        if (status == 0) throw;
    }
    if (status == 0 || read.reply.status.rc != CMPI_RC_OK) return read;
    read.reply.status.rc = static_cast<CMPIrc>(status);
    const std::string description = answer.header("CIMStatusCodeDescription");
    if (!description.empty()) read.reply.status.message = percentDecoded(description);
    return read;
}

}  // namespace

HttpRequest httpRequestOf(const CimXmlRequest& request) {
    return {PATH,
            {"Content-Type: application/xml; charset=\"utf-8\"", "Accept: application/xml, text/xml",
             "CIMOperation: MethodCall", "CIMMethod: " + request.method,
             "CIMObject: " + percentEncoded(request.object.nameSpace), "Expect:"},
            request.body};
}

CimXmlAnswer cimXmlAnswerIn(const HttpAnswer& answer, const CimXmlRequest& request, const ServerAccess& access) {
    if (answer.status != 200) refuse(answer, access);
    try {
        return answerIn(answer, request);
    } catch (const AnswerError& error) {
        throw ServerError(access.url + " gave no usable answer: " + error.what());
    }
}

std::string unfitTextWarning(const std::string& url) {
    return url + " sends texts with control characters, or with bytes that are no UTF-8; other clients may refuse them";
}

}  // namespace host
