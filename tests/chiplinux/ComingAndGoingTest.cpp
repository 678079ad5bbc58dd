// The whole provider on the Linux chip library, for a long time, while chips go, come back, move and change numbers.
// The number of requests is that of the environment variable LONG_RUN_REQUESTS; see tools/long-run.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <random>

#include "Provider.h"
#include "ResourceUsage.h"
#include "Sandbox.h"
#include "SensorTree.h"
#include "StoppedClock.h"
#include "StreamsTo.h"

namespace {

constexpr unsigned SHORT_RUN = 20000;
constexpr unsigned EPOCHS = 10;           // the library is unloaded and loaded again between them
constexpr long STANDS_IN = 10000 + 1000;  // milliseconds: the chip library's last value, and the provider's stored one
constexpr long UNTIL_FOUND = 10000 + 1000;
constexpr int VALUES_EACH = 10000;  // a chip's values are those from its own number times this on
constexpr int NO_READING = -2147483647 - 1;
constexpr int CHIPS = 8;

unsigned requestedLength() {
    const char* text = std::getenv("LONG_RUN_REQUESTS");
    return text == nullptr ? SHORT_RUN : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

// One that has a sensor, or will have again.
struct Chip {
    std::filesystem::path directory;  // empty: it is gone
    int kernelNumber = 0;
    int value = 0;
    long changed = 0;                        // when it went, came or moved
    std::vector<std::pair<int, long>> past;  // values that it had, and until when
};

class ComingAndGoingTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        sandbox::hideHardware();
        fakeclock::set({1000, 0});
        sensortree::addAdapter(0, "SMBus stub driver");
        for (int i = 0; i < CHIPS; ++i) bring(i, i);
    }
    void TearDown() override { fakeclock::useReal(); }

    int random(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }

    void advance(long milliseconds) {
        m_now += milliseconds;
        m_clock.advanceMilliseconds(milliseconds);
        fakeclock::advanceMilliseconds(milliseconds);
    }

    // The last two are on no bus: their paths are alike but for the kernel's number.
    void bring(int i, int kernelNumber) {
        Chip& chip = m_chips.at(static_cast<std::size_t>(i));
        chip.value = (i + 1) * VALUES_EACH + m_changes % VALUES_EACH;
        const sensortree::Attributes attributes{{"temp1_input", std::to_string(chip.value)}};
        chip.directory = i < CHIPS - 2
                             ? sensortree::addI2c(kernelNumber, "lm75", 0, static_cast<unsigned>(0x48 + i), attributes)
                             : sensortree::addVirtual(kernelNumber, "zone" + std::to_string(i), attributes);
        chip.kernelNumber = kernelNumber;
        chip.changed = m_now;
    }

    void take(int i) {
        Chip& chip = m_chips.at(static_cast<std::size_t>(i));
        if (chip.directory.empty()) return;
        sensortree::remove(chip.directory);
        chip.directory.clear();
        chip.past.emplace_back(chip.value, m_now);
        if (chip.past.size() > 8) chip.past.erase(chip.past.begin());
        chip.changed = m_now;
    }

    // The lowest that no chip has, as the kernel gives them.
    int freeNumber() const {
        for (int number = 0;; ++number) {
            const auto has = [&](const Chip& chip) { return !chip.directory.empty() && chip.kernelNumber == number; };
            if (std::none_of(m_chips.begin(), m_chips.end(), has)) return number;
        }
    }

    // One chip moves, goes or comes, or two that there are change numbers.
    void disturb() {
        ++m_changes;
        const int i = random(CHIPS);
        const int other = random(CHIPS);
        if (m_chips.at(static_cast<std::size_t>(i)).directory.empty()) return bring(i, freeNumber());
        take(i);
        if (random(3) == 0) return;
        take(other);
        bring(other, freeNumber());
        if (i != other) bring(i, freeNumber());
    }

    bool isRight(const Chip& chip, int reading) const {
        const bool isThere = !chip.directory.empty();
        if (isThere && reading == chip.value) return true;
        if (isThere && m_now - chip.changed > UNTIL_FOUND) return false;
        if (reading == NO_READING) return true;
        return std::any_of(chip.past.begin(), chip.past.end(), [&](const auto& value) {
            return value.first == reading && m_now - value.second <= STANDS_IN;
        });
    }

    void learnOwners(const broker::Reply& reply) {
        m_owners.clear();
        for (const broker::Instance& instance : reply.instances) {
            const auto value = static_cast<int>(instance.findProperty("CurrentReading")->signedNumber);
            m_owners[instance.findProperty("Name")->text] = value / VALUES_EACH - 1;
        }
        ASSERT_EQ(m_owners.size(), static_cast<std::size_t>(CHIPS));
    }

    void expectRight(const broker::Reply& reply, std::size_t count) {
        ASSERT_EQ(reply.status.rc, 0);
        ASSERT_EQ(reply.instances.size(), count);
        for (const broker::Instance& instance : reply.instances) {
            const std::string& name = instance.findProperty("Name")->text;
            const auto reading = static_cast<int>(instance.findProperty("CurrentReading")->signedNumber);
            const Chip& chip = m_chips.at(static_cast<std::size_t>(m_owners.at(name)));
            ASSERT_TRUE(isRight(chip, reading)) << name << " reads " << reading << ", its chip has " << chip.value;
            ++(reading == NO_READING ? m_without : m_with);
        }
    }

    void sendOne(broker::InstanceProvider& provider) {
        advance(random(1500));
        if (random(8) == 0) disturb();
        switch (random(8)) {
            case 0:
                return expectRight(provider.enumerateInstances(classPath(SENSOR_CLASS)), CHIPS);
            case 1:
                ASSERT_EQ(provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths.size(),
                          static_cast<std::size_t>(CHIPS));
                return;
            case 2:
                ASSERT_EQ(provider.getInstance(namedPath(LOG_CLASS, LOG_NAME)).status.rc, 0);
                return;
            default:
                const std::string& name = std::next(m_owners.begin(), random(CHIPS))->first;
                return expectRight(provider.getInstance(namedPath(SENSOR_CLASS, name)), 1);
        }
    }

    void runEpoch(unsigned requests) {
        const StreamsTo silence(StreamsTo::nowhere());
        for (int i = 0; i < CHIPS; ++i) take(i);
        for (int i = 0; i < CHIPS; ++i) bring(i, i);
        LoadedProvider loaded;
        learnOwners(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)));
        for (unsigned i = 0; i < requests && !HasFatalFailure(); ++i) sendOne(loaded.provider);
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
    }

    StoppedClock m_clock;
    std::mt19937 m_random{20261122};
    long m_now = 0;
    int m_changes = 0;
    std::array<Chip, CHIPS> m_chips;
    std::map<std::string, int> m_owners;  // of the sensors: the chip's place in the array
    unsigned m_with = 0;
    unsigned m_without = 0;
};

TEST_F(ComingAndGoingTest, NoValueIsWrongAndNothingIsGained) {
    const unsigned perEpoch = requestedLength() / EPOCHS;
    ResourceUsage settled{};
    for (unsigned epoch = 1; epoch <= EPOCHS && !HasFatalFailure(); ++epoch) {
        runEpoch(perEpoch);
        const ResourceUsage now = ResourceUsage::now();
        std::cout << std::setw(8) << epoch * perEpoch << " requests: " << now << std::endl;
        if (epoch == 3) settled = now;
        if (epoch > 3) expectNoneGained(settled, now);
    }
    std::cout << m_changes << " changes; " << m_with << " readings, " << m_without << " times none\n";
    EXPECT_GT(m_with, m_without);
    EXPECT_GT(m_without, 0U);
}

}  // namespace
