// Text for people's eyes: measured in characters, and harmless to a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillet::tool {

// Appends text (UTF-8) with what would steer a terminal made visible: \n, \r, \t, and \u{1b} for every other
// control character and for those that turn the direction of writing or break the line.
void AppendVisible(std::string_view text, std::string& out);
std::string Visible(std::string_view text);

// The number of code points.
std::size_t CountCodePoints(std::string_view text);

// The text, or its beginning and three full stops where it has more code points than that.
std::string Shortened(std::string_view text, std::size_t codePoints);

// "1 row", "2 rows".
std::string Counted(std::size_t count, std::string_view thing);

// In apostrophes, shortened to what an error message can bear.
std::string Quoted(std::string_view text);

}  // namespace quillet::tool
