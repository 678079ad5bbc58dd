// Names and handles, without a system.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "Names.h"

namespace {

using testing::ElementsAre;

TEST(PlaceTest, ChipOnAnAdapterIsAtItsNameAndAddress) {
    EXPECT_EQ(placeOf(Bus::Adapter, 0x48, "SMBus stub driver", "/sys/devices/i2c-0/0-0048"), "SMBus stub driver 72");
}

TEST(PlaceTest, ChipOfABusWithAddressesIsAtItsAddress) {
    EXPECT_EQ(placeOf(Bus::Address, 0x200, "PCI adapter", "/sys/devices/pci0000:00/0000:02:00.0"), "512");
}

TEST(PlaceTest, OtherChipIsAtItsDevice) {
    EXPECT_EQ(placeOf(Bus::Device, 0, "ACPI interface", "/sys/devices/LNXSYSTM:00/ACPI000D:00"), "ACPI000D:00");
    EXPECT_EQ(placeOf(Bus::Device, 0, "", "/sys/devices/virtual/thermal/thermal_zone0"), "thermal_zone0");
}

TEST(PlaceTest, InputDevicesRunningNumberIsLeftOut) {
    EXPECT_EQ(placeOf(Bus::Device, 0, "", "/sys/devices/usb1/1-4/1-4:1.0/0003:1E71:2007.0004"), "0003:1E71:2007");
    EXPECT_EQ(placeOf(Bus::Device, 0, "", "/sys/devices/platform/name.0"), "name.0");
}

TEST(PlaceTest, ChannelsOfAControllerAreLeftOut) {
    EXPECT_EQ(placeOf(Bus::Controller, 0, "", "/sys/devices/pci0000:00/0000:00:17.0/ata3/host2/target2:0:0/2:0:0:0"),
              "0000:00:17.0 0");
    EXPECT_EQ(placeOf(Bus::Controller, 1, "", "/sys/devices/platform/soc/fe204000.spi/spi_master/spi0/spi0.1"),
              "fe204000.spi 1");
}

TEST(PlaceTest, DeviceIsWhatIsAboveTheKernelsNumber) {
    EXPECT_EQ(deviceOf("/sys/devices/i2c-0/0-0048/hwmon/hwmon12"), "/sys/devices/i2c-0/0-0048");
    EXPECT_EQ(deviceOf("/sys/devices/virtual/thermal/thermal_zone0/hwmon3"),
              "/sys/devices/virtual/thermal/thermal_zone0");
    EXPECT_EQ(deviceOf("/sys/devices/i2c-0/0-002f"), "/sys/devices/i2c-0/0-002f");
    EXPECT_EQ(deviceOf("/sys/devices/hwmon"), "/sys/devices/hwmon");
    EXPECT_EQ(deviceOf(""), "");
}

TEST(OrderTest, NumbersInsideAreComparedAsNumbers) {
    EXPECT_LT(compareNaturally("in2", "in10"), 0);
    EXPECT_GT(compareNaturally("in10", "in2"), 0);
    EXPECT_EQ(compareNaturally("in10", "in10"), 0);
    EXPECT_LT(compareNaturally("fan1", "in0"), 0);
    EXPECT_LT(compareNaturally("a1c", "a2b"), 0);
    EXPECT_LT(compareNaturally("temp", "temp1"), 0);
    EXPECT_LT(compareNaturally("99999999999999999999998", "99999999999999999999999"), 0);
    EXPECT_NE(compareNaturally("temp01", "temp1"), 0);
    EXPECT_EQ(compareNaturally("temp01", "temp1"), -compareNaturally("temp1", "temp01"));
    EXPECT_LT(compareNaturally("\x7f", "\x80"), 0);
}

TEST(OrderTest, KeysAreOrderedByPrefixPlaceAndFeature) {
    EXPECT_TRUE(comesBefore({"a", "z", "z"}, {"b", "a", "a"}));
    EXPECT_TRUE(comesBefore({"a", "2", "z"}, {"a", "10", "a"}));
    EXPECT_TRUE(comesBefore({"a", "a", "in2"}, {"a", "a", "in10"}));
    EXPECT_FALSE(comesBefore({"a", "a", "in2"}, {"a", "a", "in2"}));
}

// Handles are written down by the people who run the terminals; they may never change.
TEST(HandleTest, HandleIsAHashOfTheKeyWithTheHighestBitSet) {
    EXPECT_THAT(handlesFor({{"lm75", "SMBus stub driver 72", "temp1"}, {"coretemp", "0", "temp2"}}),
                ElementsAre(0xaa7ad106U, 0xa0726350U));
}

TEST(HandleTest, EachPartOfTheKeyCounts) {
    const std::vector<unsigned> handles = handlesFor(
        {{"a", "b", "c"}, {"x", "b", "c"}, {"a", "x", "c"}, {"a", "b", "x"}, {"ab", "", "c"}, {"a", "", "bc"}});
    for (std::size_t i = 0; i < handles.size(); ++i)
        EXPECT_EQ(std::count(handles.begin(), handles.end(), handles[i]), 1) << i;
}

TEST(HandleTest, EqualKeysTakeTheNextFreeNumbers) {
    const Key key{"nct", "virtual", "temp1"};
    const std::vector<unsigned> handles = handlesFor({key, key, key});
    EXPECT_THAT(handles, ElementsAre(handles[0], handles[0] + 1, handles[0] + 2));
}

// The key's hash is the greatest; it was found by search.
TEST(HandleTest, NextNumberAfterTheGreatestIsTheLeast) {
    const Key key{"p", "", "fnge6j4"};
    EXPECT_THAT(handlesFor({key, key}), ElementsAre(0xffffffffU, 0x80000000U));
}

std::vector<std::string> namesOfLabels(const std::vector<std::string>& labels) {
    std::vector<Labelled> sensors;
    for (const std::string& label : labels) sensors.push_back({"lm85b", "temp1", label});
    return namesFor(sensors);
}

TEST(NameTest, LabelIsTheName) {
    EXPECT_THAT(namesOfLabels({"CPU", "Board"}), ElementsAre("CPU", "Board"));
}

TEST(NameTest, BareFeatureGetsThePrefix) {
    EXPECT_THAT(namesOfLabels({"temp1", ""}), ElementsAre("lm85b temp1", "lm85b temp1"));
    EXPECT_THAT(namesOfLabels({"temp2"}), ElementsAre("temp2"));
}

TEST(NameTest, LabelsThatAreNotUniqueGetThePrefix) {
    EXPECT_THAT(namesFor({{"lm75", "temp1", "Air"}, {"lm85", "temp2", "Air"}, {"lm85", "temp3", "Core"}}),
                ElementsAre("lm75 Air", "lm85 Air", "Core"));
}

TEST(NameTest, BytesThatNobodyCanPrintAreQuestionMarks) {
    EXPECT_THAT(namesOfLabels({"a\x01"
                               "b\x7f",
                               "\xff\xfe", "\xc3\xa9t\xc3", std::string("N\0L", 3)}),
                ElementsAre("a?b?", "??", "\xc3\xa9t?", "N?L"));
}

TEST(NameTest, WhatIsNoCharacterIsNotPrinted) {
    // Overlong, a surrogate, beyond the last one, a control character, no character.
    for (const char* label :
         {"\xc0\x80", "\xe0\x80\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xc2\x85", "\xef\xbf\xbf"})
        EXPECT_THAT(namesOfLabels({label}), ElementsAre(std::string(std::strlen(label), '?')));
}

TEST(NameTest, CharactersOfAllLengthsArePrinted) {
    EXPECT_THAT(namesOfLabels({"\xc2\xb0"
                               "C",
                               "\xe2\x84\x83", "\xf0\x9f\x8c\xa1"}),
                ElementsAre("\xc2\xb0"
                            "C",
                            "\xe2\x84\x83", "\xf0\x9f\x8c\xa1"));
}

}  // namespace
