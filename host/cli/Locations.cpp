#include "cli/Locations.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "cli/Failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kProvider = "libzelsensors.so.0";
constexpr const char* kChip = "libzelchip.so.0";

// The first place that exists; empty for none.
std::string firstOf(const fs::path& folder, const std::vector<fs::path>& candidates) {
    for (const fs::path& candidate : candidates) {
        std::error_code error;
        const fs::path place = (folder / candidate).lexically_normal();
        if (fs::exists(place, error)) return place;
    }
    return "";
}

std::string namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".toml") names.push_back(entry.path().stem());
    }
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

// Throws UsageError for what the chip library cannot read as a file, and that more than once.
void requireFile(const std::string& file) {
    std::error_code error;
    const fs::file_type type = fs::status(file, error).type();
    if (type == fs::file_type::regular) return;
    if (type == fs::file_type::not_found) throw UsageError("there is no scenario file " + file);
    const std::string what = "the scenario " + file;
    if (type == fs::file_type::directory) throw UsageError(what + " is a folder; a scenario is a file");
    if (type == fs::file_type::none) throw UsageError(what + " cannot be read: " + error.message());
    throw UsageError(what + " is not a regular file");
}

std::string scenarioFile(const std::string& nameOrFile, const std::string& folder) {
    if (nameOrFile.find('/') != std::string::npos) {
        requireFile(nameOrFile);
        return nameOrFile;
    }
    if (folder.empty()) throw UsageError("there is no folder of scenarios; give the scenario's file, with a slash");
    const fs::path file = fs::path(folder) / (nameOrFile + ".toml");
    if (std::error_code error; fs::is_regular_file(file, error)) return file;
    throw UsageError("there is no scenario " + nameOrFile + " in " + folder + "; there are: " + namesIn(folder));
}

}  // namespace

std::string programFolder() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

OwnTree ownTree(const std::string& programFolder) {
    const fs::path libraries = LIBRARIES_FROM_PROGRAM;
    OwnTree tree;
    tree.provider = firstOf(programFolder, {fs::path("../src/sensors") / kProvider, libraries / kProvider});
    if (tree.provider.empty()) tree.provider = kProvider;
    tree.simulatedChip = firstOf(programFolder, {fs::path("../chipsim") / kChip, libraries / "zelsensors" / kChip});
    tree.scenarios = firstOf(programFolder, {"scenarios", fs::path(DATA_FROM_PROGRAM) / "zelsensors/scenarios"});
    tree.schema = firstOf(programFolder, {"schema", fs::path(DATA_FROM_PROGRAM) / "zelsensors/schema"});
    return tree;
}

Choice choose(const Options& options, const OwnTree& tree) {
    Choice choice{options.provider.empty() ? tree.provider : options.provider, options.chip, false, ""};
    if (options.chip.empty()) {
        choice.chip = tree.simulatedChip;
        choice.isChipSimulated = !choice.chip.empty();
    } else if (options.chip == "system") {
        choice.chip.clear();
    } else if (std::error_code error; fs::is_directory(options.chip, error)) {
        choice.chip = fs::path(options.chip) / kChip;
    } else if (options.chip.find('/') == std::string::npos) {
        choice.chip = "./" + options.chip;  // a file here, not one that the loader would search for
    }
    if (options.scenario.empty()) return choice;
    if (choice.chip.empty()) throw UsageError("a scenario needs a simulated chip library; name one with --chip");
    choice.scenario = scenarioFile(options.scenario, tree.scenarios);
    return choice;
}

std::vector<std::string> schemaFiles(const Options& options, const OwnTree& tree) {
    if (!options.schema.empty()) return options.schema;
    if (tree.schema.empty()) throw UsageError("there is no schema; name its MOF files with --schema");
    const fs::path folder = tree.schema;
    return {folder / "qualifiers.mof", folder / "tqs.mof"};
}

}  // namespace host
