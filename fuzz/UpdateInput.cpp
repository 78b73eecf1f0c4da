#include "fuzz/UpdateInput.h"

namespace Vostrel::fuzz {
namespace {

constexpr size_t MaxUpdates = 8;

constexpr uint8_t FuzzedLife::*LifeBytes[] = {&FuzzedLife::m_uiVersion, &FuzzedLife::m_uiChroma,
                                              &FuzzedLife::m_uiThreads, &FuzzedLife::m_uiKernel,
                                              &FuzzedLife::m_uiSink,    &FuzzedLife::m_uiPlace,
                                              &FuzzedLife::m_uiWidth,   &FuzzedLife::m_uiHeight};
constexpr uint8_t FuzzedUpdate::*UpdateBytes[] = {
    &FuzzedUpdate::m_uiKind, &FuzzedUpdate::m_uiQuality, &FuzzedUpdate::m_uiContrast,
    &FuzzedUpdate::m_uiPiece};
constexpr uint16_t FuzzedUpdate::*UpdateWords[] = {&FuzzedUpdate::m_uiX, &FuzzedUpdate::m_uiY,
                                                   &FuzzedUpdate::m_uiWidth,
                                                   &FuzzedUpdate::m_uiHeight};

void AppendWord(std::vector<uint8_t>& bytes, size_t word) {
    bytes.push_back(static_cast<uint8_t>(word >> 8));
    bytes.push_back(static_cast<uint8_t>(word));
}

} // namespace

FuzzedLife ReadLife(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    FuzzedLife life;
    life.m_vUpdates.reserve(MaxUpdates);
    for (const auto member : LifeBytes)
        life.*member = input.Byte();
    while (!input.IsEmpty() && life.m_vUpdates.size() < MaxUpdates) {
        FuzzedUpdate& update = life.m_vUpdates.emplace_back();
        for (const auto member : UpdateBytes)
            update.*member = input.Byte();
        for (const auto member : UpdateWords)
            update.*member = input.Word();
        update.m_Payload = input.Take(input.Word());
    }
    return life;
}

std::vector<uint8_t> WriteLife(const FuzzedLife& life) {
    std::vector<uint8_t> bytes;
    for (const auto member : LifeBytes)
        bytes.push_back(life.*member);
    for (const FuzzedUpdate& update : life.m_vUpdates) {
        for (const auto member : UpdateBytes)
            bytes.push_back(update.*member);
        for (const auto member : UpdateWords)
            AppendWord(bytes, update.*member);
        AppendWord(bytes, update.m_Payload.size());
        bytes.insert(bytes.end(), update.m_Payload.begin(), update.m_Payload.end());
    }
    return bytes;
}

} // namespace Vostrel::fuzz
