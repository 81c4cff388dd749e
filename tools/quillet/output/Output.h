// The forms in which results are written.
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

// For people: aligned columns, numbers to the right, control characters made visible.
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

// Reports in one line on standard output what a command did; with another format than text, prints nothing.
// Create it before the last step of the command, so that no memory is needed after that step.
class Report {
public:
    // A warning, if there is one, goes to standard error.
    Report(const Settings& settings, const std::string& line, const std::string& warning = {});

    // Prints it. Throws Failure if writing to standard output fails. No further call is allowed.
    void Print();

private:
    std::string m_warning;
    StandardOutput m_output;
};

}  // namespace quillet::tool
