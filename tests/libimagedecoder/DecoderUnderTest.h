#pragma once

#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/LbePlaneKernelFactory.h"
#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Factory.h"
#include "tests/model/ModelDecoder.h"
#include "tests/support/DefinedMemory.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/PiecewiseStreambuffer.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/TestBits.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

/// Renderer, stream and decoder of the library with a guarded framebuffer, to be used like a
/// model::ModelDecoder.
class DecoderUnderTest {
public:
    explicit DecoderUnderTest(const model::ModelSettings& settings)
        : m_Settings(settings),
          m_Renderer(YCbCr4xxToArgb32::YCbCr4xxToArgb32Factory::CreateYCbCr4xxToArgb32(
              &m_Logger, IsAccelerated())),
          m_pDecoder(MakeDecoder()) {}

    void SetFramebuffer(model::ModelSink sink, int width, int height) {
        m_Memory.clear();
        const auto add = [&](int columns, int rows, size_t sampleBytes) {
            m_Memory.emplace_back(static_cast<size_t>(columns * rows) * sampleBytes);
            return m_Memory.back().Data();
        };
        const model::ModelChroma chroma = model::ChromaOf(m_Settings.chroma);
        const bool argb = sink == model::ModelSink::Argb;
        m_Renderer.SetFramebufferArgb(argb ? add(width, height, 4) : nullptr);
        m_Renderer.SetFramebufferY(argb ? nullptr : add(width, height, 1));
        for (const auto setter :
             {&ImageDecoderRenderer::SetFramebufferCb, &ImageDecoderRenderer::SetFramebufferCr})
            (m_Renderer.*setter)(argb ? nullptr
                                      : add(width / chroma.divX, height / chroma.divY, 1));
        m_Renderer.SetFramebufferSize(static_cast<unsigned short>(width),
                                      static_cast<unsigned short>(height), false);
        m_pDecoder->SetResolution(static_cast<unsigned short>(width),
                                  static_cast<unsigned short>(height));
    }

    model::ModelOutcome Update(unsigned quality, const model::ModelRectangle& area,
                               const std::vector<uint8_t>& bytes, size_t pieceCapacity) {
        m_Stream.Load(bytes, pieceCapacity);
        try {
            const uint64_t result = m_pDecoder->HandleUpdate(
                quality, 0, static_cast<unsigned short>(area.x),
                static_cast<unsigned short>(area.y), static_cast<unsigned short>(area.width),
                static_cast<unsigned short>(area.height));
            return {result, "", m_Stream.GetConsumedBytes()};
        } catch (const ImageDecoderException& exception) {
            return {~uint64_t{0}, exception.what(), m_Stream.GetConsumedBytes()};
        }
    }

    /// The update of a bit text, delivered in one piece.
    model::ModelOutcome Update(unsigned quality, const model::ModelRectangle& area,
                               const std::string& text) {
        const std::vector<uint8_t> bytes = tests::BytesOf(text);
        return Update(quality, area, bytes, bytes.size() + 1);
    }

    /// The framebuffer's bytes in memory order, planes one behind the other.
    std::vector<uint8_t> Memory() {
        std::vector<uint8_t> bytes;
        for (auto& part : m_Memory)
            bytes.insert(bytes.end(), part.begin(), part.end());
        return bytes;
    }

    /// A pixel of an ARGB framebuffer.
    uint32_t Pixel(size_t index) {
        return reinterpret_cast<const uint32_t*>(m_Memory.front().Data())[index];
    }

    bool GuardsIntact() {
        return std::ranges::all_of(m_Memory, [](auto& part) { return part.GuardsIntact(); });
    }

    /// Whether no pixel comes from uninitialised memory; see tests::IsDefined.
    bool IsFramebufferDefined() {
        return std::ranges::all_of(
            m_Memory, [](auto& part) { return tests::IsDefined(part.Data(), part.Count()); });
    }

    ImageDecoderRenderer& Renderer() { return m_Renderer; }
    IImageDecoder& Decoder() { return *m_pDecoder; }
    tests::RecordingLogger& Logger() { return m_Logger; }

private:
    bool IsAccelerated() const { return m_Settings.rule == model::KernelRule::Accelerated; }

    /// Odd numbers of workers draw even the smallest updates.
    std::unique_ptr<IImageDecoder> MakeDecoder() {
        std::unique_ptr<MacroblockDecoder> decoder;
        if (m_Settings.codec == model::ModelCodec::Lbe)
            decoder = MakeDecoderOf<ImageDecoderLbe>(
                LbePlaneKernelFactory::CreateLbePlaneKernel(&m_Logger, IsAccelerated()));
        else
            decoder = MakeDecoderOf<ImageDecoderIct>(
                InverseTransform::InverseIct::InverseIctFactory::CreateInverseIct(&m_Logger,
                                                                                  IsAccelerated()));
        if (m_Settings.threads % 2 == 1)
            decoder->ShareDrawingFrom(1);
        return decoder;
    }

    template <class Decoder, class Kernel>
    std::unique_ptr<Decoder> MakeDecoderOf(Kernel kernel) {
        return std::make_unique<Decoder>(&m_Renderer, &m_Stream, &m_Logger, m_Settings.threads,
                                         m_Settings.protocolVersion, m_Settings.chroma, kernel);
    }

    model::ModelSettings m_Settings;
    tests::RecordingLogger m_Logger;
    tests::PiecewiseStreambuffer m_Stream{&m_Logger};
    ImageDecoderRenderer m_Renderer;
    std::deque<tests::GuardedBuffer<uint8_t>> m_Memory;
    std::unique_ptr<IImageDecoder> m_pDecoder;
};

/// The library and the model through the same life.
class DecoderPair {
public:
    explicit DecoderPair(const model::ModelSettings& settings)
        : m_bPool(settings.protocolVersion == 2 && settings.threads > 0), m_Subject(settings),
          m_Model(settings) {}

    void SetFramebuffer(model::ModelSink sink, int width, int height) {
        m_Subject.SetFramebuffer(sink, width, height);
        m_Model.SetFramebuffer(sink, width, height);
    }

    /// Holds the library's update against the model's. Returns the model's outcome.
    model::ModelOutcome Update(unsigned quality, const model::ModelRectangle& area,
                               const std::string& text, size_t pieceCapacity = 1 << 20) {
        const std::vector<uint8_t> bytes = tests::BytesOf(text);
        model::ModelStream stream(bytes, pieceCapacity);
        const model::ModelOutcome expected = m_Model.Update(quality, area, stream);
        const model::ModelOutcome actual = m_Subject.Update(quality, area, bytes, pieceCapacity);
        EXPECT_EQ(actual.error, expected.error);
        EXPECT_EQ(actual.result, expected.result);
        if (expected.error.empty() || !m_bPool) {
            EXPECT_EQ(actual.consumedBytes, expected.consumedBytes);
        }
        EXPECT_TRUE(m_Subject.IsFramebufferDefined());
        EXPECT_TRUE(m_Subject.Memory() == m_Model.Renderer().Memory()) << "the pictures differ";
        EXPECT_TRUE(m_Subject.GuardsIntact());
        return expected;
    }

    DecoderUnderTest& Subject() { return m_Subject; }
    model::ModelDecoder& Model() { return m_Model; }

private:
    bool m_bPool; ///< how far a walk gets when a job fails is a matter of timing
    DecoderUnderTest m_Subject;
    model::ModelDecoder m_Model;
};

} // namespace Vostrel::libimagedecoder
