#pragma once

#include "libimagedecoder/ILogger.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

namespace Vostrel::libimagedecoder {

/// One variant of a kernel family, as its factory offers it to CreateFirstWorkingKernel.
template <typename Interface>
struct KernelAttempt {
    std::uint32_t neededFlag; ///< InstrSetArchExt bit; 0 for the portable variant.
    const char* name;         ///< Class name in the failure messages.
    std::shared_ptr<Interface> (*create)(ILogger*); ///< May throw anything.
};

/// The create function of an attempt: object and reference count in one allocation.
template <typename Interface, typename Variant>
std::shared_ptr<Interface> MakeKernel(ILogger* logger) {
    return std::make_shared<Variant>(logger);
}

/// Logs from a handler. A logger that fails in its turn, without memory say, must not end the
/// search for a variant.
template <typename Write>
void LogQuietly(Write write) {
    try {
        write();
    } catch (...) {
        return;
    }
}

/// Runs one attempt. A failure is logged and gives an empty pointer.
template <typename Interface>
std::shared_ptr<Interface> TryToCreateKernel(const KernelAttempt<Interface>& attempt,
                                             ILogger* logger) {
    try {
        return attempt.create(logger);
    } catch (const std::exception& exception) {
        LogQuietly(
            [&] { logger->Log("Creating %s failed: '%s'!", attempt.name, exception.what()); });
    } catch (...) {
        LogQuietly([&] { logger->Log("Creating %s failed!", attempt.name); });
    }
    return nullptr;
}

/// The selection rule of both kernel factories: the first variant, in the order of the list, whose
/// processor feature is there and whose construction succeeds. Without accelerate only the variants
/// that need no feature count. Returns an empty pointer if none could be created.
template <typename Interface, std::size_t Count>
std::shared_ptr<Interface>
CreateFirstWorkingKernel(const KernelAttempt<Interface> (&attempts)[Count],
                         std::uint32_t processorFlags, bool accelerate, ILogger* logger) {
    const std::uint32_t usableFlags = accelerate ? processorFlags : 0;
    for (const KernelAttempt<Interface>& attempt : attempts) {
        if ((usableFlags & attempt.neededFlag) != attempt.neededFlag)
            continue;
        if (std::shared_ptr<Interface> kernel = TryToCreateKernel(attempt, logger))
            return kernel;
    }
    return nullptr;
}

} // namespace Vostrel::libimagedecoder
