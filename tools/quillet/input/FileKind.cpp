#include "input/FileKind.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Quillet/platform/File.h"
#include "input/AccessCatalog.h"
#include "input/Catalog.h"

namespace quillet::tool {

namespace {

using namespace std::string_view_literals;

// The name of the engine follows four bytes.
bool IsAccess(std::string_view bytes) {
    constexpr std::size_t PlaceOfEngine = 4;
    const std::string_view engine = bytes.substr(std::min(PlaceOfEngine, bytes.size()));
    return engine.starts_with("Standard Jet DB") || engine.starts_with("Standard ACE DB");
}

bool IsXml(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE<"sv) || bytes.starts_with("\xFE\xFF\0<"sv)) {
        return true;
    }
    bytes.remove_prefix(bytes.starts_with(Utf8Mark) ? Utf8Mark.size() : 0);
    const std::size_t begin = bytes.find_first_not_of(" \t\r\n");
    return begin != std::string_view::npos && bytes[begin] == '<';
}

}  // namespace

void RefuseOtherKind(const std::string& path) {
    std::array<char, 64> buffer;
    const auto file = platform::ReadableFile::Open(path);
    const std::string_view bytes(buffer.data(), file ? file->Read(buffer.data(), buffer.size()) : 0);
    if (HasXmlEnding(path) && IsAccess(bytes)) {
        throw Failure(path + ": an Access file, though its name ends in .xml: call it .mdb");
    }
    if (HasAccessEnding(path) && IsXml(bytes)) {
        throw Failure(path + ": an XML file, though its name ends in .mdb: call it .xml");
    }
}

}  // namespace quillet::tool
