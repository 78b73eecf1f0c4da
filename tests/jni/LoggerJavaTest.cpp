#include "jni/LoggerJava.h"

#include "tests/jni/FakeHelper.h"
#include "tests/support/FakeJvmFixture.h"

#include <stdexcept>

namespace Vostrel::tests {
namespace {

using jni::LoggerJava;
using testing::ElementsAre;

class LoggerJavaTest : public FakeJvmFixture {
protected:
    FakeHelper m_helper{m_jvm};
};

TEST_F(LoggerJavaTest, HoldsAGlobalReferenceToTheJavaObject) {
    {
        const LoggerJava logger(m_helper.get());
        EXPECT_EQ(m_jvm.liveGlobals(), 1u);
    }
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
}

TEST_F(LoggerJavaTest, LineIsPrintedOnceAndLeavesNoReferenceBehind) {
    LoggerJava logger(m_helper.get());
    logger.LogInternal("first, which looks print up");
    m_helper.m_lines.clear();
    const size_t locals = m_jvm.liveLocals();
    logger.LogInternal("abc");
    EXPECT_THAT(m_helper.m_lines, ElementsAre("abc"));
    EXPECT_EQ(m_jvm.liveLocals(), locals);
}

TEST_F(LoggerJavaTest, FormattedLineIsPrinted) {
    LoggerJava logger(m_helper.get());
    logger.Log("%u of %s", 3u, "four");
    EXPECT_THAT(m_helper.m_lines, ElementsAre("3 of four"));
}

TEST_F(LoggerJavaTest, MissingPrintCostsAConsoleMessageAlone) {
    m_helper.removeMethod("print(Ljava/lang/String;)V");
    LoggerJava logger(m_helper.get());
    EXPECT_EQ(outputOf([&] { logger.LogInternal("abc"); }),
              "Could not find \"print(Ljava/lang/String;)V\" method");
    EXPECT_THAT(m_helper.m_lines, ElementsAre());
}

TEST_F(LoggerJavaTest, NullTextIsALogicError) {
    LoggerJava logger(m_helper.get());
    EXPECT_THROW(logger.LogInternal(nullptr), std::logic_error);
}

TEST_F(LoggerJavaTest, ObjectIsAtTheAddressOfItsInterface) {
    LoggerJava logger(m_helper.get());
    EXPECT_EQ(static_cast<void*>(&logger),
              static_cast<void*>(static_cast<libimagedecoder::ILogger*>(&logger)));
}

} // namespace
} // namespace Vostrel::tests
