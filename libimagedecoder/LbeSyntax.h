#pragma once

#include <cstddef>
#include <cstdint>

/// The syntax of a plane of an LBE block: literals, and runs that copy from the left or from above.
///   0 and a literal
///   1 s 0 b            a run of b + 1 samples; s: 1 from the left, 0 from above
///   1 s 1 and a code of 4 bits: a run of code + 3 samples, or one of the two codes below
namespace Vostrel::libimagedecoder {

constexpr uint32_t LbeRunCodeBits = 4;
constexpr size_t LbeShortestLongRun = 3;
constexpr uint32_t LbeCountFollows = 14; ///< a count follows; the run is that many samples longer
                                         ///< than the shortest long run
constexpr uint32_t LbeRunToPlaneEnd = 15;

/// Width of the longest run count of a luma plane; for chroma see UpdateRules.
constexpr uint32_t LbeLumaCountBits = 8;

} // namespace Vostrel::libimagedecoder
