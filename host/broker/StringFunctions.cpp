#include "broker/Calls.h"
#include "broker/Tables.h"

namespace broker {
namespace {

const char* getCharPtr(const CMPIString* self, CMPIStatus* status) {
    const auto* string = held<StringObject>(self);
    return perform(string, {TABLE_OF<StringObject>, "getCharPtr"}, {}, status,
                   [&](CMPIrc&) { return string->content.c_str(); });
}

}  // namespace

void fillTable(CMPIStringFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<StringObject>;
    table.clone = cloneObject<StringObject>;
    table.getCharPtr = getCharPtr;
}

}  // namespace broker
