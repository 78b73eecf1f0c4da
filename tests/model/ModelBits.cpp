#include "tests/model/ModelBits.h"

namespace Vostrel::model {

void ModelBits::Hold(int count) {
    while (HeldBits() < count) {
        const uint8_t byte = m_pStream->NextByte();
        for (int bit = 7; bit >= 0; --bit)
            m_Held.push_back(((byte >> bit) & 1) != 0);
    }
}

int ModelBits::Read(int count) {
    Hold(count);
    int value = 0;
    for (int i = 0; i < count; ++i)
        value = value * 2 + (m_Held[static_cast<size_t>(i)] ? 1 : 0);
    Drop(count);
    return value;
}

int ModelBits::Peek16() {
    Hold(16);
    int value = 0;
    for (int i = 0; i < 16; ++i)
        value = value * 2 + (m_Held[static_cast<size_t>(i)] ? 1 : 0);
    return value;
}

void ModelBits::Drop(int count) {
    for (int i = 0; i < count; ++i)
        m_Held.pop_front();
}

} // namespace Vostrel::model
