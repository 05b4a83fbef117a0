// Points VX_HOME at a fresh temporary folder for one test and restores it afterwards, so that user
// defaults and user data of a test never touch the real ones or another test's.
#pragma once

#include <cstdlib>
#include <string>

#include "support/temp_dir.hpp"

namespace vx::test {

struct ScopedHome {
    TempDir dir;
    std::string previous;
    bool hadPrevious = false;

    ScopedHome() {
        const char* old = std::getenv("VX_HOME");
        hadPrevious = old != nullptr;
        if (old) previous = old;
        ::setenv("VX_HOME", dir.path().c_str(), 1);
    }
    ~ScopedHome() {
        if (hadPrevious)
            ::setenv("VX_HOME", previous.c_str(), 1);
        else
            ::unsetenv("VX_HOME");
    }
    ScopedHome(const ScopedHome&) = delete;
    ScopedHome& operator=(const ScopedHome&) = delete;
};

}  // namespace vx::test
