#include "tools/recording/RecordingWriter.h"

#include <zlib.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <system_error>

namespace Vostrel::recording {
namespace {

std::string Reason() {
    return errno != 0 ? std::generic_category().message(errno) : "The file cannot be written";
}

std::unique_ptr<std::ostream> OpenFile(const std::string& path, std::ios::openmode mode) {
    errno = 0;
    auto out = std::make_unique<std::ofstream>(path, std::ios::binary | mode);
    if (!*out)
        throw RecordingError(path + ": " + Reason());
    return out;
}

std::unique_ptr<std::ostream> OpenAt(const std::string& path, uint64_t end) {
    std::error_code error;
    std::filesystem::resize_file(path, end, error);
    if (error)
        throw RecordingError(path + ": " + error.message());
    return OpenFile(path, std::ios::app);
}

std::vector<uint8_t> Compress(const std::vector<uint8_t>& bytes) {
    // Screens are mostly flat: the fastest level already takes them to a few percent.
    constexpr int Fastest = 1;
    uLongf size = compressBound(bytes.size());
    std::vector<uint8_t> compressed(size);
    if (compress2(compressed.data(), &size, bytes.data(), bytes.size(), Fastest) != Z_OK)
        throw RecordingError("A picture could not be compressed");
    compressed.resize(size);
    return compressed;
}

} // namespace

RecordingWriter::RecordingWriter(std::unique_ptr<std::ostream> out, const Header& header,
                                 const std::string& name)
    : m_name(name), m_pOut(std::move(out)) {
    WriteHeader(header);
}

RecordingWriter::RecordingWriter(const std::string& path, const Header& header)
    : RecordingWriter(OpenFile(path, std::ios::trunc), header, path + ": ") {}

RecordingWriter::RecordingWriter(const std::string& path, uint16_t fileVersion, uint64_t end,
                                 std::vector<IndexEntry> updates)
    : m_name(path + ": "), m_uiFileVersion(fileVersion), m_pOut(OpenAt(path, end)), m_uiOffset(end),
      m_vIndex(std::move(updates)) {}

RecordingWriter::~RecordingWriter() = default;

void RecordingWriter::WriteHeader(const Header& header) {
    ByteSink bytes;
    bytes.PutText(FileMagic);
    bytes.Put(m_uiFileVersion);
    bytes.Put(HeaderSize);
    PutFormat(bytes, header);
    PutSettings(bytes, header.m_settings);
    bytes.Put(header.m_uiStartTime);
    bytes.Put(header.m_uiThreads);
    bytes.PutCrcOfAll();
    WriteBytes(bytes.GetBytes());
}

void RecordingWriter::Write(const RecordedUpdate& update) {
    CheckThatItHoldsDecoder(update.m_uiDecoder);
    const bool namesDecoder = m_uiFileVersion > FirstFileVersion;
    const EncodedUpdate& encoded = update.m_encoded;
    ByteSink body;
    body.Put(namesDecoder ? UpdateFieldsSize : FirstUpdateFieldsSize);
    body.Put(update.m_result ? ResultKnown : uint8_t{0});
    body.Put(update.m_coverage);
    body.Put(encoded.m_uiQuality);
    body.Put(encoded.m_rectangle.m_uiX);
    body.Put(encoded.m_rectangle.m_uiY);
    body.Put(encoded.m_rectangle.m_uiWidth);
    body.Put(encoded.m_rectangle.m_uiHeight);
    body.Put(update.m_uiTime);
    body.Put(update.m_result.value_or(0));
    body.Put(update.m_uiPictureCrc);
    if (namesDecoder) {
        body.Put(update.m_uiDecoder);
        body.PutZeros(UpdateFillingSize);
    }
    body.PutBytes(encoded.m_vuiPayload);
    m_vIndex.push_back({m_uiOffset, update.m_uiTime});
    WriteRecord(RecordType::Update, body);
}

void RecordingWriter::Write(const Settings& settings) {
    ByteSink body;
    PutSettings(body, settings);
    WriteRecord(RecordType::Settings, body);
}

void RecordingWriter::Write(const RecordedPicture& picture) {
    ByteSink body;
    body.Put(PictureFieldsSize);
    body.Put(Compression::Zlib);
    body.Put(uint8_t{0});
    body.Put(Crc32(picture.m_vuiBytes));
    body.PutBytes(Compress(picture.m_vuiBytes));
    WriteRecord(RecordType::Picture, body);
}

void RecordingWriter::Write(const Note& note) {
    ByteSink body;
    body.PutText(note.m_text);
    WriteRecord(RecordType::Note, body);
}

void RecordingWriter::Write(const AddedDecoder& decoder) {
    CheckThatItHoldsDecoder(decoder.m_uiIndex);
    ByteSink body;
    body.Put(decoder.m_uiIndex);
    PutFormat(body, decoder.m_format);
    body.PutZeros(DecoderFillingSize);
    body.Put(decoder.m_format.m_uiThreads);
    WriteRecord(RecordType::Decoder, body);
}

void RecordingWriter::CheckThatItHoldsDecoder(uint8_t index) const {
    if (index != 0 && m_uiFileVersion == FirstFileVersion)
        throw RecordingError(m_name + "A recording of version 1 holds updates of one decoder only; "
                                      "make a new recording");
}

void RecordingWriter::Close() {
    ByteSink body;
    body.Put(static_cast<uint32_t>(m_vIndex.size()));
    for (const IndexEntry& entry : m_vIndex) {
        body.Put(entry.m_uiOffset);
        body.Put(entry.m_uiTime);
    }
    body.Put(m_uiOffset);
    WriteRecord(RecordType::Index, body);
}

void RecordingWriter::WriteRecord(RecordType type, const ByteSink& body) {
    if (body.GetBytes().size() > MaxBodySize)
        throw RecordingError(m_name + "A record would be too large");
    ByteSink record;
    record.PutText(RecordMagic);
    record.Put(type);
    record.Put(static_cast<uint32_t>(body.GetBytes().size()));
    record.PutBytes(body.GetBytes());
    record.PutCrcOfAll();
    WriteBytes(record.GetBytes());
}

/// In one piece and at once, so that a crash costs one record at most.
void RecordingWriter::WriteBytes(const std::vector<uint8_t>& bytes) {
    errno = 0;
    m_pOut->write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
    m_pOut->flush();
    if (!*m_pOut)
        throw RecordingError(m_name + Reason());
    m_uiOffset += bytes.size();
}

} // namespace Vostrel::recording
