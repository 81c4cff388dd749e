// The kind of a file by its first bytes, whatever its name.
#pragma once

#include <string>
#include <string_view>

namespace quillet::tool {

// The byte-order mark of UTF-8.
constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";

// Throws Failure for an Access file whose name ends in .xml, and for an XML file whose name ends in .mdb: by
// its name it would be taken for a damaged file of the other kind. A file that can't be read is ignored.
void RefuseOtherKind(const std::string& path);

}  // namespace quillet::tool
