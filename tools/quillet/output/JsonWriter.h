// Results as JSON.
#pragma once

#include "output/Writer.h"

namespace quillet::tool {

// An array of objects, one a line.
class JsonWriter final : public Writer {
public:
    using Writer::Write;
    void Write(const Listing& listing, Sink& sink, const Progress& progress) const override;
};

}  // namespace quillet::tool
