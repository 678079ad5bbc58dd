#include "verify/Verify.h"

#include <algorithm>
#include <utility>

#include "format/ValueText.h"
#include "source/Answer.h"
#include "text/Utf8.h"
#include "verify/Causes.h"
#include "verify/Conformance.h"
#include "verify/SchemaError.h"

namespace host {
namespace {

using broker::Instance;
using broker::ObjectPath;
using broker::Reply;

std::string shownPath(const ObjectPath& path) {
    return printable(path.keys.empty() ? path.nameSpace + ':' + path.className : pathText(path));
}

// One class's requests, and what they bring to light.
class ClassVerifier {
  public:
    ClassVerifier(ExpectedClass expected, Source& source, Via via, Verification& verification)
        : m_expected(std::move(expected)), m_source(source), m_via(via), m_verification(verification) {
        m_report.className = m_expected.name;
    }

    ClassReport verified() {
        const std::vector<ObjectPath> paths = verifyNames();
        verifyInstances();
        for (const ObjectPath& path : paths) verifySingle(path);
        return std::move(m_report);
    }

  private:
    std::vector<ObjectPath> verifyNames() {
        Reply reply = checked("names", classPath(), m_source.enumerateInstanceNames(classPath()));
        m_report.names = reply.paths.size();
        for (const ObjectPath& path : reply.paths) add("names", path, faultsOf(path, m_expected, m_via));
        return std::move(reply.paths);
    }

    void verifyInstances() {
        const Reply reply = checked("instances", classPath(), m_source.enumerateInstances(classPath()));
        m_report.instances = reply.instances.size();
        for (const Instance& instance : reply.instances)
            add("instances", instance.path, faultsOf(instance, m_expected, m_via));
    }

    void verifySingle(ObjectPath path) {
        // An object manager knows no CMPI_chars: it sends the text that a client gave.
        for (broker::NamedValue& key : path.keys) {
            if (key.value.type == CMPI_chars) key.value.type = CMPI_string;
        }
        ++m_report.singles;
        const Reply reply = checked("get", path, m_source.getInstance(path));
        if (reply.status.rc != CMPI_RC_OK) return;
        if (reply.instances.size() != 1) {
            add("get", path,
                {{FaultKind::WrongInstance,
                  "the answer has " + std::to_string(reply.instances.size()) + " instances instead of one"}});
        }
        for (const Instance& instance : reply.instances) {
            add("get", instance.path, faultsOf(instance, m_expected, m_via));
            if (!isSameInstance(instance.path, path)) {
                add("get", instance.path,
                    {{FaultKind::WrongInstance, "another instance was asked for: " + shownPath(path)}});
            }
        }
    }

    static bool isSameInstance(const ObjectPath& answered, const ObjectPath& asked) {
        return std::all_of(asked.keys.begin(), asked.keys.end(), [&answered](const broker::NamedValue& key) {
            const broker::Value* value = answered.findKey(key.name);
            return value != nullptr && valueText(*value) == valueText(key.value);
        });
    }

    Reply checked(const char* request, const ObjectPath& path, Reply reply) {
        if (reply.status.rc != CMPI_RC_OK) {
            const std::string who = m_via == Via::Manager ? "server" : "provider";
            add(request, path, {{FaultKind::Refused, "the " + who + " answered " + statusText(reply.status)}});
            if (!m_verification.firstFailure) m_verification.firstFailure = reply.status;
        }
        return reply;
    }

    ObjectPath classPath() const { return {"", m_expected.nameSpace, m_expected.name, {}}; }

    void add(const char* request, const ObjectPath& path, const std::vector<Fault>& faults) {
        for (const Fault& fault : faults) {
            const std::string cause = m_via == Via::Manager ? likelyCause(fault.kind) : "";
            m_report.problems.push_back({request, shownPath(path), fault.text, cause});
        }
    }

    ExpectedClass m_expected;
    Source& m_source;
    Via m_via;
    Verification& m_verification;
    ClassReport m_report;
};

}  // namespace

bool Verification::conforms() const {
    return std::all_of(classes.begin(), classes.end(),
                       [](const ClassReport& report) { return report.problems.empty(); });
}

Verification verify(const mof::Schema& schema, const std::string& nameSpace, Source& source, Via via) {
    Verification verification;
    verification.nameSpace = nameSpace;
    for (const mof::Class& declaration : schema.classes()) {
        if (mof::isSet(declaration.qualifiers, "Abstract")) continue;
        ExpectedClass expected{nameSpace, declaration.name, schema.membersOf(declaration)};
        verification.classes.push_back(ClassVerifier(std::move(expected), source, via, verification).verified());
    }
    if (verification.classes.empty()) throw SchemaError("the schema declares no class that can have instances");
    return verification;
}

}  // namespace host
