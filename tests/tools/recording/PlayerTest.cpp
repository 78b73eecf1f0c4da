#include "tools/recording/Player.h"
#include "tests/model/CaseFile.h"
#include "tests/model/ModelDecoder.h"
#include "tests/tools/Screens.h"
#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"

#include <gtest/gtest.h>

namespace Vostrel::recording {
namespace {

using streamencoder::Picture;

constexpr uint16_t Width = 100;
constexpr uint16_t Height = 60;

Picture Part(size_t left, size_t top) {
    static const Picture screen = streamencoder::Screen("desktop-1024x768-00");
    return streamencoder::Crop(screen, left, top, Width, Height);
}

std::vector<EncodedUpdate> EncodeTwoFrames(const Header& header) {
    streamencoder::UpdateFormat format;
    format.m_uiProtocolVersion = header.m_uiProtocolVersion;
    format.m_layout = header.m_layout;
    std::unique_ptr<streamencoder::UpdateEncoder> encoder;
    if (header.m_codec == Codec::Ict)
        encoder = std::make_unique<streamencoder::IctEncoder>(format, header.m_chroma, 11);
    else
        encoder = std::make_unique<streamencoder::LbeEncoder>(format, header.m_chroma, 5);
    const Picture first = Part(0, 0);
    Picture second = first;
    for (size_t x = 20; x < 70; ++x)
        second.At(x, x / 2) = {255, 0, 0};
    return {encoder->EncodeUpdate(first, nullptr),
            encoder->EncodeUpdate(second, &first, {32, 16, 48, 32})};
}

model::ModelDecoder ModelFor(const Header& header, model::ModelSink sink) {
    const bool pool = header.m_layout == RecordLayout::Pool;
    const bool portable = header.m_settings.m_kernels == KernelRule::Portable;
    model::ModelDecoder decoder(
        {header.m_codec == Codec::Ict ? model::ModelCodec::Ict : model::ModelCodec::Lbe,
         header.m_uiProtocolVersion, static_cast<unsigned>(header.m_chroma), pool ? 1U : 0U,
         portable ? model::KernelRule::Portable : model::KernelRule::Accelerated});
    decoder.SetFramebuffer(sink, header.m_settings.m_uiWidth, header.m_settings.m_uiHeight);
    decoder.Renderer().SetContrast(header.m_settings.m_uiContrast);
    decoder.Renderer().SetPostProcessing(header.m_settings.m_bPostprocessing);
    return decoder;
}

void ShowTo(model::ModelDecoder& decoder, const EncodedUpdate& update, uint64_t result) {
    model::ModelStream stream(update.m_vuiPayload, update.m_vuiPayload.size());
    const auto& area = update.m_rectangle;
    const auto outcome = decoder.Update(
        update.m_uiQuality, {area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight}, stream);
    EXPECT_EQ(outcome.result, result);
}

PlayedUpdate Play(Player& player, const EncodedUpdate& encoded, uint8_t decoder = 0) {
    RecordedUpdate update;
    update.m_encoded = encoded;
    update.m_uiDecoder = decoder;
    return player.Play(update);
}

std::vector<Header> AllHeaders() {
    std::vector<Header> headers;
    for (const Codec codec : {Codec::Ict, Codec::Lbe}) {
        for (const auto chroma :
             {ChromaSubsampling::Yuv420, ChromaSubsampling::Yuv422, ChromaSubsampling::Yuv444}) {
            for (const auto& [version, layout] :
                 {std::pair(0, RecordLayout::Continuous), std::pair(1, RecordLayout::Continuous),
                  std::pair(2, RecordLayout::Continuous), std::pair(2, RecordLayout::Pool),
                  std::pair(2, RecordLayout::InPlace)}) {
                Header header;
                header.m_codec = codec;
                header.m_chroma = chroma;
                header.m_uiProtocolVersion = static_cast<uint8_t>(version);
                header.m_layout = layout;
                header.m_settings.m_uiWidth = Width;
                header.m_settings.m_uiHeight = Height;
                headers.push_back(header);
            }
        }
    }
    return headers;
}

TEST(Player, ShowsWhatTheModelShowsInEveryFormatAndSetting) {
    for (Header header : AllHeaders()) {
        for (const auto rule : {KernelRule::Accelerated, KernelRule::Portable}) {
            header.m_settings.m_kernels = rule;
            header.m_settings.m_uiContrast = rule == KernelRule::Portable ? 30 : 0;
            header.m_settings.m_bPostprocessing = rule == KernelRule::Portable;
            Player player(header, {});
            auto decoder = ModelFor(header, model::ModelSink::Argb);
            for (const EncodedUpdate& update : EncodeTwoFrames(header)) {
                const PlayedUpdate played = Play(player, update);
                EXPECT_EQ(played.m_failure, "");
                EXPECT_EQ(played.m_uiConsumedBytes, update.m_vuiPayload.size());
                ShowTo(decoder, update, played.m_uiResult);
                EXPECT_EQ(player.GetFramebuffer().GetBytes(), decoder.Renderer().Memory());
                EXPECT_EQ(player.GetFramebuffer().GetCrc(Coverage::Framebuffer, {}),
                          model::Crc32(decoder.Renderer().Memory()));
            }
        }
    }
}

TEST(Player, SeveralDecodersDrawIntoOneFramebuffer) {
    const auto headers = AllHeaders();
    const Header ict = headers[3];
    const Header lbe = headers[15 + 4];
    ASSERT_EQ(ict.m_codec, Codec::Ict);
    ASSERT_EQ(lbe.m_codec, Codec::Lbe);
    Player player(ict, {});
    player.Apply(AddedDecoder{1, lbe});
    auto ictModel = ModelFor(ict, model::ModelSink::Argb);
    auto lbeModel = ModelFor(lbe, model::ModelSink::Argb);
    const auto ictUpdates = EncodeTwoFrames(ict);
    const auto lbeUpdates = EncodeTwoFrames(lbe);
    ShowTo(ictModel, ictUpdates[0], Play(player, ictUpdates[0]).m_uiResult);
    ShowTo(lbeModel, lbeUpdates[1], Play(player, lbeUpdates[1], 1).m_uiResult);
    // The alpha of a pixel says whether the model of LBE has drawn it.
    auto expected = ictModel.Renderer().Memory();
    const auto drawn = lbeModel.Renderer().Memory();
    for (size_t at = 0; at < expected.size(); at += 4) {
        if (drawn[at + 3] != 0)
            std::copy_n(drawn.begin() + static_cast<std::ptrdiff_t>(at), 4,
                        expected.begin() + static_cast<std::ptrdiff_t>(at));
    }
    EXPECT_NE(expected, ictModel.Renderer().Memory());
    EXPECT_EQ(player.GetFramebuffer().GetBytes(), expected);
    EXPECT_THROW(Play(player, lbeUpdates[1], 2), std::out_of_range);

    // A change of settings is for both.
    Settings settings = ict.m_settings;
    settings.m_uiWidth = 50;
    player.Apply(settings);
    EXPECT_EQ(Play(player, ictUpdates[0]).m_failure, "StreamError");
    EXPECT_EQ(Play(player, lbeUpdates[0], 1).m_failure, "StreamError");
}

TEST(Player, PlanesAreForDecodersOfOneSubsamplingOnly) {
    Header header = AllHeaders()[0];
    header.m_settings.m_sink = Sink::Planes;
    AddedDecoder added{1, header};
    Player player(header, {});
    player.Apply(added);
    added.m_format.m_chroma = ChromaSubsampling::Yuv444;
    EXPECT_THROW(player.Apply(added), RecordingError);
    added.m_format = header;
    added.m_format.m_codec = Codec::Lbe;
    EXPECT_THROW(player.Apply(added), RecordingError);

    header.m_settings.m_sink = Sink::Argb;
    Player argb(header, {});
    argb.Apply(added);
    Settings planes = header.m_settings;
    planes.m_sink = Sink::Planes;
    EXPECT_THROW(argb.Apply(planes), RecordingError);
}

TEST(Player, ScreenPlanesHoldTheSamplesOfEveryUpdateAtItsPlace) {
    for (const Header& header : AllHeaders()) {
        if (header.m_codec != Codec::Ict)
            continue;
        const auto updates = EncodeTwoFrames(header);
        Player player(header, {{}, {}, Target::ScreenPlanes});
        auto first = ModelFor(header, model::ModelSink::Planes);
        ShowTo(first, updates[0], Play(player, updates[0]).m_uiResult);
        EXPECT_EQ(player.GetFramebuffer().GetBytes(), first.Renderer().Memory());

        // The rectangle alone, at the origin of a framebuffer of its own.
        EncodedUpdate moved = updates[1];
        moved.m_rectangle.m_uiX = moved.m_rectangle.m_uiY = 0;
        Header small = header;
        small.m_settings.m_uiWidth = moved.m_rectangle.m_uiWidth;
        small.m_settings.m_uiHeight = moved.m_rectangle.m_uiHeight;
        Player corner(small, {{}, {}, Target::ScreenPlanes});
        const auto before = player.GetFramebuffer().GetBytes();
        Play(corner, moved);
        Play(player, updates[1]);
        const auto& after = player.GetFramebuffer().GetBytes();
        const auto& part = corner.GetFramebuffer().GetBytes();
        size_t changed = 0;
        for (size_t y = 0; y < Height; ++y) {
            for (size_t x = 0; x < Width; ++x) {
                const size_t at = y * Width + x;
                if (after[at] == before[at])
                    continue;
                ++changed;
                ASSERT_TRUE(x >= 32 && x < 80 && y >= 16 && y < 48);
                EXPECT_EQ(after[at], part[(y - 16) * 48 + x - 32]);
            }
        }
        EXPECT_GT(changed, 0U);
    }
}

TEST(Player, AFailedUpdateLeavesThePictureAloneAndTheNextOneDecodes) {
    Header header = AllHeaders()[3];
    ASSERT_EQ(header.m_layout, RecordLayout::Pool);
    const auto updates = EncodeTwoFrames(header);
    EncodedUpdate cut = updates[0];
    cut.m_vuiPayload.resize(cut.m_vuiPayload.size() / 2);
    Player player(header, {});
    const PlayedUpdate played = Play(player, cut);
    EXPECT_EQ(played.m_uiResult, FailedResult);
    EXPECT_EQ(played.m_failure, "Stream has no more bytes!");
    EXPECT_EQ(player.GetFramebuffer().GetBytes(), std::vector<uint8_t>(4 * Width * Height));
    EXPECT_EQ(Play(player, updates[0]).m_failure, "");
}

TEST(Player, AChangedSizeGivesAFreshFramebufferAndOtherSettingsKeepIt) {
    const Header header = AllHeaders()[0];
    Player player(header, {});
    Play(player, EncodeTwoFrames(header)[0]);
    const auto shown = player.GetFramebuffer().GetBytes();
    Settings settings = header.m_settings;
    settings.m_uiContrast = 50;
    player.Apply(settings);
    EXPECT_EQ(player.GetFramebuffer().GetBytes(), shown);
    settings.m_uiWidth = 50;
    player.Apply(settings);
    EXPECT_EQ(player.GetFramebuffer().GetBytes(), std::vector<uint8_t>(4 * 50 * Height));
    const RecordedPicture picture{std::vector<uint8_t>(4 * 50 * Height, 9)};
    player.Apply(picture);
    EXPECT_EQ(player.GetFramebuffer().GetBytes(), picture.m_vuiBytes);
    EXPECT_THROW(player.Apply(RecordedPicture{{1, 2}}), RecordingError);
}

TEST(Player, ThreadsMustSuitTheLayout) {
    Header header = AllHeaders()[0];
    header.m_uiProtocolVersion = 2;
    header.m_layout = RecordLayout::Pool;
    EXPECT_EQ(Player(header, {}).GetThreads(), 1U);
    header.m_uiThreads = 3;
    EXPECT_EQ(Player(header, {}).GetThreads(), 3U);
    EXPECT_THROW(Player(header, {0, {}}), std::invalid_argument);
    header.m_layout = RecordLayout::Continuous;
    EXPECT_EQ(Player(header, {}).GetThreads(), 0U);
    EXPECT_THROW(Player(header, {1, {}}), std::invalid_argument);
    header.m_layout = RecordLayout::InPlace;
    EXPECT_EQ(Player(header, {2, {}}).GetThreads(), 2U);
}

TEST(Player, LbeIsNotDrawnIntoPlanes) {
    Header header = AllHeaders()[0];
    header.m_codec = Codec::Lbe;
    Settings planes = header.m_settings;
    planes.m_sink = Sink::Planes;
    Player player(header, {});
    EXPECT_THROW(player.Apply(planes), RecordingError);
    EXPECT_THROW(Player(header, {{}, {}, Target::ScreenPlanes}), std::invalid_argument);
    header.m_settings = planes;
    EXPECT_THROW(Player(header, {}), RecordingError);
}

TEST(Player, ChecksumOfARectangleTakesItsVisibleRows) {
    Settings settings;
    settings.m_uiWidth = 3;
    settings.m_uiHeight = 2;
    Framebuffer framebuffer(settings, ChromaSubsampling::Yuv420);
    for (size_t i = 0; i < framebuffer.GetBytes().size(); ++i)
        framebuffer.GetBytes()[i] = static_cast<uint8_t>(i);
    const std::vector<uint8_t> visible{4, 5, 6, 7, 8, 9, 10, 11, 16, 17, 18, 19, 20, 21, 22, 23};
    EXPECT_EQ(framebuffer.GetCrc(Coverage::Rectangle, {1, 0, 16, 16}), model::Crc32(visible));
    EXPECT_EQ(framebuffer.GetCrc(Coverage::Rectangle, {3, 0, 16, 16}), 0U);
    EXPECT_EQ(framebuffer.GetCrc(Coverage::Rectangle, {0, 2, 16, 16}), 0U);
    EXPECT_EQ(framebuffer.GetPicture().At(1, 0), (streamencoder::RgbPixel{6, 5, 4}));
}

TEST(Player, RefusesAFramebufferThatIsTooLarge) {
    Header header;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = 65535;
    EXPECT_THROW(Player(header, {}), RecordingError);
}

} // namespace
} // namespace Vostrel::recording
