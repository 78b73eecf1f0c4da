#include "tests/faults/FaultFixture.h"

#include <functional>

namespace Vostrel::tests {
namespace {

/// Creation of native objects while memory runs out, through the exported functions.
class CreateFaultsTest : public FaultFixture {
protected:
    struct Creation {
        std::function<jlong()> create;
        std::function<void(jlong)> use; ///< that the object works
        std::function<void(jlong)> destroy;
        std::string message;
    };

    Creation stream() {
        return {
            [this] { return HELPER(createStreambuffer)(m_jvm.env(), m_helper.get(), m_logger); },
            [](jlong) {},
            [this](jlong handle) {
                HELPER(deleteStreambuffer)
                (m_jvm.env(), nullptr, handle);
            },
            "JNI init StreambufferJava failed"};
    }

    Creation renderer() {
        return {[this] { return HELPER(createRCRenderer)(m_jvm.env(), nullptr, m_logger); },
                [this](jlong handle) { expectThatItDraws(handle); },
                [this](jlong handle) {
                    HELPER(deleteRCRenderer)
                    (m_jvm.env(), nullptr, handle);
                },
                "JNI init ImageDecoderRenderer failed"};
    }

    Creation decoder(const DecoderKind& kind) {
        return {[this, kind] { return create(kind); },
                [this, kind](jlong handle) { expectGoodUpdate(kind, call(handle)); },
                [this](jlong handle) {
                    ICT(deleteImageDecoder)
                    (m_jvm.env(), nullptr, handle);
                },
                "JNI init IImageDecoder failed"};
    }

    void expectThatItDraws(jlong renderer) {
        const DecoderKind& kind = DecoderKinds[0];
        const jlong decoder = kind.create(m_jvm.env(), nullptr, renderer, m_stream, m_logger,
                                          kind.threads, kind.version, 0);
        Call c = call(decoder);
        c.renderer = renderer;
        expectGoodUpdate(kind, c);
        ICT(deleteImageDecoder)(m_jvm.env(), nullptr, decoder);
    }

    /// Lets `count` allocations fail from the first on, then from the second on, until none fails:
    /// either the creation ends in its IOException, or it found a way around and the object works.
    void expectEveryFaultIsSurvived(const Creation& creation, size_t count) {
        size_t failures = 0;
        bool struck = true;
        for (size_t n = 1; struck; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            jlong handle = 0;
            {
                const AllocationFaults faults(n, count);
                handle = creation.create();
                struck = AllocationFaults::haveStruck();
            }
            if (handle == 0) {
                ++failures;
                ASSERT_TRUE(struck);
                expectIOException(creation.message);
            } else {
                EXPECT_FALSE(m_jvm.m_pendingException);
                creation.use(handle);
                creation.destroy(handle);
            }
            EXPECT_EQ(AllocationFaults::live(), 0u);
            EXPECT_EQ(m_jvm.liveGlobals(), 2u) << "those of the fixture's logger and stream";
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_GT(failures, 0u);
    }
};

TEST_F(CreateFaultsTest, AStreamIsMadeOrAnIOExceptionIsPending) {
    expectEveryFaultIsSurvived(stream(), 1);
    expectEveryFaultIsSurvived(stream(), AllocationFaults::Every);
}

TEST_F(CreateFaultsTest, ARendererIsMadeOrAnIOExceptionIsPending) {
    expectEveryFaultIsSurvived(renderer(), 1);
    expectEveryFaultIsSurvived(renderer(), AllocationFaults::Every);
}

class CreateDecoderFaultsTest : public CreateFaultsTest,
                                public testing::WithParamInterface<DecoderKind> {};

TEST_P(CreateDecoderFaultsTest, ADecoderIsMadeOrAnIOExceptionIsPending) {
    expectEveryFaultIsSurvived(decoder(GetParam()), 1);
}

TEST_P(CreateDecoderFaultsTest, WithoutAnyMoreMemoryAnIOExceptionIsPending) {
    expectEveryFaultIsSurvived(decoder(GetParam()), AllocationFaults::Every);
}

INSTANTIATE_TEST_SUITE_P(, CreateDecoderFaultsTest, testing::ValuesIn(DecoderKinds));

} // namespace
} // namespace Vostrel::tests
