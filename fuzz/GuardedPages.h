#pragma once

#include "fuzz/FuzzCheck.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <sys/mman.h>
#include <unistd.h>

namespace Vostrel::fuzz {

/// Memory between two pages that nobody may touch, for one buffer at a time. The buffer lies flush
/// against one of the pages; canary bytes stand at its other side.
class GuardedPages {
public:
    enum class Flush { WithTheEnd, WithTheStart };

    /// maxBytes: of the largest buffer.
    explicit GuardedPages(size_t maxBytes)
        : m_uiPage(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          m_uiRoom((maxBytes + CanaryBytes + m_uiPage - 1) / m_uiPage * m_uiPage) {
        void* const memory = mmap(nullptr, m_uiRoom + 2 * m_uiPage, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        Check(memory != MAP_FAILED, "no memory for guarded pages");
        m_puiRoom = static_cast<uint8_t*>(memory) + m_uiPage;
        Check(mprotect(memory, m_uiPage, PROT_NONE) == 0 &&
                  mprotect(m_puiRoom + m_uiRoom, m_uiPage, PROT_NONE) == 0,
              "pages cannot be protected");
    }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;
    ~GuardedPages() { munmap(m_puiRoom - m_uiPage, m_uiRoom + 2 * m_uiPage); }

    /// A buffer in place of the last one, filled with one byte.
    std::span<uint8_t> Place(size_t bytes, Flush flush, uint8_t fill = 0) {
        Check(bytes + CanaryBytes <= m_uiRoom, "a harness wants more than it asked for");
        const bool atEnd = flush == Flush::WithTheEnd;
        uint8_t* const buffer = atEnd ? m_puiRoom + m_uiRoom - bytes : m_puiRoom;
        m_puiCanaries = atEnd ? buffer - CanaryBytes : buffer + bytes;
        std::memcpy(m_puiCanaries, s_auiCanaries.data(), CanaryBytes);
        std::memset(buffer, fill, bytes);
        return {buffer, bytes};
    }

    /// All of the memory between the pages.
    std::span<uint8_t> Room() { return {m_puiRoom, m_uiRoom}; }

    bool Intact() const {
        return std::memcmp(m_puiCanaries, s_auiCanaries.data(), CanaryBytes) == 0;
    }

private:
    static constexpr size_t CanaryBytes = 128;
    static constexpr auto s_auiCanaries = [] {
        std::array<uint8_t, CanaryBytes> canaries{};
        canaries.fill(0xA5);
        return canaries;
    }();

    size_t m_uiPage;
    size_t m_uiRoom;
    uint8_t* m_puiRoom = nullptr;
    uint8_t* m_puiCanaries = nullptr;
};

inline GuardedPages::Flush FlushOf(bool withTheStart) {
    return withTheStart ? GuardedPages::Flush::WithTheStart : GuardedPages::Flush::WithTheEnd;
}

} // namespace Vostrel::fuzz
