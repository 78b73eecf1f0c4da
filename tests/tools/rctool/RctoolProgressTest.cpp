#include "tests/tools/rctool/RctoolFixture.h"

namespace Vostrel::rctool {
namespace {

/// Runs rctool on a terminal of its own. Returns what the terminal got.
std::string RunOnTerminal(const std::string& arguments) {
    const std::string command =
        "script -qec '" + std::string(RCTOOL_PATH) + " " + arguments + "' /dev/null </dev/null";
    FILE* const pipe = popen(command.c_str(), "r");
    std::string output;
    for (int character = 0; (character = std::fgetc(pipe)) != EOF;)
        output += static_cast<char>(character);
    pclose(pipe);
    return output;
}

TEST_F(Rctool, ProgressIsShownOnATerminalAndGoneAtTheEnd) {
    const std::string path = Recorded("--codec lbe");
    const std::string blank(std::string("rctool: decode: update 1 of 2").size(), ' ');
    EXPECT_EQ(RunOnTerminal("decode --verify " + path),
              "\rrctool: decode: update 1 of 2\r" + blank +
                  "\r2 updates, 0 failed, 2 compared, 0 differences\r\n");
    for (const auto& [command, line] :
         {std::pair("encode --force -o " + In("x.rcrec") + " " + Frames,
                    std::string("rctool: encode: frame 2 of 2\r")),
          std::pair("heatmap -o " + In("x.png") + " " + path,
                    std::string("rctool: heatmap: update 1 of 2\r")),
          std::pair("bench --passes 3 " + path, std::string("rctool: bench: pass 1 of 3\r")),
          std::pair("export -o " + In("raw") + " " + path,
                    std::string("rctool: export: update 1 of 2\r")),
          std::pair("export --y4m " + In("x.y4m") + " " + path,
                    std::string("rctool: export: update 1 of 2\r")),
          std::pair("compare " + path + " " + path,
                    std::string("rctool: compare: update 1 of 2\r")),
          std::pair("info " + path, std::string("rctool: info: record 1\r")),
          std::pair("inspect --update 1 " + path, std::string("rctool: inspect: update 1 of 2\r"))})
        EXPECT_NE(RunOnTerminal(command).find(line), std::string::npos) << command;
}

TEST_F(Rctool, ProgressIsNotShownElsewhereOrWhenQuiet) {
    const std::string path = Recorded("--codec lbe");
    EXPECT_EQ(RunRctool("decode " + path, "2>&1 >/dev/null").m_output, "");
    EXPECT_EQ(RunOnTerminal("decode --quiet " + path), "");
    EXPECT_EQ(RunOnTerminal("heatmap --quiet -o " + In("x.png") + " " + path), "");
}

} // namespace
} // namespace Vostrel::rctool
