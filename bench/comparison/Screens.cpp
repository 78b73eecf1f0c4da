#include "bench/comparison/Screens.h"

#include "bench/DecodingScene.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Vostrel::bench {

using namespace streamencoder;

namespace {

constexpr size_t Width = 1920;
constexpr size_t Height = 1080;

/// In dB. Neither the loss of coarse levels hides a picture from this, nor that of JPEG's
/// whole-numbered quantiser steps.
constexpr double Recognisable = 18.0;

void Paste(const Picture& source, Picture& target, size_t x, size_t y) {
    const size_t width = std::min(source.m_uiWidth, target.m_uiWidth - x);
    const size_t height = std::min(source.m_uiHeight, target.m_uiHeight - y);
    for (size_t row = 0; row < height; ++row)
        std::copy_n(&source.At(0, row), width, &target.At(x, y + row));
}

Picture Console() {
    Picture picture(Width, Height);
    Paste(LoadScreen("console-720x400-00.png"), picture, 0, 0);
    Paste(LoadScreen("console-720x400-06.png"), picture, 0, 400);
    return picture;
}

Picture ReadScreen(Screen screen) {
    switch (screen) {
    case Screen::Photo:
        return LoadScreen("photo-1920x1080-00.png");
    case Screen::Console:
        return Console();
    case Screen::Desktop:
        break;
    }
    return LoadScreen("desktop-1920x1080-00.png");
}

/// Peak signal-to-noise ratio in dB over all channels.
double SignalToNoise(const std::vector<uint32_t>& words, const Picture& picture) {
    double error = 0;
    for (size_t i = 0; i < picture.m_vPixels.size(); ++i) {
        for (size_t channel = 0; channel < 3; ++channel) {
            const double value = words[i] >> (16 - 8 * channel) & 0xFF;
            const double difference = value - picture.m_vPixels[i][channel];
            error += difference * difference;
        }
    }
    const double mean = error / (3.0 * static_cast<double>(picture.m_vPixels.size()));
    return 10 * std::log10(255.0 * 255.0 / mean);
}

} // namespace

const char* NameOf(Screen screen) {
    switch (screen) {
    case Screen::Photo:
        return "photo";
    case Screen::Console:
        return "console";
    case Screen::Desktop:
        break;
    }
    return "desktop";
}

Picture WholeScreen(Screen screen) {
    const Picture source = ReadScreen(screen);
    Picture picture(source.m_uiWidth, libimagedecoder::RoundedUpToMacroblocks(source.m_uiHeight));
    Paste(source, picture, 0, 0);
    for (size_t y = source.m_uiHeight; y < picture.m_uiHeight; ++y)
        std::copy_n(&picture.At(0, source.m_uiHeight - 1), picture.m_uiWidth, &picture.At(0, y));
    return picture;
}

Picture Cut(const Picture& picture, size_t x, size_t y, size_t width, size_t height) {
    Picture part(width, height);
    for (size_t row = 0; row < height; ++row)
        std::copy_n(&picture.At(x, y + row), width, &part.At(0, row));
    return part;
}

std::vector<uint32_t> ArgbWords(const Picture& picture) {
    std::vector<uint32_t> words;
    for (const auto& [red, green, blue] : picture.m_vPixels)
        words.push_back(0xFF000000U | uint32_t{red} << 16 | uint32_t{green} << 8 | blue);
    return words;
}

void CheckRecognisable(const std::vector<uint32_t>& words, const Picture& picture) {
    const double quality = SignalToNoise(words, picture);
    if (quality < Recognisable)
        throw std::logic_error("A decoder shows something else: " + std::to_string(quality) +
                               " dB");
}

} // namespace Vostrel::bench
