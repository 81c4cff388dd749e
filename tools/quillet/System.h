// All that the command line asks of the operating system itself.
#pragma once

#include <string>
#include <vector>

namespace quillet::tool {

// The arguments behind the program's name, in UTF-8 where the system says so.
std::vector<std::string> ProgramArguments(int argc, char** argv);

// From now on the standard streams carry bytes as they are, and a terminal takes them as UTF-8.
void PrepareStandardStreams();

bool IsStandardOutputTerminal();
bool IsStandardErrorTerminal();

// What brings an ODBC driver that reads Access files, and one that writes them.
std::string ReadingDriverHint();
std::string WritingDriverHint();

}  // namespace quillet::tool
