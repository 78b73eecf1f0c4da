#include "tests/faults/FaultFixture.h"

#include <new>

namespace Vostrel::tests {
namespace {

/// A perform method while memory runs out. It leaves std::bad_alloc to its caller on purpose; what
/// it owes is an object graph that goes on working.
class PerformFaultsTest : public FaultFixture, public testing::WithParamInterface<DecoderKind> {
protected:
    /// One update of a decoder and a stream that have not decoded yet, with one failing allocation;
    /// then a good one. Returns whether the allocation was reached.
    bool performWithFault(const std::string& bits, size_t n) {
        const jlong stream = HELPER(createStreambuffer)(m_jvm.env(), m_helper.get(), m_logger);
        Call c = call(GetParam().create(m_jvm.env(), nullptr, m_renderer, stream, m_logger,
                                        GetParam().threads, GetParam().version, 0));
        c.streambuffer = stream;
        m_framebuffer.assign(m_framebuffer.size(), Untouched);
        m_helper.m_pieces.clear();
        feed(bits, {1, 2, 3});
        bool struck = false;
        {
            const AllocationFaults faults(n);
            try {
                perform(GetParam(), c);
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(AllocationFaults::haveStruck());
            }
            struck = AllocationFaults::haveStruck();
        }
        const uint32_t left = m_framebuffer[0];
        EXPECT_TRUE(left == Untouched || left == GetParam().colour());
        expectPixels(left, Untouched);
        expectGoodUpdate(GetParam(), c);
        ICT(deleteImageDecoder)(m_jvm.env(), nullptr, c.decoder);
        HELPER(deleteStreambuffer)(m_jvm.env(), nullptr, stream);
        EXPECT_EQ(AllocationFaults::live(), 0u);
        EXPECT_EQ(m_jvm.liveGlobals(), 2u) << "those of the fixture's logger and stream";
        return struck;
    }

    void expectEveryFaultIsSurvived(const std::string& bits) {
        size_t n = 1;
        while (performWithFault(bits, n) && !HasFailure())
            ++n;
        EXPECT_GT(n, 5u) << "allocations of binding, planes, mask and lookups";
    }
};

TEST_P(PerformFaultsTest, TheUpdateAfterAGoodOneThatFailedDecodes) {
    expectEveryFaultIsSurvived(GetParam().update());
}

TEST_P(PerformFaultsTest, TheUpdateAfterABadOneThatFailedDecodes) {
    expectEveryFaultIsSurvived(GetParam().update().substr(0, 30));
}

INSTANTIATE_TEST_SUITE_P(, PerformFaultsTest, testing::ValuesIn(DecoderKinds));

} // namespace
} // namespace Vostrel::tests
