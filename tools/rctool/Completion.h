#pragma once

#include <string>
#include <vector>

/// What shells complete, taken from the program's own description of its options.
namespace Vostrel::rctool {

/// What the value of an option is.
enum class CompletedValue { None, Text, Choice, File, Folder };

struct CompletedOption {
    std::vector<std::string> m_vNames; ///< with their dashes; empty for an argument
    std::string m_description;         ///< its first line
    CompletedValue m_value = CompletedValue::None;
    std::string m_valueName;             ///< as in the help
    std::vector<std::string> m_vChoices; ///< for a choice
};

struct CompletedCommand {
    std::string m_name;
    std::string m_description;
    std::vector<CompletedOption> m_vOptions;
};

struct CompletedProgram {
    std::string m_name;
    std::vector<CompletedOption> m_vOptions; ///< without a command
    std::vector<CompletedCommand> m_vCommands;
};

CompletedProgram DescribeProgram();

/// Scripts for the shells.
std::string BashCompletion(const CompletedProgram& program);
std::string ZshCompletion(const CompletedProgram& program);
std::string FishCompletion(const CompletedProgram& program);

} // namespace Vostrel::rctool
