#include "tools/rctool/Completion.h"

#include "tools/rctool/Commands.h"

namespace Vostrel::rctool {
namespace {

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

/// The names that Options.h gives to the validator of a choice.
std::vector<std::string> ChoicesOf(CLI::Option& option) {
    try {
        const std::string& names = option.get_validator()->get_name();
        return names.empty() ? std::vector<std::string>{} : CLI::detail::split(names, ' ');
    } catch (const CLI::OptionNotFound&) {
        return {};
    }
}

CompletedValue ValueOf(const CLI::Option& option, const CompletedOption& described) {
    if (option.get_items_expected() == 0)
        return CompletedValue::None;
    if (!described.m_vChoices.empty())
        return CompletedValue::Choice;
    if (option.get_positional() || described.m_valueName == "FILE")
        return CompletedValue::File;
    return described.m_valueName == "FOLDER" ? CompletedValue::Folder : CompletedValue::Text;
}

CompletedOption DescribeOption(CLI::Option& option) {
    CompletedOption described;
    for (const std::string& name : option.get_snames())
        described.m_vNames.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        described.m_vNames.push_back("--" + name);
    described.m_description = FirstLine(option.get_description());
    described.m_valueName = option.get_type_name();
    described.m_vChoices = ChoicesOf(option);
    described.m_value = ValueOf(option, described);
    return described;
}

std::vector<CompletedOption> DescribeOptions(CLI::App& app) {
    std::vector<CompletedOption> options;
    for (CLI::Option* const option : app.get_options())
        options.push_back(DescribeOption(*option));
    return options;
}

} // namespace

CompletedProgram DescribeProgram() {
    Action action;
    const auto app = MakeApp(action);
    CompletedProgram program{app->get_name(), DescribeOptions(*app), {}};
    for (CLI::App* const command : app->get_subcommands(nullptr))
        program.m_vCommands.push_back(
            {command->get_name(), command->get_description(), DescribeOptions(*command)});
    return program;
}

} // namespace Vostrel::rctool
