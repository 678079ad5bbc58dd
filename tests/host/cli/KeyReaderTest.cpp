#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/KeyReader.h"

namespace {

using host::Key;
using host::KeyReader;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<Key> keysIn(const std::string& bytes) {
    return KeyReader().keysIn(bytes);
}

TEST(KeyReaderTest, ArrowsInNormalAndApplicationMode) {
    EXPECT_THAT(keysIn("\x1b[A\x1b[B\x1bOA\x1bOB"), ElementsAre(Key::Up, Key::Down, Key::Up, Key::Down));
}

TEST(KeyReaderTest, PagesHomeAndEndOfEveryKindOfTerminal) {
    EXPECT_THAT(keysIn("\x1b[5~\x1b[6~"), ElementsAre(Key::PageUp, Key::PageDown));
    EXPECT_THAT(keysIn("\x1b[H\x1bOH\x1b[1~\x1b[7~"), ElementsAre(Key::Home, Key::Home, Key::Home, Key::Home));
    EXPECT_THAT(keysIn("\x1b[F\x1bOF\x1b[4~\x1b[8~"), ElementsAre(Key::End, Key::End, Key::End, Key::End));
}

TEST(KeyReaderTest, ModifiersChangeNothing) {
    EXPECT_THAT(keysIn("\x1b[1;5A\x1b[6;2~"), ElementsAre(Key::Up, Key::PageDown));
}

TEST(KeyReaderTest, SequenceMayComeByteByByte) {
    KeyReader reader;
    EXPECT_THAT(reader.keysIn("\x1b"), IsEmpty());
    EXPECT_THAT(reader.keysIn("["), IsEmpty());
    EXPECT_THAT(reader.keysIn("6"), IsEmpty());
    EXPECT_THAT(reader.keysIn("~q"), ElementsAre(Key::PageDown, Key::Quit));
}

TEST(KeyReaderTest, OtherKeysArePassedOver) {
    EXPECT_THAT(keysIn("xQ\r \x1b[2~\x1b[15~\x1b[C\x1bOP\xc3\xa4"), IsEmpty());
    EXPECT_THAT(keysIn("\x1b[q"), IsEmpty());
}

TEST(KeyReaderTest, EscapeKeyHidesNoOther) {
    EXPECT_THAT(keysIn("\x1bq"), ElementsAre(Key::Quit));
    EXPECT_THAT(keysIn("\x1b\x1b[A"), ElementsAre(Key::Up));
}

TEST(KeyReaderTest, EndlessSequenceEnds) {
    EXPECT_THAT(keysIn("\x1b[" + std::string(100, '1') + "q"), ElementsAre(Key::Quit));
}

}  // namespace
