#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sanitizer/asan_interface.h>
#include <span>
#include <vector>

namespace Vostrel::tests {

/// Elements with guard bytes on both sides, at a chosen distance from a 64-byte boundary.
///
/// Writes into the guards show in GuardsIntact. Under AddressSanitizer the guards, and what Hide
/// hides, stop the test on any access.
template <typename Element>
class GuardedBuffer {
public:
    explicit GuardedBuffer(std::size_t count, std::size_t misalignment = 0)
        : m_Storage(GuardBytes + Alignment + misalignment + count * sizeof(Element) + GuardBytes,
                    GuardByte),
          m_uiCount(count) {
        const auto start = reinterpret_cast<std::uintptr_t>(m_Storage.data()) + GuardBytes;
        m_uiOffset = GuardBytes + (Alignment - start % Alignment) % Alignment + misalignment;
        std::fill_n(Data(), count, Element{});
        HideGuards();
    }

    ~GuardedBuffer() { ASAN_UNPOISON_MEMORY_REGION(m_Storage.data(), m_Storage.size()); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    Element* Data() { return reinterpret_cast<Element*>(m_Storage.data() + m_uiOffset); }
    std::size_t Count() const { return m_uiCount; }
    Element& operator[](std::size_t index) { return Data()[index]; }
    Element* begin() { return Data(); }
    Element* end() { return Data() + m_uiCount; }

    /// Forbids AddressSanitizer any access to these elements; Show allows it again for all.
    void Hide(std::size_t first, std::size_t count) {
        ASAN_POISON_MEMORY_REGION(Data() + first, count * sizeof(Element));
    }
    void Show() { ASAN_UNPOISON_MEMORY_REGION(Data(), m_uiCount * sizeof(Element)); }

    bool GuardsIntact() {
        ASAN_UNPOISON_MEMORY_REGION(m_Storage.data(), m_Storage.size());
        const auto isGuard = [](std::uint8_t byte) { return byte == GuardByte; };
        const bool intact =
            std::ranges::all_of(Before(), isGuard) && std::ranges::all_of(After(), isGuard);
        HideGuards();
        return intact;
    }

private:
    static constexpr std::size_t GuardBytes = 128;
    static constexpr std::size_t Alignment = 64;
    static constexpr std::uint8_t GuardByte = 0xA5;

    std::span<std::uint8_t> Before() { return std::span(m_Storage).first(m_uiOffset); }
    std::span<std::uint8_t> After() {
        return std::span(m_Storage).subspan(m_uiOffset + m_uiCount * sizeof(Element));
    }

    void HideGuards() {
        ASAN_POISON_MEMORY_REGION(Before().data(), Before().size());
        ASAN_POISON_MEMORY_REGION(After().data(), After().size());
    }

    std::vector<std::uint8_t> m_Storage;
    std::size_t m_uiCount;
    std::size_t m_uiOffset = 0;
};

} // namespace Vostrel::tests
