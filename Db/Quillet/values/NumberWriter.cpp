#include "Quillet/values/NumberWriter.h"

#include "Quillet/base/CComVariant.h"

namespace quillet {

namespace {

char* WriteVariant(const CComVariant& number, char* text) {
    char written[platform::MaxNumberText];
    const std::size_t length = platform::NumberToText(number, written);
    return text + std::string_view(written, length).copy(text, length);
}

}  // namespace

NumberWriter::NumberWriter() {
    // "0", the separator and "5".
    constexpr double Half = 0.5;
    char text[platform::MaxNumberText];
    const char* const end = WriteAny(Half, text);
    m_separator.assign(text + 1, static_cast<std::size_t>(end - text) - 2);
}

char* NumberWriter::WriteAny(double number, char* text) {
    return WriteVariant(CComVariant(number), text);
}

char* NumberWriter::WriteAny(float number, char* text) {
    return WriteVariant(CComVariant(number), text);
}

}  // namespace quillet
