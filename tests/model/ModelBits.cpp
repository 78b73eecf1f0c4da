#include "tests/model/ModelBits.h"

namespace Vostrel::model {

int ModelBits::Peek(int count) {
    while (m_iHeldBits < count) {
        m_uiHeld = m_uiHeld << 8 | m_pStream->NextByte();
        m_iHeldBits += 8;
    }
    return static_cast<int>(m_uiHeld >> (m_iHeldBits - count)) & ((1 << count) - 1);
}

int ModelBits::Read(int count) {
    const int value = Peek(count);
    Drop(count);
    return value;
}

int ModelBits::Peek16() {
    return Peek(16);
}

void ModelBits::Drop(int count) {
    m_iHeldBits -= count;
}

} // namespace Vostrel::model
