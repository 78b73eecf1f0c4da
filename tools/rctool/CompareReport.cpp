#include "tools/rctool/CompareReport.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

namespace Vostrel::rctool {

using Json = nlohmann::ordered_json;
using streamencoder::Picture;
using streamencoder::PictureSize;
using streamencoder::PsnrOf;

void CompareReport::Add(const Picture& a, const Picture& b, size_t update) {
    ComparedPictures compared;
    compared.m_uiUpdate = update;
    compared.m_aSizes = {a.GetSize(), b.GetSize()};
    const bool sameSize = a.GetSize() == b.GetSize();
    if (sameSize) {
        compared.m_difference = streamencoder::Compare(a, b);
        m_fSquares += compared.m_difference.m_fSquares;
        m_uiSamples += compared.m_difference.m_uiSamples;
        if (compared.m_difference.m_uiPixels == 0)
            return;
    }
    if (m_vDifferent.empty() && sameSize)
        m_shown = streamencoder::ShowDifference(a, b);
    m_vDifferent.push_back(compared);
}

namespace {

std::string ToText(const PictureSize& size) {
    return std::to_string(size.m_uiWidth) + " x " + std::to_string(size.m_uiHeight);
}

std::string ToText(std::optional<double> psnr) {
    if (!psnr)
        return "equal";
    char text[32];
    std::snprintf(text, sizeof(text), "%.2f dB", *psnr);
    return text;
}

bool HaveOneSize(const ComparedPictures& compared) {
    return compared.m_aSizes[0] == compared.m_aSizes[1];
}

void PrintDifference(const ComparedPictures& compared) {
    if (!HaveOneSize(compared)) {
        std::printf("%s pixels and %s pixels\n", ToText(compared.m_aSizes[0]).c_str(),
                    ToText(compared.m_aSizes[1]).c_str());
        return;
    }
    const auto& difference = compared.m_difference;
    const auto& area = difference.m_rectangle;
    std::printf("%s, pixels that differ: %zu, in %u,%u %ux%u\n",
                ToText(PsnrOf(difference.m_fSquares, difference.m_uiSamples)).c_str(),
                difference.m_uiPixels, area.m_uiX, area.m_uiY, area.m_uiWidth, area.m_uiHeight);
}

Json ToJson(std::optional<double> psnr) {
    return psnr ? Json(*psnr) : Json(nullptr);
}

Json ToJson(const ComparedPictures& compared, bool ofRecordings) {
    Json json = Json::object();
    if (ofRecordings)
        json["update"] = compared.m_uiUpdate;
    for (const PictureSize& size : compared.m_aSizes)
        json["sizes"].push_back({{"width", size.m_uiWidth}, {"height", size.m_uiHeight}});
    if (!HaveOneSize(compared))
        return json;
    const auto& difference = compared.m_difference;
    const auto& area = difference.m_rectangle;
    json["psnr"] = ToJson(PsnrOf(difference.m_fSquares, difference.m_uiSamples));
    json["pixels"] = difference.m_uiPixels;
    json["rectangle"] = {{"x", area.m_uiX},
                         {"y", area.m_uiY},
                         {"width", area.m_uiWidth},
                         {"height", area.m_uiHeight}};
    return json;
}

} // namespace

void PrintText(const CompareReport& report) {
    for (const ComparedPictures& compared : report.m_vDifferent) {
        if (report.m_bRecordings)
            std::printf("update %zu: ", compared.m_uiUpdate);
        PrintDifference(compared);
    }
    if (report.IsEqual())
        std::printf("equal\n");
    if (!report.m_bRecordings)
        return;
    std::printf("updates: %zu and %zu, that differ: %zu", report.m_auiUpdates[0],
                report.m_auiUpdates[1], report.m_vDifferent.size());
    if (!report.m_vDifferent.empty())
        std::printf(", first: %zu, all pictures: %s", report.m_vDifferent.front().m_uiUpdate,
                    ToText(PsnrOf(report.m_fSquares, report.m_uiSamples)).c_str());
    std::printf("\n");
}

void PrintJson(const CompareReport& report) {
    Json json = {{"kind", report.m_bRecordings ? "recordings" : "pictures"},
                 {"equal", report.IsEqual()},
                 {"psnr", ToJson(PsnrOf(report.m_fSquares, report.m_uiSamples))},
                 {"differences", Json::array()}};
    if (report.m_bRecordings)
        json["updates"] = report.m_auiUpdates;
    for (const ComparedPictures& compared : report.m_vDifferent)
        json["differences"].push_back(ToJson(compared, report.m_bRecordings));
    constexpr int Indent = 1;
    std::puts(json.dump(Indent).c_str());
}

} // namespace Vostrel::rctool
