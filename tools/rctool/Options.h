#pragma once

#include "tools/recording/Kernels.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// Arguments and options that several subcommands have in common.
namespace Vostrel::rctool {

/// A name as it is compared: in small letters and without colons, so that 4:2:0 is 420.
std::string Plain(std::string name);

/// An option whose values have names.
template <class Value, class Target>
CLI::Option* AddChoice(CLI::App& app, const std::string& name, Target& value,
                       const std::map<std::string, Value>& choices, const std::string& help) {
    return app
        .add_option_function<std::string>(
            name, [&value, choices](const std::string& text) { value = choices.at(text); }, help)
        ->type_name("NAME")
        ->transform(CLI::IsMember(choices, Plain).description(""));
}

/// Accepts whole numbers from least to most, and names both where it refuses.
CLI::Validator WholeNumber(uint64_t least, uint64_t most);

/// Accepts numbers from least to most. No number (nan) is refused like one outside.
CLI::Validator Number(double least, double most);

/// The options of subcommands that decode.
struct DecodingOptions {
    std::optional<unsigned> m_threads;
    std::optional<recording::KernelVariant> m_kernels;
};

void AddRecordingArgument(CLI::App& app, std::string& path);
void AddForce(CLI::App& app, bool& force, const char* help = "replace files that exist");
void AddDecodingOptions(CLI::App& app, DecodingOptions& options);

} // namespace Vostrel::rctool
