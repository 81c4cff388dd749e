// Code pages by ICU's converters.
#include "Quillet/platform/CodePage.h"

#include <unicode/ucnv.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "Quillet/platform/posix/IcuMemory.h"

namespace quillet::platform {
namespace {

using Converter = std::unique_ptr<UConverter, void (*)(UConverter*)>;

Converter OpenNamed(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = WithMemory([&] { return ucnv_open(name.c_str(), &status); });
    RequireMemory(status);
    return {U_FAILURE(status) ? nullptr : converter, ucnv_close};
}

// Null if ICU has no converter of that number.
Converter OpenConverter(unsigned codePage) {
    RequireMemory();
    Converter converter = OpenNamed("windows-" + std::to_string(codePage));
    return converter ? std::move(converter) : OpenNamed("ibm-" + std::to_string(codePage));
}

}  // namespace

eCodePageKind KindOfCodePage(unsigned codePage) {
    const Converter converter = OpenConverter(codePage);
    if (!converter) {
        return eCodePageKind::Unknown;
    }
    // The size that a converter states is for the way back, so its type has to tell.
    return ucnv_getType(converter.get()) == UCNV_SBCS ? eCodePageKind::SingleByte : eCodePageKind::MultiByte;
}

void AppendDecoded(unsigned codePage, std::string_view bytes, WideString& text) {
    const Converter converter = OpenConverter(codePage);
    if (!converter) {
        throw std::invalid_argument("unknown code page");
    }
    const std::size_t start = text.size();
    // No byte of these encodings gives more than one unit.
    text.resize(start + bytes.size() + 1);
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_toUChars(converter.get(), text.data() + start, static_cast<std::int32_t>(text.size() - start),
                      bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
    RequireMemory(status);
    text.resize(start + (U_FAILURE(status) ? 0 : static_cast<std::size_t>(length)));
}

}  // namespace quillet::platform
