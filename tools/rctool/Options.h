#pragma once

#include "libimagedecoder/Macroblock.h"
#include "tools/recording/Kernels.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Arguments and options that several subcommands have in common.
namespace Vostrel::rctool {

/// A name as it is compared: in small letters and without colons, so that 4:2:0 is 420.
std::string Plain(std::string name);

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
        ->transform(CLI::IsMember(choices, Plain).description("").name(NamesOf(choices)));
}

/// The same for several values, separated by commas.
template <class Value>
CLI::Option* AddChoices(CLI::App& app, const std::string& name, std::vector<Value>& values,
                        const std::map<std::string, Value>& choices, const std::string& help) {
    const auto take = [&values, name, choices](const std::string& texts) {
        for (std::string text : CLI::detail::split(texts, ',')) {
            if (const std::string error = CLI::IsMember(choices, Plain)(text); !error.empty())
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

/// Accepts whole numbers from least to most, and names both where it refuses.
CLI::Validator WholeNumber(uint64_t least, uint64_t most);

/// Accepts numbers from least to most. No number (nan) is refused like one outside.
CLI::Validator Number(double least, double most);

/// The options of subcommands that decode.
struct DecodingOptions {
    std::optional<unsigned> m_threads;
    std::optional<recording::KernelLevel> m_kernels;
};

void AddRecordingArgument(CLI::App& app, std::string& path);
void AddForce(CLI::App& app, bool& force, const char* help = "replace files that exist");
void AddDecodingOptions(CLI::App& app, DecodingOptions& options);

} // namespace Vostrel::rctool
