// The options of every command.
#pragma once

namespace quillet::tool {

enum class Format { Text, Csv, Json };

struct Settings {
    Format m_format = Format::Text;
    // Tables are extracted from the file one after the other instead of reading it as a whole.
    bool m_sequential = false;
    // The database's log lines go to standard error.
    bool m_log = false;
    // Commands that write wait for a file that another program is changing.
    bool m_waits = true;
    // They go on even if numbers are lost.
    bool m_lossy = false;
};

}  // namespace quillet::tool
