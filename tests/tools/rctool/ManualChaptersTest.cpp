#include "tools/rctool/ManualChapters.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace Vostrel::rctool {
namespace {

std::string Converted(const std::string& markdown) {
    std::istringstream in(markdown);
    return ToManual(in);
}

TEST(ManualChapters, HeadingsBecomeSections) {
    EXPECT_EQ(Converted("# rctool\n\n## Exit status\n\n### `index.json` of it\n"),
              ".SH OVERVIEW\n.SH EXIT STATUS\n.SS \\fBindex.json\\fR of it\n");
}

TEST(ManualChapters, ParagraphsKeepTheirLinesAndMarks) {
    EXPECT_EQ(Converted("One **bold** and `--all`,\n.hidden [page](java-api.md) *so*.\n\nTwo\\.\n"),
              ".PP\nOne \\fBbold\\fR and \\fB\\-\\-all\\fR,\n\\&.hidden page \\fIso\\fR.\n"
              ".PP\nTwo\\e.\n");
}

TEST(ManualChapters, RowsOfATableBecomeAListWithoutTheNamesOfItsColumns) {
    EXPECT_EQ(Converted("| status | meaning |\n|---|---|\n| 0 | done |\n| `a`, `b` | x |\n\nz\n"),
              ".TP\n0\ndone\n.TP\n\\fBa\\fR, \\fBb\\fR\nx\n.PP\nz\n");
}

TEST(ManualChapters, RowsOfATableOfManyColumnsNameThem) {
    EXPECT_EQ(Converted("| file | `info` | `list` |\n|---|---|---|\n| is good | 0 | 1 |\n"),
              ".TP\nis good\n\\fBinfo\\fR: 0\n.br\n\\fBlist\\fR: 1\n.br\n");
}

TEST(ManualChapters, IndentedCodeKeepsItsLinesAndBlanks) {
    EXPECT_EQ(Converted("Do\n\n    rctool  list\n      x\n\nthen\n"),
              ".PP\nDo\n.PP\n.nf\n.RS\nrctool  list\n  x\n.RE\n.fi\n.PP\nthen\n");
}

TEST(ManualChapters, NumberedItemsGoOnInIndentedLines) {
    EXPECT_EQ(Converted("1. First\n   and more.\n2. Second\n"),
              ".IP 1. 4\nFirst\nand more.\n.IP 2. 4\nSecond\n");
}

TEST(ManualChapters, ItemsWithoutNumbersGetBullets) {
    EXPECT_EQ(Converted("- First\n  and more.\n- Second\n"),
              ".IP \\(bu 4\nFirst\nand more.\n.IP \\(bu 4\nSecond\n");
}

TEST(ManualChapters, TheManualPageHasEveryChapterOfTheDocumentation) {
    std::ifstream manual(RCTOOL_MANUAL_PATH);
    const std::string page{std::istreambuf_iterator<char>(manual), {}};
    std::ifstream documentation(TEST_DATA_DIR "/../../docs/tool.md");
    const std::string chapters = ToManual(documentation);
    EXPECT_GT(chapters.size(), 20000U);
    EXPECT_NE(page.find(chapters), std::string::npos);
    EXPECT_EQ(page.find("\n.SH EXIT STATUS"), page.rfind("\n.SH EXIT STATUS"));
}

} // namespace
} // namespace Vostrel::rctool
