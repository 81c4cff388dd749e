// Whole databases between files and records.
#pragma once

#include <cstddef>
#include <functional>

#include "Quillet/base/CString.h"
#include "Quillet/dbaccess/DBACCESS_ALL.h"

// A path whose last three characters are "xml", whatever their case, is that of a catalog document; any other
// is that of an Access file.
class QUILLET_API DbSerializer {
public:
    // The progress of Load and Save of an Access file.
    struct Step {
        // How many tables are done, and how many there are.
        std::size_t m_done;
        std::size_t m_count;
        // The last of them, and whether all of it was read or written.
        const quillet::CString& m_table;
        bool m_isWhole;
    };
    using StepHandler = std::function<void(const Step&)>;

    // Replaces the handler that is called after each table and returns the previous one. There is one for the
    // process, none at first; it must not throw.
    static StepHandler SetStepHandler(StepHandler handler);

    // Replaces all by the tables of the file. An Access file: the user's tables in the order of its catalog;
    // a table that can't be read has the records read so far, and the result is false. A file that can't be
    // opened has no tables, and the result is true: DBACCESS::IsOpen tells the difference. A document: all
    // tables, also the header and the properties; one that can't be opened is shown in a message box, and the
    // result is false.
    static bool Load(const quillet::CString& path, DBACCESS_ALL& all);

    // Writes every table to the file. Always true. An Access file must exist; each table is created there
    // where it is absent, and its rows are replaced; a failure is shown in a message box, and the tables
    // after it are still written. A document is written anew, with a header and properties if the tables have
    // none; if it can't be written, the file is unchanged.
    static bool Save(const quillet::CString& path, const DBACCESS_ALL& all);

    // Copies the first table of the name, with regard to case. Where there is none, the records of rows go
    // and the result is false.
    static bool CopyTableFromDatabase(const DBACCESS_ALL& all, const quillet::CString& table,
                                      DBACCESS_VECTOR& rows);
    // Replaces the first table of the name, with regard to case, or appends one. Always true.
    static bool CopyTableToDatabase(DBACCESS_ALL& all, const quillet::CString& table,
                                    const DBACCESS_VECTOR& rows);
};
