#include "libimagedecoder/YCbCr4xxToArgb32/YCbCr4xxToArgb32Native.h"
#include "tests/libimagedecoder/DecoderVariants.h"
#include "tests/model/ModelColour.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <limits>
#include <thread>

namespace Vostrel::libimagedecoder {

namespace {

using model::ModelCodec;
using model::ModelSettings;
using tests::Bits;
using YCbCr4xxToArgb32::IYCbCr4xxToArgb32;
using YCbCr4xxToArgb32::YCbCr4xxToArgb32Native;

// Lengths.

/// A pool's records under a length that is not theirs.
class WrongLength : public testing::TestWithParam<ModelCodec> {
protected:
    static constexpr unsigned Quality = 9;

    void ExpectModelOutcome(unsigned chroma, const std::string& lengthBits, bool enoughBytes) {
        const bool lbe = GetParam() == ModelCodec::Lbe;
        const std::string body = tests::RandomBody(m_Random, {lbe, 2, chroma, true, Quality});
        std::string update = tests::NoSkip + lengthBits + body;
        if (enoughBytes)
            update += tests::RandomBody(m_Random, {lbe, 2, chroma, true, Quality}) +
                      tests::Repeated("10110101", 1100) + tests::EndOfUpdate(2);
        m_Pairs[chroma].Update(Quality, {0, 0, 32, 16}, update, 100);
    }

    void SetUp() override {
        for (unsigned chroma = 0; chroma <= 2; ++chroma)
            m_Pairs
                .emplace_back(
                    ModelSettings{GetParam(), 2, chroma, 2, model::KernelRule::Accelerated})
                .SetFramebuffer(model::ModelSink::Argb, 32, 16);
    }

    std::vector<std::string> AllLengths() const {
        std::vector<std::string> lengths;
        if (GetParam() == ModelCodec::Ict) {
            for (unsigned bytes = 0; bytes < 256; ++bytes)
                lengths.push_back(Bits(bytes, 8));
            return lengths;
        }
        for (unsigned bytes = 0; bytes < 128; ++bytes)
            lengths.push_back(Bits(0, 1) + Bits(bytes, 7));
        for (unsigned bytes = 0; bytes < 1024; ++bytes)
            lengths.push_back(Bits(1, 1) + Bits(bytes, 10));
        return lengths;
    }

    tests::Random m_Random;
    std::deque<DecoderPair> m_Pairs;
};

TEST_P(WrongLength, OfAnyValueEndsLikeTheModel) {
    unsigned chroma = 0;
    for (const std::string& length : AllLengths()) {
        for (const bool enoughBytes : {false, true}) {
            chroma = (chroma + 1) % 3;
            ExpectModelOutcome(chroma, length, enoughBytes);
            ASSERT_FALSE(HasFailure()) << length;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, WrongLength, testing::Values(ModelCodec::Ict, ModelCodec::Lbe),
                         [](const auto& codec) {
                             return codec.param == ModelCodec::Ict ? "Ict" : "Lbe";
                         });

// Overflow.

/// A colour kernel that looks at the luma it is given instead of converting it.
class LumaWatcher : public IYCbCr4xxToArgb32 {
public:
    using IYCbCr4xxToArgb32::IYCbCr4xxToArgb32;
    using Look = std::function<void(const uint8_t* luma, size_t stride)>;

    std::uint16_t GetDataAlignmentBytes() const override { return 8; }
    void Convert420(std::uint32_t*, const std::uint8_t* luma, const std::uint8_t*,
                    const std::uint8_t*, unsigned short, unsigned short, unsigned long,
                    unsigned long lumaStride, unsigned long, const bool*) const override {
        m_Look(luma, lumaStride);
    }
    void Convert422(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short, unsigned short, unsigned long, unsigned long, unsigned long,
                    const bool*) const override {}
    void Convert444(std::uint32_t*, const std::uint8_t*, const std::uint8_t*, const std::uint8_t*,
                    unsigned short, unsigned short, unsigned long, unsigned long, unsigned long,
                    const bool*) const override {}

    Look m_Look;
};

/// The sample of a tile that has a DC level alone, by the arithmetic of 32-bit registers.
uint8_t FlatSample(uint32_t predictor, uint32_t multiplier) {
    const auto product = static_cast<int32_t>(predictor * multiplier);
    const int coefficient = static_cast<int16_t>(product >> 10);
    return static_cast<uint8_t>(std::clamp((coefficient >> 6) + 128, 0, 255));
}

/// Protocol version 0 predicts on through a whole update: after 1,049,089 tiles, each brighter by
/// 2047, the level passes 2^31, and its product with the multiplier does so long before.
TEST(Overflow, APredictorThatRunsBeyond31BitsWrapsFromTileToTile) {
    constexpr size_t Columns = 4095;
    constexpr size_t Rows = 65;
    static_assert(Columns * Rows * 4 * 2047 > std::numeric_limits<int32_t>::max());
    constexpr unsigned short Width = Columns * 16;
    constexpr unsigned short Height = Rows * 16;

    tests::RecordingLogger logger;
    tests::PiecewiseStreambuffer stream(&logger);
    const auto watcher = std::make_shared<LumaWatcher>(&logger);
    ImageDecoderRenderer renderer(watcher);
    uint32_t pixel = 0;
    renderer.SetFramebufferSize(Width, Height, false);
    renderer.SetFramebufferArgb(reinterpret_cast<unsigned char*>(&pixel));
    ImageDecoderIct decoder(&renderer, &stream, &logger, 0, 0, 0);
    decoder.SetResolution(Width, Height);

    // Category 11, the difference 2047, end of block.
    const std::string luma = "111111110" + Bits(2047, 11) + "1010";
    const std::string macroblock =
        tests::NoSkip + tests::Repeated(luma, 4) + tests::Repeated(tests::FlatChromaTile, 2);
    // Eight macroblocks are whole bytes.
    const std::vector<uint8_t> eight = tests::BytesOf(tests::Repeated(macroblock, 8));
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i < Columns * Rows; i += 8)
        bytes.insert(bytes.end(), eight.begin(), eight.end());
    stream.Load(bytes, 65536);

    bool looked = false;
    watcher->m_Look = [&](const uint8_t* samples, size_t stride) {
        looked = true;
        const auto multiplier = static_cast<uint32_t>(
            decoder.GetDequantTable(ComponentY)[decoder.GetReorderTable()[0]]);
        uint32_t predictor = 0;
        for (size_t block = 0; block < Columns * Rows; ++block) {
            for (const auto& [left, top] : {std::pair(0, 0), {8, 0}, {0, 8}, {8, 8}}) {
                predictor += 2047;
                const size_t row = block / Columns * 16 + static_cast<size_t>(top);
                const size_t column = block % Columns * 16 + static_cast<size_t>(left);
                ASSERT_EQ(samples[row * stride + column], FlatSample(predictor, multiplier))
                    << "macroblock " << block;
            }
        }
    };
    decoder.HandleUpdate(0, 0, 0, 0, Width, Height);
    EXPECT_TRUE(looked);
}

// Threads.

void StartTogether(std::atomic<int>& waiting) {
    --waiting;
    while (waiting > 0)
        std::this_thread::yield();
}

/// Runs the body on eight threads at once.
void OnEightThreads(const std::function<void()>& body) {
    std::atomic<int> waiting{8};
    std::vector<std::thread> threads;
    for (int n = 0; n < 8; ++n) {
        threads.emplace_back([&] {
            StartTogether(waiting);
            body();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Concurrency, EightRenderersMadeAtOnceShareFinishedTables) {
    OnEightThreads([] {
        tests::RecordingLogger logger;
        const ImageDecoderRenderer renderer(&logger);
        const unsigned int* const table = ImageDecoderRenderer::GetQuantizedLookupTable(6, 5);
        for (int index = 0; index < 1 << 16; ++index)
            ASSERT_EQ(table[index], model::ReducedDepthToArgb(index >> 10, index & 1023, 6, 5));
    });
}

TEST(Concurrency, EightPortableKernelsMadeAtOnceShareFinishedTables) {
    OnEightThreads([] {
        tests::RecordingLogger logger;
        const YCbCr4xxToArgb32Native kernel(&logger);
        for (unsigned luma = 0; luma < 256; ++luma) {
            for (unsigned chroma = 0; chroma < 256; ++chroma) {
                const unsigned other = (chroma * 7 + luma) % 256;
                ASSERT_EQ(YCbCr4xxToArgb32Native::ArgbWord(luma, chroma, other),
                          model::ToArgb(luma, chroma, other, model::KernelRule::Portable));
            }
        }
    });
}

/// A decoder's whole life on a thread of its own, beside another one of the other codec.
TEST(Concurrency, TwoDecodersOnTwoThreadsDecodeAndLogApart) {
    std::atomic<int> waiting{2};
    const auto live = [&waiting](ModelCodec codec) {
        const bool lbe = codec == ModelCodec::Lbe;
        tests::Random random;
        StartTogether(waiting);
        DecoderPair pair({codec, 2, 0, 2, model::KernelRule::Accelerated});
        pair.SetFramebuffer(model::ModelSink::Argb, 96, 64);
        for (int update = 0; update < 20; ++update) {
            const std::string text = tests::RandomUpdate(random, {lbe, 2, 0, true, 9}, 24);
            pair.Update(9, {0, 0, 96, 64}, text);
            pair.Update(9, {0, 0, 96, 64}, tests::Damaged(random, text));
        }
        const std::string own = "Using multithreaded parallel " + std::string(lbe ? "LBE" : "ICT") +
                                " decoder with 2 threads.";
        for (const std::string& line : pair.Subject().Logger().m_vLines)
            EXPECT_TRUE(line == own || !line.starts_with("Using ")) << line;
    };
    std::thread lbe(live, ModelCodec::Lbe);
    live(ModelCodec::Ict);
    lbe.join();
}

} // namespace

} // namespace Vostrel::libimagedecoder
