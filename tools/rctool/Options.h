#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/recording/Kernels.h"

#include <CLI/CLI.hpp>

#include <map>
#include <optional>
#include <string>
#include <vector>

/// Arguments and options that several subcommands have in common.
namespace Vostrel::rctool {

/// The names of choices, as the validator of an option has them for completions.
template <class Value>
std::string NamesOf(const std::map<std::string, Value>& choices) {
    std::string names;
    for (const auto& choice : choices)
        names += (names.empty() ? "" : " ") + choice.first;
    return names;
}

/// An option whose values have names.
template <class Value, class Target>
CLI::Option* AddChoice(CLI::App& app, const std::string& name, Target& value,
                       const std::map<std::string, Value>& choices, const std::string& help) {
    return app
        .add_option_function<std::string>(
            name, [&value, choices](const std::string& text) { value = choices.at(text); }, help)
        ->type_name("NAME")
        ->check(CLI::IsMember(choices).description("").name(NamesOf(choices)));
}

/// The same for several values, separated by commas.
template <class Value>
CLI::Option* AddChoices(CLI::App& app, const std::string& name, std::vector<Value>& values,
                        const std::map<std::string, Value>& choices, const std::string& help) {
    const auto take = [&values, name, choices](const std::string& texts) {
        for (std::string text : CLI::detail::split(texts, ',')) {
            if (const std::string error = CLI::IsMember(choices)(text); !error.empty())
                throw CLI::ValidationError(name, error);
            values.push_back(choices.at(text));
        }
    };
    return app.add_option_function<std::string>(name, take, help)
        ->type_name("NAME,...")
        ->check(CLI::Validator("").name(NamesOf(choices)));
}

/// An option X,Y,WIDTH,HEIGHT in pixels: corner 0 to 65535, sides 1 to 65535.
void AddRectangle(CLI::App& app, const std::string& name,
                  std::optional<libimagedecoder::UpdateRectangle>& rectangle,
                  const std::string& help);

/// The options of subcommands that decode.
struct DecodingOptions {
    std::optional<unsigned> m_threads;
    std::optional<recording::KernelLevel> m_kernels;
};

void AddRecordingArgument(CLI::App& app, std::string& path);
void AddForce(CLI::App& app, bool& force, const char* help = "replace files that exist");
void AddDecodingOptions(CLI::App& app, DecodingOptions& options);

} // namespace Vostrel::rctool
