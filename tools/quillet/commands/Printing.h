// Printing results on standard output.
#pragma once

#include <string>

#include "commands/RowRange.h"
#include "input/Catalog.h"
#include "output/Progress.h"
#include "output/Writer.h"

namespace quillet::tool {

void Print(const Settings& settings, const Listing& listing);

// Prints rows of a table, with a progress bar.
void PrintRows(const Settings& settings, const Table& table, const RowRange& rows);

// Writes everything, with a progress bar, and closes the sink.
void WriteWithProgress(const Writer& writer, const Listing& listing, Sink& sink, const ProgressScreen& screen,
                       const std::string& label);

}  // namespace quillet::tool
