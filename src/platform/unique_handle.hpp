// Owns one C handle (a descriptor, a regex, a database connection) and frees it exactly once.
#pragma once

#include <unistd.h>

#include <utility>

namespace vx {

template <class T, auto Free, T Null = T{}>
class UniqueHandle {
public:
    UniqueHandle() = default;
    explicit UniqueHandle(T handle) : m_handle(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, Null)) {}
    UniqueHandle& operator=(UniqueHandle other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~UniqueHandle() { reset(); }

    T get() const { return m_handle; }
    explicit operator bool() const { return m_handle != Null; }
    T release() { return std::exchange(m_handle, Null); }
    void reset(T handle = Null) {
        if (m_handle != Null) Free(m_handle);
        m_handle = handle;
    }

private:
    T m_handle = Null;
};

inline void closeDescriptor(int fd) { ::close(fd); }
using UniqueFd = UniqueHandle<int, closeDescriptor, -1>;

}  // namespace vx
