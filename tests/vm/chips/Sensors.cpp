#include "Sensors.h"

#include "LogStructure.h"

namespace {

constexpr char MINIMUM[] = "LowerThresholdNonCritical";
constexpr char LOWER_CRITICAL[] = "LowerThresholdCritical";
constexpr char MAXIMUM[] = "UpperThresholdNonCritical";
constexpr char CRITICAL[] = "UpperThresholdCritical";
constexpr char EMERGENCY[] = "UpperThresholdFatal";
constexpr char HYSTERESIS[] = "Hysteresis";

using Limits = std::map<std::string, int>;

// CIM's codes, and the provider's word.
struct Kind {
    const char* word;
    const char* sensorType;
    const char* baseUnits;
    const char* unitModifier;
};
constexpr Kind TEMPERATURE{"Temperature", "2", "2", "-3"};
constexpr Kind VOLTAGE{"Voltage", "3", "5", "-3"};
constexpr Kind CURRENT{"Current", "4", "6", "-3"};
constexpr Kind FAN{"Tachometer", "5", "19", "0"};
constexpr Kind HUMIDITY{"Humidity", "9", "65", "-3"};
constexpr Kind POWER{"Other", "1", "7", "-3"};

SensorValues sensor(const Kind& kind, const std::string& label, const std::string& handle, int reading,
                    const Limits& limits = {}) {
    const std::string name = label + "(" + handle + ")";
    SensorValues values{{"BaseUnits", kind.baseUnits},
                        {"Caption", std::string(kind.word) + "(" + handle + ")"},
                        {"CurrentReading", std::to_string(reading)},
                        {"Description", name + ": " + kind.word + " sensor"},
                        {"DeviceID", handle},
                        {"IsLinear", "true"},
                        {"Name", name},
                        {"OtherSensorTypeDescription", &kind == &POWER ? "Power" : ""},
                        {"RateUnits", "0"},
                        {"SensorType", kind.sensorType},
                        {"UnitModifier", kind.unitModifier}};
    for (const auto& [limit, value] : limits) values[limit] = std::to_string(value);
    return values;
}

// The lm85 has 0xc0 for the voltage that each input is made for.
SensorValues lm85Voltage(int input, const std::string& handle, int nominal, bool hasLimits = true) {
    const auto millivolts = [&](int code) { return (code * nominal + 0xc0 / 2) / 0xc0; };
    return sensor(VOLTAGE, "lm85b in" + std::to_string(input), handle, millivolts(0xc0),
                  hasLimits ? Limits{{MINIMUM, millivolts(0xad)}, {MAXIMUM, millivolts(0xd3)}} : Limits{});
}

// It counts a clock of 90 kHz during a turn.
int lm85Fan(int count) {
    return 90000 * 60 / count;
}

// The max16065 has 10 bits for readings, here the lower two of them 0, and 8 for limits, of 5.56 V.
SensorValues max16065Voltage(int input, const std::string& handle) {
    const auto millivolts = [&](int code) { return (code + input) * 5560 / 256; };
    return sensor(VOLTAGE, "max16065 in" + std::to_string(input), handle, millivolts(0x90),
                  {{LOWER_CRITICAL, millivolts(0x70)}, {MINIMUM, millivolts(0x80)}, {CRITICAL, millivolts(0xa0)}});
}

}  // namespace

std::vector<SensorValues> expectedSensors() {
    return {
        sensor(TEMPERATURE, "acpitz temp1", "b79b365d", 37100, {{CRITICAL, 100000}}),
        sensor(TEMPERATURE, "CPU", "aa7ad106", 25500, {{MAXIMUM, 80000}, {HYSTERESIS, 5000}}),
        sensor(TEMPERATURE, "lm75 temp1", "cfaad3b4", 31000, {{MAXIMUM, 85000}, {HYSTERESIS, 15000}}),
        sensor(FAN, "lm85b fan1", "91ffaf21", lm85Fan(0x1000), {{MINIMUM, lm85Fan(0x2000)}}),
        sensor(FAN, "lm85b fan2", "b802298a", lm85Fan(0x0800)),
        sensor(FAN, "lm85b fan3", "de04a3f3", 0),
        sensor(FAN, "lm85b fan4", "84071e5c", lm85Fan(0x2000)),
        lm85Voltage(0, "98ee7f3c", 2500),
        lm85Voltage(1, "bef0f9a5", 2250),
        lm85Voltage(2, "e4f3740e", 3300),
        lm85Voltage(3, "8af5ee77", 5000),
        lm85Voltage(4, "80e49598", 12000, false),
        sensor(TEMPERATURE, "lm85b temp1", "fdc5f070", 47000, {{MINIMUM, 5000}, {MAXIMUM, 85000}}),
        sensor(TEMPERATURE, "lm85b temp2", "efcd5fab", 39000, {{MINIMUM, -127000}, {MAXIMUM, 127000}}),
        sensor(CURRENT, "ltc4215 curr1", "fee03a09", 1208),
        sensor(VOLTAGE, "Supply", "98781b7e", 2 * 7712),
        sensor(POWER, "ltc4215 power1", "885d1368", 9316),
        sensor(TEMPERATURE, "max6659 temp1", "dbfd7bab", 36000,
               {{MINIMUM, 5000}, {MAXIMUM, 80000}, {CRITICAL, 95000}, {EMERGENCY, 105000}, {HYSTERESIS, 10000}}),
        sensor(TEMPERATURE, "max6659 temp2", "e9f60c70", 58125,
               {{MINIMUM, 2000}, {MAXIMUM, 90000}, {CRITICAL, 100000}, {EMERGENCY, 110000}, {HYSTERESIS, 10000}}),
        sensor(CURRENT, "max16065 curr1", "ceddd606", 87843),
        max16065Voltage(0, "cff55618"),
        max16065Voltage(1, "f5f7d081"),
        max16065Voltage(2, "9bfa4aea"),
        max16065Voltage(3, "c1fcc553"),
        max16065Voltage(4, "e7ff3fbc"),
        max16065Voltage(5, "8e01ba25"),
        max16065Voltage(6, "b404348e"),
        max16065Voltage(7, "da06aef7"),
        max16065Voltage(8, "9fe182d0"),
        max16065Voltage(9, "c5e3fd39"),
        max16065Voltage(10, "9644e1a3"),
        max16065Voltage(11, "f042673a"),
        sensor(VOLTAGE, "max16065 in12", "ca3fecd1", 0),
        sensor(TEMPERATURE, "Composite", "90be0e86", 49850, {{MAXIMUM, 69850}, {CRITICAL, 99850}}),
        sensor(POWER, "power_meter power1", "9e9ce0e7", 43210),
        sensor(HUMIDITY, "sht21 humidity1", "fb57284d", 49664),
        sensor(TEMPERATURE, "sht21 temp1", "e238b442", 23442),
    };
}

Strings expectedReadings() {
    Strings readings;
    for (SensorValues& values : expectedSensors()) readings.push_back(values["Name"] + ": " + values["CurrentReading"]);
    return readings;
}

// The verification of modules and the kernel's tests of its own cryptography would take half of the boot.
Machine machineWithChips(const std::string& group, const std::string& logStructure, const std::string& logArea) {
    Machine machine{group};
    machine.drives = 1;
    machine.kernel = "memmap=1M$0x10000000 cryptomgr.notests initcall_blacklist=load_system_certificate_list";
    machine.devices = "-acpitable file=" GUEST
                      "/ssdt.aml -device loader,file=values,addr=0x10000000,force-raw=on "
                      "-smbios file=structure -device loader,file=log,addr=" +
                      std::to_string(LOG_ADDRESS) + ",force-raw=on";
    // As in ssdt.dsl: 37.1 degrees, no failure, 43.21 watts.
    machine.files = {
        {"values", bytesOf("1e 0c 00 00 00 00 00 00 ca a8 00 00")}, {"structure", logStructure}, {"log", logArea}};
    return machine;
}
