// The form in which results are written.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Settings.h"
#include "output/Listing.h"
#include "output/Sink.h"

namespace quillet::tool {

class Writer {
public:
    // Called with the amount of work done, in rows.
    using Progress = std::function<void(std::size_t)>;

    Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    virtual ~Writer();

    // Writes row by row; no more than a row is held in memory.
    virtual void Write(const Listing& listing, Sink& sink, const Progress& progress) const = 0;

    void Write(const Listing& listing, Sink& sink) const {
        Write(listing, sink, [](std::size_t) {});
    }
};

std::unique_ptr<Writer> MakeWriter(Format format);

}  // namespace quillet::tool
