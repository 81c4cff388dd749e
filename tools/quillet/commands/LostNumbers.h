// Numbers that a save would destroy.
#pragma once

#include <string>

#include "Settings.h"
#include "input/Catalog.h"

namespace quillet::tool {

// To be called with all rows read, before anything is written. Throws Failure where a number of the catalog,
// in whatever table, would be saved as a text that is not read back: the consequence, which number, and how
// many more there are. A lossy command warns of them instead.
void RefuseLostNumbers(Catalog& catalog, const std::string& consequence, const Settings& settings);

}  // namespace quillet::tool
