#include "bench/DecodingScene.h"
#include "bench/comparison/Rows.h"
#include "bench/comparison/Screens.h"

#include <cstring>
#include <malloc.h>
#include <new>
#include <sys/mman.h>
#include <sys/resource.h>

// A decoder's birth, and its first update, in which it meets fresh memory.

namespace Vostrel::bench {

using namespace libimagedecoder;
using namespace streamencoder;

namespace {

constexpr size_t SteadyUpdates = 5;

/// Page faults of the calling thread so far.
double PageFaults() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return static_cast<double>(usage.ru_minflt);
}

template <class Work>
double Time(Work work) {
    const int64_t start = Now(Clock::ThreadTime);
    work();
    return static_cast<double>(Now(Clock::ThreadTime) - start);
}

/// Nanoseconds that a page fault costs beyond the writing of the page.
double PageFaultCost() {
    constexpr size_t Bytes = size_t{1} << 21;
    void* const memory =
        mmap(nullptr, Bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    const auto fill = [&](int value) {
        std::memset(memory, value, Bytes);
        asm volatile("" ::"r"(memory) : "memory");
    };
    const double faultsBefore = PageFaults();
    const double fresh = Time([&] { fill(1); });
    const double faults = PageFaults() - faultsBefore;
    const double touched = Time([&] { fill(2); });
    munmap(memory, Bytes);
    return (fresh - touched) / faults;
}

/// What one life gave, in nanoseconds.
struct Life {
    double m_fCreate;      ///< of the decoder alone
    double m_fFirst;       ///< first update, resolution included
    double m_fSteady;      ///< a later one
    double m_fFirstFaults; ///< what the first one's page faults cost
};

Life Live(EncodedUpdate& update, std::vector<uint32_t>& framebuffer) {
    // The memory of the life before must not serve this one, which would then find it touched.
    malloc_trim(0);
    const UpdateRectangle& area = update.m_rectangle;
    SilentLogger logger;
    UpdateStream stream;
    ImageDecoderRenderer renderer(&logger);
    renderer.SetFramebufferSize(area.m_uiWidth, area.m_uiHeight, false);
    renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(framebuffer.data()));

    std::unique_ptr<ImageDecoderIct> decoder;
    const double create = Time(
        [&] { decoder = std::make_unique<ImageDecoderIct>(&renderer, &stream, &logger, 0, 0, 0); });
    const auto perform = [&] {
        stream.Offer(update.m_vuiPayload);
        decoder->SetResolution(area.m_uiWidth, area.m_uiHeight);
        decoder->HandleUpdate(update.m_uiQuality, 0, 0, 0, area.m_uiWidth, area.m_uiHeight);
    };
    const double faultsBefore = PageFaults();
    const double first = Time(perform);
    const double faults = PageFaults() - faultsBefore;
    std::vector<double> later(SteadyUpdates);
    for (double& time : later)
        time = Time(perform);
    return {create, first, Median(later), faults * PageFaultCost()};
}

double MedianOf(const std::vector<Life>& lives, double (*value)(const Life&)) {
    std::vector<double> values;
    values.reserve(lives.size());
    for (const Life& life : lives)
        values.push_back(value(life));
    return Median(values);
}

} // namespace

void MeasureFirstUpdate(const RoundSettings& settings, Report& report) {
    const Picture picture = WholeScreen(Screen::Desktop);
    EncodedUpdate update = EncodeScreen(picture, {.m_codec = Codec::Ict, .m_uiProtocolVersion = 0},
                                        ChromaSubsampling::Yuv420, 8);
    std::vector<uint32_t> framebuffer(picture.m_vPixels.size());
    PinCallingThread(settings.m_iCore);
    Live(update, framebuffer);
    std::vector<Life> lives;
    for (unsigned round = 0; round < settings.m_uiRounds; ++round)
        lives.push_back(Live(update, framebuffer));

    const auto ratio = [](const Life& life) {
        return life.m_fFirst / (life.m_fSteady + life.m_fFirstFaults);
    };
    const double create = MedianOf(lives, [](const Life& life) { return life.m_fCreate; });
    report.Add(
        {15,
         "first ICT update of a life, desktop level 8",
         "x steady + page faults",
         MedianOf(lives, ratio),
         {1.5, Goal::None, false},
         MedianOf(lives, [](const Life& life) { return life.m_fFirst; }),
         MedianOf(lives, [](const Life& life) { return life.m_fSteady + life.m_fFirstFaults; })});
    report.Add({15, "create of an ICT decoder", "ms", create / 1e6, {2, 0.5, false}, create});
}

} // namespace Vostrel::bench
