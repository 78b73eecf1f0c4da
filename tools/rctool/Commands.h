#pragma once

#include "tools/rctool/ExitCode.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>

/// The command-line tool: every subcommand in a file of its own.
namespace Vostrel::rctool {

/// The subcommand that was asked for, ready to run. Returns an ExitCode; throws
/// std::invalid_argument for options that do not go together, std::runtime_error for the rest.
using Action = std::function<int()>;

/// The program with all its subcommands. Parsing a command line sets the action.
std::unique_ptr<CLI::App> MakeApp(Action& action);

void AddEncode(CLI::App& app, Action& action);
void AddDecode(CLI::App& app, Action& action);
void AddInfo(CLI::App& app, Action& action);
void AddList(CLI::App& app, Action& action);
void AddInspect(CLI::App& app, Action& action);
void AddHeatmap(CLI::App& app, Action& action);
void AddExport(CLI::App& app, Action& action);
void AddCompare(CLI::App& app, Action& action);
void AddBench(CLI::App& app, Action& action);

/// Adds a subcommand with a request of its own. describe(CLI::App&, Request&) adds its options;
/// run(const Request&) carries it out.
template <class Request>
CLI::App& AddCommand(CLI::App& app, Action& action, const char* name, const char* help,
                     void (*describe)(CLI::App&, Request&), int (*run)(const Request&)) {
    const auto request = std::make_shared<Request>();
    CLI::App* const command = app.add_subcommand(name, help);
    describe(*command, *request);
    command->callback(
        [&action, request, run] { action = [request, run] { return run(*request); }; });
    return *command;
}

} // namespace Vostrel::rctool
