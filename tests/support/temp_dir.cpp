#include "support/temp_dir.hpp"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vx::test {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vx-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
}

TempDir::~TempDir() {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

std::string TempDir::write(const std::string& name, const std::string& contents) const {
    auto full = std::filesystem::path(m_path) / name;
    std::filesystem::create_directories(full.parent_path());
    std::ofstream out(full, std::ios::binary);
    out << contents;
    return full.string();
}

}  // namespace vx::test
