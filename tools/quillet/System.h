// All that the command line asks of the operating system itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillet::tool {

// The arguments after the program's name, in UTF-8 where the system says so.
std::vector<std::string> ProgramArguments(int argc, char** argv);

// From now on the standard streams carry bytes as they are, and a terminal takes them as UTF-8.
void PrepareStandardStreams();

// Writes bytes to standard error as they are. Allocates nothing; bytes that are not taken are lost.
void WriteToStandardError(std::string_view bytes) noexcept;

bool IsStandardOutputTerminal();
bool IsStandardErrorTerminal();

// What brings an ODBC driver that reads Access files, and one that writes them.
std::string ReadingDriverHint();
std::string WritingDriverHint();

}  // namespace quillet::tool
