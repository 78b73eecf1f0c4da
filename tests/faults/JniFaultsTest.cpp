#include "libimagedecoder/ImageDecoderException.h"
#include "tests/faults/FaultFixture.h"

namespace Vostrel::tests {
namespace {

/// A viewer's life in which one call of one JNI function fails.
class JniFaultsTest : public FaultFixture {
protected:
    /// Two updates of a decoder: a good one, of which bytes are left over, and one that is cut.
    void performTwice(const DecoderKind& kind, const Call& c) {
        for (const std::string& bits : {kind.update(), kind.update().substr(0, 30)}) {
            m_helper.m_pieces.clear();
            feed(bits, {1, 2, 3});
            try {
                perform(kind, c);
            } catch (const libimagedecoder::ImageDecoderException& exception) {
                // The way in which a failed stall leaves the perform methods.
                EXPECT_STREQ(exception.what(), "Connection closed");
            }
        }
    }

    /// The whole life of a viewer's objects, as far as they could be created.
    void live(const DecoderKind& kind) {
        JNIEnv* const env = m_jvm.env();
        Call c = call(0);
        c.logger = HELPER(createLogger)(env, m_helper.get());
        c.streambuffer = HELPER(createStreambuffer)(env, m_helper.get(), c.logger);
        c.renderer = HELPER(createRCRenderer)(env, nullptr, c.logger);
        c.decoder = kind.create(env, nullptr, c.renderer, c.streambuffer, c.logger, kind.threads,
                                kind.version, 0);
        performTwice(kind, c);
        // A creation that fails for another reason.
        EXPECT_EQ(
            kind.create(env, nullptr, c.renderer, c.streambuffer, c.logger, 0, kind.version, 3), 0);
        ICT(deleteImageDecoder)(env, nullptr, c.decoder);
        HELPER(deleteRCRenderer)(env, nullptr, c.renderer);
        HELPER(deleteStreambuffer)(env, nullptr, c.streambuffer);
        HELPER(deleteLogger)(env, nullptr, c.logger);
    }
};

TEST_F(JniFaultsTest, AnyFailingCallLeavesNoReferenceBehindAndTheNextLifeWorks) {
    for (const DecoderKind& kind : DecoderKinds) {
        const jlong decoder = create(kind);
        for (const std::string& function : JniFaults::functions()) {
            bool struck = true;
            int n = 1;
            for (; struck; ++n) {
                SCOPED_TRACE(testing::PrintToString(kind) + ": " + function + ", call " +
                             std::to_string(n));
                m_jniFaults.failCall(function, n);
                outputOf([&] { live(kind); });
                struck = m_jniFaults.hasStruck();
                m_jniFaults.failCall("", 0);
                m_jvm.m_pendingException.reset();
                EXPECT_EQ(m_jvm.liveGlobals(), 2u) << "those of the fixture's logger and stream";
                EXPECT_EQ(m_jvm.m_lentBuffers, 0);
                expectGoodUpdate(kind, call(decoder));
                ASSERT_FALSE(HasFailure());
            }
            EXPECT_GT(n, 2) << function << " was never called";
        }
        ICT(deleteImageDecoder)(m_jvm.env(), nullptr, decoder);
    }
}

TEST_F(JniFaultsTest, StringsAreGivenBackWhicheverCallFails) {
    for (const std::string& function : JniFaults::functions()) {
        if (function == "GetObjectClass" || function == "FindClass")
            continue; // Their results, which stay with the VM, are what is subtracted.
        const long before = ownLocals();
        m_jniFaults.failCall(function, 1);
        outputOf([&] { live(DecoderKinds[0]); });
        EXPECT_EQ(ownLocals(), before) << function;
        m_jvm.m_pendingException.reset();
    }
}

} // namespace
} // namespace Vostrel::tests
