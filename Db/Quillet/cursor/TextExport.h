// A table as text, with its values side by side.
#pragma once

#include <string>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"

namespace quillet {

// A line with the names of the fields and a line for each row in the table's own order, with "| " between the
// values. What has no text form is left out, line feeds become blanks.
WideString ExportedText(const DbTableDescr& descr, DbTableData& data);

// As many bytes of the text, as UTF-16 in little-endian order, as it has characters: its first half.
std::string FirstHalf(const WideString& text);

}  // namespace quillet
