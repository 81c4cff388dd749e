// Everything that the command line needs from the operating system directly.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillet::tool {

// The arguments after the program's name, in UTF-8 where the system tells their encoding.
std::vector<std::string> ProgramArguments(int argc, char** argv);

// From now on the standard streams pass bytes unchanged, and a terminal treats them as UTF-8.
void PrepareStandardStreams();

// Writes bytes to standard error unchanged. Allocates nothing; bytes that can't be written are lost.
void WriteToStandardError(std::string_view bytes) noexcept;

bool IsStandardOutputTerminal();
bool IsStandardErrorTerminal();

// Where to get an ODBC driver that reads Access files, and one that writes them.
std::string ReadingDriverHint();
std::string WritingDriverHint();

}  // namespace quillet::tool
