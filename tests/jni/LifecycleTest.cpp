#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/jni/AllocationFailure.h"
#include "tests/jni/NativeFixture.h"

#include <array>
#include <new>

namespace Vostrel::tests {
namespace {

using libimagedecoder::ImageDecoderRenderer;

class LifecycleTest : public NativeFixture {
protected:
    using Create = decltype(&ICT(createImageDecoder));

    jlong createDecoder(Create create, jint threads, jint version, jint subsampling) {
        return create(m_jvm.env(), nullptr, m_renderer, m_stream, m_logger, threads, version,
                      subsampling);
    }

    void expectIOException(const std::string& message) {
        ASSERT_TRUE(m_jvm.m_pendingException);
        EXPECT_EQ(m_jvm.m_pendingException->className, "java/io/IOException");
        EXPECT_EQ(m_jvm.m_pendingException->message, message);
        m_jvm.m_pendingException.reset();
    }
};

constexpr const char* DecoderFailed = "JNI init IImageDecoder failed";

TEST_F(LifecycleTest, LoadStoresTheVmAndAsksForVersion16) {
    FakeJvm other;
    EXPECT_EQ(JNI_OnLoad(other.vm(), nullptr), 0x10006);
    EXPECT_EQ(libjni::JavaVm::getInstance().getVm(), other.vm());
    JNI_OnLoad(m_jvm.vm(), nullptr);
}

TEST_F(LifecycleTest, UnloadForgetsTheVm) {
    JNI_OnUnload(m_jvm.vm(), nullptr);
    EXPECT_EQ(libjni::JavaVm::getInstance().getVm(), nullptr);
    JNI_OnLoad(m_jvm.vm(), nullptr);
}

TEST_F(LifecycleTest, VersionIsNine) {
    EXPECT_EQ(HELPER(getVersion)(m_jvm.env(), nullptr), 9);
}

TEST_F(LifecycleTest, LoggerAndStreamHoldTheReceiver) {
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    EXPECT_NE(m_logger, 0);
    EXPECT_NE(m_stream, 0);
    EXPECT_NE(m_renderer, 0);
}

TEST_F(LifecycleTest, DeletingNothingDoesNothing) {
    HELPER(deleteLogger)(m_jvm.env(), nullptr, 0);
    HELPER(deleteStreambuffer)(m_jvm.env(), nullptr, 0);
    HELPER(deleteRCRenderer)(m_jvm.env(), nullptr, 0);
    ICT(deleteImageDecoder)(m_jvm.env(), nullptr, 0);
    LBE(deleteImageDecoder)(m_jvm.env(), nullptr, 0);
    EXPECT_FALSE(m_jvm.m_pendingException);
}

TEST_F(LifecycleTest, EveryVersionAndSubsamplingMakesADecoder) {
    for (const Create create : {&ICT(createImageDecoder), &LBE(createImageDecoder)}) {
        for (jint version = 0; version <= 2; ++version) {
            for (jint subsampling = 0; subsampling <= 2; ++subsampling) {
                const jlong decoder = createDecoder(create, 2, version, subsampling);
                EXPECT_NE(decoder, 0);
                EXPECT_FALSE(m_jvm.m_pendingException);
                ICT(deleteImageDecoder)(m_jvm.env(), nullptr, decoder);
            }
        }
    }
}

TEST_F(LifecycleTest, DecoderGetsItsIntegersInOrder) {
    // Only version 2 makes use of threads, and says how many.
    m_helper.m_lines.clear();
    ICT(deleteImageDecoder)
    (m_jvm.env(), nullptr, createDecoder(&ICT(createImageDecoder), 3, 2, 1));
    LBE(deleteImageDecoder)
    (m_jvm.env(), nullptr, createDecoder(&LBE(createImageDecoder), 1, 2, 0));
    EXPECT_THAT(
        m_helper.m_lines,
        testing::IsSupersetOf({"Using multithreaded parallel ICT decoder with 3 threads.",
                               "Using multithreaded parallel LBE decoder with 1 threads."}));
}

TEST_F(LifecycleTest, DecoderThatRejectsItsArgumentsBecomesAnIOException) {
    struct Arguments {
        jint threads, version, subsampling;
    };
    for (const Create create : {&ICT(createImageDecoder), &LBE(createImageDecoder)}) {
        for (const Arguments wrong :
             {Arguments{0, 3, 0}, Arguments{0, -1, 0}, Arguments{0, 1, 3}, Arguments{0, 1, -1},
              Arguments{1025, 2, 0}, Arguments{-1, 2, 0}}) {
            EXPECT_EQ(createDecoder(create, wrong.threads, wrong.version, wrong.subsampling), 0);
            expectIOException(DecoderFailed);
        }
    }
}

TEST_F(LifecycleTest, DecoderWithoutMemoryBecomesAnIOException) {
    for (const Create create : {&ICT(createImageDecoder), &LBE(createImageDecoder)}) {
        jlong decoder = 0;
        {
            const AllocationFailure failure(1);
            decoder = createDecoder(create, 0, 1, 0);
        }
        EXPECT_EQ(decoder, 0);
        expectIOException(DecoderFailed);
    }
}

TEST_F(LifecycleTest, RendererWithoutMemoryBecomesAnIOException) {
    jlong renderer = 0;
    {
        const AllocationFailure failure(1);
        renderer = HELPER(createRCRenderer)(m_jvm.env(), nullptr, m_logger);
    }
    EXPECT_EQ(renderer, 0);
    expectIOException("JNI init ImageDecoderRenderer failed");
}

TEST_F(LifecycleTest, StreamWithoutMemoryBecomesAnIOException) {
    jlong stream = 0;
    {
        const AllocationFailure failure(1);
        stream = HELPER(createStreambuffer)(m_jvm.env(), m_helper.get(), m_logger);
    }
    EXPECT_EQ(stream, 0);
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    expectIOException("JNI init StreambufferJava failed");
}

TEST_F(LifecycleTest, LoggerWithoutMemoryLeavesTheNativeMethodAsItIs) {
    const AllocationFailure failure(1);
    EXPECT_THROW(HELPER(createLogger)(m_jvm.env(), m_helper.get()), std::bad_alloc);
    EXPECT_FALSE(m_jvm.m_pendingException);
}

TEST_F(LifecycleTest, FailedLookupOfIOExceptionStaysPendingInstead) {
    for (int create = 0; create < 3; ++create) {
        m_jvm.failCall("FindClass");
        jlong handle = 0;
        {
            const AllocationFailure failure(1);
            handle = create == 0   ? HELPER(createRCRenderer)(m_jvm.env(), nullptr, m_logger)
                     : create == 1 ? HELPER(createStreambuffer)(m_jvm.env(), m_helper.get(), 0)
                                   : createDecoder(&ICT(createImageDecoder), 0, 1, 0);
        }
        EXPECT_EQ(handle, 0);
        ASSERT_TRUE(m_jvm.m_pendingException);
        EXPECT_EQ(m_jvm.m_pendingException->className, "java/lang/NoClassDefFoundError");
        EXPECT_EQ(m_jvm.calls("ThrowNew"), 0);
        m_jvm.m_pendingException.reset();
    }
}

class RendererSettersTest : public NativeFixture {
protected:
    /// The first pixel of a macroblock of one colour, as the renderer draws it.
    uint32_t drawnPixel(uint8_t luma, uint8_t cb, uint8_t cr) {
        alignas(32) std::array<std::array<unsigned char, 16 * 16>, 3> planes;
        planes[0].fill(luma);
        planes[1].fill(cb);
        planes[2].fill(cr);
        alignas(32) std::array<uint32_t, 16 * 16> framebuffer{};
        const bool skipMask[] = {false};
        auto& renderer = *reinterpret_cast<ImageDecoderRenderer*>(m_renderer);
        renderer.SetFramebufferSize(16, 16, false);
        renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(framebuffer.data()));
        renderer.DrawDataYCbCr444(0, 0, 16, 16, 16, 16, planes[0].data(), planes[1].data(),
                                  planes[2].data(), skipMask);
        return framebuffer[0];
    }

    /// Red on black luma: brighter than asked for after clamping, so post-processing pulls it to
    /// black.
    bool isPostprocessing() { return drawnPixel(0, 128, 255) == 0xFF000000; }
};

TEST_F(RendererSettersTest, PostprocessingIsEnabledByTheBooleanTrueAlone) {
    using Set = decltype(&ICT(setClientPostprocessingEnabled));
    for (const Set set :
         {&ICT(setClientPostprocessingEnabled), &LBE(setClientPostprocessingEnabled)}) {
        for (const int byte : {1, 0, 1, 2, 1, 255}) {
            set(m_jvm.env(), nullptr, m_renderer, static_cast<jboolean>(byte));
            EXPECT_EQ(isPostprocessing(), byte == 1) << byte;
        }
    }
}

TEST_F(RendererSettersTest, ContrastLevelReachesTheRenderer) {
    using Set = decltype(&ICT(setContrastEnhance));
    for (const Set set : {&ICT(setContrastEnhance), &LBE(setContrastEnhance)}) {
        // At level 100 every luma up to 100 is black.
        set(m_jvm.env(), nullptr, m_renderer, 100);
        EXPECT_EQ(drawnPixel(100, 128, 128), 0xFF000000);
        set(m_jvm.env(), nullptr, m_renderer, 0);
        EXPECT_EQ(drawnPixel(100, 128, 128), 0xFF646464);
    }
}

} // namespace
} // namespace Vostrel::tests
