#pragma once

#include <iosfwd>
#include <string>

namespace Vostrel::rctool {

/// Text as the formatter of manual pages wants it: no backslashes, no leading dots, hyphens that
/// can be copied.
std::string Escaped(const std::string& text);

/// The chapters of a page in Markdown as sections of a manual page. It knows what our pages use:
/// headings, paragraphs, numbered lists, tables, indented code, bold, italic, code and links.
std::string ToManual(std::istream& markdown);

} // namespace Vostrel::rctool
