#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "RawServer.h"
#include "RecordedExchanges.h"
#include "source/Server.h"

namespace {

using broker::ObjectPath;
using broker::Reply;
using broker::Value;
using host::Server;
using host::ServerAccess;
using host::ServerError;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const ObjectPath SENSORS{"", "root/cimv2", "TQS_NumericSensor", {}};

// Ends what hangs; no test waits for it.
constexpr std::chrono::milliseconds PATIENCE{600000};

ServerAccess accessTo(const std::string& url, std::chrono::milliseconds timeout = PATIENCE) {
    ServerAccess access;
    access.url = url;
    access.timeout = timeout;
    return access;
}

void refuseWarning(const std::string& text) {
    ADD_FAILURE() << text;
}

// The sentence with which a request for the names fails, without the server's URL, or how it ended otherwise.
std::string failureAt(const ServerAccess& access) {
    try {
        const Reply reply = Server(access, refuseWarning).enumerateInstanceNames(SENSORS);
        return "answered with status " + std::to_string(reply.status.rc);
    } catch (const ServerError& error) {
        EXPECT_THAT(error.what(), StartsWith(access.url + ' '));
        return std::string(error.what()).substr(access.url.size() + 1);
    }
}

std::string failureOf(const std::string& answer) {
    const RawServer raw(answer);
    return failureAt(accessTo(raw.url()));
}

std::string namesBody(const std::string& names, const std::string& id = FIRST_MESSAGE_ID) {
    return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"" + id +
           "\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateInstanceNames\"><IRETURNVALUE>" +
           names + "</IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";
}

constexpr const char* NAME_BEGIN =
    "<INSTANCENAME CLASSNAME=\"C\"><KEYBINDING NAME=\"Name\"><KEYVALUE VALUETYPE=\"string\">";
constexpr const char* NAME_END = "</KEYVALUE></KEYBINDING></INSTANCENAME>";

std::string named(const std::string& name) {
    return NAME_BEGIN + name + NAME_END;
}

std::string chunked(const std::string& body, const std::string& trailer) {
    std::ostringstream size;
    size << std::hex << body.size();
    return "HTTP/1.1 200 OK\r\nContent-Type: application/xml\r\nTransfer-Encoding: chunked\r\n\r\n" + size.str() +
           "\r\n" + body + "\r\n0\r\n" + trailer + "\r\n";
}

std::string nameIn(const ObjectPath& path) {
    return path.findKey("Name")->text;
}

TEST(ServerTest, RequestsArePostedLikeThoseRecorded) {
    for (const RecordedRequest& recorded : allRecordedRequests()) {
        SCOPED_TRACE(recorded.scenario + '/' + recorded.operation);
        const host::Request request = requestOf(recorded.scenario, recorded.operation);
        std::string sent;
        {
            RawServer raw([&](Connection& connection) { sent = connection.readRequest(); });
            Server server(accessTo(raw.url()), refuseWarning);
            EXPECT_THROW(ask(server, request), ServerError);
        }
        EXPECT_THAT(sent, StartsWith("POST /cimom HTTP/1.1\r\n"));
        std::istringstream lines(recorded.head);
        for (std::string line; std::getline(lines, line);) {
            const bool isOther = line.rfind("Host:", 0) == 0 || line.rfind("Connection:", 0) == 0 ||
                                 line.rfind("Content-Length:", 0) == 0;
            if (isOther) continue;
            EXPECT_THAT(sent, HasSubstr(line + '\n'));
        }
        EXPECT_THAT(sent, EndsWith("\r\n\r\n" + writtenRequest(request).body));
    }
}

TEST(ServerTest, NamespaceIsPercentEncodedInTheHeader) {
    std::string sent;
    {
        RawServer raw([&](Connection& connection) { sent = connection.readRequest(); });
        Server server(accessTo(raw.url()), refuseWarning);
        EXPECT_THROW(server.enumerateInstanceNames({"", "root/ü ~x", "C", {}}), ServerError);
    }
    EXPECT_THAT(sent, HasSubstr("\r\nCIMObject: root%2F%C3%BC%20~x\r\n"));
}

TEST(ServerTest, EachRequestHasAMessageOfItsOwnOnTheSameConnection) {
    int connections = 0;
    std::vector<std::string> sent;
    RawServer raw([&](Connection& connection) {
        ++connections;
        for (const char* id : {"1001", "1002"}) {
            sent.push_back(connection.readRequest());
            connection.write(httpAnswer(namesBody(named(id), id)));
        }
    });
    Server server(accessTo(raw.url()), refuseWarning);
    EXPECT_EQ(nameIn(server.enumerateInstanceNames(SENSORS).paths.at(0)), "1001");
    EXPECT_EQ(nameIn(server.enumerateInstanceNames(SENSORS).paths.at(0)), "1002");
    EXPECT_EQ(connections, 1);
    EXPECT_THAT(sent, ElementsAre(HasSubstr("<MESSAGE ID=\"1001\""), HasSubstr("<MESSAGE ID=\"1002\"")));
}

TEST(ServerTest, ConnectionThatTheServerHasClosedIsMadeAnew) {
    int count = 1000;
    RawServer raw([&](Connection& connection) {
        connection.readRequest();
        connection.write(httpAnswer(namesBody("", std::to_string(++count))));
    });
    Server server(accessTo(raw.url()), refuseWarning);
    for (int i = 0; i < 12; ++i) EXPECT_THAT(server.enumerateInstanceNames(SENSORS).paths, IsEmpty());
    EXPECT_EQ(count, 1012);
}

TEST(ServerTest, NameThatXmlCannotCarryIsNotSent) {
    Server server(accessTo("http://127.0.0.1:" + std::to_string(closedPort())), refuseWarning);
    const Reply reply = server.getInstance({"", "root/cimv2", "TQS_NumericSensor", {{"Name", Value::ofText("a\x02")}}});
    EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(reply.status.message, "'a\\x02' cannot be sent: XML has no such characters");
}

// What is recorded, cut off after each byte: never an answer, however whole the XML looks.
void expectRefusedWhereCutOff(const Recorded& recorded) {
    const std::string whole = recorded.answer();
    const host::Request request = requestOf(recorded.scenario, recorded.operation);
    // The line feed that ends the last line, an empty one, says nothing more; some releases of libcurl wait for it.
    const bool hasTrailer = recorded.answer().find("\r\nTrailer: ") != std::string::npos;
    const std::size_t needed = whole.size() - (hasTrailer ? 1 : 0);
    std::atomic<std::size_t> length = 0;  // the server is a thread of its own
    RawServer raw([&](Connection& connection) {
        connection.readRequest();
        connection.write(std::string_view(whole).substr(0, length));
    });
    for (; length < needed; ++length) {
        Server server(accessTo(raw.url()), refuseWarning);
        EXPECT_THROW(ask(server, request), ServerError) << recorded.manager << " cut off after " << length;
    }
    length = whole.size();
    Server server(accessTo(raw.url()), refuseWarning);
    EXPECT_NO_THROW(ask(server, request)) << recorded.manager;
}

TEST(ServerTest, AnswerCutOffAtAnyByteIsNone) {
    expectRefusedWhereCutOff({"sfcb", "healthy", "get"});
    expectRefusedWhereCutOff({"sfcb", "healthy", "get-unknown"});
    expectRefusedWhereCutOff({"openpegasus", "healthy", "get-unknown"});
}

TEST(ServerTest, ChunkedAnswerCutOffAtAnyByteIsNone) {
    expectRefusedWhereCutOff({"sfcb", "healthy-chunked", "names"});
    expectRefusedWhereCutOff({"openpegasus", "healthy-chunked", "names"});
    expectRefusedWhereCutOff({"openpegasus", "healthy-chunked", "wrong-class"});
}

TEST(ServerTest, AnswerByteByByteIsTheSame) {
    for (const Recorded& recorded : {Recorded{"sfcb", "odd", "names"}, Recorded{"openpegasus", "odd", "names"},
                                     Recorded{"openpegasus", "healthy-chunked", "names"}}) {
        const std::string whole = recorded.answer();
        const RawServer slow([&](Connection& connection) {
            connection.readRequest();
            for (const char byte : whole) connection.write({&byte, 1});
        });
        const RawServer quick(whole);
        const std::vector<ObjectPath> paths =
            Server(accessTo(slow.url()), refuseWarning).enumerateInstanceNames(SENSORS).paths;
        EXPECT_THAT(paths, Not(IsEmpty()));
        EXPECT_EQ(paths, Server(accessTo(quick.url()), refuseWarning).enumerateInstanceNames(SENSORS).paths);
    }
}

TEST(ServerTest, SilenceEndsWithTheTimeout) {
    for (const char* begin : {"", "HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n<CIM>"}) {
        const RawServer raw([&](Connection& connection) {
            connection.readRequest();
            connection.write(begin);
            connection.waitForEnd();
        });
        EXPECT_EQ(failureAt(accessTo(raw.url(), std::chrono::milliseconds(150))),
                  "gave no whole answer within 0.15 s; --timeout gives it longer");
    }
}

TEST(ServerTest, ErrorInTheTrailerAloneIsTheStatus) {
    const RawServer raw(Recorded{"openpegasus", "healthy-chunked", "wrong-class"}.answer());
    Server server(accessTo(raw.url()), refuseWarning);
    const Reply reply = server.enumerateInstanceNames({"", "root/cimv2", "TQS_Nothing", {}});
    EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(reply.status.message, "CIM_ERR_INVALID_CLASS: TQS_Nothing");
}

TEST(ServerTest, WhatCameBeforeAnErrorInTheTrailerIsKept) {
    const std::string trailer = "CIMStatusCode: 1\r\nCIMStatusCodeDescription: gone%20wrong\r\n";
    const RawServer raw(chunked(namesBody(named("a")), trailer));
    const Reply reply = Server(accessTo(raw.url()), refuseWarning).enumerateInstanceNames(SENSORS);
    EXPECT_THAT(reply.paths, SizeIs(1));
    EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(reply.status.message, "gone wrong");
    const RawServer broken(chunked("<CIM", "CIMStatusCode: 1\r\n"));
    const Reply half = Server(accessTo(broken.url()), refuseWarning).enumerateInstanceNames(SENSORS);
    EXPECT_EQ(half.status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(half.status.message, std::nullopt);
}

TEST(ServerTest, TrailerWithoutErrorChangesNothing) {
    const RawServer raw(chunked(namesBody(named("a")), "CIMStatusCode: 0\r\n"));
    EXPECT_THAT(Server(accessTo(raw.url()), refuseWarning).enumerateInstanceNames(SENSORS).paths, SizeIs(1));
    EXPECT_EQ(failureOf(chunked("<CIM", "CIMStatusCode: 0\r\n")).substr(0, 23), "gave no usable answer: ");
    EXPECT_EQ(failureOf(chunked(namesBody(""), "CIMStatusCode: five\r\n")),
              "gave no usable answer: the answer has the CIMStatusCode 'five'");
}

TEST(ServerTest, AnswerToAnotherMessageIsRefused) {
    EXPECT_EQ(failureOf(httpAnswer(namesBody("", "77"))),
              "gave no usable answer: the answer belongs to another request: its message is 77, ours is 1001");
}

TEST(ServerTest, SingleInstanceThatIsMissingIsNoAnswer) {
    const std::string body =
        "<CIM><MESSAGE ID=\"1001\"><SIMPLERSP><IMETHODRESPONSE NAME=\"GetInstance\"><IRETURNVALUE/>"
        "</IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";
    const RawServer raw(httpAnswer(body));
    Server server(accessTo(raw.url()), refuseWarning);
    try {
        server.getInstance(SENSORS);
        FAIL();
    } catch (const ServerError& error) {
        EXPECT_THAT(error.what(), EndsWith("gave no usable answer: the answer has 0 instances instead of one"));
    }
}

TEST(ServerTest, UnfitTextIsReportedOnce) {
    int id = 1000;
    RawServer raw([&](Connection& connection) {
        for (;;) {
            if (connection.readRequest().empty()) return;
            connection.write(httpAnswer(namesBody(named("a\xff") + named("&#1;"), std::to_string(++id))));
        }
    });
    std::vector<std::string> warnings;
    Server server(accessTo(raw.url()), [&](const std::string& text) { warnings.push_back(text); });
    for (int i = 0; i < 3; ++i) {
        const Reply reply = server.enumerateInstanceNames(SENSORS);
        EXPECT_EQ(nameIn(reply.paths.at(0)), "a\xff");
        EXPECT_EQ(nameIn(reply.paths.at(1)), "\x01");
    }
    EXPECT_THAT(warnings, ElementsAre(raw.url() + " sends texts with control characters, or with bytes that are no "
                                                  "UTF-8; other clients may refuse them"));
}

// Writes blanks until the client has had enough.
std::string failureWithBlanks(const std::string& head, const std::string& between, std::size_t megabytes) {
    bool isEnough = false;
    std::string failure;
    {
        const RawServer raw([&](Connection& connection) {
            connection.readRequest();
            connection.write(head);
            const std::string blanks =
                between + std::string(std::size_t{1} << 20, ' ') + (between.empty() ? "" : "\r\n");
            for (std::size_t i = 0; i < megabytes && !isEnough; ++i) isEnough = !connection.write(blanks);
        });
        failure = failureAt(accessTo(raw.url()));
    }
    EXPECT_TRUE(isEnough);
    return failure;
}

TEST(ServerTest, EndlessAnswerIsNotTaken) {
    const std::string tooLong = "sends more than an answer can be (32 MiB, or 1 MiB of headers)";
    EXPECT_EQ(failureWithBlanks("HTTP/1.1 200 OK\r\nContent-Length: 104857600\r\n\r\n", "", 100), tooLong);
    EXPECT_EQ(failureWithBlanks("HTTP/1.1 200 OK\r\n\r\n", "", 100), tooLong);
    EXPECT_EQ(failureWithBlanks("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", "100000\r\n", 100), tooLong);
}

TEST(ServerTest, EndlessHeadersAreNotTaken) {
    const RawServer raw([](Connection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\n");
        const std::string line = "X-More: " + std::string(1000, 'x') + "\r\n";
        while (connection.write(line)) continue;
    });
    EXPECT_THAT(failureAt(accessTo(raw.url())), Not(HasSubstr("answered")));
}

TEST(ServerTest, WrongEncodingsAreRefused) {
    const std::string packed(std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10));
    EXPECT_EQ(failureOf(httpAnswer(packed, "Content-Type: application/xml\r\nContent-Encoding: gzip\r\n")),
              "gave no usable answer: the answer is packed (gzip), which was not asked for");
    EXPECT_EQ(failureOf(httpAnswer(namesBody(""), "Content-Type: text/html\r\n")),
              "gave no usable answer: the answer is text/html instead of XML");
    EXPECT_EQ(failureOf(httpAnswer(namesBody(""), "Content-Type: application/xml\r\nContent-Encoding: identity\r\n")),
              "answered with status 0");
    EXPECT_EQ(failureOf(httpAnswer("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + namesBody(""))),
              "gave no usable answer: the answer is in UTF-16; only UTF-8 is read");
}

std::string status(const std::string& line, const std::string& headers = "") {
    return "HTTP/1.1 " + line + "\r\n" + headers + "Content-Length: 0\r\n\r\n";
}

TEST(ServerTest, HttpErrorsSayWhatHelps) {
    EXPECT_EQ(failureOf(status("400 Bad Request", "CIMError: unsupported-protocol-version\r\n")),
              "refuses the request (HTTP status 400, CIMError unsupported-protocol-version)");
    EXPECT_EQ(failureOf(status("401 Unauthorized", "WWW-Authenticate: Basic realm=\"cimom\"\r\n")),
              "wants to know who asks: give --user (HTTP status 401)");
    EXPECT_EQ(
        failureOf(status("403 Forbidden")),
        "does not let this user ask; its rights are given in the object manager's configuration (HTTP status 403)");
    EXPECT_EQ(failureOf(status("404 Not Found")),
              "has nothing at /cimom; is this the port of an object manager? (HTTP status 404)");
    EXPECT_EQ(failureOf(status("501 Not Implemented", "CIMError: header%2Dmismatch\x1b\r\n")),
              "does not know the request; is this the port of an object manager? (HTTP status 501, CIMError "
              "header-mismatch\\x1b)");
    EXPECT_EQ(failureOf(status("503 Service Unavailable")),
              "is too busy to answer, or is just starting (HTTP status 503)");
    EXPECT_EQ(failureOf(status("302 Found", "Location: http://127.0.0.1:1/\r\n")),
              "refuses the request (HTTP status 302)");
    EXPECT_EQ(failureOf(status("204 No Content")), "refuses the request (HTTP status 204)");
}

TEST(ServerTest, InterimAnswerIsPassedOver) {
    EXPECT_EQ(failureOf("HTTP/1.1 100 Continue\r\nContent-Type: text/plain\r\n\r\n" + httpAnswer(namesBody(""))),
              "answered with status 0");
}

TEST(ServerTest, WhoIsNotThereIsSaidSo) {
    EXPECT_EQ(failureAt(accessTo("http://127.0.0.1:" + std::to_string(closedPort()))),
              "refuses the connection; is the object manager running, and does it listen on this port?");
    EXPECT_EQ(failureAt(accessTo("http://no..name:5988")),
              "has a name that is not known here; is it spelled right, and does the name service know it?");
}

TEST(ServerTest, OtherProtocolsAreDistinguished) {
    EXPECT_EQ(failureOf("220 till17 ESMTP\r\n"), "does not answer in HTTP; is this the port of an object manager?");
    EXPECT_EQ(failureOf(""), "ended the connection without an answer; does this port want https?");
}

TEST(ServerTest, UserAndPasswordGoIntoTheRequestAndNowhereElse) {
    std::string sent;
    RawServer raw([&](Connection& connection) {
        sent = connection.readRequest();
        connection.write(status("401 Unauthorized", "WWW-Authenticate: Basic realm=\"cimom\"\r\n"));
    });
    ServerAccess access = accessTo(raw.url());
    access.user = "desk";
    access.password = "s:cr\xc3\xa4t";
    EXPECT_EQ(failureAt(access), "does not accept the user desk with this password (HTTP status 401)");
    EXPECT_THAT(sent, HasSubstr("\r\nAuthorization: Basic ZGVzazpzOmNyw6R0\r\n"));
}

}  // namespace
