// The lines of a database's log.
#pragma once

#include <string>
#include <vector>

#include "Quillet/Db_Database.h"

namespace quillet::test {

// Empties the log.
inline std::vector<std::string> TakeLog(DbDatabase& database) {
    std::vector<CString> lines;
    database.GetError(lines);
    std::vector<std::string> texts;
    for (const CString& line : lines) {
        texts.push_back(line.ToUtf8());
    }
    return texts;
}

}  // namespace quillet::test
