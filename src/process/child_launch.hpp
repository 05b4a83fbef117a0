// The child's side of a launch, from fork to execve.
//
// Between fork and execve the child of a threaded program may only make async-signal-safe
// calls (another thread may have held the allocator's lock at the moment of the fork), so
// everything the child uses is prepared by the parent beforehand and nothing here allocates.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vx {

struct ChildSetup {
    const char* path = nullptr;
    char* const* arguments = nullptr;    // null-terminated
    char* const* environment = nullptr;  // null-terminated
    const char* workingDirectory = nullptr;
    int input = -1;   // becomes descriptor 0
    int output = -1;  // becomes descriptor 1
    int error = -1;   // becomes descriptor 2
    int64_t priority = 0;          // applied only when within -19...19 and nicer than the current one
    int descriptorTableSize = 0;   // for closing descriptors one by one where close_range is missing
};

// Sets up descriptors 0-2, the working directory and the priority, closes every other
// descriptor and executes the program. A failed execve exits with status 0.
[[noreturn]] void runChild(const ChildSetup& setup) noexcept;

// A null-terminated vector of C strings that owns its storage, as execve takes it.
class CStringVector {
public:
    void reserve(size_t count);
    void add(std::string text) { m_strings.push_back(std::move(text)); }
    size_t size() const { return m_strings.size(); }
    // Valid until the next add.
    char* const* data();

private:
    std::vector<std::string> m_strings;
    std::vector<char*> m_pointers;
};

}  // namespace vx
