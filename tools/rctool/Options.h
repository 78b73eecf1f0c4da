#pragma once

#include "tools/recording/Kernels.h"

#include <CLI/CLI.hpp>

#include <map>
#include <optional>
#include <string>

/// Arguments and options that several subcommands have in common.
namespace Vostrel::rctool {

/// An option whose values have names.
template <class Value, class Target>
CLI::Option* AddChoice(CLI::App& app, const std::string& name, Target& value,
                       const std::map<std::string, Value>& choices, const std::string& help) {
    return app
        .add_option_function<std::string>(
            name, [&value, choices](const std::string& text) { value = choices.at(text); }, help)
        ->type_name("NAME")
        ->check(CLI::IsMember(choices).description(""));
}

/// The options of subcommands that decode.
struct DecodingOptions {
    std::optional<unsigned> m_threads;
    std::optional<recording::KernelVariant> m_kernels;
};

void AddRecordingArgument(CLI::App& app, std::string& path);
void AddForce(CLI::App& app, bool& force, const char* help = "replace files that exist");
void AddDecodingOptions(CLI::App& app, DecodingOptions& options);

} // namespace Vostrel::rctool
