// A fresh temporary folder for one test, removed with everything in it afterwards.
#pragma once

#include <string>

namespace vx::test {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    // Writes a file (relative to the folder) and returns its full path.
    std::string write(const std::string& name, const std::string& contents) const;

private:
    std::string m_path;
};

}  // namespace vx::test
