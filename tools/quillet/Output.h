// The forms in which results are written.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Listing.h"
#include "Settings.h"
#include "Sink.h"

namespace quillet::tool {

class Writer {
public:
    // Is told how many rows' worth of work is done.
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

// For people: columns aligned, numbers to the right, control characters made visible.
class TextWriter final : public Writer {
public:
    // Every line begins with the indent.
    explicit TextWriter(std::string indent = {}) : m_indent(std::move(indent)) {}

    using Writer::Write;
    void Write(const Listing& listing, Sink& sink, const Progress& progress) const override;

private:
    std::string m_indent;
};

// RFC 4180, with a line of names.
class CsvWriter final : public Writer {
public:
    using Writer::Write;
    void Write(const Listing& listing, Sink& sink, const Progress& progress) const override;
};

// An array of objects, one a line.
class JsonWriter final : public Writer {
public:
    using Writer::Write;
    void Write(const Listing& listing, Sink& sink, const Progress& progress) const override;
};

// Tells people in a line on standard output what a command did; programs that asked for another format see
// nothing.
void Say(const Settings& settings, const std::string& line);

}  // namespace quillet::tool
