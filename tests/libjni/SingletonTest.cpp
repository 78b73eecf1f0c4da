#include "libjni/Singleton.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace Vostrel::tests {
namespace {

struct Counted : qv::Singleton<Counted> {
    Counted() { ++s_made; }
    virtual ~Counted() { ++s_destroyed; }

    static inline int s_made = 0;
    static inline int s_destroyed = 0;
};

struct Derived : Counted {
    explicit Derived(bool& destroyed) : m_destroyed(destroyed) {}
    ~Derived() override { m_destroyed = true; }

    bool& m_destroyed;
};

TEST(Singleton, AllThreadsGetTheOneInstance) {
    std::array<Counted*, 8> seen{};
    std::array<std::thread, 8> threads;
    for (size_t i = 0; i < threads.size(); ++i)
        threads[i] = std::thread([&seen, i] { seen[i] = &Counted::getInstance(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Counted* instance : seen)
        EXPECT_EQ(instance, &Counted::getInstance());
    EXPECT_EQ(Counted::s_made, 1);
    EXPECT_EQ(Counted::s_destroyed, 0);
}

TEST(Singleton, DeleterDestroysThroughTheVirtualDestructor) {
    bool destroyed = false;
    qv::Singleton<Counted>::Deleter()(new Derived(destroyed));
    EXPECT_TRUE(destroyed);
}

} // namespace
} // namespace Vostrel::tests
