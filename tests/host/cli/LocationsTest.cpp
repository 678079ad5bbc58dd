#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "TemporaryDirectory.h"
#include "cli/Failure.h"
#include "cli/Locations.h"

namespace {

namespace fs = std::filesystem;
using host::choose;
using host::InstallTree;
using host::installTree;
using host::LibraryChoice;
using host::Options;
using testing::HasSubstr;

class LocationsTest : public testing::Test {
  protected:
    std::string make(const fs::path& file) const {
        const fs::path full = (m_directory / file).lexically_normal();
        fs::create_directories(full.parent_path());
        std::ofstream(full) << "x";
        return full;
    }
    std::string complaint(const Options& options, const InstallTree& tree) const {
        try {
            choose(options, tree);
        } catch (const host::UsageError& error) {
            return error.what();
        }
        return "";
    }

    static void expectChip(const LibraryChoice& choice, const std::string& path, const std::string& substitute,
                           bool isRequired) {
        EXPECT_EQ(choice.chip.path, path);
        EXPECT_EQ(choice.chip.substitute, substitute);
        EXPECT_EQ(choice.chip.isRequired, isRequired);
    }

    TemporaryDirectory m_temporary;
    const fs::path& m_directory = m_temporary.path();
};

TEST_F(LocationsTest, BuildTree) {
    make("host/zelhost");
    const std::string provider = make("src/sensors/libzelsensors.so.0");
    const std::string chip = make("chipsim/libzelchip.so.0");
    const std::string scenario = make("host/scenarios/healthy.toml");
    const std::string schema = make("host/schema/tqs.mof");
    const InstallTree tree = installTree(m_directory / "host");
    EXPECT_FALSE(tree.isInstalled);
    EXPECT_EQ(tree.provider, provider);
    EXPECT_EQ(tree.simulatedChip, chip);
    EXPECT_EQ(tree.scenarios, fs::path(scenario).parent_path());
    EXPECT_EQ(tree.schema, fs::path(schema).parent_path());
}

TEST_F(LocationsTest, InstalledTree) {
    const fs::path libraries = fs::path("bin") / LIBRARIES_FROM_PROGRAM;
    const std::string program = make("bin/zelhost");
    const std::string provider = make(libraries / "libzelsensors.so.0");
    const std::string chip = make(libraries / "zelsensors/libzelchip.so.0");
    const std::string scenario = make(fs::path("bin") / DATA_FROM_PROGRAM / "zelsensors/scenarios/healthy.toml");
    const std::string schema = make(fs::path("bin") / DATA_FROM_PROGRAM / "zelsensors/schema/tqs.mof");
    const InstallTree tree = installTree(fs::path(program).parent_path());
    EXPECT_TRUE(tree.isInstalled);
    EXPECT_EQ(tree.provider, provider);
    EXPECT_EQ(tree.simulatedChip, chip);
    EXPECT_EQ(tree.scenarios, fs::path(scenario).parent_path());
    EXPECT_EQ(tree.schema, fs::path(schema).parent_path());
}

TEST_F(LocationsTest, NothingThereLeavesTheChoiceToTheLoader) {
    const InstallTree tree = installTree(m_directory);
    EXPECT_EQ(tree.provider, "libzelsensors.so.0");
    EXPECT_EQ(tree.simulatedChip, "");
    EXPECT_TRUE(tree.isInstalled);
    expectChip(choose(Options(), tree), "libzelchip.so.0", "", false);
}

TEST_F(LocationsTest, InstalledSimulatedChipIsForSystemsWithoutAnother) {
    const LibraryChoice choice = choose(Options(), {"/own/provider", "/own/chip", "", ""});
    EXPECT_EQ(choice.provider, "/own/provider");
    expectChip(choice, "libzelchip.so.0", "/own/chip", false);
    EXPECT_EQ(choice.scenario, "");
}

TEST_F(LocationsTest, BuildTreeSimulates) {
    expectChip(choose(Options(), {"/own/provider", "/own/chip", "", "", false}), "/own/chip", "", true);
    expectChip(choose(Options(), {"/own/provider", "", "", "", false}), "libzelchip.so.0", "", false);
}

TEST_F(LocationsTest, ChipByItsWord) {
    Options options;
    for (const bool isInstalled : {true, false}) {
        const InstallTree tree{"/own/provider", "/own/chip", "", "", isInstalled};
        options.chip = "system";
        expectChip(choose(options, tree), "libzelchip.so.0", "", true);
        options.chip = "simulated";
        expectChip(choose(options, tree), "/own/chip", "", true);
    }
    EXPECT_EQ(complaint(options, {"/own/provider", "", "", ""}),
              "there is no simulated chip library beside zelhost; install it, or name one with --chip");
}

TEST_F(LocationsTest, LinuxChipOfTheBuildTree) {
    const std::string chip = make("chiplinux/libzelchip.so.0");
    make("host/zelhost");
    Options options;
    options.chip = "linux";
    expectChip(choose(options, installTree(m_directory / "host")), chip, "", true);
}

TEST_F(LocationsTest, LinuxChipIsTheInstalledOneOfItsPackageAlone) {
    const fs::path libraries = fs::path("bin") / LIBRARIES_FROM_PROGRAM;
    const std::string program = make("bin/zelhost");
    const std::string chip = make(libraries / "libzelchip.so.0");
    Options options;
    options.chip = "linux";
    EXPECT_EQ(complaint(options, installTree(fs::path(program).parent_path())),
              "there is no chip library of Linux machines beside zelhost; the package zelsensors-linux brings it");
    make(libraries / "zelsensors-linux/privatecopy.so");
    expectChip(choose(options, installTree(fs::path(program).parent_path())), chip, "", true);
}

TEST_F(LocationsTest, ScenarioAsksForTheSimulatedChip) {
    Options options;
    options.scenario = make("mine.toml");
    expectChip(choose(options, {"/own/provider", "/own/chip", "", ""}), "/own/chip", "", true);
    options.chip = "/other/chip";
    expectChip(choose(options, {"/own/provider", "/own/chip", "", ""}), "/other/chip", "", true);
}

TEST_F(LocationsTest, ChipByFileOrDirectory) {
    Options options;
    options.chip = make("other/libzelchip.so.0");
    expectChip(choose(options, {}), options.chip, "", true);
    const std::string file = options.chip;
    options.chip = fs::path(file).parent_path();
    expectChip(choose(options, {}), file, "", true);
    options.chip = "libzelchip.so.0";
    expectChip(choose(options, {}), "./libzelchip.so.0", "", true);
}

TEST_F(LocationsTest, ScenarioByName) {
    const std::string file = make("scenarios/warm.toml");
    Options options;
    options.scenario = "warm";
    EXPECT_EQ(choose(options, {"p", "c", fs::path(file).parent_path(), ""}).scenario, file);
}

TEST_F(LocationsTest, UnknownScenarioListsTheNamesThatThereAre) {
    const fs::path directory = fs::path(make("scenarios/warm.toml")).parent_path();
    make("scenarios/cold.toml");
    make("scenarios/notes.txt");
    Options options;
    options.scenario = "tepid";
    EXPECT_EQ(complaint(options, {"p", "c", directory, ""}),
              "there is no scenario tepid in " + directory.string() + "; there are: cold, warm");
}

TEST_F(LocationsTest, ScenarioByFile) {
    Options options;
    options.scenario = make("mine.toml");
    EXPECT_EQ(choose(options, {"p", "c", "", ""}).scenario, options.scenario);
    options.scenario = m_directory / "missing.toml";
    EXPECT_EQ(complaint(options, {"p", "c", "", ""}), "there is no scenario file " + options.scenario);
}

TEST_F(LocationsTest, ScenarioThatIsNoFileIsReportedAsWhatItIs) {
    Options options;
    options.scenario = m_directory;
    EXPECT_EQ(complaint(options, {"p", "c", "", ""}),
              "the scenario " + m_directory.string() + " is a directory; a scenario is a file");
    options.scenario = "/dev/null";
    EXPECT_EQ(complaint(options, {"p", "c", "", ""}), "the scenario /dev/null is not a regular file");
    options.scenario = m_directory / "pipe";
    ASSERT_EQ(mkfifo(options.scenario.c_str(), 0600), 0);
    EXPECT_EQ(complaint(options, {"p", "c", "", ""}), "the scenario " + options.scenario + " is not a regular file");
    options.scenario = m_directory / std::string(300, 'x');
    EXPECT_EQ(complaint(options, {"p", "c", "", ""}),
              "the scenario " + options.scenario + " cannot be read: File name too long");
}

TEST_F(LocationsTest, ScenarioNeedsASimulatedChip) {
    Options options;
    options.scenario = make("mine.toml");
    EXPECT_THAT(complaint(options, {"p", "", "", ""}), HasSubstr("there is no simulated chip library"));
}

TEST_F(LocationsTest, SchemaOfTheOwnTree) {
    EXPECT_THAT(host::schemaFiles(Options(), {"p", "c", "", "/own/schema"}),
                testing::ElementsAre("/own/schema/qualifiers.mof", "/own/schema/tqs.mof"));
}

TEST_F(LocationsTest, NamedSchemaReplacesTheOwnTrees) {
    Options options;
    options.schema = {"b.mof", "a.mof"};
    EXPECT_THAT(host::schemaFiles(options, {"p", "c", "", "/own/schema"}), testing::ElementsAre("b.mof", "a.mof"));
}

TEST_F(LocationsTest, NoSchemaAnywhereIsWrongUsage) {
    EXPECT_THROW(host::schemaFiles(Options(), {"p", "c", "", ""}), host::UsageError);
}

}  // namespace
