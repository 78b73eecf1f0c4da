// Planes of LBE blocks of any bits, decoded one after the other until the bits fail, by the plain
// decoder and on the fast road with its cursor; both against the model's, and the cursor's reader
// against the plain one's.

#include "fuzz/DecodingRoad.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/Kernels.h"
#include "fuzz/PlaneCursorUnderTest.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "tests/model/ModelLbe.h"

#include <array>
#include <vector>

namespace Vostrel::fuzz {
namespace {

using namespace libimagedecoder;

LbePlaneFormat ReadFormat(FuzzInput& input) {
    const unsigned shape = input.Below(3);
    return {size_t{64} << shape, shape == 2 ? size_t{16} : size_t{8}, 2 + input.Below(9),
            input.Coin() ? 8u : 6u};
}

/// What the model makes of a plane.
struct ModelledPlane {
    std::vector<int64_t> samples;
    Failure failure = Failure::None;
};

class PlaneRun {
public:
    explicit PlaneRun(FuzzInput& input)
        : m_pKernel(PlaneKernel(input.Below(KernelVariants()))), m_aFormats{ReadFormat(input),
                                                                            ReadFormat(input)},
          m_uiChoices(input.Byte()), m_uiPiece(PieceOf(input.Byte())),
          m_uiSkippedBits(input.Below(8)), m_Bytes(input.Rest()),
          m_ModelStream({m_Bytes.begin(), m_Bytes.end()}, m_uiPiece) {
        for (DecodingRoad* road : {&m_Plain, &m_Fast})
            road->stream.Load(m_Bytes, m_uiPiece);
    }

    void Run() {
        if (m_uiSkippedBits > 0 && !m_Bytes.empty()) {
            m_Plain.reader.ReadStreamBits(m_uiSkippedBits);
            m_Fast.reader.ReadStreamBits(m_uiSkippedBits);
            m_Model.Read(static_cast<int>(m_uiSkippedBits));
        }
        for (unsigned plane = 0; plane < 8; ++plane) {
            const LbePlaneFormat& format = m_aFormats[plane % 2];
            const Milestone start(m_Plain);
            const ModelledPlane expected = DecodeByModel(format);
            ComparePlainRoad(m_Plain, format, expected);
            Check(m_Plain.reader.GetState().HeldBits() ==
                          static_cast<uint32_t>(m_Model.HeldBits()) &&
                      m_Plain.stream.GetConsumedBytes() == m_ModelStream.Consumed(),
                  "the reader stands elsewhere than the model's");
            CompareFastRoad(start, format, expected, (m_uiChoices >> (1 + plane % 7) & 1) != 0);
            if (expected.failure != Failure::None)
                return;
        }
        m_Cursor.GiveBack();
        Check(Milestone(m_Fast) == Milestone(m_Plain), "the cursor ends elsewhere");
    }

private:
    ModelledPlane DecodeByModel(const LbePlaneFormat& format) {
        try {
            return {model::DecodeRuns(m_Model, {static_cast<int>(format.m_uiSamples),
                                                static_cast<int>(format.m_uiRowWidth),
                                                static_cast<int>(format.m_uiLiteralBits),
                                                static_cast<int>(format.m_uiLongRunBits)})};
        } catch (const model::ModelError& error) {
            return {{}, FailureOf(error.what())};
        }
    }

    void ComparePlainRoad(DecodingRoad& road, const LbePlaneFormat& format,
                          const ModelledPlane& expected) {
        LbePlaneBuffer buffer;
        try {
            DecodeLbePlane(road.reader, format, buffer);
            Check(expected.failure == Failure::None, "a plane is decoded, which the model refuses");
        } catch (const ImageDecoderException& exception) {
            Check(FailureOf(exception.what()) == expected.failure,
                  "a plane fails otherwise than the model's");
        }
        for (size_t i = 0; i < expected.samples.size(); ++i)
            Check(buffer.Samples()[i] == expected.samples[i], "another sample");
    }

    /// start: where the plain road stood before the plane.
    void CompareFastRoad(const Milestone& start, const LbePlaneFormat& format,
                         const ModelledPlane& expected, bool giveBack) {
        const bool taken = m_Cursor.Decode(format);
        if (!taken) {
            Check(Milestone(m_Fast) == start, "a declined plane leaves something behind");
            // Where the plain road failed from the same state it would only fail again.
            if (expected.failure != Failure::None)
                return;
            ComparePlainRoad(m_Fast, format, expected);
        } else {
            Check(expected.failure == Failure::None, "the cursor takes a bad plane");
            for (size_t i = 0; i < format.m_uiSamples; ++i)
                Check(m_Cursor.Sample(i) == expected.samples[i], "another sample of the cursor's");
        }
        if (giveBack)
            m_Cursor.GiveBack();
        if (giveBack || !taken)
            Check(Milestone(m_Fast) == Milestone(m_Plain), "the cursor's reader stands elsewhere");
    }

    static GuardedStreambuffer& Stream(size_t index) {
        static std::array<GuardedStreambuffer, 2> streams{GuardedStreambuffer(nullptr),
                                                          GuardedStreambuffer(nullptr)};
        return streams[index];
    }

    LbePlaneKernel m_pKernel;
    std::array<LbePlaneFormat, 2> m_aFormats; ///< of planes by turns, like luma and chroma
    uint8_t m_uiChoices; ///< at which end the samples are guarded, when the reader is current
    size_t m_uiPiece;
    uint32_t m_uiSkippedBits;
    std::span<const uint8_t> m_Bytes;
    model::ModelStream m_ModelStream;
    model::ModelBits m_Model{m_ModelStream};
    DecodingRoad m_Plain{Stream(0)};
    DecodingRoad m_Fast{Stream(1)};
    PlaneCursorUnderTest m_Cursor{m_Fast.reader, m_pKernel, FlushOf((m_uiChoices & 1) != 0)};
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    PlaneRun(input).Run();
    return 0;
}
