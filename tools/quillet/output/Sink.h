// Targets of output: standard output, or a file that is replaced in one step.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Quillet/platform/File.h"

namespace quillet::tool {

// Gathers what is written into blocks. Nothing counts as written before Close.
class Sink {
public:
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink();

    // Throws Failure if writing fails.
    void Write(std::string_view bytes);
    // Writes the rest and ends the output. Throws Failure. Afterwards only destruction is allowed.
    void Close();

private:
    virtual void Send(std::string_view bytes) = 0;
    virtual void Finish() = 0;

    std::string m_block;
};

class StandardOutput final : public Sink {
private:
    void Send(std::string_view bytes) override;
    void Finish() override;
};

// The file is unchanged until Close.
class FileOutput final : public Sink {
public:
    // Throws Failure if the file can't be written.
    explicit FileOutput(const std::string& path);

private:
    void Send(std::string_view bytes) override;
    void Finish() override;

    std::string m_path;
    std::unique_ptr<platform::AtomicFile> m_file;
};

// Throws Failure if the file already exists, and names the option that overwrites it.
void RefuseExisting(const std::string& path);

}  // namespace quillet::tool
