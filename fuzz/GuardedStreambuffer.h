#pragma once

#include "fuzz/GuardedPages.h"
#include "libimagedecoder/IStreambuffer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#ifdef __has_feature // clang's name for what gcc says by a macro
#if __has_feature(address_sanitizer)
#define FUZZ_HAS_POISON
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define FUZZ_HAS_POISON
#endif

#ifdef FUZZ_HAS_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace Vostrel::fuzz {

/// A stream whose bytes arrive in pieces, as from the viewer, and lie where reading beside a piece
/// ends the process: before a guard page, or between one and memory that AddressSanitizer forbids.
/// Two places take turns, so that a read from the piece before is noticed too.
class GuardedStreambuffer : public libimagedecoder::IStreambuffer {
public:
    explicit GuardedStreambuffer(libimagedecoder::ILogger* logger) : IStreambuffer(logger) {}

    /// Starts with the bytes of one update, which stay where they are. capacity: bytes per piece,
    /// at least 1; pieces are never larger than MaxPiece.
    void Load(std::span<const uint8_t> bytes, size_t capacity) {
        Withdraw();
        ResetBufferState();
        m_bEndOfStream = false;
        m_uiCapacity = std::min(capacity, MaxPiece);
        m_Bytes = bytes;
        m_uiDelivered = 0;
    }

    size_t ReadFromBuffer() override {
        const size_t count = std::min(m_uiCapacity, m_Bytes.size() - m_uiDelivered);
        if (count == 0)
            return 0;
        Withdraw();
        m_uiPlace = 1 - m_uiPlace;
        m_Piece = Lay(m_aPlaces[m_uiPlace], m_Bytes.subspan(m_uiDelivered, count));
        m_puiData = m_Piece.data();
        m_uiDelivered += count;
        return count;
    }

    /// Bytes delivered since Load, less those that would be handed back now.
    size_t GetConsumedBytes() const { return m_uiDelivered - (m_uiSize - m_uiPosition); }

    static constexpr size_t MaxPiece = size_t{1} << 16;

private:
#ifdef FUZZ_HAS_POISON
    static std::span<uint8_t> Lay(GuardedPages& pages, std::span<const uint8_t> bytes) {
        uint8_t* const memory = pages.Room().data();
        __asan_unpoison_memory_region(memory, bytes.size());
        std::memcpy(memory, bytes.data(), bytes.size());
        return {memory, bytes.size()};
    }
    void Withdraw() {
        __asan_poison_memory_region(m_Piece.data(), m_Piece.size());
    }
    static void Forbid(GuardedPages& pages) {
        __asan_poison_memory_region(pages.Room().data(), pages.Room().size());
    }
    static void Allow(GuardedPages& pages) {
        __asan_unpoison_memory_region(pages.Room().data(), pages.Room().size());
    }
#else
    static std::span<uint8_t> Lay(GuardedPages& pages, std::span<const uint8_t> bytes) {
        const auto memory = pages.Room().last(bytes.size());
        std::memcpy(memory.data(), bytes.data(), bytes.size());
        return memory;
    }
    void Withdraw() {
        if (!m_Piece.empty())
            std::memset(m_Piece.data(), 0xB7, m_Piece.size());
    }
    static void Forbid(GuardedPages&) {}
    static void Allow(GuardedPages&) {}
#endif

    /// Memory for pieces, with nothing in it yet.
    struct Place : GuardedPages {
        Place() : GuardedPages(MaxPiece) { Forbid(*this); }
        ~Place() { Allow(*this); }
    };

    std::array<Place, 2> m_aPlaces;
    size_t m_uiPlace = 0;
    std::span<uint8_t> m_Piece;
    std::span<const uint8_t> m_Bytes;
    size_t m_uiDelivered = 0;
};

} // namespace Vostrel::fuzz
