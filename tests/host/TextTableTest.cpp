#include <gtest/gtest.h>

#include "TextTable.h"

namespace {

using host::Align;
using host::TextTable;

TEST(TextTable, ColumnsAreAsWideAsTheirWidestCell) {
    TextTable table({{"Sensor"}, {"Reading", Align::Right}, {"State"}});
    table.add({"CPU", "42 °C", "ok"});
    table.add({"Power supply", "3 V", "critical low"});
    EXPECT_EQ(table.text(),
              "Sensor        Reading  State\n"
              "CPU             42 °C  ok\n"
              "Power supply      3 V  critical low\n");
}

TEST(TextTable, NoBlanksAtTheEndOfALine) {
    TextTable table({{"A"}, {"B"}});
    table.add({"long cell", ""});
    EXPECT_EQ(table.text(), "A          B\nlong cell\n");
}

TEST(TextTable, WithoutRowsTheTitlesStand) {
    EXPECT_EQ(TextTable({{"A"}, {"B"}}).text(), "A  B\n");
}

}  // namespace
