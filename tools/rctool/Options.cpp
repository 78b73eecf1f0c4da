#include "tools/rctool/Options.h"

#include <array>
#include <charconv>
#include <iomanip>
#include <sstream>
#include <system_error>
#include <vector>

namespace Vostrel::rctool {

using recording::KernelLevel;

namespace {

/// parse(text) returns whether it accepts all of the text.
template <class Value, class Parse>
CLI::Validator InRange(const char* kind, Value least, Value most, Parse parse) {
    constexpr int Digits = 10; // No exponents in the limits.
    std::ostringstream range;
    range << std::setprecision(Digits) << kind << " from " << least << " to " << most;
    return {[=, text = range.str()](std::string& input) {
                Value value{};
                const char* const end = input.data() + input.size();
                const auto [last, error] = parse(input.data(), end, value);
                const bool good =
                    error == std::errc{} && last == end && value >= least && value <= most;
                return good ? std::string() : input + " is not " + text;
            },
            ""};
}

} // namespace

std::string Plain(std::string name) {
    std::erase(name, ':');
    return CLI::detail::to_lower(name);
}

CLI::Validator WholeNumber(uint64_t least, uint64_t most) {
    return InRange("a whole number", least, most,
                   [](const char* first, const char* last, uint64_t& value) {
                       return std::from_chars(first, last, value);
                   });
}

CLI::Validator Number(double least, double most) {
    return InRange("a number", least, most, [](const char* first, const char* last, double& value) {
        return std::from_chars(first, last, value);
    });
}

void AddRecordingArgument(CLI::App& app, std::string& path) {
    app.add_option("RECORDING", path, "a recording (.rcrec); - is the standard input")
        ->required()
        ->type_name("")
        ->transform(CLI::Validator(
            [](std::string& given) {
                if (given == "-")
                    given = "/dev/stdin";
                return std::string();
            },
            ""));
}

void AddForce(CLI::App& app, bool& force, const char* help) {
    app.add_flag("--force", force, help);
}

namespace {

/// Nothing for text that is no rectangle.
std::optional<libimagedecoder::UpdateRectangle> ParseRectangle(const std::string& text) {
    constexpr unsigned long Most = 65535;
    std::array<unsigned long, 4> numbers{};
    const char* next = text.data();
    const char* const end = next + text.size();
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0 && (next == end || *next++ != ','))
            return std::nullopt;
        const auto [after, error] = std::from_chars(next, end, numbers[i]);
        if (error != std::errc() || numbers[i] > Most || (i >= 2 && numbers[i] == 0))
            return std::nullopt;
        next = after;
    }
    if (next != end)
        return std::nullopt;
    return libimagedecoder::UpdateRectangle{
        static_cast<uint16_t>(numbers[0]), static_cast<uint16_t>(numbers[1]),
        static_cast<uint16_t>(numbers[2]), static_cast<uint16_t>(numbers[3])};
}

/// The help of all processors is the same: it names the levels that another one can run, too.
void AddKernels(CLI::App& app, DecodingOptions& options) {
    const std::vector<KernelLevel> levels = libimagedecoder::ListKernelLevels();
    std::map<std::string, KernelLevel> choices;
    std::string names;
    for (const KernelLevel& level : levels) {
        choices.emplace(level.m_pName, level);
        const bool last = choices.size() == levels.size();
        names += std::string(names.empty() ? "" : last ? " or " : ", ") + level.m_pName;
    }
    AddChoice<KernelLevel>(app, "--kernels", options.m_kernels, choices,
                           names + " [the recorded kind]");
}

} // namespace

void AddRectangle(CLI::App& app, const std::string& name,
                  std::optional<libimagedecoder::UpdateRectangle>& rectangle,
                  const std::string& help) {
    app.add_option_function<std::string>(
           name,
           [&rectangle, name](const std::string& text) {
               rectangle = ParseRectangle(text);
               if (!rectangle)
                   throw CLI::ValidationError(
                       name, text + ": not X,Y,WIDTH,HEIGHT, with sides of at least 1");
           },
           help)
        ->type_name("X,Y,W,H");
}

void AddDecodingOptions(CLI::App& app, DecodingOptions& options) {
    app.add_option("--threads", options.m_threads,
                   "worker threads, 0 to 64 [as the recording wants]")
        ->type_name("N")
        ->check(WholeNumber(0, 64));
    AddKernels(app, options);
}

} // namespace Vostrel::rctool
