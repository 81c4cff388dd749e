#include "commands/Printing.h"

namespace quillet::tool {

void Print(const Settings& settings, const Listing& listing) {
    StandardOutput output;
    MakeWriter(settings.m_format)->Write(listing, output);
    output.Close();
}

void PrintRows(const Settings& settings, const Table& table, const RowRange& rows) {
    const TableListing listing(*table.m_descr, *table.m_data, rows.m_offset, rows.m_limit);
    StandardOutput output;
    WriteWithProgress(*MakeWriter(settings.m_format), listing, output, ScreenBesideStandardOutput(),
                      "Showing " + table.m_name);
}

void WriteWithProgress(const Writer& writer, const Listing& listing, Sink& sink, const ProgressScreen& screen,
                       const std::string& label) {
    {
        RunningProgress bar(screen, label, listing.CountRows());
        writer.Write(listing, sink, [&](std::size_t done) { bar.Set(done); });
    }
    sink.Close();
}

}  // namespace quillet::tool
