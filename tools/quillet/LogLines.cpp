#include "LogLines.h"

namespace quillet::tool {

namespace {

bool Contains(std::string_view line, std::string_view part) {
    return line.find(part) != std::string_view::npos;
}

}  // namespace

bool IsFault(std::string_view line) {
    // The ends are looked at too: a table may be called anything, but only these lines end so.
    const bool isTiming = line.ends_with(" [s]") &&
                          (Contains(line, "xml source extracted in ") || Contains(line, "data parsed in: "));
    const bool isChange =
        line.ends_with("'") && (Contains(line, "' created, index = ") || Contains(line, "' renamed to '"));
    return !(line.starts_with("Table '") && (isTiming || isChange));
}

bool IsInvalidFormat(std::string_view line) {
    return line == "Invalid xml database file format";
}

std::string MalformedRows(const std::string& table) {
    return "Table '" + table + "' has malformed rows";
}

}  // namespace quillet::tool
