#include "tools/LbePlaneWriter.h"

#include "libimagedecoder/LbeSyntax.h"

#include <algorithm>
#include <array>
#include <limits>

namespace Vostrel::streamencoder {

using libimagedecoder::LbePlaneBuffer;
using libimagedecoder::LbePlaneFormat;
using libimagedecoder::LbeRunCodeBits;

namespace {

constexpr size_t MaxSamples = LbePlaneBuffer::MaxSamples;

/// What the next samples are coded as.
struct Step {
    enum Kind : uint8_t { Literal, ShortRun, LongRun, CountedRun, RunToEnd };

    Kind m_kind = Literal;
    bool m_bFromLeft = false; ///< else from above; not for literals
    size_t m_uiLength = 1;
};

constexpr unsigned MinLongRun = libimagedecoder::LbeShortestLongRun;
constexpr unsigned MaxShortRun = 2;
constexpr unsigned MaxLongRun = MinLongRun + libimagedecoder::LbeCountFollows - 1;

unsigned CostOf(const Step& step, const LbePlaneFormat& format) {
    constexpr unsigned RunBits = 3; // mark, source, form
    switch (step.m_kind) {
    case Step::Literal:
        return 1 + format.m_uiLiteralBits;
    case Step::ShortRun:
        return RunBits + 1;
    case Step::CountedRun:
        return RunBits + LbeRunCodeBits + format.m_uiLongRunBits;
    default:
        return RunBits + LbeRunCodeBits;
    }
}

void WriteStep(const Step& step, uint16_t sample, const LbePlaneFormat& format, BitWriter& bits) {
    if (step.m_kind == Step::Literal) {
        bits.Write(0b0, 1);
        bits.Write(sample, format.m_uiLiteralBits);
        return;
    }
    bits.Write(0b1, 1);
    bits.Write(step.m_bFromLeft ? 0b1 : 0b0, 1);
    bits.Write(step.m_kind == Step::ShortRun ? 0b0 : 0b1, 1);
    const auto length = static_cast<uint32_t>(step.m_uiLength);
    switch (step.m_kind) {
    case Step::ShortRun:
        bits.Write(length - 1, 1);
        break;
    case Step::LongRun:
        bits.Write(length - MinLongRun, LbeRunCodeBits);
        break;
    case Step::CountedRun:
        bits.Write(libimagedecoder::LbeCountFollows, LbeRunCodeBits);
        bits.Write(length - MinLongRun, format.m_uiLongRunBits);
        break;
    default:
        bits.Write(libimagedecoder::LbeRunToPlaneEnd, LbeRunCodeBits);
        break;
    }
}

/// The cheapest way from each sample to the end of the plane, found from the end backwards.
///
/// What can be coded at a sample depends on the samples alone, not on how those before it were
/// coded, because coding is lossless. So the cheapest way from a sample is its cheapest first step
/// plus the cheapest way from where that leads, and the result is exact.
///
/// Of each form only the longest run needs a look. The way from sample i + 1 never costs more than
/// the one from i: take the latter and drop its first sample, which removes a literal or shortens a
/// run, and a shorter run costs no more. So a longer step of the same price is never worse.
class CheapestWay {
public:
    CheapestWay(std::span<const uint16_t> samples, const LbePlaneFormat& format)
        : m_samples(samples), m_format(format) {
        m_auiCostToEnd[samples.size()] = 0;
        for (size_t i = samples.size(); i-- > 0;) {
            m_auiCostToEnd[i] = std::numeric_limits<unsigned>::max();
            Consider(i, Step{});
            ConsiderRuns(i, true, 1, m_auiRunFromLeft);
            ConsiderRuns(i, false, m_format.m_uiRowWidth, m_auiRunFromAbove);
        }
    }

    const Step& At(size_t i) const { return m_aSteps[i]; }

private:
    /// runs[i] becomes the number of samples from i on that equal the ones at that distance back.
    void ConsiderRuns(size_t i, bool fromLeft, size_t distance,
                      std::array<size_t, MaxSamples + 1>& runs) {
        // What a run copies from before the first sample is zero.
        const uint16_t source = i < distance ? uint16_t{0} : m_samples[i - distance];
        runs[i] = m_samples[i] == source ? runs[i + 1] + 1 : 0;
        const size_t run = runs[i];
        if (run == 0)
            return;
        Consider(i, {Step::ShortRun, fromLeft, std::min<size_t>(run, MaxShortRun)});
        if (run < MinLongRun)
            return;
        Consider(i, {Step::LongRun, fromLeft, std::min<size_t>(run, MaxLongRun)});
        const size_t maxCounted = (size_t{1} << m_format.m_uiLongRunBits) - 1 + MinLongRun;
        Consider(i, {Step::CountedRun, fromLeft, std::min(run, maxCounted)});
        if (run == m_samples.size() - i)
            Consider(i, {Step::RunToEnd, fromLeft, run});
    }

    void Consider(size_t i, const Step& step) {
        const unsigned cost = CostOf(step, m_format) + m_auiCostToEnd[i + step.m_uiLength];
        if (cost < m_auiCostToEnd[i]) {
            m_auiCostToEnd[i] = cost;
            m_aSteps[i] = step;
        }
    }

    std::span<const uint16_t> m_samples;
    LbePlaneFormat m_format;
    std::array<unsigned, MaxSamples + 1> m_auiCostToEnd{};
    std::array<size_t, MaxSamples + 1> m_auiRunFromLeft{};
    std::array<size_t, MaxSamples + 1> m_auiRunFromAbove{};
    std::array<Step, MaxSamples> m_aSteps{};
};

} // namespace

void WriteLbePlane(std::span<const uint16_t> samples, const LbePlaneFormat& format,
                   BitWriter& bits) {
    const CheapestWay way(samples, format);
    for (size_t i = 0; i < samples.size(); i += way.At(i).m_uiLength) {
        WriteStep(way.At(i), samples[i], format, bits);
    }
}

} // namespace Vostrel::streamencoder
