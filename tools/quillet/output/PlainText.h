// Text for people: measured in characters, and safe for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillet::tool {

// Appends text (UTF-8) with control characters escaped: \n, \r, \t, and the form \u{1b} for every other one
// and for those that change the writing direction or break the line.
void AppendVisible(std::string_view text, std::string& out);
std::string Visible(std::string_view text);

// The number of code points.
std::size_t CountCodePoints(std::string_view text);

// The text, or its beginning and three full stops if it has more code points than that.
std::string Shortened(std::string_view text, std::size_t codePoints);

// "1 row", "2 rows".
std::string Counted(std::size_t count, std::string_view thing);

// In apostrophes, shortened for error messages.
std::string Quoted(std::string_view text);

}  // namespace quillet::tool
