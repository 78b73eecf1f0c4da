#include "libimagedecoder/ILogger.h"

#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>
#include <string>

namespace Vostrel::libimagedecoder {

namespace {

using Lines = std::vector<std::string>;

TEST(ILogger, FormatsLikePrintf) {
    tests::RecordingLogger logger;
    logger.Log("%s has %u threads, %d%%", "decoder", 4u, -7);
    EXPECT_EQ(logger.m_vLines, Lines{"decoder has 4 threads, -7%"});
}

TEST(ILogger, OneCallIsOneLineEvenWithLineBreaksOrNothingInIt) {
    tests::RecordingLogger logger;
    logger.Log("%s", "");
    logger.Log("a\nb");
    EXPECT_EQ(logger.m_vLines, (Lines{"", "a\nb"}));
}

TEST(ILogger, ALineOf2047CharactersArrivesWhole) {
    tests::RecordingLogger logger;
    const std::string line(2047, 'x');
    logger.Log("%s", line.c_str());
    EXPECT_EQ(logger.m_vLines, Lines{line});
}

TEST(ILogger, ALongerLineIsCutTo2047Characters) {
    tests::RecordingLogger logger;
    for (const size_t length : {2048u, 2049u, 5000u, 100000u}) {
        std::string line(length, 'x');
        line[2046] = 'y';
        line[2047] = 'z';
        logger.Log("%s", line.c_str());
        ASSERT_EQ(logger.m_vLines.back().size(), 2047u) << length;
        EXPECT_EQ(logger.m_vLines.back(), line.substr(0, 2047)) << length;
    }
    EXPECT_EQ(logger.m_vLines.size(), 4u);
}

TEST(ILogger, AShortLineAfterALongOneHoldsNothingOfIt) {
    tests::RecordingLogger logger;
    logger.Log("%s", std::string(3000, 'x').c_str());
    logger.Log("short");
    EXPECT_EQ(logger.m_vLines.back(), "short");
}

} // namespace

} // namespace Vostrel::libimagedecoder
