// How commands print on standard output what they found.
#pragma once

#include <string>

#include "commands/RowRange.h"
#include "input/Catalog.h"
#include "output/Output.h"
#include "output/Progress.h"

namespace quillet::tool {

void Print(const Settings& settings, const Listing& listing);

// Prints rows of a table under a bar.
void PrintRows(const Settings& settings, const Table& table, const RowRange& rows);

// Writes everything under a bar and closes the sink.
void WriteWithProgress(const Writer& writer, const Listing& listing, Sink& sink, const ProgressScreen& screen,
                       const std::string& label);

}  // namespace quillet::tool
