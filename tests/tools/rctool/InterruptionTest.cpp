#include "tools/rctool/Interruption.h"

#include "tools/rctool/Comparison.h"
#include "tools/recording/RecordingWriter.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace Vostrel::rctool {
namespace {

TEST(InterruptionDeathTest, TwoSignalsInARowAreOne) {
    const auto run = [] {
        signal(SIGTERM, SIG_DFL);
        NoteSignals();
        raise(SIGTERM);
        raise(SIGTERM);
        EXPECT_THROW(CheckForInterruption(), Interrupted);
        std::_Exit(GetNotedSignal());
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(SIGTERM), "");
}

TEST(InterruptionDeathTest, ALaterSignalKills) {
    const auto run = [] {
        signal(SIGTERM, SIG_DFL);
        NoteSignals();
        raise(SIGTERM);
        std::this_thread::sleep_for(std::chrono::milliseconds(600));
        raise(SIGTERM);
        std::_Exit(0);
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGTERM), "");
}

TEST(InterruptionDeathTest, AnIgnoredSignalStaysIgnored) {
    const auto run = [] {
        signal(SIGHUP, SIG_IGN);
        NoteSignals();
        raise(SIGHUP);
        CheckForInterruption();
        std::_Exit(GetNotedSignal());
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(InterruptionDeathTest, SleepEndsEarlyAfterASignal) {
    const auto run = [] {
        signal(SIGINT, SIG_DFL);
        NoteSignals();
        raise(SIGINT);
        EXPECT_THROW(SleepUntil(std::chrono::steady_clock::now() + std::chrono::hours(1)),
                     Interrupted);
        std::_Exit(0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(InterruptionDeathTest, AReplayEndsAfterASignal) {
    const std::string path = testing::TempDir() + "Interruption.rcrec";
    recording::Header header;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = 16;
    recording::RecordedUpdate update;
    update.m_encoded = {10, {0, 0, 16, 16}, {0xFF, 0xFF}};
    recording::RecordingWriter writer(path, header);
    writer.Write(update);
    writer.Close();
    const auto run = [&] {
        signal(SIGINT, SIG_DFL);
        NoteSignals();
        raise(SIGINT);
        recording::RecordingReader reader(path);
        EXPECT_THROW(ReplayUpTo(reader, 0), Interrupted);
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
    std::filesystem::remove(path);
}

} // namespace
} // namespace Vostrel::rctool
