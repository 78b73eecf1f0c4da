#include "tools/rctool/ManualChapters.h"

#include <algorithm>
#include <cctype>
#include <istream>
#include <regex>
#include <vector>

namespace Vostrel::rctool {

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '-')
            escaped += "\\-";
        else if (character == '\\')
            escaped += "\\e";
        else if ((character == '.' || character == '\'') &&
                 (escaped.empty() || escaped.back() == '\n'))
            escaped += std::string("\\&") + character;
        else
            escaped += character;
    }
    return escaped;
}

namespace {

bool StartsWith(const std::string& text, const char* start) {
    return text.rfind(start, 0) == 0;
}

std::string UpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return std::toupper(character); });
    return text;
}

/// Bold, italic, code and links. A link becomes its text.
std::string Inline(const std::string& text) {
    static const std::regex link(R"(\[([^\]]*)\]\([^)]*\))");
    static const std::regex strong(R"(\*\*([^*]+)\*\*|`([^`]+)`)");
    static const std::regex emphasis(R"(\*([^*]+)\*)");
    std::string changed = Escaped(std::regex_replace(text, link, "$1"));
    changed = std::regex_replace(changed, strong, "\\fB$1$2\\fR");
    return std::regex_replace(changed, emphasis, "\\fI$1\\fR");
}

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    const size_t last = text.find_last_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

std::vector<std::string> CellsOf(const std::string& row) {
    std::vector<std::string> cells;
    for (size_t at = 1; at < row.size();) {
        const size_t bar = std::min(row.find('|', at), row.size());
        cells.push_back(Trimmed(row.substr(at, bar - at)));
        at = bar + 1;
    }
    return cells;
}

/// Turns line after line.
class ManualWriter {
public:
    void Add(const std::string& line) {
        const bool isRow = StartsWith(line, "|");
        const bool isCode = StartsWith(line, "    ");
        if (!isRow)
            m_uiRows = 0;
        if (m_bCode && !isCode)
            EndCode();
        if (line.empty())
            m_bParagraph = false;
        else if (isRow)
            AddRow(line);
        else if (isCode && !m_bParagraph)
            AddCode(line);
        else if (StartsWith(line, "#"))
            AddHeading(line);
        else
            AddText(line);
    }

    std::string Finish() {
        if (m_bCode)
            EndCode();
        return m_manual;
    }

private:
    void AddHeading(const std::string& line) {
        const size_t level = line.find_first_not_of('#');
        const std::string title = Trimmed(line.substr(level));
        if (level == 1)
            m_manual += ".SH OVERVIEW\n";
        else if (level == 2)
            m_manual += ".SH " + Escaped(UpperCase(title)) + "\n";
        else
            m_manual += ".SS " + Inline(title) + "\n";
    }

    /// The first two rows are the names of the columns and a line. The names are given where there
    /// is more than one column to tell apart.
    void AddRow(const std::string& line) {
        const auto cells = CellsOf(line);
        if (m_uiRows == 0)
            m_vColumns = cells;
        if (m_uiRows++ < 2)
            return;
        const bool isNamed = cells.size() > 2;
        m_manual += ".TP\n" + Inline(cells.front()) + "\n";
        for (size_t i = 1; i < cells.size(); ++i)
            m_manual += (isNamed ? Inline(m_vColumns.at(i)) + ": " : "") + Inline(cells[i]) +
                        (isNamed ? "\n.br\n" : "\n");
    }

    void AddCode(const std::string& line) {
        if (!m_bCode)
            m_manual += ".PP\n.nf\n.RS\n";
        m_bCode = true;
        m_manual += Escaped(line.substr(4)) + "\n";
    }

    void EndCode() {
        m_manual += ".RE\n.fi\n";
        m_bCode = false;
    }

    void AddText(const std::string& line) {
        static const std::regex item(R"((\d+)\. (.*))");
        std::smatch match;
        if (std::regex_match(line, match, item))
            m_manual += ".IP " + match[1].str() + ". 4\n" + Inline(match[2]) + "\n";
        else if (StartsWith(line, "- "))
            m_manual += ".IP \\(bu 4\n" + Inline(line.substr(2)) + "\n";
        else
            m_manual += (m_bParagraph ? "" : ".PP\n") + Inline(Trimmed(line)) + "\n";
        m_bParagraph = true;
    }

    std::string m_manual;
    size_t m_uiRows = 0;                 ///< of the table so far
    std::vector<std::string> m_vColumns; ///< the names of its columns
    bool m_bCode = false;                ///< amid lines of code
    bool m_bParagraph = false;           ///< amid a paragraph
};

} // namespace

std::string ToManual(std::istream& markdown) {
    ManualWriter writer;
    for (std::string line; std::getline(markdown, line);)
        writer.Add(line);
    return writer.Finish();
}

} // namespace Vostrel::rctool
