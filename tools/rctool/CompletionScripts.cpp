#include "tools/rctool/Completion.h"

namespace Vostrel::rctool {
namespace {

std::string Joined(const std::vector<std::string>& words, const char* between) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

/// With a backslash before some characters.
std::string WithBackslashes(const std::string& text, const std::string& characters) {
    std::string escaped;
    for (const char character : text) {
        if (characters.find(character) != std::string::npos)
            escaped += '\\';
        escaped += character;
    }
    return escaped;
}

/// Inside single quotes of a POSIX shell.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char character : text)
        quoted += character == '\'' ? "'\\''" : std::string(1, character);
    return quoted + "'";
}

std::string AllNames(const std::vector<CompletedOption>& options) {
    std::vector<std::string> names;
    for (const CompletedOption& option : options)
        names.insert(names.end(), option.m_vNames.begin(), option.m_vNames.end());
    return Joined(names, " ");
}

/// The builtin's arguments that complete a value; nothing for one that cannot be completed.
std::string BashValue(const CompletedOption& option) {
    switch (option.m_value) {
    case CompletedValue::Choice:
        return "-W " + Quoted(Joined(option.m_vChoices, " "));
    case CompletedValue::File:
        return "-f";
    case CompletedValue::Folder:
        return "-d";
    case CompletedValue::None:
    case CompletedValue::Text:
        break;
    }
    return "";
}

std::string BashCommand(const CompletedCommand& command) {
    std::string script;
    for (const CompletedOption& option : command.m_vOptions) {
        if (option.m_vNames.empty() || option.m_value == CompletedValue::None)
            continue;
        const std::string value = BashValue(option);
        script += "    " + command.m_name + ":" +
                  Joined(option.m_vNames, ("|" + command.m_name + ":").c_str()) + ") " +
                  (value.empty() ? "return" : "_rctool_reply " + value) + " ;;\n";
    }
    return script + "    " + command.m_name +
           ":*)\n        case $word in\n        -*) _rctool_reply -W " +
           Quoted(AllNames(command.m_vOptions)) +
           " ;;\n        *) _rctool_reply -f ;;\n        esac ;;\n";
}

/// What _arguments wants after the name: a description, and a message and an action for the value.
std::string ZshValue(const CompletedOption& option) {
    const std::string message = ":" + WithBackslashes(option.m_valueName, ":") + ":";
    switch (option.m_value) {
    case CompletedValue::Choice:
        return message + "(" + Joined(option.m_vChoices, " ") + ")";
    case CompletedValue::File:
        return message + "_files";
    case CompletedValue::Folder:
        return message + "_files -/";
    case CompletedValue::Text:
        return message;
    case CompletedValue::None:
        break;
    }
    return "";
}

std::string ZshOptions(const std::vector<CompletedOption>& options) {
    std::string script;
    for (const CompletedOption& option : options) {
        const std::string rest =
            "[" + WithBackslashes(option.m_description, "[]:\\") + "]" + ZshValue(option);
        for (const std::string& name : option.m_vNames)
            script += " \\\n            " + Quoted(name + rest);
    }
    return script;
}

std::string FishOption(const std::string& condition, const CompletedOption& option) {
    std::string line = "complete -c rctool -n " + Quoted(condition);
    for (const std::string& name : option.m_vNames)
        line += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    switch (option.m_value) {
    case CompletedValue::Choice:
        line += " -x -a " + Quoted(Joined(option.m_vChoices, " "));
        break;
    case CompletedValue::File:
        line += " -r";
        break;
    case CompletedValue::Folder:
        line += " -x -a '(__fish_complete_directories)'";
        break;
    case CompletedValue::Text:
        line += " -x";
        break;
    case CompletedValue::None:
        break;
    }
    return line + " -d '" + WithBackslashes(option.m_description, "'\\") + "'\n";
}

std::string FishOptions(const std::string& condition, const std::vector<CompletedOption>& options) {
    std::string script;
    for (const CompletedOption& option : options) {
        if (!option.m_vNames.empty())
            script += FishOption(condition, option);
    }
    return script;
}

} // namespace

std::string BashCompletion(const CompletedProgram& program) {
    std::vector<std::string> commands;
    std::string cases;
    for (const CompletedCommand& command : program.m_vCommands) {
        commands.push_back(command.m_name);
        cases += BashCommand(command);
    }
    return "# bash completion for " + program.m_name +
           "\n\n"
           "_rctool_reply() {\n"
           "    mapfile -t COMPREPLY < <(compgen \"$@\" -- \"${COMP_WORDS[COMP_CWORD]}\")\n"
           "}\n\n"
           "_rctool() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
           "    COMPREPLY=()\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        _rctool_reply -W " +
           Quoted(Joined(commands, " ") + " " + AllNames(program.m_vOptions)) +
           "\n        return\n    fi\n    case ${COMP_WORDS[1]}:$before in\n" + cases +
           "    esac\n}\n\ncomplete -o filenames -F _rctool " + program.m_name + "\n";
}

std::string ZshCompletion(const CompletedProgram& program) {
    std::string commands;
    std::string cases;
    for (const CompletedCommand& command : program.m_vCommands) {
        commands += "\n        " + Quoted(command.m_name + ":" + command.m_description);
        cases += "    " + command.m_name + ")\n        _arguments -s" +
                 ZshOptions(command.m_vOptions) + " \\\n            '*:FILE:_files' ;;\n";
    }
    return "#compdef " + program.m_name + "\n\n_rctool() {\n    local -a commands\n    commands=(" +
           commands +
           "\n    )\n    if (( CURRENT == 2 )); then\n        _describe command commands\n"
           "        _arguments" +
           ZshOptions(program.m_vOptions) +
           "\n        return\n    fi\n    local command=$words[2]\n    shift words\n"
           "    (( CURRENT-- ))\n    case $command in\n" +
           cases + "    esac\n}\n\n_rctool \"$@\"\n";
}

std::string FishCompletion(const CompletedProgram& program) {
    std::string script = "# fish completion for " + program.m_name + "\n\n";
    script += FishOptions("__fish_use_subcommand", program.m_vOptions);
    for (const CompletedCommand& command : program.m_vCommands)
        script += "complete -c rctool -n '__fish_use_subcommand' -f -a " + command.m_name +
                  " -d '" + WithBackslashes(command.m_description, "'\\") + "'\n";
    for (const CompletedCommand& command : program.m_vCommands)
        script +=
            "\n" + FishOptions("__fish_seen_subcommand_from " + command.m_name, command.m_vOptions);
    return script;
}

} // namespace Vostrel::rctool
