#include "tests/tools/recording/RecordingBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>

namespace Vostrel::recording {
namespace {

TEST(Recording, ReadsARecordingOfVersion1) {
    auto reader = ReaderOf(ExampleHeader + ExampleUpdate + ExampleIndex);
    EXPECT_EQ(reader.GetHeader(), SampleHeader());
    EXPECT_EQ(reader.GetFileVersion(), 1);
    const auto records = ReadAll(reader);
    ASSERT_EQ(records.size(), 1U);
    const auto& update = std::get<RecordedUpdate>(records[0]);
    EXPECT_EQ(update.m_encoded.m_uiQuality, 10U);
    EXPECT_EQ(update.m_encoded.m_rectangle.m_uiWidth, 16);
    EXPECT_EQ(update.m_encoded.m_vuiPayload, (Bytes{0xFF, 0xFF, 0xC0}));
    EXPECT_EQ(update.m_uiTime, 2500U);
    EXPECT_EQ(update.m_result, 0U);
    EXPECT_EQ(update.m_coverage, Coverage::Framebuffer);
    EXPECT_EQ(update.m_uiPictureCrc, model::Crc32(Bytes(1024, 0)));
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Whole);
    EXPECT_EQ(reader.ReadIndex(), (std::vector<IndexEntry>{{40, 2500}}));
}

TEST(Recording, EveryKindOfRecordComesBackAsItWasWritten) {
    Header header;
    header.m_codec = Codec::Ict;
    header.m_uiProtocolVersion = 1;
    header.m_chroma = ChromaSubsampling::Yuv422;
    header.m_layout = RecordLayout::InPlace;
    header.m_settings = {33, 17, 100, true, Sink::Planes, KernelRule::Portable};
    const RecordedPicture picture{Bytes(33 * 17 + 2 * 16 * 17, 0x5A)};
    const Settings settings{3, 2, 0, false, Sink::Argb, KernelRule::Accelerated};
    RecordedUpdate failed;
    failed.m_encoded = {0xFFFFFFFF, {0xFFFF, 1, 2, 0xFFFE}, {}};
    failed.m_uiTime = 0x0102030405060708;
    failed.m_result = FailedResult;
    MemoryFile file(header);
    file.Writer().Write(picture);
    file.Writer().Write(settings);
    file.Writer().Write(failed);
    file.Writer().Write(RecordedUpdate{});
    file.Writer().Write(Note{"Gr\xC3\xBC\xC3\x9F"});

    auto reader = ReaderOf(file.GetBytes());
    EXPECT_EQ(reader.GetHeader(), header);
    const auto records = ReadAll(reader);
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(std::get<RecordedPicture>(records[0]).m_vuiBytes, picture.m_vuiBytes);
    EXPECT_EQ(std::get<Settings>(records[1]), settings);
    const auto& update = std::get<RecordedUpdate>(records[2]);
    EXPECT_EQ(update.m_encoded.m_uiQuality, 0xFFFFFFFFU);
    EXPECT_EQ(update.m_encoded.m_rectangle.m_uiX, 0xFFFF);
    EXPECT_EQ(update.m_encoded.m_rectangle.m_uiHeight, 0xFFFE);
    EXPECT_EQ(update.m_uiTime, 0x0102030405060708U);
    EXPECT_EQ(update.m_result, FailedResult);
    EXPECT_EQ(update.m_coverage, Coverage::Nothing);
    EXPECT_FALSE(std::get<RecordedUpdate>(records[3]).m_result);
    EXPECT_EQ(std::get<Note>(records[4]).m_text, "Gr\xC3\xBC\xC3\x9F");
    EXPECT_FALSE(reader.ReadIndex());
}

TEST(Recording, PicturesMayBeUncompressed) {
    const Bytes pixels{1, 2, 3, 4};
    Header header;
    header.m_settings.m_uiWidth = header.m_settings.m_uiHeight = 1;
    const Bytes start = MemoryFile(header).GetBytes();
    const Bytes fields = WithCrc(pixels);
    const Bytes crc(fields.begin() + 4, fields.end());
    auto reader = ReaderOf(start + RecordOf(3, Bytes{8, 0, 0, 0} + crc + pixels));
    ASSERT_TRUE(reader.Next());
    auto wrongSize = ReaderOf(start + RecordOf(3, Bytes{8, 0, 0, 0} + crc + pixels + pixels));
    EXPECT_FALSE(wrongSize.Next());
    EXPECT_EQ(wrongSize.GetEnd().m_kind, EndKind::Damaged);
}

TEST(Recording, CutAtAnyByteStillGivesEveryCompleteUpdate) {
    MemoryFile file(SampleHeader());
    std::vector<size_t> ends{file.GetBytes().size()};
    for (uint8_t i = 0; i < 5; ++i) {
        RecordedUpdate update = SampleUpdate();
        update.m_encoded.m_vuiPayload.assign(3 * i, i);
        file.Writer().Write(update);
        ends.push_back(file.GetBytes().size());
    }
    file.Writer().Close();
    const Bytes bytes = file.GetBytes();
    for (size_t size = ends[0]; size < bytes.size(); ++size) {
        auto reader = ReaderOf({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)});
        const auto complete = static_cast<size_t>(std::upper_bound(ends.begin(), ends.end(), size) -
                                                  ends.begin() - 1);
        EXPECT_EQ(reader.FindUpdates().size(), complete) << size;
        const auto records = ReadAll(reader);
        ASSERT_EQ(records.size(), complete) << size;
        for (size_t i = 0; i < complete; ++i)
            EXPECT_EQ(std::get<RecordedUpdate>(records[i]).m_encoded.m_vuiPayload,
                      Bytes(3 * i, static_cast<uint8_t>(i)));
        const bool betweenRecords = ends[complete] == size;
        EXPECT_EQ(reader.GetEnd().m_kind, betweenRecords ? EndKind::Whole : EndKind::Cut) << size;
        EXPECT_EQ(reader.GetEnd().m_uiOffset, ends[complete]);
    }
    for (size_t size = 0; size < ends[0]; ++size)
        EXPECT_NE(
            ReasonOfRefusal({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}),
            "");
}

TEST(Recording, AFlippedBitAnywhereEndsTheRecordingBeforeItsRecord) {
    const Bytes second = RecordOf(129, {'n'});
    const Bytes good = ExampleHeader + ExampleUpdate + second;
    const size_t first = ExampleHeader.size();
    for (size_t bit = 8 * first; bit < 8 * good.size(); ++bit) {
        Bytes bad = good;
        bad[bit / 8] = static_cast<uint8_t>(bad[bit / 8] ^ 1 << bit % 8);
        auto reader = ReaderOf(bad);
        const bool inFirst = bit / 8 < first + ExampleUpdate.size();
        EXPECT_EQ(ReadAll(reader).size(), inFirst ? 0U : 1U) << bit;
        EXPECT_NE(reader.GetEnd().m_kind, EndKind::Whole) << bit;
        EXPECT_EQ(reader.GetEnd().m_uiOffset, inFirst ? first : first + ExampleUpdate.size());
    }
    for (size_t bit = 0; bit < 8 * first; ++bit) {
        Bytes bad = good;
        bad[bit / 8] = static_cast<uint8_t>(bad[bit / 8] ^ 1 << bit % 8);
        EXPECT_NE(ReasonOfRefusal(bad), "") << bit;
    }
}

TEST(Recording, ReadersPassOverWhatTheyNeedNotKnow) {
    const Bytes unknown = RecordOf(200, {1, 2, 3});
    auto reader = ReaderOf(ExampleHeader + unknown + ExampleUpdate + unknown);
    EXPECT_EQ(ReadAll(reader).size(), 1U);
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Whole);
    EXPECT_EQ(reader.FindUpdates().at(0).m_uiOffset, ExampleHeader.size() + unknown.size());
}

TEST(Recording, ReadersStopAtWhatTheyShouldKnow) {
    for (const uint8_t type : {uint8_t{4}, uint8_t{127}}) {
        auto reader = ReaderOf(ExampleHeader + RecordOf(type, {}) + ExampleUpdate);
        EXPECT_TRUE(ReadAll(reader).empty());
        EXPECT_EQ(reader.GetEnd().m_kind, EndKind::LaterVersion);
        EXPECT_EQ(reader.GetEnd().m_uiOffset, ExampleHeader.size());
    }
}

TEST(Recording, FieldsOfLaterVersionsArePassedOver) {
    Bytes header(ExampleHeader.begin(), ExampleHeader.end() - 4);
    header[10] = 43;
    header = WithCrc(header + Bytes{7, 7, 7});
    Bytes body(ExampleUpdate.begin() + 8, ExampleUpdate.end() - 4);
    body[0] = 38;
    body.insert(body.begin() + 36, {9, 9});
    auto reader =
        ReaderOf(header + RecordOf(1, body) + RecordOf(2, Bytes{1, 0, 1, 0, 0, 0, 0, 0, 5}));
    EXPECT_EQ(reader.GetHeader(), SampleHeader());
    const auto records = ReadAll(reader);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(std::get<RecordedUpdate>(records[0]).m_encoded.m_vuiPayload,
              (Bytes{0xFF, 0xFF, 0xC0}));
    EXPECT_EQ(std::get<Settings>(records[1]).m_uiWidth, 1);
}

TEST(Recording, ValuesOutOfRangeAreDamage) {
    const Bytes outOfRange[] = {
        {0, 0, 1, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0, 0, 0}, {1, 0, 1, 0, 101, 0, 0, 0},
        {1, 0, 1, 0, 0, 2, 0, 0}, {1, 0, 1, 0, 0, 0, 2, 0}, {1, 0, 1, 0, 0, 0, 0, 2},
        {1, 0, 1, 0, 0, 0, 0},
    };
    for (const Bytes& settings : outOfRange) {
        auto reader = ReaderOf(ExampleHeader + RecordOf(2, settings));
        EXPECT_FALSE(reader.Next());
        EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Damaged);
    }
    Bytes body(ExampleUpdate.begin() + 8, ExampleUpdate.end() - 4);
    body[3] = 3; // Covers what?
    auto reader = ReaderOf(ExampleHeader + RecordOf(1, body));
    EXPECT_FALSE(reader.Next());
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Damaged);
}

TEST(Recording, AnotherFileVersionIsRefused) {
    Bytes header(ExampleHeader.begin(), ExampleHeader.end() - 4);
    for (const uint8_t version : {uint8_t{0}, uint8_t{3}}) {
        header[8] = version;
        EXPECT_NE(ReasonOfRefusal(WithCrc(header)).find("version"), std::string::npos);
    }
}

TEST(Recording, RecordsMayFollowAnIndexWhichThenDoesNotCount) {
    auto reader = ReaderOf(ExampleHeader + ExampleUpdate + ExampleIndex + ExampleUpdate);
    EXPECT_FALSE(reader.ReadIndex());
    EXPECT_EQ(reader.FindUpdates().size(), 2U);
    EXPECT_EQ(ReadAll(reader).size(), 2U);
}

TEST(Recording, AnIndexThatNamesOtherUpdatesThanThereAreDoesNotCount) {
    const Bytes body(ExampleIndex.begin() + 8, ExampleIndex.end() - 4);
    Bytes outside = body;
    outside[10] = 0xFF;
    Bytes amid = body;
    ++amid[4];
    const Bytes empty = Bytes{0, 0, 0, 0} + Bytes(body.end() - 8, body.end());
    for (const Bytes& wrong : {outside, amid, empty}) {
        auto reader = ReaderOf(ExampleHeader + ExampleUpdate + RecordOf(128, wrong));
        EXPECT_TRUE(reader.ReadIndex());
        EXPECT_EQ(reader.FindUpdates(), (std::vector<IndexEntry>{{40, 2500}}));
        EXPECT_EQ(ReadAll(reader).size(), 1U);
    }
}

TEST(Recording, TheIndexKnowsUpdatesBehindADamagedOne) {
    MemoryFile file(SampleHeader());
    for (int i = 0; i < 3; ++i)
        file.Writer().Write(SampleUpdate());
    file.Writer().Close();
    Bytes bytes = file.GetBytes();
    bytes[40 + ExampleUpdate.size() + 20] ^= 1;
    auto reader = ReaderOf(bytes);
    const auto index = reader.FindUpdates();
    ASSERT_EQ(index.size(), 3U);
    reader.GoTo(index[2].m_uiOffset);
    EXPECT_TRUE(reader.Next());
    reader.GoTo(index[1].m_uiOffset);
    EXPECT_FALSE(reader.Next());
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Damaged);
}

TEST(Recording, AfterAJumpTheSettingsOfThatPlaceHold) {
    const Settings larger{5, 3, 0, false, Sink::Argb, KernelRule::Accelerated};
    MemoryFile file(SampleHeader());
    file.Writer().Write(SampleUpdate());
    file.Writer().Write(larger);
    file.Writer().Write(SampleUpdate());
    file.Writer().Write(RecordedPicture{Bytes(4 * 5 * 3, 9)});
    file.Writer().Close();
    auto reader = ReaderOf(file.GetBytes());
    const auto index = reader.FindUpdates();
    ASSERT_EQ(index.size(), 2U);
    reader.GoTo(index[1].m_uiOffset);
    EXPECT_EQ(reader.GetSettings(), larger);
    EXPECT_TRUE(reader.Next());
    EXPECT_EQ(std::get<RecordedPicture>(*reader.Next()).m_vuiBytes, Bytes(60, 9));
    reader.GoTo(index[0].m_uiOffset);
    EXPECT_EQ(reader.GetSettings(), SampleHeader().m_settings);
    for (const uint64_t amid : {uint64_t{0}, index[0].m_uiOffset + 1, uint64_t{1} << 40})
        EXPECT_THROW(reader.GoTo(amid), RecordingError) << amid;
}

TEST(Recording, CutAtAnyByteStillGivesEveryCompleteRecordOfAnyKind) {
    MemoryFile file(SampleHeader());
    std::vector<size_t> ends{file.GetBytes().size()};
    const auto write = [&](const auto& record) {
        file.Writer().Write(record);
        ends.push_back(file.GetBytes().size());
    };
    write(RecordedPicture{Bytes(1024, 7)});
    write(Note{"note"});
    write(SampleUpdate());
    write(Settings{2, 2, 50, true, Sink::Argb, KernelRule::Accelerated});
    write(RecordedPicture{Bytes(16, 1)});
    const Bytes bytes = file.GetBytes();
    for (size_t size = ends[0]; size <= bytes.size(); ++size) {
        auto reader = ReaderOf({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)});
        const auto complete =
            std::count_if(ends.begin() + 1, ends.end(), [&](size_t end) { return end <= size; });
        EXPECT_EQ(ReadAll(reader).size(), static_cast<size_t>(complete)) << size;
        EXPECT_EQ(reader.FindUpdates().size(), size >= ends[3] ? 1U : 0U) << size;
    }
}

TEST(Recording, AWriterGoesOnAfterTheLastGoodRecordInTheVersionOfTheFile) {
    const std::string path = testing::TempDir() + "RecordingTest-goes-on.rcrec";
    const Bytes cut = ExampleHeader + ExampleUpdate + Bytes{'R', 'C'};
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(cut.data()), static_cast<std::streamsize>(cut.size()));
    RecordedUpdate second = SampleUpdate();
    second.m_uiTime = 5000;
    {
        RecordingWriter writer(path, 1, 40 + ExampleUpdate.size(), {{40, 2500}});
        writer.Write(second);
        writer.Close();
    }
    RecordingReader reader(path);
    EXPECT_EQ(reader.ReadIndex(), (std::vector<IndexEntry>{{40, 2500}, {91, 5000}}));
    EXPECT_EQ(ReadAll(reader).size(), 2U);
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Whole);
    std::remove(path.c_str());
}

TEST(Recording, MissingAndUnwritableFilesAreNamed) {
    const std::string missing = testing::TempDir() + "no-such.rcrec";
    try {
        RecordingReader reader(missing);
        FAIL();
    } catch (const RecordingError& error) {
        EXPECT_EQ(error.what(), missing + ": No such file or directory");
    }
    EXPECT_THROW(RecordingWriter("/no/such/folder/x.rcrec", SampleHeader()), RecordingError);
    EXPECT_THROW(RecordingWriter("/dev/full", SampleHeader()), RecordingError);
}

} // namespace
} // namespace Vostrel::recording
