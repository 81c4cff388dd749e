// Results as CSV.
#pragma once

#include "output/Writer.h"

namespace quillet::tool {

// RFC 4180, with a line of names.
class CsvWriter final : public Writer {
public:
    using Writer::Write;
    void Write(const Listing& listing, Sink& sink, const Progress& progress) const override;
};

}  // namespace quillet::tool
