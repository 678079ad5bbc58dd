#include "health/EventLogState.h"

namespace host {
namespace {

bool isTrue(const broker::Instance& instance, const char* property) {
    const broker::Value* value = instance.findProperty(property);
    return value != nullptr && !value->isNull && value->type == CMPI_boolean && value->unsignedNumber != 0;
}

}  // namespace

EventLogState EventLogState::of(const broker::Instance& instance) {
    const broker::Value* lines = instance.findProperty("LogLines");
    return {isTrue(instance, "LogValid"), isTrue(instance, "LogFull"), lines == nullptr ? 0 : lines->elements.size()};
}

std::string EventLogState::text() const {
    return std::to_string(lines) + (lines == 1 ? " line" : " lines") + (isFull ? ", full" : "") +
           (isValid ? "" : ", not valid");
}

}  // namespace host
