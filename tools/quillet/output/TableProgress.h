// A bar over what is read from or written to files table by table.
#pragma once

#include <optional>
#include <string>

#include "Quillet/Db_Serializer.h"
#include "output/Progress.h"

namespace quillet::tool {

// Shows a bar as long as it lives: one that counts the tables where an Access file is read or written
// meanwhile, one that only moves elsewhere. It remembers which tables failed.
class TableProgress {
public:
    explicit TableProgress(std::string label);
    TableProgress(const TableProgress&) = delete;
    TableProgress& operator=(const TableProgress&) = delete;
    ~TableProgress();

    // The first table of an Access file that was not read or written whole; empty where there is none.
    const std::string& FailedTable() const { return m_failedTable; }

private:
    void Step(const DbSerializer::Step& step);

    std::string m_label;
    std::optional<RunningProgress> m_bar;
    bool m_isCounting = false;
    std::string m_failedTable;
    DbSerializer::StepHandler m_before;
};

}  // namespace quillet::tool
