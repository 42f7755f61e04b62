#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace lumhost::test {

/// A folder of its own for the files of a test, gone with the object.
class TemporaryFolder {
public:
    TemporaryFolder() { std::filesystem::create_directories(m_path); }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& GetPath() const { return m_path; }
    std::string PathOf(const std::string& name) const { return (m_path / name).string(); }
    void WriteFile(const std::string& name, const std::string& bytes) const {
        std::ofstream(m_path / name, std::ios::binary) << bytes;
    }
    std::string ReadFile(const std::string& name) const {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    std::filesystem::path m_path =
        std::filesystem::temp_directory_path() / ("lumhost_test_" + std::to_string(getpid()));
};

}  // namespace lumhost::test
