#include "tools/rctool/VideoExport.h"

#include "tools/rctool/RecordedUpdates.h"
#include "tools/rctool/Y4mWriter.h"

#include <algorithm>
#include <stdexcept>

namespace Vostrel::rctool {

using recording::RecordedUpdate;
using recording::RecordingReader;

namespace {

/// More than four days at 25 frames a second.
constexpr uint64_t MaxFrames = 10'000'000;

/// The frames of updates, as VideoPlan has them. A damaged clock may go back: nothing comes before
/// what was seen before it.
std::vector<uint64_t> FirstFramesOf(const std::vector<uint64_t>& times, const FrameRate& rate) {
    std::vector<uint64_t> frames;
    uint64_t last = 0;
    for (const uint64_t time : times) {
        last = std::max(last, FrameOf(rate, time - std::min(time, times.front())));
        frames.push_back(last);
    }
    frames.push_back(last + 1);
    return frames;
}

} // namespace

VideoPlan PlanVideo(RecordingReader& reader, std::optional<FrameRate> rate) {
    VideoPlan plan;
    std::vector<uint64_t> times;
    reader.Restart();
    while (const auto record = reader.Next()) {
        CheckForInterruption();
        const auto* const update = std::get_if<RecordedUpdate>(&*record);
        if (update == nullptr)
            continue;
        const recording::Settings& settings = reader.GetSettings();
        plan.m_size.m_uiWidth = std::max<size_t>(plan.m_size.m_uiWidth, settings.m_uiWidth);
        plan.m_size.m_uiHeight = std::max<size_t>(plan.m_size.m_uiHeight, settings.m_uiHeight);
        times.push_back(update->m_uiTime);
    }
    if (times.empty())
        return plan;
    reader.Restart();
    if (!rate)
        rate = ConstantRate(times);
    plan.m_rate = rate.value_or(FrameRate{});
    plan.m_vuiFirstFrames = FirstFramesOf(times, plan.m_rate);
    if (plan.GetFrames() > MaxFrames)
        throw std::runtime_error("The video would have " + std::to_string(plan.GetFrames()) +
                                 " frames; a lower --fps makes fewer");
    return plan;
}

size_t ExportVideo(RecordingReader& reader, recording::Player& player, const VideoPlan& plan,
                   streamencoder::ChromaSubsampling chroma, std::FILE* file, Progress& progress) {
    Y4mWriter video(file, plan.m_size, plan.m_rate, chroma);
    size_t failures = 0;
    size_t number = 0;
    ForEachUpdate(reader, player, [&](const RecordedUpdate& update) {
        progress.Step();
        const bool failed = !player.Play(update).m_failure.empty();
        failures += failed && update.m_result != recording::FailedResult ? 1 : 0;
        const uint64_t frames =
            plan.m_vuiFirstFrames.at(number + 1) - plan.m_vuiFirstFrames.at(number);
        if (frames != 0)
            video.Show(player.GetFramebuffer().GetPicture());
        video.WriteFrames(frames);
        ++number;
        return true;
    });
    return failures;
}

} // namespace Vostrel::rctool
