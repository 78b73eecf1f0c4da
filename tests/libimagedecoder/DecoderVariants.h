#pragma once

#include "tests/libimagedecoder/DecoderUnderTest.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

/// Every protocol version and subsampling of a codec; version 2 also with pools of one worker and
/// of several.
inline std::vector<model::ModelSettings> AllVariants(model::ModelCodec codec) {
    std::vector<model::ModelSettings> variants;
    for (unsigned chroma = 0; chroma <= 2; ++chroma) {
        for (const auto& [version, threads] :
             {std::pair(0u, 0u), {1u, 4u}, {2u, 0u}, {2u, 1u}, {2u, 4u}})
            variants.push_back({codec, version, chroma, threads, model::KernelRule::Accelerated});
    }
    return variants;
}

/// The same with a pool only.
inline std::vector<model::ModelSettings> PoolVariants(model::ModelCodec codec) {
    std::vector<model::ModelSettings> variants = AllVariants(codec);
    std::erase_if(variants, [](const auto& variant) {
        return variant.protocolVersion != 2 || variant.threads == 0;
    });
    return variants;
}

inline std::string VariantName(const testing::TestParamInfo<model::ModelSettings>& variant) {
    constexpr const char* Chroma[] = {"420", "422", "444"};
    return std::string(Chroma[variant.param.chroma]) + "Version" +
           std::to_string(variant.param.protocolVersion) + "Threads" +
           std::to_string(variant.param.threads);
}

/// A decoder pair of one variant, and the update texts that suit it.
class DecoderVariant : public testing::TestWithParam<model::ModelSettings> {
protected:
    using Area = model::ModelRectangle;

    unsigned Version() const { return GetParam().protocolVersion; }
    unsigned Chroma() const { return GetParam().chroma; }
    bool HasPool() const { return Version() == 2 && GetParam().threads > 0; }
    bool IsLbe() const { return GetParam().codec == model::ModelCodec::Lbe; }
    std::string End() const { return tests::EndOfUpdate(Version()); }

    static size_t Macroblocks(const Area& area) {
        return static_cast<size_t>(model::RoundUpToBlock(area.width) / 16) *
               static_cast<size_t>(model::RoundUpToBlock(area.height) / 16);
    }

    /// A quality value that the codec takes.
    unsigned RandomQuality() {
        if (!IsLbe())
            return m_Random.Below(16u);
        return static_cast<unsigned>(m_Random.Between(2, Version() == 0 ? 7 : 11));
    }

    std::string RandomUpdate(const Area& area, unsigned quality) {
        return tests::RandomUpdate(m_Random, {IsLbe(), Version(), Chroma(), HasPool(), quality},
                                   Macroblocks(area));
    }

    size_t RandomPiece() {
        constexpr size_t Pieces[] = {1, 2, 3, 13, 64, 4096, 1 << 20};
        return Pieces[m_Random.Below(std::size(Pieces))];
    }

    /// Fields in front of a macroblock that is decoded from the update's own reader, whatever the
    /// version.
    std::string InPlace() const {
        return Version() == 2 ? tests::NoSkip + tests::Bits(0, 8) : tests::NoSkip;
    }

    /// A good random update of the whole framebuffer must decode right.
    void ExpectNextUpdateDecodes() {
        const unsigned quality = RandomQuality();
        const Area area{0, 0, 64, 48};
        const model::ModelOutcome outcome =
            m_Pair.Update(quality, area, RandomUpdate(area, quality));
        EXPECT_EQ(outcome.error, "");
    }

    tests::Random m_Random;
    DecoderPair m_Pair{GetParam()};
};

} // namespace Vostrel::libimagedecoder
