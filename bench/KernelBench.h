#pragma once

#include "libimagedecoder/CpuArch.h"
#include "libimagedecoder/KernelFactory.h"

#include <benchmark/benchmark.h>
#include <string>

namespace Vostrel::bench {

/// Registers a benchmark of every variant of a kernel family that this processor can run, as
/// prefix/variant/suffix. run(benchmark::State&, const KernelVariant<Kernel>&).
template <typename Kernel, typename Run>
void RegisterVariants(libimagedecoder::KernelVariants<Kernel> table, const std::string& prefix,
                      const std::string& suffix, benchmark::TimeUnit unit, Run run) {
    const auto flags = libimagedecoder::CpuArch::GetInstrSetArchExtFlags(nullptr);
    for (const libimagedecoder::KernelVariant<Kernel>& variant : table) {
        if (!variant.IsEligible(flags, true))
            continue;
        const std::string name = prefix + '/' + variant.m_pName + '/' + suffix;
        benchmark::RegisterBenchmark(name.c_str(), [run, &variant](benchmark::State& state) {
            run(state, variant);
        })->Unit(unit);
    }
}

} // namespace Vostrel::bench
