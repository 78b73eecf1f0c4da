#include "tools/rctool/InfoReport.h"

#include "tools/rctool/Counted.h"
#include "tools/rctool/Names.h"
#include "tools/rctool/UpdateJson.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <span>

namespace Vostrel::rctool {

using recording::EndKind;
using walker::StreamStatistics;
using walker::SymbolClass;
using walker::SymbolCount;

namespace {

constexpr size_t SymbolsInText = 16;

/// Bits that coded macroblocks took.
struct Spread {
    size_t m_uiSum = 0;
    double m_fMean = 0;
    uint32_t m_uiMedian = 0;
    uint32_t m_uiMost = 0;
};

Spread SpreadOf(std::vector<uint32_t> bits) {
    if (bits.empty())
        return {};
    Spread spread;
    spread.m_uiSum = std::accumulate(bits.begin(), bits.end(), size_t{0});
    spread.m_fMean = static_cast<double>(spread.m_uiSum) / static_cast<double>(bits.size());
    const auto middle = bits.begin() + static_cast<std::ptrdiff_t>(bits.size() / 2);
    std::nth_element(bits.begin(), middle, bits.end());
    spread.m_uiMedian = *middle;
    spread.m_uiMost = *std::max_element(bits.begin(), bits.end());
    return spread;
}

template <class Count>
double Percent(Count part, size_t whole) {
    return whole == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

size_t SkippedOf(const StreamStatistics& statistics) {
    return statistics.m_uiMacroblocks -
           std::min(statistics.m_uiMacroblocks, statistics.m_vuiMacroblockBits.size());
}

std::span<const libimagedecoder::IctComponent> ComponentsOf(streamencoder::Codec codec) {
    using namespace libimagedecoder;
    static constexpr std::array Components{ComponentY, ComponentCb, ComponentCr};
    constexpr size_t LbePlanes = 2;
    return std::span(Components)
        .first(codec == streamencoder::Codec::Ict ? Components.size() : LbePlanes);
}

/// What the components of the recorded codecs took, by their names.
std::vector<std::pair<std::string, size_t>> ComponentBits(const InfoReport& report) {
    std::vector<std::pair<std::string, size_t>> named;
    for (const DecoderReport& decoder : report.m_vDecoders) {
        const auto codec = decoder.m_format.m_codec;
        for (const auto component : ComponentsOf(codec)) {
            const std::string name = NameOf(codec, component);
            auto place =
                std::ranges::find(named, name, [](const auto& entry) { return entry.first; });
            if (place == named.end())
                place = named.insert(place, {name, 0});
            place->second += decoder.m_statistics.m_auiComponentBits[component];
        }
    }
    return named;
}

const char* NameOfEnd(EndKind kind) {
    switch (kind) {
    case EndKind::Whole:
        return "whole";
    case EndKind::Cut:
        return "cut";
    case EndKind::Damaged:
        return "damaged";
    case EndKind::LaterVersion:
        return "later version";
    }
    return "";
}

void PrintDecoders(const std::vector<DecoderReport>& decoders) {
    for (size_t i = 0; i < decoders.size(); ++i) {
        const recording::DecoderFormat& format = decoders[i].m_format;
        if (decoders.size() == 1)
            std::printf("stream         ");
        else
            std::printf("decoder %-3zu    %s, ", i,
                        Counted(decoders[i].m_uiUpdates, "update").c_str());
        std::printf("%s %s, protocol version %u, %s\n", NameOf(format.m_codec),
                    NameOf(format.m_chroma), format.m_uiProtocolVersion, NameOf(format.m_layout));
    }
}

void PrintHeader(const InfoReport& report) {
    const recording::Header& header = report.m_header;
    const recording::Settings& settings = header.m_settings;
    std::printf("framebuffer    %u x %u, %s\n", settings.m_uiWidth, settings.m_uiHeight,
                NameOf(settings.m_sink));
    PrintDecoders(report.m_vDecoders);
    std::printf("drawing        contrast %u, post-processing %s, %s kernels, %s\n",
                settings.m_uiContrast, settings.m_bPostprocessing ? "on" : "off",
                NameOf(settings.m_kernels), Counted(header.m_uiThreads, "thread").c_str());
    std::printf("recording      %s in %.3f s, %s of data, %s, %s, %s\n",
                Counted(report.m_uiUpdates, "update").c_str(),
                static_cast<double>(report.m_uiLastTime) / 1e6,
                Counted(report.m_uiPayloadBytes, "byte").c_str(),
                Counted(report.m_uiChecksums, "checksum").c_str(), NameOfEnd(report.m_end.m_kind),
                report.m_bIndexed ? "indexed" : "no index");
    if (report.m_uiSettingsChanges + report.m_uiPictures != 0)
        std::printf("other records  %zu settings, %s\n", report.m_uiSettingsChanges,
                    Counted(report.m_uiPictures, "picture").c_str());
    const size_t faults = report.Total().m_uiFaults;
    if (report.m_uiRecordedFailures + faults != 0)
        std::printf("failures       %zu recorded, %zu found\n", report.m_uiRecordedFailures,
                    faults);
}

void PrintMacroblocks(const InfoReport& report, const StreamStatistics& statistics) {
    const Spread spread = SpreadOf(statistics.m_vuiMacroblockBits);
    const size_t skipped = SkippedOf(statistics);
    std::printf("qualities     ");
    for (const auto& [quality, updates] : report.m_qualities)
        std::printf(" %u (%s)", quality, Counted(updates, "update").c_str());
    std::printf("\nmacroblocks    %zu, %zu skipped (%.1f %%), %zu coded\n",
                statistics.m_uiMacroblocks, skipped, Percent(skipped, statistics.m_uiMacroblocks),
                statistics.m_vuiMacroblockBits.size());
    std::printf("bits of a coded macroblock: mean %.1f, median %u, most %u\n", spread.m_fMean,
                spread.m_uiMedian, spread.m_uiMost);
    const size_t all = 8 * report.m_uiPayloadBytes;
    std::printf("bits by use    skip codes %.1f %%, lengths %.1f %%, filling %.1f %%",
                Percent(statistics.m_uiSkipBits, all), Percent(statistics.m_uiLengthBits, all),
                Percent(statistics.m_iFillingBits, all));
    for (const auto& [component, bits] : ComponentBits(report))
        std::printf(", %s %.1f %%", component.c_str(), Percent(bits, all));
    std::printf("\n");
}

void PrintSymbols(const StreamStatistics& statistics, size_t payloadBits) {
    std::vector<std::pair<SymbolClass, SymbolCount>> symbols(statistics.m_symbols.begin(),
                                                             statistics.m_symbols.end());
    std::stable_sort(symbols.begin(), symbols.end(), [](const auto& a, const auto& b) {
        return a.second.m_uiBits > b.second.m_uiBits;
    });
    std::printf("symbols        %s, by their share of the bits:\n",
                Counted(symbols.size(), "kind").c_str());
    symbols.resize(std::min(symbols.size(), SymbolsInText));
    for (const auto& [symbolClass, count] : symbols)
        std::printf("  %-10s %9zu %-5s %6.1f %%\n", walker::NameOf(symbolClass).c_str(),
                    count.m_uiCount, Plural(count.m_uiCount, "time").c_str(),
                    Percent(count.m_uiBits, payloadBits));
}

nlohmann::ordered_json ToJson(const DecoderReport& decoder) {
    auto json = DescribeDecoder(decoder.m_format);
    json["updates"] = decoder.m_uiUpdates;
    return json;
}

/// A note as one line that leaves the terminal alone: it may come from anywhere.
std::string Printable(std::string text) {
    for (char& character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < ' ' || byte == 0x7F)
            character = ' ';
    }
    return text;
}

} // namespace

StreamStatistics InfoReport::Total() const {
    StreamStatistics total;
    for (const DecoderReport& decoder : m_vDecoders)
        total.Add(decoder.m_statistics);
    return total;
}

void PrintText(const InfoReport& report) {
    const StreamStatistics total = report.Total();
    PrintHeader(report);
    PrintMacroblocks(report, total);
    PrintSymbols(total, 8 * report.m_uiPayloadBytes);
    for (const std::string& note : report.m_vNotes)
        std::printf("note           %s\n", Printable(note).c_str());
}

void PrintJson(const InfoReport& report) {
    const recording::Header& header = report.m_header;
    const recording::Settings& settings = header.m_settings;
    const StreamStatistics statistics = report.Total();
    const Spread spread = SpreadOf(statistics.m_vuiMacroblockBits);
    nlohmann::ordered_json json = {{"fileVersion", report.m_uiFileVersion},
                                   {"codec", NameOf(header.m_codec)},
                                   {"protocolVersion", header.m_uiProtocolVersion},
                                   {"chroma", NameOf(header.m_chroma)},
                                   {"layout", NameOf(header.m_layout)},
                                   {"startTime", header.m_uiStartTime},
                                   {"threads", header.m_uiThreads},
                                   {"width", settings.m_uiWidth},
                                   {"height", settings.m_uiHeight},
                                   {"contrast", settings.m_uiContrast},
                                   {"postprocessing", settings.m_bPostprocessing},
                                   {"sink", NameOf(settings.m_sink)},
                                   {"kernels", NameOf(settings.m_kernels)},
                                   {"end", NameOfEnd(report.m_end.m_kind)},
                                   {"endOffset", report.m_end.m_uiOffset},
                                   {"indexed", report.m_bIndexed},
                                   {"updates", report.m_uiUpdates},
                                   {"payloadBytes", report.m_uiPayloadBytes},
                                   {"lastTime", report.m_uiLastTime},
                                   {"checksums", report.m_uiChecksums},
                                   {"recordedFailures", report.m_uiRecordedFailures},
                                   {"faults", statistics.m_uiFaults},
                                   {"settingsChanges", report.m_uiSettingsChanges},
                                   {"pictures", report.m_uiPictures},
                                   {"notes", report.m_vNotes},
                                   {"macroblocks", statistics.m_uiMacroblocks},
                                   {"skippedMacroblocks", SkippedOf(statistics)},
                                   {"codedMacroblocks", statistics.m_vuiMacroblockBits.size()},
                                   {"macroblockBits",
                                    {{"sum", spread.m_uiSum},
                                     {"mean", spread.m_fMean},
                                     {"median", spread.m_uiMedian},
                                     {"most", spread.m_uiMost}}},
                                   {"bits",
                                    {{"skipCodes", statistics.m_uiSkipBits},
                                     {"lengths", statistics.m_uiLengthBits},
                                     {"filling", statistics.m_iFillingBits}}}};
    for (const auto& [component, bits] : ComponentBits(report))
        json["bits"][component] = bits;
    for (const DecoderReport& decoder : report.m_vDecoders)
        json["decoders"].push_back(ToJson(decoder));
    for (const auto& [quality, updates] : report.m_qualities)
        json["qualities"][std::to_string(quality)] = updates;
    for (const auto& [symbolClass, count] : statistics.m_symbols)
        json["symbols"][walker::NameOf(symbolClass)] = {{"count", count.m_uiCount},
                                                        {"bits", count.m_uiBits}};
    // Notes may hold bytes that are no UTF-8.
    constexpr int Indent = 2;
    std::puts(
        json.dump(Indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}

} // namespace Vostrel::rctool
