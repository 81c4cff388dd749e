#include "input/LogLines.h"

#include <algorithm>

namespace quillet::tool {

namespace {

constexpr std::string_view Analyzer = "SQL Analyze - ";

// The analyser's own account of the query, which says nothing about what is wrong with it.
bool IsAccount(std::string_view message) {
    return message.starts_with("query '") || message == "ok" || message == "failed";
}

bool Contains(std::string_view line, std::string_view part) {
    return line.find(part) != std::string_view::npos;
}

bool IsCycle(std::string_view line) {
    return line.starts_with("Query '") && line.ends_with("' stands on itself, or on too many other queries");
}

}  // namespace

bool IsFault(std::string_view line) {
    // The ends are looked at too: a table may be called anything, but only these lines end so.
    const bool isTiming = line.ends_with(" [s]") &&
                          (Contains(line, "xml source extracted in ") || Contains(line, "data parsed in: "));
    const bool isChange =
        line.ends_with("'") && (Contains(line, "' created, index = ") || Contains(line, "' renamed to '"));
    const bool isImport = line.starts_with("Importing mdb file '") && line.ends_with("'");
    return !isImport && !(line.starts_with("Table '") && (isTiming || isChange));
}

bool IsInvalidFormat(std::string_view line) {
    return line == "Invalid xml database file format";
}

std::string MalformedRows(const std::string& table) {
    return "Table '" + table + "' has malformed rows";
}

bool IsOfQuery(std::string_view line) {
    const bool isTiming =
        line.starts_with("Query '") && line.ends_with(" [s]") && Contains(line, "' processed in ");
    return line.starts_with(Analyzer) || isTiming;
}

bool IsQueryRead(const std::vector<std::string>& lines) {
    return std::any_of(lines.begin(), lines.end(), [](std::string_view line) {
        return line.starts_with(Analyzer) && line.substr(Analyzer.size()).starts_with("query '");
    });
}

std::string QueryComplaint(const std::vector<std::string>& lines) {
    std::string complaint;
    for (const std::string_view line : lines) {
        if (line.starts_with(Analyzer) && !IsAccount(line.substr(Analyzer.size()))) {
            complaint += complaint.empty() ? line.substr(0, Analyzer.size()) : "; ";
            complaint += line.substr(Analyzer.size());
        } else if (IsCycle(line)) {
            complaint += complaint.empty() ? "" : "; ";
            complaint += line;
        }
    }
    // The analyser leaves brackets to the evaluation, which says nothing.
    return complaint.empty() ? "the brackets of the conditions don't match" : complaint;
}

}  // namespace quillet::tool
