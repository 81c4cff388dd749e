// Results for people.
#pragma once

#include <string>
#include <utility>

#include "output/Writer.h"

namespace quillet::tool {

// Aligned columns, numbers to the right, control characters made visible.
class TextWriter final : public Writer {
public:
    // Every line begins with the indent.
    explicit TextWriter(std::string indent = {}) : m_indent(std::move(indent)) {}

    using Writer::Write;
    void Write(const Listing& listing, Sink& sink, const Progress& progress) const override;

private:
    std::string m_indent;
};

}  // namespace quillet::tool
