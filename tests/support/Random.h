#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>

namespace Vostrel::tests {

/// Random numbers of one test. Prints its seed, so that a failure can be repeated with the
/// environment variable TEST_SEED.
class Random {
public:
    Random() : m_uiSeed(ChooseSeed()), m_Engine(m_uiSeed) {
        std::cout << "seed: TEST_SEED=" << m_uiSeed << '\n';
    }

    std::uint64_t Bits() { return m_Engine(); }

    /// 0 to bound - 1.
    template <typename Integer>
    Integer Below(Integer bound) {
        return static_cast<Integer>(Bits() % static_cast<std::uint64_t>(bound));
    }

    /// low to high, both included.
    int Between(int low, int high) { return low + Below(high - low + 1); }

    bool OneIn(unsigned int chances) { return Below(chances) == 0; }

    std::uint8_t Byte() { return static_cast<std::uint8_t>(Bits()); }

    template <typename Container>
    void FillBytes(Container& bytes) {
        for (auto& byte : bytes)
            byte = Byte();
    }

private:
    static std::uint64_t ChooseSeed() {
        const char* wish = std::getenv("TEST_SEED");
        return wish != nullptr ? std::strtoull(wish, nullptr, 10) : std::random_device()();
    }

    std::uint64_t m_uiSeed;
    std::mt19937_64 m_Engine;
};

} // namespace Vostrel::tests
