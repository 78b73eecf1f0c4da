#include "tests/tools/recording/RecordingBytes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <regex>

namespace Vostrel::recording {
namespace {

/// The hexadecimal lines of the documentation's example.
Bytes DocumentedExample() {
    std::ifstream page(TEST_DATA_DIR "/../../docs/recording.md");
    const std::regex hexLine("    [0-9a-f]{4}  ([0-9a-f ]+)");
    Bytes bytes;
    std::smatch match;
    for (std::string line; std::getline(page, line);) {
        if (!std::regex_match(line, match, hexLine))
            continue;
        std::istringstream numbers(match[1]);
        for (unsigned byte = 0; numbers >> std::hex >> byte;)
            bytes.push_back(static_cast<uint8_t>(byte));
    }
    return bytes;
}

AddedDecoder SampleDecoder() {
    AddedDecoder added{1, SampleHeader()};
    added.m_format.m_codec = Codec::Lbe;
    return added;
}

RecordedUpdate UpdateFor(uint8_t decoder, uint64_t time) {
    RecordedUpdate update = SampleUpdate();
    update.m_uiDecoder = decoder;
    update.m_uiTime = time;
    return update;
}

Bytes HeaderBytes() {
    return MemoryFile(SampleHeader()).GetBytes();
}

/// A decoder record with some of its fields replaced.
Bytes DecoderRecord(uint8_t index, uint8_t codec = 1) {
    return RecordOf(4, {index, codec, 2, 0, 1, 0, 0, 0, 2, 0, 0, 0});
}

Bytes UpdateRecord(uint8_t decoder) {
    MemoryFile file(SampleHeader());
    const size_t header = file.GetBytes().size();
    file.Writer().Write(UpdateFor(decoder, 0));
    const Bytes bytes = file.GetBytes();
    return {bytes.begin() + static_cast<std::ptrdiff_t>(header), bytes.end()};
}

std::string DamageOf(const Bytes& bytes) {
    auto reader = ReaderOf(bytes);
    ReadAll(reader);
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Damaged);
    return reader.GetEnd().m_reason;
}

TEST(RecordedDecoders, TheWriterWritesTheExampleOfTheDocumentation) {
    MemoryFile file(SampleHeader());
    file.Writer().Write(UpdateFor(0, 2500));
    file.Writer().Write(SampleDecoder());
    file.Writer().Write(UpdateFor(1, 5000));
    file.Writer().Close();
    EXPECT_EQ(file.GetBytes(), DocumentedExample());
}

TEST(RecordedDecoders, TheReaderReadsTheExampleOfTheDocumentation) {
    auto reader = ReaderOf(DocumentedExample());
    EXPECT_EQ(reader.GetFileVersion(), 2);
    EXPECT_EQ(reader.GetHeader(), SampleHeader());
    const auto records = ReadAll(reader);
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(std::get<RecordedUpdate>(records[0]).m_uiDecoder, 0);
    EXPECT_EQ(std::get<AddedDecoder>(records[1]), SampleDecoder());
    EXPECT_EQ(std::get<RecordedUpdate>(records[2]).m_uiDecoder, 1);
    EXPECT_EQ(std::get<RecordedUpdate>(records[2]).m_encoded.m_vuiPayload,
              (Bytes{0xFF, 0xFF, 0xC0}));
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Whole);
    EXPECT_EQ(reader.ReadIndex(), (std::vector<IndexEntry>{{0x28, 2500}, {0x77, 5000}}));
}

TEST(RecordedDecoders, AnIndexThatIsNotTheNextOneIsDamage) {
    const Bytes start = HeaderBytes();
    for (const Bytes& records :
         {DecoderRecord(0), DecoderRecord(2), DecoderRecord(1) + DecoderRecord(1),
          DecoderRecord(1) + DecoderRecord(3)})
        EXPECT_EQ(DamageOf(start + records), "a decoder has another index than the next one");
    auto good = ReaderOf(start + DecoderRecord(1) + DecoderRecord(2));
    EXPECT_EQ(ReadAll(good).size(), 2U);
    EXPECT_EQ(good.GetDecoders().size(), 3U);
}

TEST(RecordedDecoders, AFileHoldsAtMost256) {
    Bytes bytes = HeaderBytes();
    for (unsigned index = 1; index <= 256; ++index)
        bytes = bytes + DecoderRecord(static_cast<uint8_t>(index));
    auto reader = ReaderOf(bytes);
    EXPECT_EQ(ReadAll(reader).size(), 255U);
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Damaged);
}

TEST(RecordedDecoders, ValuesOutOfRangeAndMissingFieldsAreDamage) {
    const Bytes start = HeaderBytes();
    EXPECT_EQ(DamageOf(start + DecoderRecord(1, 2)), "a field is out of range");
    const Bytes body{1, 1, 2, 0, 1, 0, 0, 0, 2, 0, 0, 0};
    for (size_t field = 2; field <= 4; ++field) {
        Bytes wrong = body;
        wrong[field] = 3;
        EXPECT_EQ(DamageOf(start + RecordOf(4, wrong)), "a field is out of range");
    }
    EXPECT_EQ(DamageOf(start + RecordOf(4, {body.begin(), body.end() - 1})),
              "a record is too short for its fields");
    auto longer = ReaderOf(start + RecordOf(4, body + Bytes{9, 9}));
    EXPECT_EQ(std::get<AddedDecoder>(*longer.Next()), SampleDecoder());
}

TEST(RecordedDecoders, AnUpdateForADecoderThatNoRecordDescribesIsDamage) {
    const Bytes start = HeaderBytes();
    const std::string expected = "an update is for a decoder that no record describes";
    EXPECT_EQ(DamageOf(start + UpdateRecord(1)), expected);
    EXPECT_EQ(DamageOf(start + DecoderRecord(1) + UpdateRecord(2)), expected);
    auto good = ReaderOf(start + DecoderRecord(1) + UpdateRecord(1));
    EXPECT_EQ(ReadAll(good).size(), 2U);
}

TEST(RecordedDecoders, InVersion1EveryUpdateIsForDecoder0AndDecoderRecordsAreOfALaterVersion) {
    Bytes body(ExampleUpdate.begin() + 8, ExampleUpdate.end() - 4);
    body[0] = 40;
    body.insert(body.begin() + 36, {1, 0, 0, 0});
    auto reader = ReaderOf(ExampleHeader + RecordOf(1, body) + DecoderRecord(1));
    EXPECT_EQ(std::get<RecordedUpdate>(*reader.Next()).m_uiDecoder, 0);
    EXPECT_FALSE(reader.Next());
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::LaterVersion);
}

TEST(RecordedDecoders, AnUpdateWithoutTheFieldIsForDecoder0) {
    const Bytes body(ExampleUpdate.begin() + 8, ExampleUpdate.end() - 4);
    auto reader = ReaderOf(HeaderBytes() + DecoderRecord(1) + RecordOf(1, body));
    ReadAll(reader);
    EXPECT_EQ(reader.GetEnd().m_kind, EndKind::Whole);
}

TEST(RecordedDecoders, AfterAJumpTheDecodersOfThatPlaceAreKnown) {
    auto reader = ReaderOf(DocumentedExample());
    const auto index = reader.FindUpdates();
    EXPECT_EQ(reader.GetDecoders().size(), 1U);
    reader.GoTo(index.at(1).m_uiOffset);
    EXPECT_EQ(reader.GetDecoders().size(), 2U);
    EXPECT_EQ(std::get<RecordedUpdate>(*reader.Next()).m_uiDecoder, 1);
    reader.GoTo(index.at(0).m_uiOffset);
    EXPECT_EQ(reader.GetDecoders().size(), 1U);
    EXPECT_EQ(reader.FindDecoders(),
              (std::vector<DecoderFormat>{SampleHeader(), SampleDecoder().m_format}));
    EXPECT_EQ(ReadAll(reader).size(), 3U);
}

TEST(RecordedDecoders, AFileOfVersion1TakesNoSecondOne) {
    const std::string path = testing::TempDir() + "RecordedDecodersTest-version1.rcrec";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(ExampleHeader.data()),
               static_cast<std::streamsize>(ExampleHeader.size()));
    {
        RecordingWriter writer(path, 1, ExampleHeader.size(), {});
        EXPECT_THROW(writer.Write(SampleDecoder()), RecordingError);
        EXPECT_THROW(writer.Write(UpdateFor(1, 0)), RecordingError);
        writer.Write(UpdateFor(0, 2500));
    }
    std::ifstream in(path, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(in), {}};
    EXPECT_EQ(bytes, ExampleHeader + ExampleUpdate);
    std::remove(path.c_str());
}

} // namespace
} // namespace Vostrel::recording
