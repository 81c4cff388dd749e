// A cell for the writers.
#pragma once

#include <string>

#include "Quillet/base/CComVariant.h"

namespace quillet::tool {

struct Value {
    enum class Kind { Null, Boolean, Number, Text, Binary };

    Kind m_kind = Kind::Null;
    // UTF-8: a number in the given style, "true" or "false", base64 without line breaks; empty for null.
    std::string m_text;

    static Value OfText(std::string text) { return {Kind::Text, std::move(text)}; }
    static Value OfBoolean(bool value) { return {Kind::Boolean, value ? "true" : "false"}; }
    static Value OfCount(std::size_t count) { return {Kind::Number, std::to_string(count)}; }
};

// Numbers are shown to people with the decimal separator of their locale and to programs with a point.
enum class NumberStyle { Locale, Point };

// Reads a cell into value, whose memory is reused. An empty text in a column of another type is the file's
// form of "no value": null.
void ReadValue(const CComVariant& cell, bool isTextColumn, NumberStyle style, Value& value);

}  // namespace quillet::tool
