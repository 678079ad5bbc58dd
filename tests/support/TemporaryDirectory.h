// A directory of a test's own, removed with all that is in it.
#ifndef ZELSENSORS_TESTS_TEMPORARYDIRECTORY_H
#define ZELSENSORS_TESTS_TEMPORARYDIRECTORY_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "zelsensors-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
        m_path = name;
    }
    ~TemporaryDirectory() { std::filesystem::remove_all(m_path); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::string path(const std::string& name) const { return m_path / name; }
    // The path of a file of that name, which holds this now.
    std::string write(const std::string& name, const std::string& contents) const {
        std::ofstream(path(name), std::ios::binary) << contents;
        return path(name);
    }

  private:
    std::filesystem::path m_path;
};

#endif
