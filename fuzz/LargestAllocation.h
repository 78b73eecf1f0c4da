#pragma once

#include <atomic>
#include <cstddef>

// Of AddressSanitizer's runtime, so not in every build.
extern "C" int __attribute__((weak))
__sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, size_t),
                                          void (*onFree)(const volatile void*));

namespace Vostrel::fuzz {

/// The largest piece of memory that was asked for since the last restart. Without AddressSanitizer
/// nobody counts, and it is 0.
class LargestAllocation {
public:
    static void Restart() {
        static const bool s_bCounts = Install();
        s_uiBytes = 0;
        static_cast<void>(s_bCounts);
    }

    static size_t Get() { return s_uiBytes; }

private:
    static bool Install() {
        if (__sanitizer_install_malloc_and_free_hooks == nullptr)
            return false;
        const auto onMalloc = [](const volatile void*, size_t bytes) {
            if (bytes > s_uiBytes)
                s_uiBytes = bytes;
        };
        return __sanitizer_install_malloc_and_free_hooks(onMalloc, [](const volatile void*) {}) !=
               0;
    }

    inline static std::atomic<size_t> s_uiBytes;
};

} // namespace Vostrel::fuzz
