#include "tests/faults/AllocationFaults.h"
#include "tests/libimagedecoder/DecoderVariants.h"

#include <functional>
#include <new>

namespace Vostrel::libimagedecoder {
namespace {

using model::ModelCodec;
using model::ModelOutcome;
using model::ModelRectangle;
using model::ModelSettings;
using tests::AllocationFaults;

/// Every variant, and the one whose colour conversion has work lines to allocate.
std::vector<ModelSettings> VariantsOf(ModelCodec codec) {
    std::vector<ModelSettings> variants = AllVariants(codec);
    variants.push_back({codec, 2, 0, 3, model::KernelRule::Portable});
    return variants;
}

std::string NameOf(const testing::TestParamInfo<ModelSettings>& variant) {
    const bool portable = variant.param.rule == model::KernelRule::Portable;
    return VariantName(variant) + (portable ? "Portable" : "");
}

/// A decoder of four macroblocks whose memory runs out.
class DecoderFaults : public testing::TestWithParam<ModelSettings> {
protected:
    static constexpr int Edge = 20;
    static constexpr ModelRectangle Area{0, 0, Edge, Edge};
    static constexpr unsigned Quality = 7; ///< every version of both codecs has it

    /// Four coded macroblocks, too long for the segment store of so small a framebuffer.
    std::string Update() {
        const bool pool = GetParam().protocolVersion == 2 && GetParam().threads > 0;
        const tests::UpdateCoding coding{GetParam().codec == ModelCodec::Lbe,
                                         GetParam().protocolVersion, GetParam().chroma, pool,
                                         Quality};
        std::string text;
        for (int macroblock = 0; macroblock < 4; ++macroblock) {
            std::string record;
            while (tests::CountBits(record) < 500)
                record = pool ? PoolRecord(coding)
                              : tests::RandomRecord(m_Random, coding, tests::NoSkip);
            text += record;
        }
        return text + tests::EndOfUpdate(coding.version);
    }

    /// A record whose length is told, so that a job decodes it.
    std::string PoolRecord(const tests::UpdateCoding& coding) {
        for (;;) {
            const std::string body = tests::RandomBody(m_Random, coding);
            if (tests::CountBits(body) < 1900)
                return coding.lbe ? tests::LbeRecord(tests::NoSkip, body)
                                  : tests::IctRecord(tests::NoSkip, body);
        }
    }

    std::vector<uint8_t> PictureOf(const std::string& update) const {
        model::ModelDecoder decoder(GetParam());
        decoder.SetFramebuffer(model::ModelSink::Argb, Edge, Edge);
        model::ModelStream stream(tests::BytesOf(update), 1 << 20);
        EXPECT_EQ(decoder.Update(Quality, Area, stream).error, "");
        return decoder.Renderer().Memory();
    }

    static void ExpectPicture(DecoderUnderTest& subject, const std::string& update,
                              const std::vector<uint8_t>& picture) {
        EXPECT_EQ(subject.Update(Quality, Area, update).error, "");
        EXPECT_TRUE(subject.Memory() == picture);
        EXPECT_TRUE(subject.GuardsIntact());
    }

    /// How an action ended while one allocation failed.
    struct Outcome {
        bool struck = false;
        bool badAlloc = false;
        size_t allocations = 0;
    };

    static Outcome WithFault(size_t n, const std::function<void()>& action) {
        Outcome outcome;
        const AllocationFaults faults(n);
        try {
            action();
        } catch (const std::bad_alloc&) {
            outcome.badAlloc = true;
        }
        outcome.struck = AllocationFaults::haveStruck();
        outcome.allocations = AllocationFaults::allocations();
        return outcome;
    }

    /// Lets one allocation after the other fail in an update that is `first` in a decoder's life.
    /// A failed one draws nothing, and the good update after it is right.
    void ExpectTheNextUpdateDecodes(const std::string& first, bool good) {
        const std::string next = Update();
        const std::vector<uint8_t> picture = PictureOf(next);
        const std::vector<uint8_t> untouched(picture.size(), 0);
        bool struck = true;
        for (size_t n = 1; struck; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            {
                DecoderUnderTest subject(GetParam());
                subject.SetFramebuffer(model::ModelSink::Argb, Edge, Edge);
                ModelOutcome end{};
                const Outcome fault =
                    WithFault(n, [&] { end = subject.Update(Quality, Area, first); });
                struck = fault.struck;
                m_uiMostAllocations = std::max(m_uiMostAllocations, fault.allocations);
                EXPECT_EQ(good && !fault.badAlloc, subject.Memory() != untouched);
                EXPECT_TRUE(struck || end.error.empty() == good);
                subject.SetFramebuffer(model::ModelSink::Argb, Edge, Edge);
                ExpectPicture(subject, next, picture);
            }
            EXPECT_EQ(AllocationFaults::live(), 0u);
            ASSERT_FALSE(HasFailure());
        }
    }

    bool HasPool() const { return GetParam().protocolVersion == 2 && GetParam().threads > 0; }

    tests::Random m_Random;
    size_t m_uiMostAllocations = 0;
};

TEST_P(DecoderFaults, AnUpdateWithoutMemoryDrawsNothingAndTheNextOneDecodes) {
    ExpectTheNextUpdateDecodes(Update(), true);
    // The test's own stream takes a few; with a pool there are segments, records and the queue.
    EXPECT_GT(m_uiMostAllocations, HasPool() ? 8u : 2u);
}

TEST_P(DecoderFaults, ACutUpdateWithoutMemoryDrawsNothingAndTheNextOneDecodes) {
    const std::string update = Update();
    ExpectTheNextUpdateDecodes(update.substr(0, update.size() / 2), false);
}

TEST_P(DecoderFaults, SetResolutionWithoutMemoryKeepsTheOldOneWorking) {
    const std::string update = Update();
    const std::vector<uint8_t> picture = PictureOf(update);
    {
        DecoderUnderTest subject(GetParam());
        subject.SetFramebuffer(model::ModelSink::Argb, Edge, Edge);
        size_t n = 1;
        for (;; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            const Outcome fault = WithFault(n, [&] { subject.Decoder().SetResolution(320, 240); });
            EXPECT_EQ(fault.badAlloc, fault.struck);
            if (!fault.struck)
                break;
            EXPECT_EQ(subject.Update(Quality, {0, 0, 33, 16}, update).error, "StreamError");
            ExpectPicture(subject, update, picture);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_GE(n, 4u) << "two planes or three, and the segment store";
        EXPECT_EQ(subject.Update(Quality, {0, 0, 320, 240}, update.substr(0, 8)).error,
                  "Stream has no more bytes!");
        ExpectPicture(subject, update, picture);
    }
    EXPECT_EQ(AllocationFaults::live(), 0u);
}

TEST_P(DecoderFaults, ADecoderWhoseSetResolutionFailedCanBeDestroyed) {
    bool struck = true;
    for (size_t n = 1; struck; ++n) {
        {
            DecoderUnderTest subject(GetParam());
            struck = WithFault(n, [&] { subject.Decoder().SetResolution(320, 240); }).struck;
        }
        EXPECT_EQ(AllocationFaults::live(), 0u);
    }
}

TEST_P(DecoderFaults, TheLargestResolutionAsksForALumaPlaneOf4GiB) {
    DecoderUnderTest subject(GetParam());
    EXPECT_TRUE(WithFault(1, [&] { subject.Decoder().SetResolution(65535, 65535); }).badAlloc);
    EXPECT_EQ(AllocationFaults::failedBytes(), size_t{1} << 32);
}

INSTANTIATE_TEST_SUITE_P(Ict, DecoderFaults, testing::ValuesIn(VariantsOf(ModelCodec::Ict)),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Lbe, DecoderFaults, testing::ValuesIn(VariantsOf(ModelCodec::Lbe)),
                         NameOf);

} // namespace
} // namespace Vostrel::libimagedecoder
