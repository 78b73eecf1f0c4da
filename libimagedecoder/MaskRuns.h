#pragma once

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

// In an unnamed namespace on purpose: every kernel variant compiles its own copy with its own
// instruction set. With external linkage the linker would keep one copy, maybe the AVX2 one, for
// all of them.
namespace {

/// Index of the first entry of a skip mask in [begin, end) that is as wanted; end when there is
/// none. Looks at eight entries at a time: most of a screen is unchanged in most updates, and entry
/// by entry the mask of a whole screen takes ten times as long (bench: DrawSparse).
inline std::size_t FindInMask(const bool* mask, std::size_t begin, std::size_t end, bool wanted) {
    constexpr std::size_t Entries = 8;
    const std::uint64_t unwanted = wanted ? 0 : 0x0101010101010101;
    for (; begin + Entries <= end; begin += Entries) {
        std::uint64_t bytes;
        __builtin_memcpy(&bytes, mask + begin, Entries);
        if (bytes != unwanted)
            return begin + static_cast<std::size_t>(__builtin_ctzll(bytes ^ unwanted)) / 8;
    }
    while (begin < end && mask[begin] != wanted)
        ++begin;
    return begin;
}

/// Calls visit(first, end) for every run of adjacent unmasked macroblocks [first, end) among the
/// first count entries of a skip mask.
template <typename Visit>
inline void ForEachUnmaskedRun(const bool* mask, std::size_t count, const Visit& visit) {
    for (std::size_t end = 0; end < count;) {
        const std::size_t first = FindInMask(mask, end, count, false);
        if (first == count)
            return;
        end = FindInMask(mask, first, count, true);
        visit(first, end);
    }
}

} // namespace

} // namespace Vostrel::libimagedecoder
