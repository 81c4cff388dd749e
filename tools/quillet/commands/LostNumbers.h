// Numbers that a save would destroy.
#pragma once

#include <string>

#include "Settings.h"
#include "input/Catalog.h"

namespace quillet::tool {

// Call it when all rows are read and nothing is written yet. Throws Failure if a number in any table of the
// catalog would be saved as a text that can't be read back: the consequence, which number, and how many more
// there are. A lossy command warns of them instead.
void RefuseLostNumbers(Catalog& catalog, const std::string& consequence, const Settings& settings);

}  // namespace quillet::tool
