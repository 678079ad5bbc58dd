#include <gtest/gtest.h>

#include "text/TextTable.h"

namespace {

using host::Align;
using host::Charset;
using host::TextTable;

TEST(TextTableTest, ColumnsAreAsWideAsTheirWidestCell) {
    TextTable table({{"Sensor"}, {"Reading", Align::Right}, {"State"}}, Charset::Utf8);
    table.add({"CPU", "42 °C", "ok"});
    table.add({"Power supply", "3 V", "critical low"});
    EXPECT_EQ(table.text(),
              "Sensor        Reading  State\n"
              "CPU             42 °C  ok\n"
              "Power supply      3 V  critical low\n");
}

TEST(TextTableTest, ColumnsAreAsWideAsAsciiNeeds) {
    TextTable table({{"\u00dcber"}, {"Reading", Align::Right}, {"State"}}, Charset::Ascii);
    table.add({"\u00b5", "42 \u00b0C", "ok"});
    EXPECT_EQ(table.text(),
              "\\xc3\\x9cber  Reading  State\n"
              "u            42 degC  ok\n");
}

TEST(TextTableTest, NoBlanksAtTheEndOfALine) {
    TextTable table({{"A"}, {"B"}}, Charset::Utf8);
    table.add({"long cell", ""});
    EXPECT_EQ(table.text(), "A          B\nlong cell\n");
}

TEST(TextTableTest, WithoutRowsTheTitlesStand) {
    EXPECT_EQ(TextTable({{"A"}, {"B"}}, Charset::Utf8).text(), "A  B\n");
}

}  // namespace
