#pragma once

#include "tests/jni/NativeFixture.h"
#include "tests/model/BitText.h"

#include <string>
#include <vector>

namespace Vostrel::tests {

/// A viewer with a framebuffer of two macroblocks side by side and a transfer array.
class PerformFixture : public NativeFixture {
protected:
    static constexpr jint Width = 32;
    static constexpr jint Height = 16;
    static constexpr jint TransferLength = 64;
    static constexpr uint32_t Untouched = 0x01020304;

    /// One call; what the tests vary stands here.
    struct Call {
        jobject argb = nullptr;
        jobject yPlane = nullptr;
        jobject cbPlane = nullptr;
        jobject crPlane = nullptr;
        jint length = TransferLength;
        jint quality = 2;
        jint framebufferWidth = Width;
        jint x = 0;
        jint width = Width;
        jlong streambuffer, renderer, decoder, logger;
    };

    Call call(jlong decoder) {
        Call result{.streambuffer = m_stream,
                    .renderer = m_renderer,
                    .decoder = decoder,
                    .logger = m_logger};
        result.argb = m_argb;
        return result;
    }

    jlong performIct(const Call& c) {
        return ICT(performICT)(m_jvm.env(), nullptr, c.length, c.argb, c.yPlane, c.cbPlane,
                               c.crPlane, m_transfer, c.quality, c.framebufferWidth, Height, -1, -1,
                               c.x, 0, c.width, Height, c.streambuffer, c.renderer, c.decoder,
                               c.logger);
    }

    jlong performLbe(const Call& c) {
        return LBE(performLBE)(m_jvm.env(), nullptr, c.length, c.argb, m_transfer, c.quality,
                               c.framebufferWidth, Height, -1, -1, c.x, 0, c.width, Height,
                               c.streambuffer, c.renderer, c.decoder, c.logger);
    }

    /// The next read delivers these bits, filled up to whole bytes, and these further bytes.
    void feed(const std::string& bits, const std::vector<int>& more = {}) {
        const std::vector<uint8_t> bytes = model::BytesOf(bits);
        std::vector<int> piece(bytes.begin(), bytes.end());
        piece.insert(piece.end(), more.begin(), more.end());
        m_helper.m_pieces.push_back(piece);
    }

    template <class Memory>
    jobject directBuffer(Memory& memory) {
        return m_jvm.local(m_jvm.newDirectBuffer(memory.data()));
    }

    void expectPixels(uint32_t left, uint32_t right) const {
        for (size_t row = 0; row < Height; ++row) {
            for (size_t column = 0; column < Width; ++column)
                ASSERT_EQ(m_framebuffer[row * Width + column], column < 16 ? left : right)
                    << "row " << row << ", column " << column;
        }
    }

    /// Skip code that ends an update of protocol version 1.
    static constexpr const char* End = "11 1111111111111111";

    std::vector<uint32_t> m_framebuffer = std::vector<uint32_t>(Width * Height, Untouched);
    jobject m_argb = directBuffer(m_framebuffer);
    jbyteArray m_transfer =
        m_jvm.local<jbyteArray>(m_jvm.newByteArray(std::vector<jbyte>(TransferLength)));
};

} // namespace Vostrel::tests
