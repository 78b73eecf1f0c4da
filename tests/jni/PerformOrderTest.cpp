#include "tests/jni/AllocationFailure.h"
#include "tests/jni/PerformFixture.h"

#include <algorithm>
#include <new>

// In which order an update's native method calls into the VM. A VM shows it in its checks and in
// what is left behind when a step fails.

namespace Vostrel::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PerformOrderTest : public PerformFixture {
protected:
    PerformOrderTest()
        : m_decoder(ICT(createImageDecoder)(m_jvm.env(), nullptr, m_renderer, m_stream, m_logger, 0,
                                            1, 0)) {}
    ~PerformOrderTest() override { ICT(deleteImageDecoder)(m_jvm.env(), nullptr, m_decoder); }

    /// The calls of these functions in the journal, in order.
    std::vector<std::string> callsOf(const std::vector<std::string>& functions) const {
        std::vector<std::string> calls;
        for (const FakeJvm::JournalEntry& entry : m_jvm.m_journal) {
            if (std::ranges::find(functions, entry.function) != functions.end())
                calls.push_back(entry.function);
        }
        return calls;
    }

    int firstAllocationAfterResolving(jint widthBefore, jint width);

    jlong m_decoder;
};

TEST_F(PerformOrderTest, FramebuffersAreResolvedInTheOrderArgbYCbCr) {
    std::vector<uint8_t> luma(Width * Height);
    std::vector<uint8_t> cb(Width * Height / 4);
    std::vector<uint8_t> cr(Width * Height / 4);
    Call all = call(m_decoder);
    all.yPlane = directBuffer(luma);
    all.cbPlane = directBuffer(cb);
    all.crPlane = directBuffer(cr);
    feed(End);
    m_jvm.m_journal.clear();
    EXPECT_EQ(performIct(all), 0);
    std::vector<const void*> resolved;
    for (const FakeJvm::JournalEntry& entry : m_jvm.m_journal) {
        if (entry.directAddress)
            resolved.push_back(entry.directAddress);
    }
    EXPECT_THAT(resolved, ElementsAre(m_framebuffer.data(), luma.data(), cb.data(), cr.data()));
}

/// Which allocation of an update is the first that fails after a framebuffer was resolved, counted
/// from 1, when the update before had a framebuffer of another width. Each time anew.
int PerformOrderTest::firstAllocationAfterResolving(jint widthBefore, jint width) {
    for (int n = 1;; ++n) {
        const jlong decoder =
            ICT(createImageDecoder)(m_jvm.env(), nullptr, m_renderer, m_stream, m_logger, 0, 1, 0);
        Call update = call(decoder);
        update.framebufferWidth = widthBefore;
        feed(End);
        performIct(update);
        update.framebufferWidth = width;
        feed(End);
        m_jvm.m_journal.clear();
        m_jvm.m_journal.reserve(1000);
        try {
            const AllocationFailure failure(n);
            performIct(update);
        } catch (const std::bad_alloc&) {
            // The one that was to fail.
        }
        ICT(deleteImageDecoder)(m_jvm.env(), nullptr, decoder);
        if (!callsOf({"GetDirectBufferAddress"}).empty())
            return n;
    }
}

TEST_F(PerformOrderTest, TheResolutionIsSetBeforeAnyFramebufferIsResolved) {
    // A new resolution costs allocations, and they come before those of the resolving.
    constexpr jint Large = 8192;
    EXPECT_GT(firstAllocationAfterResolving(Width, Large),
              firstAllocationAfterResolving(Large, Large));
}

TEST_F(PerformOrderTest, TheArraysLengthIsAskedOnceForEveryUpdate) {
    for (int update = 0; update < 3; ++update) {
        feed(End);
        m_jvm.m_journal.clear();
        performIct(call(m_decoder));
        EXPECT_EQ(callsOf({"GetArrayLength"}).size(), 1u);
    }
}

TEST_F(PerformOrderTest, TheTransferArrayIsReferencedBeforeAnEarlierReferenceIsDeleted) {
    // An update that ends by an exception of another kind keeps its reference to the array, which
    // the next one replaces.
    {
        Call failing = call(m_decoder);
        failing.framebufferWidth = 30000;
        const AllocationFailure failure(3);
        EXPECT_THROW(performIct(failing), std::bad_alloc);
    }
    feed(End);
    m_jvm.m_journal.clear();
    EXPECT_EQ(performIct(call(m_decoder)), 0);
    EXPECT_THAT(callsOf({"NewGlobalRef", "DeleteGlobalRef"}),
                ElementsAre("NewGlobalRef", "DeleteGlobalRef", "DeleteGlobalRef"));
}

} // namespace
} // namespace Vostrel::tests
