// The binary contracts: with the chip library, which is not ours to rebuild, and of the log's classes.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <set>
#include <string>
#include <type_traits>

#include "LogRecord.h"
#include "OpenHandler.h"
#include "Symbols.h"
#include "chip.h"
#include "log.h"

namespace {

// Records with texts are no plain structures, but the compilers in use lay them out as if they were.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

TEST(ChipAbiTest, HandleListIsAVectorOfNumbersWithRoomBehindIt) {
    EXPECT_EQ(offsetof(CSensorHandleList, reserved), 24U);
    EXPECT_EQ(sizeof(CSensorHandleList), 24U + 512U);
    EXPECT_FALSE(std::is_polymorphic_v<CSensorHandleList>);
}

TEST(ChipAbiTest, SensorInformationHasItsLayout) {
    EXPECT_FALSE(std::is_polymorphic_v<CSensorInformation>);
    EXPECT_EQ(offsetof(CSensorInformation, accuracy), 0U);
    EXPECT_EQ(offsetof(CSensorInformation, baseUnits), 4U);
    EXPECT_EQ(offsetof(CSensorInformation, name), 8U);
    EXPECT_EQ(offsetof(CSensorInformation, hysteresis), 40U);
    EXPECT_EQ(offsetof(CSensorInformation, isLinear), 44U);
    EXPECT_EQ(offsetof(CSensorInformation, lowerThresholdCritical), 48U);
    EXPECT_EQ(offsetof(CSensorInformation, lowerThresholdFatal), 52U);
    EXPECT_EQ(offsetof(CSensorInformation, lowerThresholdNonCritical), 56U);
    EXPECT_EQ(offsetof(CSensorInformation, maxReadable), 60U);
    EXPECT_EQ(offsetof(CSensorInformation, minReadable), 64U);
    EXPECT_EQ(offsetof(CSensorInformation, nominalReading), 68U);
    EXPECT_EQ(offsetof(CSensorInformation, otherSensorTypeDescription), 72U);
    EXPECT_EQ(offsetof(CSensorInformation, rateUnits), 104U);
    EXPECT_EQ(offsetof(CSensorInformation, resolution), 108U);
    EXPECT_EQ(offsetof(CSensorInformation, sensorType), 112U);
    EXPECT_EQ(offsetof(CSensorInformation, unitModifier), 116U);
    EXPECT_EQ(offsetof(CSensorInformation, unread), 120U);
    EXPECT_EQ(offsetof(CSensorInformation, upperThresholdCritical), 124U);
    EXPECT_EQ(offsetof(CSensorInformation, upperThresholdFatal), 128U);
    EXPECT_EQ(offsetof(CSensorInformation, upperThresholdNonCritical), 132U);
    EXPECT_EQ(offsetof(CSensorInformation, reserved), 136U);
    EXPECT_EQ(sizeof(CSensorInformation), 136U + 512U);
}

TEST(ChipAbiTest, ReadingHasItsLayout) {
    EXPECT_TRUE(std::is_standard_layout_v<CSensorReading>);
    EXPECT_EQ(offsetof(CSensorReading, value), 0U);
    EXPECT_EQ(offsetof(CSensorReading, preset), 8U);
    EXPECT_EQ(offsetof(CSensorReading, reserved), 16U);
    EXPECT_EQ(sizeof(CSensorReading), 16U + 512U);
}

TEST(ChipAbiTest, EventLogHasItsLayout) {
    EXPECT_FALSE(std::is_polymorphic_v<CSystemEventLog>);
    EXPECT_EQ(offsetof(CSystemEventLog, logFull), 0U);
    EXPECT_EQ(offsetof(CSystemEventLog, lines), 8U);
    EXPECT_EQ(offsetof(CSystemEventLog, multipleEventCountIncrement), 32U);
    EXPECT_EQ(offsetof(CSystemEventLog, multipleEventTimeWindow), 33U);
    EXPECT_EQ(offsetof(CSystemEventLog, logValid), 34U);
    EXPECT_EQ(offsetof(CSystemEventLog, reserved), 35U);
    EXPECT_EQ(sizeof(CSystemEventLog), 40U + 512U);
}

#pragma GCC diagnostic pop

TEST(ChipAbiTest, ServiceObjectIsOnePointerWithRoomBehindIt) {
    EXPECT_EQ(sizeof(CChip), 8U + 4096U);
    EXPECT_FALSE(std::is_polymorphic_v<CChip>);
    EXPECT_EQ(sizeof(CPOSSystem), 1U);
}

TEST(ChipAbiTest, ProviderNeedsTheseOperationsAlone) {
    std::set<std::string> needed;
    for (const std::string& symbol : undefinedSymbols(PROVIDER_LIBRARY))
        if (symbol.find("CChip") != std::string::npos || symbol.find("CPOSSystem") != std::string::npos)
            needed.insert(symbol);
    EXPECT_EQ(needed, (std::set<std::string>{
                          "_ZN10CPOSSystem10s_instanceE", "_ZN10CPOSSystem5IsZanEv", "_ZN10CPOSSystem8IsGrebelEv",
                          "_ZN5CChip10InitialiseEv", "_ZN5CChip10ReadSensorEjR14CSensorReading",
                          "_ZN5CChip17GetSystemEventLogER15CSystemEventLog",
                          "_ZN5CChip20GetSensorInformationEjR18CSensorInformation",
                          "_ZN5CChip22EnumerateSensorHandlesER17CSensorHandleList", "_ZN5CChipC1Ev", "_ZN5CChipD1Ev"}));
}

TEST(LogAbiTest, CallsHaveTheirNames) {
    const std::set<std::string> defined = definedSymbols(LOG_LIBRARY);
    EXPECT_EQ(defined.count("_Z3Log9LOG_LEVELPKcz"), 1U);
    EXPECT_EQ(defined.count("_Z4WLog9LOG_LEVELPKwz"), 1U);
    EXPECT_EQ(defined.count("_Z8LogQuick9LOG_LEVELPKc"), 1U);
    EXPECT_EQ(defined.count("_ZN14FileLogHandler9GetConfigEv"), 1U);
    EXPECT_EQ(defined.count("_ZN14FileLogHandler8WriteLogERNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"), 1U);
    EXPECT_EQ(defined.count("_ZN14FileLogHandler12WriteConsoleERNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"),
              1U);
    EXPECT_EQ(defined.count("_ZN9LogRecord10GetLogLineERNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"), 1U);
}

TEST(LogAbiTest, LevelIsANumberOf32BitsWithASign) {
    EXPECT_EQ(sizeof(LOG_LEVEL), 4U);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<LOG_LEVEL>, int>));
    EXPECT_EQ(LOG_OFF, 0);
    EXPECT_EQ(LOG_TRACE, 4);
}

template <typename Object, typename Member>
std::ptrdiff_t offsetIn(const Object& object, const Member& member) {
    return reinterpret_cast<const char*>(&member) - reinterpret_cast<const char*>(&object);
}

TEST(LogAbiTest, SinksFieldsStandInTheirOrder) {
    const OpenHandler handler;
    EXPECT_EQ(offsetIn(handler, handler.m_level), 8);
    EXPECT_EQ(offsetIn(handler, handler.m_fileName), 16);
    EXPECT_EQ(offsetIn(handler, handler.m_maxLength), 48);
    EXPECT_EQ(offsetIn(handler, handler.m_isConsole), 56);
    EXPECT_EQ(offsetIn(handler, handler.m_file), 64);
    EXPECT_EQ(offsetIn(handler, handler.m_stopped), 72);
}

class OpenRecord : public LogRecord {
  public:
    explicit OpenRecord(std::string text) : LogRecord(LOG_INFO, text) {}
    using LogRecord::m_level;
    using LogRecord::m_message;
    using LogRecord::m_pid;
    using LogRecord::m_tid;
    using LogRecord::m_time;
};

TEST(LogAbiTest, RecordsFieldsStandInTheirOrder) {
    const OpenRecord record("");
    EXPECT_EQ(offsetIn(record, record.m_level), 8);
    EXPECT_EQ(offsetIn(record, record.m_message), 16);
    EXPECT_EQ(offsetIn(record, record.m_time), 48);
    EXPECT_EQ(offsetIn(record, record.m_tid), 64);
    EXPECT_EQ(offsetIn(record, record.m_pid), 68);
    EXPECT_EQ(sizeof(LogRecord), 72U);
}

using Slot = void (*)(void* self, void* argument);

Slot slotOf(const void* object, unsigned number) {
    const void* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    Slot slot = nullptr;
    std::memcpy(&slot, static_cast<const char*>(table) + number * sizeof slot, sizeof slot);
    return slot;
}

// Records which of its operations was called.
class Witness : public LogHandler {
  public:
    explicit Witness(std::string& calls) : m_calls(calls) {}
    ~Witness() override { m_calls += "destructor "; }
    void Log(LogRecord&) override { m_calls += "Log "; }
    LOG_LEVEL GetLevel() override {
        m_calls += "GetLevel ";
        return LOG_INFO;
    }

  private:
    std::string& m_calls;
};

TEST(LogAbiTest, SinksOperationsStandInTheirOrder) {
    std::string calls;
    LogHandler* witness = new Witness(calls);
    slotOf(witness, 2)(witness, nullptr);
    slotOf(witness, 3)(witness, nullptr);
    slotOf(witness, 1)(witness, nullptr);  // the deleting destructor: the address sanitizer reports a leak otherwise
    alignas(Witness) unsigned char place[sizeof(Witness)];
    LogHandler* placed = new (place) Witness(calls);
    slotOf(placed, 0)(placed, nullptr);
    EXPECT_EQ(calls, "Log GetLevel destructor destructor ");
}

class RecordWitness : public LogRecord {
  public:
    RecordWitness(std::string text, std::string& calls) : LogRecord(LOG_INFO, text), m_calls(calls) {}
    ~RecordWitness() override { m_calls += "destructor "; }

  private:
    std::string& m_calls;
};

TEST(LogAbiTest, RecordsOnlyVirtualOperationIsItsDestructor) {
    std::string calls;
    alignas(RecordWitness) unsigned char place[sizeof(RecordWitness)];
    LogRecord* placed = new (place) RecordWitness("text", calls);
    slotOf(placed, 0)(placed, nullptr);
    LogRecord* record = new RecordWitness("text", calls);
    slotOf(record, 1)(record, nullptr);
    EXPECT_EQ(calls, "destructor destructor ");
}

}  // namespace
