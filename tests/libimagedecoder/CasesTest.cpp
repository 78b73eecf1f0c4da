#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/KernelLevels.h"
#include "tests/model/CaseFile.h"
#include "tests/support/DefinedMemory.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/PiecewiseStreambuffer.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace Vostrel::libimagedecoder {

namespace {

using model::CaseLife;
using model::CaseUpdate;
using tests::GuardedBuffer;
using tests::PiecewiseStreambuffer;
/// The memory of a viewer: one ARGB framebuffer, or a Y, a Cb and a Cr framebuffer.
class Framebuffer {
public:
    explicit Framebuffer(const CaseLife& life) {
        const size_t width = life.fbWidth;
        const size_t height = life.fbHeight;
        if (life.sink == 0) {
            m_Memory.emplace_back(width * height * 4);
            return;
        }
        const size_t chromaWidth = width / (life.chroma == 2 ? 1 : 2);
        const size_t chromaHeight = height / (life.chroma == 0 ? 2 : 1);
        m_Memory.emplace_back(width * height);
        m_Memory.emplace_back(chromaWidth * chromaHeight);
        m_Memory.emplace_back(chromaWidth * chromaHeight);
    }

    void GiveTo(ImageDecoderRenderer& renderer) {
        const bool planes = m_Memory.size() == 3;
        renderer.SetFramebufferArgb(planes ? nullptr : m_Memory[0].Data());
        renderer.SetFramebufferY(planes ? m_Memory[0].Data() : nullptr);
        renderer.SetFramebufferCb(planes ? m_Memory[1].Data() : nullptr);
        renderer.SetFramebufferCr(planes ? m_Memory[2].Data() : nullptr);
    }

    uint32_t Crc() {
        std::vector<uint8_t> memory;
        for (GuardedBuffer<uint8_t>& part : m_Memory)
            memory.insert(memory.end(), part.begin(), part.end());
        return model::Crc32(memory);
    }

    bool IsDefined() {
        return std::ranges::all_of(m_Memory, [](GuardedBuffer<uint8_t>& part) {
            return tests::IsDefined(part.Data(), part.Count());
        });
    }

    bool GuardsIntact() {
        return std::ranges::all_of(
            m_Memory, [](GuardedBuffer<uint8_t>& part) { return part.GuardsIntact(); });
    }

private:
    std::deque<GuardedBuffer<uint8_t>> m_Memory;
};

/// The library's objects through one decoder life.
class Player {
public:
    Player(const CaseLife& life, const KernelLevel& kernels)
        : m_Life(life), m_Kernels(kernels),
          m_Renderer(CreateYCbCr4xxToArgb32Of(kernels, &m_Logger)), m_Framebuffer(life),
          m_pDecoder(MakeDecoder()) {
        m_Renderer.SetContrastEnhance(life.contrast);
        m_Renderer.SetClientPostprocessingEnabled(life.postproc);
    }

    /// Plays every update; pieceBytes is the size of the transfer array, the life's own if absent.
    void PlayAll(std::optional<size_t> pieceBytes) {
        for (size_t i = 0; i < m_Life.updates.size(); ++i) {
            SCOPED_TRACE("update " + std::to_string(i));
            const CaseUpdate& update = m_Life.updates[i];
            Play(update, pieceBytes.value_or(m_Life.PieceCapacity(update)));
            if (!pieceBytes && update.consumed != CaseUpdate::NotCompared) {
                EXPECT_EQ(m_Stream.GetConsumedBytes(), update.consumed);
            }
        }
    }

private:
    std::unique_ptr<IImageDecoder> MakeDecoder() {
        if (m_Life.codec == 1)
            return std::make_unique<ImageDecoderLbe>(&m_Renderer, &m_Stream, &m_Logger,
                                                     m_Life.threads, m_Life.version, m_Life.chroma,
                                                     CreateLbePlaneKernelOf(m_Kernels, &m_Logger));
        return std::make_unique<ImageDecoderIct>(&m_Renderer, &m_Stream, &m_Logger, m_Life.threads,
                                                 m_Life.version, m_Life.chroma,
                                                 CreateInverseIctOf(m_Kernels, &m_Logger));
    }

    void Play(const CaseUpdate& update, size_t pieceBytes) {
        m_Stream.Load(update.stream, pieceBytes);
        m_pDecoder->SetResolution(m_Life.fbWidth, m_Life.fbHeight);
        m_Renderer.SetFramebufferSize(m_Life.fbWidth, m_Life.fbHeight, false);
        m_Framebuffer.GiveTo(m_Renderer);
        std::string error;
        int64_t result = -1;
        try {
            result = static_cast<int64_t>(m_pDecoder->HandleUpdate(update.quality, 0, update.x,
                                                                   update.y, update.w, update.h));
        } catch (const ImageDecoderException& exception) {
            error = exception.what();
        }
        EXPECT_EQ(error, update.error);
        EXPECT_EQ(result, update.result);
        EXPECT_TRUE(m_Framebuffer.IsDefined());
        EXPECT_EQ(m_Framebuffer.Crc(), m_Kernels.m_Arithmetic == KernelArithmetic::Portable
                                           ? update.crcPortable
                                           : update.crcAccelerated);
        EXPECT_TRUE(m_Framebuffer.GuardsIntact());
    }

    const CaseLife& m_Life;
    KernelLevel m_Kernels;
    tests::RecordingLogger m_Logger;
    PiecewiseStreambuffer m_Stream{&m_Logger};
    ImageDecoderRenderer m_Renderer;
    Framebuffer m_Framebuffer;
    std::unique_ptr<IImageDecoder> m_pDecoder;
};

/// Every case file holds for the library: result, error, consumed bytes and framebuffer.
class Cases : public testing::TestWithParam<std::filesystem::path> {
protected:
    static void PlayInAllPieces(const KernelLevel& kernels) {
        SCOPED_TRACE(kernels.m_pName);
        const CaseLife life = model::ReadCaseFile(GetParam());
        for (const std::optional<size_t> pieceBytes :
             {std::optional<size_t>(), std::optional<size_t>(13), std::optional<size_t>(4096),
              std::optional<size_t>(65536)}) {
            SCOPED_TRACE("pieces of " + (pieceBytes ? std::to_string(*pieceBytes) : "the case"));
            Player(life, kernels).PlayAll(pieceBytes);
        }
    }
};

TEST_P(Cases, HoldForThePortableKernels) {
    PlayInAllPieces(ListKernelLevels().front());
}

TEST_P(Cases, HoldForTheFastestKernels) {
    PlayInAllPieces(ListKernelLevelsOfThisProcessor().back());
}

TEST_P(Cases, HoldForAllOtherKernels) {
    const std::vector<KernelLevel> levels = ListKernelLevelsOfThisProcessor();
    for (size_t i = 1; i + 1 < levels.size(); ++i)
        PlayInAllPieces(levels[i]);
}

INSTANTIATE_TEST_SUITE_P(, Cases, testing::ValuesIn(model::ListCaseFiles()),
                         [](const auto& file) { return model::CaseTestName(file.param); });

} // namespace

} // namespace Vostrel::libimagedecoder
