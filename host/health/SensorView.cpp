#include "health/SensorView.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "health/Decimal.h"
#include "health/Units.h"

namespace host {
namespace {

using broker::Instance;
using broker::Value;

Number numberOf(const Instance& instance, const char* property) {
    const Value* value = instance.findProperty(property);
    return value == nullptr ? std::nullopt : numberIn(*value);
}

bool isPast(Number threshold, std::int64_t reading, bool isHigh) {
    return threshold && (isHigh ? reading > *threshold : reading < *threshold);
}

Severity severityOn(bool isHigh, const SensorView& sensor) {
    if (isPast(isHigh ? sensor.upperFatal : sensor.lowerFatal, sensor.reading, isHigh)) return Severity::Fatal;
    if (isPast(isHigh ? sensor.upperCritical : sensor.lowerCritical, sensor.reading, isHigh)) return Severity::Critical;
    if (isPast(isHigh ? sensor.upperNonCritical : sensor.lowerNonCritical, sensor.reading, isHigh)) {
        return Severity::NonCritical;
    }
    return Severity::Normal;
}

Number lowestLimit(const SensorView& sensor) {
    Number lowest;
    for (const Number& limit : {sensor.lowerNonCritical, sensor.lowerCritical, sensor.lowerFatal}) {
        if (limit && (!lowest || *limit < *lowest)) lowest = limit;
    }
    return lowest ? lowest : sensor.minReadable;
}

Number highestLimit(const SensorView& sensor) {
    Number highest;
    for (const Number& limit : {sensor.upperNonCritical, sensor.upperCritical, sensor.upperFatal}) {
        if (limit && (!highest || *limit > *highest)) highest = limit;
    }
    return highest ? highest : sensor.maxReadable;
}

// The cells of a bar whose ends are two different numbers. A picture: floating point is exact enough for it.
class Cells {
  public:
    Cells(std::int64_t low, std::int64_t high, std::size_t count)
        : m_low(static_cast<double>(low)), m_span(static_cast<double>(high) - m_low), m_cells(count, '-') {}

    void mark(Number number, char sign) {
        if (!number) return;
        const double share = std::clamp((static_cast<double>(*number) - m_low) / m_span, 0.0, 1.0);
        m_cells[static_cast<std::size_t>(std::lround(share * static_cast<double>(m_cells.size() - 1)))] = sign;
    }
    const std::string& text() const { return m_cells; }

  private:
    double m_low;
    double m_span;
    std::string m_cells;
};

}  // namespace

Number numberIn(const Value& value) {
    if (value.isNull) return std::nullopt;
    if (value.isSigned()) return value.signedNumber;
    constexpr auto LARGEST = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!value.isUnsigned() || value.unsignedNumber > LARGEST) return std::nullopt;
    return static_cast<std::int64_t>(value.unsignedNumber);
}

std::optional<SensorView> SensorView::of(const Instance& instance) {
    const Number reading = numberOf(instance, "CurrentReading");
    if (!reading) return std::nullopt;
    SensorView view;
    if (const Value* name = instance.findProperty("Name"); name != nullptr) view.name = name->text;
    view.reading = *reading;
    view.modifier = numberOf(instance, "UnitModifier").value_or(0);
    view.unit = unitText(numberOf(instance, "BaseUnits").value_or(0), numberOf(instance, "RateUnits").value_or(0));
    view.lowerNonCritical = numberOf(instance, "LowerThresholdNonCritical");
    view.lowerCritical = numberOf(instance, "LowerThresholdCritical");
    view.lowerFatal = numberOf(instance, "LowerThresholdFatal");
    view.upperNonCritical = numberOf(instance, "UpperThresholdNonCritical");
    view.upperCritical = numberOf(instance, "UpperThresholdCritical");
    view.upperFatal = numberOf(instance, "UpperThresholdFatal");
    view.minReadable = numberOf(instance, "MinReadable");
    view.maxReadable = numberOf(instance, "MaxReadable");
    return view;
}

std::string SensorView::scaled(Number number) const {
    return number ? scaledDecimal(*number, modifier) : "-";
}

std::string SensorView::withUnit(std::int64_t number) const {
    return unit.empty() ? scaled(number) : scaled(number) + ' ' + unit;
}

std::string SensorState::word() const {
    const char* side = isHigh ? "high" : "low";
    switch (severity) {
        case Severity::Normal:
            return "ok";
        case Severity::NonCritical:
            return side;
        case Severity::Critical:
            return std::string("critical ") + side;
        case Severity::Fatal:
            return std::string("fatal ") + side;
    }
    return "";
}

SensorState stateOf(const SensorView& sensor) {
    const Severity high = severityOn(true, sensor);
    const Severity low = severityOn(false, sensor);
    return high >= low ? SensorState{high, true} : SensorState{low, false};
}

std::string limitsBar(const SensorView& sensor, std::size_t cells) {
    const Number low = lowestLimit(sensor);
    const Number high = highestLimit(sensor);
    if (!low || !high || *low >= *high) return "";
    Cells bar(*low, *high, cells);
    bar.mark(sensor.lowerNonCritical, ':');
    bar.mark(sensor.upperNonCritical, ':');
    for (const Number& limit : {sensor.lowerCritical, sensor.lowerFatal, sensor.upperCritical, sensor.upperFatal}) {
        bar.mark(limit, '!');
    }
    bar.mark(sensor.reading, sensor.reading < *low ? '<' : sensor.reading > *high ? '>' : '|');
    return '[' + bar.text() + ']';
}

}  // namespace host
