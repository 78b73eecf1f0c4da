#include "tools/rctool/Commands.h"
#include "tools/rctool/ManualChapters.h"
#include "tools/rctool/StandardStreams.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

/// Prints the manual page: the program's own description of its options, and the chapters of the
/// page in Markdown that is named.
namespace {

using namespace Vostrel::rctool;

struct Example {
    std::string_view m_command;
    std::string_view m_purpose;
    const char* m_line;
};

constexpr Example Examples[] = {
    {"encode", "A recording of screens in fine quality, then another screen at its end:",
     "rctool encode -o desktop.rcrec --quality 12 frame-*.png\n"
     "rctool encode -o desktop.rcrec --append last.png"},
    {"decode", "Whether a viewer still shows the recorded pictures, and the last one of them:",
     "rctool decode desktop.rcrec --verify -o last.png"},
    {"info", "What the bits were spent on:", "rctool info desktop.rcrec"},
    {"list", "The updates with their times:", "rctool list desktop.rcrec"},
    {"inspect", "Every code of a macroblock:",
     "rctool inspect desktop.rcrec --update 1 --macroblock 66 --symbols"},
    {"heatmap", "Where the bits went:", "rctool heatmap desktop.rcrec -o heat.png"},
    {"export",
     "A film of the connection:", "rctool export desktop.rcrec --y4m - | ffmpeg -i - desktop.mkv"},
    {"compare", "Where two encodings of the same frames differ:",
     "rctool compare fine.rcrec coarse.rcrec -o differences.png"},
    {"bench", "What a second worker gains:",
     "rctool bench desktop.rcrec --threads 1\n"
     "rctool bench desktop.rcrec --threads 2"},
};

std::string UpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return std::toupper(character); });
    return text;
}

void PrintOption(const CLI::Option& option) {
    std::string name = option.get_positional() ? option.get_name() : option.get_name(false, true);
    if (const size_t comma = name.find(','); comma != std::string::npos)
        name.replace(comma, 1, ", ");
    const bool takesValue = !option.get_positional() && option.get_items_expected() != 0;
    std::printf(".TP\n\\fB%s\\fR%s\n%s\n", Escaped(name).c_str(),
                takesValue ? (" \\fI" + option.get_type_name() + "\\fR").c_str() : "",
                Escaped(option.get_description()).c_str());
}

/// Lines of a list, which begin with blanks, stay lines.
void PrintParagraphs(const std::string& text) {
    std::string marked = Escaped(text);
    for (size_t at = marked.find("\n  "); at != std::string::npos; at = marked.find("\n  ", at + 1))
        marked.replace(at, 3, "\n.br\n");
    std::printf(".PP\n%s\n", marked.c_str());
}

void PrintExample(const Example& example) {
    std::printf(".PP\n%s\n.PP\n.nf\n.RS\n%s\n.RE\n.fi\n",
                Escaped(std::string(example.m_purpose)).c_str(), Escaped(example.m_line).c_str());
}

void PrintCommand(const CLI::App& command) {
    std::printf(".SS %s\n%s.\n", Escaped(command.get_name()).c_str(),
                Escaped(command.get_description()).c_str());
    for (const CLI::Option* option : command.get_options())
        PrintOption(*option);
    if (!command.get_footer().empty())
        PrintParagraphs(command.get_footer());
    for (const Example& example : Examples) {
        if (example.m_command == command.get_name())
            PrintExample(example);
    }
}

} // namespace

int main(int argc, char** argv) {
    std::ifstream chapters(argc == 2 ? argv[1] : "");
    if (!chapters)
        return 1;
    Action action;
    const auto app = MakeApp(action);
    const std::string& name = app->get_name();
    std::printf(".TH %s 1 \"\" \"%s %s\" \"User Commands\"\n", UpperCase(name).c_str(),
                name.c_str(), RCTOOL_VERSION);
    std::printf(".SH NAME\n%s \\- record, decode and examine framebuffer updates\n", name.c_str());
    std::printf(".SH SYNOPSIS\n.B %s\nCOMMAND [OPTION]...\n.SH DESCRIPTION\n%s\n", name.c_str(),
                Escaped(app->get_description()).c_str());
    std::printf(".SH OPTIONS\n");
    for (const CLI::Option* option : app->get_options())
        PrintOption(*option);
    std::printf(".SH COMMANDS\n");
    for (const CLI::App* command : app->get_subcommands(nullptr))
        PrintCommand(*command);
    std::fputs(ToManual(chapters).c_str(), stdout);
    try {
        FinishStandardOutput();
        return Done;
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "rctool_manpage: %s\n", error.what());
        return FileFailed;
    }
}
