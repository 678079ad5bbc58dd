#include "cli/Locations.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "cli/Failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* PROVIDER = "libzelsensors.so.0";

// The first place that exists; empty for none.
std::string firstOf(const fs::path& directory, const std::vector<fs::path>& candidates) {
    for (const fs::path& candidate : candidates) {
        std::error_code error;
        const fs::path place = (directory / candidate).lexically_normal();
        if (fs::exists(place, error)) return place;
    }
    return "";
}

std::string namesIn(const std::string& directory) {
    std::string text;
    for (const std::string& name : scenarioNames(directory)) text += (text.empty() ? "" : ", ") + name;
    return text;
}

// Throws UsageError for what the chip library cannot read as a file, and that more than once.
void requireFile(const std::string& file) {
    std::error_code error;
    const fs::file_type type = fs::status(file, error).type();
    if (type == fs::file_type::regular) return;
    if (type == fs::file_type::not_found) throw UsageError("there is no scenario file " + file);
    const std::string what = "the scenario " + file;
    if (type == fs::file_type::directory) throw UsageError(what + " is a directory; a scenario is a file");
    if (type == fs::file_type::none) throw UsageError(what + " cannot be read: " + error.message());
    throw UsageError(what + " is not a regular file");
}

std::string scenarioFile(const std::string& nameOrFile, const std::string& directory) {
    if (nameOrFile.find('/') != std::string::npos) {
        requireFile(nameOrFile);
        return nameOrFile;
    }
    if (directory.empty())
        throw UsageError("there is no directory of scenarios; give the scenario's file, with a slash");
    const fs::path file = fs::path(directory) / (nameOrFile + ".toml");
    if (std::error_code error; fs::is_regular_file(file, error)) return file;
    throw UsageError("there is no scenario " + nameOrFile + " in " + directory + "; there are: " + namesIn(directory));
}

ChipChoice simulatedChip(const InstallTree& tree) {
    if (tree.simulatedChip.empty()) {
        throw UsageError("there is no simulated chip library beside zelhost; install it, or name one with --chip");
    }
    return {tree.simulatedChip, "", true};
}

ChipChoice linuxChip(const InstallTree& tree) {
    if (tree.linuxChip.empty()) {
        throw UsageError(
            "there is no chip library of Linux machines beside zelhost; the package zelsensors-linux brings it");
    }
    return {tree.linuxChip, "", true};
}

// What `--chip` says: a word, or a file or directory.
ChipChoice namedChip(const std::string& name, const InstallTree& tree) {
    if (name == "system") return {CHIP_LIBRARY, "", true};
    if (name == "simulated") return simulatedChip(tree);
    if (name == "linux") return linuxChip(tree);
    if (std::error_code error; fs::is_directory(name, error)) return {fs::path(name) / CHIP_LIBRARY, "", true};
    // Without a slash it is a file here, not one that the loader would search for.
    return {name.find('/') == std::string::npos ? "./" + name : name, "", true};
}

// Installed, it has the name that a terminal's own would have there, but not its companion.
std::string linuxChipFrom(const std::string& programDirectory, const fs::path& libraries) {
    std::vector<fs::path> candidates{fs::path("../chiplinux") / CHIP_LIBRARY};
    if (!firstOf(programDirectory, {libraries / "zelsensors-linux"}).empty())
        candidates.push_back(libraries / CHIP_LIBRARY);
    return firstOf(programDirectory, candidates);
}

// A simulated terminal never takes the place of a real one unasked.
ChipChoice usualChip(const InstallTree& tree) {
    if (!tree.isInstalled && !tree.simulatedChip.empty()) return simulatedChip(tree);
    return {CHIP_LIBRARY, tree.simulatedChip, false};
}

}  // namespace

std::vector<std::string> scenarioNames(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        if (entry.path().extension() == ".toml") names.push_back(entry.path().stem());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string programDirectory() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

InstallTree installTree(const std::string& programDirectory) {
    const fs::path libraries = LIBRARIES_FROM_PROGRAM;
    InstallTree tree;
    tree.provider = firstOf(programDirectory, {fs::path("../src/sensors") / PROVIDER, libraries / PROVIDER});
    if (tree.provider.empty()) tree.provider = PROVIDER;
    tree.simulatedChip =
        firstOf(programDirectory, {fs::path("../chipsim") / CHIP_LIBRARY, libraries / "zelsensors" / CHIP_LIBRARY});
    tree.linuxChip = linuxChipFrom(programDirectory, libraries);
    tree.isInstalled = firstOf(programDirectory, {fs::path("../src/sensors") / PROVIDER}).empty();
    tree.scenarios = firstOf(programDirectory, {"scenarios", fs::path(DATA_FROM_PROGRAM) / "zelsensors/scenarios"});
    tree.schema = firstOf(programDirectory, {"schema", fs::path(DATA_FROM_PROGRAM) / "zelsensors/schema"});
    return tree;
}

LibraryChoice choose(const Options& options, const InstallTree& tree) {
    LibraryChoice choice;
    choice.provider = options.provider.empty() ? tree.provider : options.provider;
    if (!options.scenario.empty()) choice.scenario = scenarioFile(options.scenario, tree.scenarios);
    if (!options.chip.empty()) {
        choice.chip = namedChip(options.chip, tree);
    } else {
        choice.chip = choice.scenario.empty() ? usualChip(tree) : simulatedChip(tree);
    }
    return choice;
}

std::vector<std::string> schemaFiles(const Options& options, const InstallTree& tree) {
    if (!options.schema.empty()) return options.schema;
    if (tree.schema.empty()) throw UsageError("there is no schema; name its MOF files with --schema");
    const fs::path directory = tree.schema;
    return {directory / "qualifiers.mof", directory / "tqs.mof"};
}

}  // namespace host
