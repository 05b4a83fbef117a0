// VXSpeedyArray: the highlighter's stack of open zones, kept in chained chunks of 32 entries
// so that pushing a zone almost never allocates (a line rarely opens more than a few zones,
// and a freed chunk is kept for the next push). Popping an empty stack is a programmer error
// and aborts.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

#include "platform/log.hpp"

namespace vx {

template <class T>
class VXSpeedyArray {
public:
    static constexpr size_t kChunkSize = 32;

    VXSpeedyArray() = default;
    VXSpeedyArray(const VXSpeedyArray&) = delete;
    VXSpeedyArray& operator=(const VXSpeedyArray&) = delete;

    void push(T value) {
        if (!m_top || m_top->count == kChunkSize) {
            std::unique_ptr<Chunk> chunk = m_spare ? std::move(m_spare) : std::make_unique<Chunk>();
            chunk->below = std::move(m_top);
            m_top = std::move(chunk);
        }
        m_top->items[m_top->count++] = std::move(value);
        ++m_size;
    }

    T pop() {
        VX_ASSERT(m_size > 0);
        T value = std::move(m_top->items[--m_top->count]);
        m_top->items[m_top->count] = T{};
        --m_size;
        if (m_top->count == 0) {
            std::unique_ptr<Chunk> empty = std::move(m_top);
            m_top = std::move(empty->below);
            m_spare = std::move(empty);
        }
        return value;
    }

    T& top() {
        VX_ASSERT(m_size > 0);
        return m_top->items[m_top->count - 1];
    }
    size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }

    // Visits the entries outermost (first pushed) first.
    template <class F>
    void forEachFromBottom(F&& visit) {
        visitChunk(m_top.get(), visit);
    }

    void clear() {
        while (m_size > 0) pop();
    }

private:
    struct Chunk {
        std::array<T, kChunkSize> items{};
        size_t count = 0;
        std::unique_ptr<Chunk> below;
    };

    template <class F>
    static void visitChunk(Chunk* chunk, F& visit) {
        if (!chunk) return;
        visitChunk(chunk->below.get(), visit);
        for (size_t i = 0; i < chunk->count; ++i) visit(chunk->items[i]);
    }

    std::unique_ptr<Chunk> m_top;
    std::unique_ptr<Chunk> m_spare;
    size_t m_size = 0;
};

template <class T>
void VXSA_Add(VXSpeedyArray<T>& array, T value) {
    array.push(std::move(value));
}
template <class T>
T VXSA_Pop(VXSpeedyArray<T>& array) {
    return array.pop();
}
template <class T>
void VXSA_Destroy(VXSpeedyArray<T>& array) {
    array.clear();
}

}  // namespace vx
