#include "broker/Calls.h"
#include "broker/Dates.h"
#include "broker/Tables.h"

namespace broker {
namespace {

constexpr const char* DATE_TIME_TABLE = TABLE_OF<DateTimeObject>;

CMPIUint64 getBinaryFormat(const CMPIDateTime* self, CMPIStatus* status) {
    const auto* dateTime = held<DateTimeObject>(self);
    return perform(dateTime, {DATE_TIME_TABLE, "getBinaryFormat"}, {}, status, [&](CMPIrc& rc) {
        const auto date = parseDate(dateTime->content);
        if (date && date->microseconds >= 0) return static_cast<CMPIUint64>(date->microseconds);
        rc = CMPI_RC_ERR_FAILED;  // before 1970: the binary form has no sign
        return CMPIUint64{0};
    });
}

CMPIString* getStringFormat(const CMPIDateTime* self, CMPIStatus* status) {
    const auto* dateTime = held<DateTimeObject>(self);
    return perform(dateTime, {DATE_TIME_TABLE, "getStringFormat"}, {}, status,
                   [&](CMPIrc&) { return dateTime->state.make<StringObject>(dateTime->content); });
}

CMPIBoolean isInterval(const CMPIDateTime* self, CMPIStatus* status) {
    const auto* dateTime = held<DateTimeObject>(self);
    return perform(dateTime, {DATE_TIME_TABLE, "isInterval"}, {}, status, [&](CMPIrc&) {
        const auto date = parseDate(dateTime->content);
        return static_cast<CMPIBoolean>(date && date->isInterval ? 1 : 0);
    });
}

}  // namespace

void fillTable(CMPIDateTimeFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<DateTimeObject>;
    table.clone = cloneObject<DateTimeObject>;
    table.getBinaryFormat = getBinaryFormat;
    table.getStringFormat = getStringFormat;
    table.isInterval = isInterval;
}

}  // namespace broker
