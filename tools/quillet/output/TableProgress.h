// A progress bar for files that are read or written table by table.
#pragma once

#include <optional>
#include <string>

#include "Quillet/Db_Serializer.h"
#include "output/Progress.h"

namespace quillet::tool {

// Shows a bar during its lifetime: it counts the tables while an Access file is read or written, and only
// moves otherwise. It records which tables failed.
class TableProgress {
public:
    explicit TableProgress(std::string label);
    TableProgress(const TableProgress&) = delete;
    TableProgress& operator=(const TableProgress&) = delete;
    ~TableProgress();

    // The first table of an Access file that was not read or written completely; empty if there is none.
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
