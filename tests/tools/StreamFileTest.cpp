#include "tools/StreamFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace Vostrel::streamencoder {
namespace {

StreamFile Sample() {
    StreamFile file;
    file.m_header = {Codec::Lbe, 1, ChromaSubsampling::Yuv444, RecordLayout::InPlace, 800, 600};
    file.m_vUpdates.push_back({7, {16, 32, 0x140, 48}, {0xAA, 0xBB, 0xCC}});
    file.m_vUpdates.push_back({9, {0, 0, 16, 16}, {}});
    return file;
}

const std::vector<uint8_t> SampleHeader{'R', 'C', 'S', 'T',  1, 0,    22, 0, 16, 0, 1,
                                        1,   2,   2,   0x20, 3, 0x58, 2,  2, 0,  0, 0};
const std::vector<uint8_t> SampleFirstUpdate{7,  0, 0, 0, 16, 0, 32,   0,    0x40, 1,
                                             48, 0, 3, 0, 0,  0, 0xAA, 0xBB, 0xCC};
const std::vector<uint8_t> SampleSecondUpdate{9, 0, 0, 0, 0, 0, 0, 0, 16, 0, 16, 0, 0, 0, 0, 0};

std::string Text(const std::vector<std::vector<uint8_t>>& parts) {
    std::string text;
    for (const auto& part : parts) {
        text.append(part.begin(), part.end());
    }
    return text;
}

StreamFile Read(const std::string& text) {
    std::istringstream in(text);
    return ReadStreamFile(in);
}

std::string ReasonOfFailure(const std::string& text) {
    try {
        Read(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

void ExpectSample(const StreamFile& file) {
    EXPECT_EQ(file.m_header.m_codec, Codec::Lbe);
    EXPECT_EQ(file.m_header.m_uiProtocolVersion, 1);
    EXPECT_EQ(file.m_header.m_chroma, ChromaSubsampling::Yuv444);
    EXPECT_EQ(file.m_header.m_layout, RecordLayout::InPlace);
    EXPECT_EQ(file.m_header.m_uiWidth, 800);
    EXPECT_EQ(file.m_header.m_uiHeight, 600);
    ASSERT_EQ(file.m_vUpdates.size(), 2U);
    EXPECT_EQ(file.m_vUpdates[0].m_uiQuality, 7U);
    EXPECT_EQ(file.m_vUpdates[0].m_rectangle.m_uiX, 16);
    EXPECT_EQ(file.m_vUpdates[0].m_rectangle.m_uiY, 32);
    EXPECT_EQ(file.m_vUpdates[0].m_rectangle.m_uiWidth, 0x140);
    EXPECT_EQ(file.m_vUpdates[0].m_rectangle.m_uiHeight, 48);
    EXPECT_EQ(file.m_vUpdates[0].m_vuiPayload, (std::vector<uint8_t>{0xAA, 0xBB, 0xCC}));
    EXPECT_TRUE(file.m_vUpdates[1].m_vuiPayload.empty());
}

TEST(StreamFile, IsWrittenLittleEndianAsDocumented) {
    std::ostringstream out;
    WriteStreamFile(out, Sample());
    EXPECT_EQ(out.str(), Text({SampleHeader, SampleFirstUpdate, SampleSecondUpdate}));
}

TEST(StreamFile, IsReadBack) {
    ExpectSample(Read(Text({SampleHeader, SampleFirstUpdate, SampleSecondUpdate})));
}

TEST(StreamFile, AnUnknownNumberOfUpdatesReachesToTheEnd) {
    auto header = SampleHeader;
    header.resize(18);
    header.resize(22, 0xFF);
    ExpectSample(Read(Text({header, SampleFirstUpdate, SampleSecondUpdate})));
}

TEST(StreamFile, LongerHeadersOfALaterWriterAreSkipped) {
    auto header = SampleHeader;
    header[6] = 24;
    header[8] = 19;
    const std::vector<uint8_t> update(SampleFirstUpdate.begin(), SampleFirstUpdate.begin() + 16);
    const std::vector<uint8_t> payload(SampleFirstUpdate.begin() + 16, SampleFirstUpdate.end());
    ExpectSample(
        Read(Text({header, {1, 2}, update, {3, 4, 5}, payload, SampleSecondUpdate, {6, 7, 8}})));
}

TEST(StreamFile, BytesBehindTheLastCountedUpdateAreLeft) {
    ExpectSample(Read(Text({SampleHeader, SampleFirstUpdate, SampleSecondUpdate, {1, 2, 3}})));
}

TEST(StreamFile, RejectsWhatIsNone) {
    EXPECT_EQ(ReasonOfFailure(""), "This is no stream file");
    EXPECT_EQ(ReasonOfFailure("RCV1 and more of something else"), "This is no stream file");
}

TEST(StreamFile, RejectsALaterVersion) {
    auto header = SampleHeader;
    header[4] = 2;
    EXPECT_EQ(ReasonOfFailure(Text({header})),
              "The stream file has a version that this program does not know");
}

TEST(StreamFile, RejectsFieldsOutOfRange) {
    const auto reasonWith = [](size_t index, uint8_t value) {
        auto header = SampleHeader;
        header[index] = value;
        return ReasonOfFailure(Text({header, SampleFirstUpdate, SampleSecondUpdate}));
    };
    EXPECT_EQ(reasonWith(6, 21), "The stream file's headers are too short");
    EXPECT_EQ(reasonWith(8, 15), "The stream file's headers are too short");
    EXPECT_EQ(reasonWith(10, 2), "Unknown codec in the stream file");
    EXPECT_EQ(reasonWith(11, 3), "Unknown protocol version in the stream file");
    EXPECT_EQ(reasonWith(12, 3), "Unknown chroma subsampling in the stream file");
    EXPECT_EQ(reasonWith(13, 3), "Unknown record layout in the stream file");
}

TEST(StreamFile, RejectsEveryShortenedFile) {
    const std::string whole = Text({SampleHeader, SampleFirstUpdate, SampleSecondUpdate});
    for (size_t size = 4; size < whole.size(); ++size) {
        EXPECT_EQ(ReasonOfFailure(whole.substr(0, size)), "The stream file ends too early") << size;
    }
}

TEST(StreamFile, AHugePayloadLengthTakesNoMemoryBeforeItsBytesAreThere) {
    auto update = SampleFirstUpdate;
    for (size_t i = 12; i < 16; ++i) {
        update[i] = 0xFF;
    }
    EXPECT_EQ(ReasonOfFailure(Text({SampleHeader, update})), "The stream file ends too early");
}

TEST(StreamFile, GoesThroughTheFileSystem) {
    const std::string path = testing::TempDir() + "StreamFileTest.rcst";
    WriteStreamFile(path, Sample());
    ExpectSample(ReadStreamFile(path));
    std::remove(path.c_str());
}

TEST(StreamFile, FailuresOfTheFileSystemNameThePath) {
    const std::string path = testing::TempDir() + "no/such/folder/x.rcst";
    for (const bool write : {true, false}) {
        try {
            write ? WriteStreamFile(path, Sample()) : void(ReadStreamFile(path));
            ADD_FAILURE() << "no exception";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), path + ": No such file or directory");
        }
    }
}

} // namespace
} // namespace Vostrel::streamencoder
