// Any bytes as a recording, as they stand and with their checksums put right: reading ends, takes
// little memory, gives the whole records of any part of the file, finds the same updates with and
// without an index, and gives back what a writer makes of the records.

#include "fuzz/FuzzCheck.h"
#include "fuzz/LargestAllocation.h"
#include "fuzz/RecordingBytes.h"
#include "tools/recording/RecordingReader.h"
#include "tools/recording/RecordingWriter.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <tuple>
#include <type_traits>

namespace Vostrel::fuzz {
namespace {

using namespace recording;

using Bytes = std::vector<uint8_t>;

/// What a reader delivers of a file.
struct Reading {
    Header m_header;
    std::vector<Record> m_vRecords;
    std::vector<Settings> m_vSettings; ///< in force after each of them
    std::vector<size_t> m_vDecoders;   ///< how many are known after each of them
    RecordingEnd m_end;
};

RecordingReader ReaderOf(std::span<const uint8_t> bytes) {
    return RecordingReader(
        std::make_unique<std::istringstream>(std::string(bytes.begin(), bytes.end())));
}

/// Nothing for bytes that are no recording.
std::optional<Reading> Read(std::span<const uint8_t> bytes) {
    try {
        RecordingReader reader = ReaderOf(bytes);
        Reading reading{reader.GetHeader(), {}, {}, {}, {}};
        while (auto record = reader.Next()) {
            reading.m_vRecords.push_back(*std::move(record));
            reading.m_vSettings.push_back(reader.GetSettings());
            reading.m_vDecoders.push_back(reader.GetDecoders().size());
        }
        Check(!reader.Next(), "a record behind the end");
        reading.m_end = reader.GetEnd();
        return reading;
    } catch (const RecordingError&) {
        return std::nullopt;
    }
}

/// A closed recording of these records, by the writer.
Bytes Write(const Header& header, std::span<const Record> records) {
    auto out = std::make_unique<std::ostringstream>();
    const std::ostringstream& memory = *out;
    RecordingWriter writer(std::move(out), header);
    for (const Record& record : records)
        std::visit([&writer](const auto& what) { writer.Write(what); }, record);
    writer.Close();
    const std::string text = memory.str();
    return {text.begin(), text.end()};
}

bool AreEqual(const RecordedUpdate& a, const RecordedUpdate& b) {
    const auto fields = [](const RecordedUpdate& update) {
        const EncodedUpdate& encoded = update.m_encoded;
        const auto& area = encoded.m_rectangle;
        return std::tie(encoded.m_uiQuality, area.m_uiX, area.m_uiY, area.m_uiWidth,
                        area.m_uiHeight, encoded.m_vuiPayload, update.m_uiDecoder, update.m_uiTime,
                        update.m_result, update.m_coverage, update.m_uiPictureCrc);
    };
    return fields(a) == fields(b);
}

bool AreEqual(const Settings& a, const Settings& b) {
    return a == b;
}

bool AreEqual(const RecordedPicture& a, const RecordedPicture& b) {
    return a.m_vuiBytes == b.m_vuiBytes;
}

bool AreEqual(const Note& a, const Note& b) {
    return a.m_text == b.m_text;
}

bool AreEqual(const AddedDecoder& a, const AddedDecoder& b) {
    return a == b;
}

bool IsSame(const Record& a, const Record& b) {
    const auto equalsB = [&b](const auto& what) {
        const auto* const other = std::get_if<std::decay_t<decltype(what)>>(&b);
        return other != nullptr && AreEqual(what, *other);
    };
    return std::visit(equalsB, a);
}

bool AreSame(std::span<const Record> a, std::span<const Record> b) {
    return std::ranges::equal(a, b, IsSame);
}

class Judge {
public:
    explicit Judge(std::span<const uint8_t> bytes)
        : m_Bytes(bytes), m_reading(Read(bytes)), m_vPlaces(PlacesOf(bytes)) {}

    void Run() {
        if (!m_reading)
            return;
        CheckEnd();
        CheckParts();
        CheckIndex();
        CheckRewritten();
    }

private:
    static bool IsDelivered(const RecordPlace& place) {
        return place.m_uiType < FirstSkippableType ||
               place.m_uiType == static_cast<uint8_t>(RecordType::Note);
    }

    /// How many records end at or before an offset.
    size_t DeliveredUpTo(uint64_t offset) const {
        return static_cast<size_t>(std::ranges::count_if(m_vPlaces, [&](const RecordPlace& place) {
            return place.m_uiEnd <= offset && IsDelivered(place);
        }));
    }

    void CheckEnd() const {
        const RecordingEnd& end = m_reading->m_end;
        Check(end.m_uiOffset <= m_Bytes.size(), "the end lies behind the file");
        Check((end.m_kind == EndKind::Whole) == (end.m_uiOffset == m_Bytes.size()),
              "a recording that ends early passes for a whole one");
        Check(m_reading->m_vRecords.size() == DeliveredUpTo(end.m_uiOffset),
              "not all whole records are delivered");
    }

    /// The file cut at some of its bytes.
    void CheckParts() const {
        constexpr size_t Parts = 6;
        const uint64_t end = m_reading->m_end.m_uiOffset;
        for (size_t part = 0; part < Parts; ++part) {
            const size_t size = m_Bytes.size() * part / Parts;
            const auto reading = Read(m_Bytes.first(size));
            const size_t count = DeliveredUpTo(std::min<uint64_t>(size, end));
            if (!reading) {
                Check(count == 0, "a cut recording cannot be read");
                continue;
            }
            Check(AreSame(reading->m_vRecords, std::span(m_reading->m_vRecords).first(count)),
                  "a cut recording does not give its whole records");
            if (size < end)
                Check(reading->m_end.m_kind == EndKind::Whole ||
                          reading->m_end.m_kind == EndKind::Cut,
                      "a cut recording passes for a damaged one");
        }
    }

    void CheckIndex() const {
        const auto with = ReaderOf(m_Bytes).FindUpdates();
        const auto without = ReaderOf(WithoutIndex(m_Bytes)).FindUpdates();
        Check(with.size() >= without.size() &&
                  std::ranges::equal(without, std::span(with).first(without.size()), {},
                                     &IndexEntry::m_uiOffset, &IndexEntry::m_uiOffset),
              "other updates with an index than without");
        if (m_reading->m_end.m_kind != EndKind::Whole)
            return;
        Check(with.size() == without.size(), "an index names more updates than there are");
        CheckJumps(with);
    }

    void CheckJumps(const std::vector<IndexEntry>& index) const {
        RecordingReader reader = ReaderOf(m_Bytes);
        size_t number = m_reading->m_vRecords.size();
        for (auto entry = index.rbegin(); entry != index.rend(); ++entry) {
            do
                Check(number > 0, "the index names what is no update");
            while (!std::holds_alternative<RecordedUpdate>(m_reading->m_vRecords[--number]));
            reader.GoTo(entry->m_uiOffset);
            const auto record = reader.Next();
            Check(record && IsSame(*record, m_reading->m_vRecords[number]),
                  "another update by the index");
            Check(reader.GetSettings() == m_reading->m_vSettings[number],
                  "other settings behind a jump");
            Check(reader.GetDecoders().size() == m_reading->m_vDecoders[number],
                  "other decoders after a jump");
        }
    }

    void CheckRewritten() const {
        const Bytes closed = Write(m_reading->m_header, m_reading->m_vRecords);
        const auto again = Read(closed);
        Check(again && again->m_header == m_reading->m_header &&
                  again->m_end.m_kind == EndKind::Whole,
              "a written recording is not whole");
        Check(AreSame(again->m_vRecords, m_reading->m_vRecords), "a written recording differs");
        RecordingReader reader = ReaderOf(closed);
        const auto index = reader.ReadIndex();
        Check(index && *index == ReaderOf(WithoutIndex(closed)).FindUpdates() &&
                  *index == reader.FindUpdates(),
              "the written index differs from what is found without it");
    }

    std::span<const uint8_t> m_Bytes;
    std::optional<Reading> m_reading;
    std::vector<RecordPlace> m_vPlaces;
};

/// A picture takes as much memory as its framebuffer, which a compressed one may not exceed by more
/// than the compression can do.
void CheckMemory(std::span<const uint8_t> bytes) {
    constexpr size_t MostOfAByte = 1032;
    constexpr size_t Anything = size_t{1} << 16;
    LargestAllocation::Restart();
    Read(bytes);
    Check(LargestAllocation::Get() <= MostOfAByte * (bytes.size() + 1) + Anything,
          "a small recording takes much memory");
}

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    const std::span<const uint8_t> bytes(data, size);
    CheckMemory(bytes);
    Judge(bytes).Run();
    const std::vector<uint8_t> repaired = WithGoodChecksums(bytes);
    CheckMemory(repaired);
    Judge(repaired).Run();
    return 0;
}
