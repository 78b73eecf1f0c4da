#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Vostrel::fuzz {

/// Takes a fuzzer's bytes apart from front to back. Behind their end everything reads as 0. What it
/// hands out lies in the fuzzer's memory: an execution takes a few microseconds, as long as a dozen
/// allocations.
class FuzzInput {
public:
    FuzzInput(const uint8_t* data, size_t size) : m_Left(data, size) {}

    bool IsEmpty() const { return m_Left.empty(); }

    uint8_t Byte() {
        if (m_Left.empty())
            return 0;
        const uint8_t byte = m_Left.front();
        m_Left = m_Left.subspan(1);
        return byte;
    }

    /// 16 bits, the upper byte first.
    uint16_t Word() {
        const unsigned upper = Byte();
        return static_cast<uint16_t>(upper << 8 | Byte());
    }

    uint32_t DoubleWord() {
        const uint32_t upper = Word();
        return upper << 16 | Word();
    }

    /// 0 to bound - 1, of one byte; bound is 1 to 256.
    unsigned Below(unsigned bound) { return Byte() % bound; }

    /// low to high, both included and at most 256 apart.
    int Between(int low, int high) {
        return low + static_cast<int>(Below(static_cast<unsigned>(high - low + 1)));
    }

    bool Coin() { return (Byte() & 1) != 0; }

    /// The next count bytes, fewer at the end.
    std::span<const uint8_t> Take(size_t count) {
        const auto bytes = m_Left.first(std::min(count, m_Left.size()));
        m_Left = m_Left.subspan(bytes.size());
        return bytes;
    }

    std::span<const uint8_t> Rest() { return Take(m_Left.size()); }

private:
    std::span<const uint8_t> m_Left;
};

/// Blows a few bytes up to any amount: they repeat, and change a little with each repetition.
class Spread {
public:
    explicit Spread(std::span<const uint8_t> bytes) : m_Bytes(bytes) {}

    /// 0 when there are no bytes at all.
    uint8_t Next() {
        if (m_Bytes.empty())
            return 0;
        if (m_uiNext == m_Bytes.size()) {
            m_uiNext = 0;
            m_uiShift = static_cast<uint8_t>(m_uiShift + 37);
        }
        return static_cast<uint8_t>(m_Bytes[m_uiNext++] + m_uiShift);
    }

    // The hottest loop of some harnesses, and not one that wants a judge.
    __attribute__((no_sanitize("address", "undefined"))) void Fill(std::span<uint8_t> memory) {
        for (size_t i = 0; i < memory.size(); ++i)
            memory.data()[i] = Next();
    }

private:
    std::span<const uint8_t> m_Bytes;
    size_t m_uiNext = 0;
    uint8_t m_uiShift = 0;
};

} // namespace Vostrel::fuzz
