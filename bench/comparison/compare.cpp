#include "bench/comparison/Rows.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

using namespace Vostrel::bench;

/// What the command line asks for.
struct Request {
    RoundSettings m_settings;
    std::vector<unsigned> m_vRows; ///< empty: all
    std::string m_csv;
    bool m_bList = false;
};

void DescribeOptions(CLI::App& app, Request& request) {
    app.add_option("--rounds", request.m_settings.m_uiRounds, "rounds of each row [21]")
        ->check(CLI::Range(1, 10000));
    app.add_option("--rows", request.m_vRows, "numbers of the rows to measure, e.g. 1,2,10 [all]")
        ->delimiter(',');
    app.add_option("--core", request.m_settings.m_iCore, "core to measure on [0]");
    app.add_option("--second-core", request.m_settings.m_iSecondCore,
                   "the other core for two workers [1]");
    app.add_option("--csv", request.m_csv, "file for the figures");
    app.add_flag("--list", request.m_bList, "print the rows and measure nothing");
}

bool IsWanted(const Request& request, const Row& row) {
    return request.m_vRows.empty() || std::find(request.m_vRows.begin(), request.m_vRows.end(),
                                                row.m_uiNumber) != request.m_vRows.end();
}

void List() {
    for (const Row& row : AllRows())
        std::printf("%3u  %s\n", row.m_uiNumber, row.m_title);
}

void Measure(const Request& request) {
    Report report;
    report.PrintHeading();
    for (const Row& row : AllRows()) {
        if (IsWanted(request, row))
            row.m_measure(request.m_settings, report);
    }
    if (!request.m_csv.empty())
        report.WriteCsv(request.m_csv);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Measures the decoders against others. Pin the clock of the processor if you can; "
                 "trust ratios, not times.");
    Request request;
    DescribeOptions(app, request);
    CLI11_PARSE(app, argc, argv);
    try {
        if (request.m_bList)
            List();
        else
            Measure(request);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "compare: %s\n", exception.what());
        return 1;
    }
    return 0;
}
