#include "output/Sink.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "Failure.h"

namespace quillet::tool {

namespace {

constexpr std::size_t BlockSize = std::size_t{64} * 1024;

[[noreturn]] void FailOnStandardOutput(int error) {
    throw Failure("standard output: " + std::generic_category().message(error));
}

}  // namespace

Sink::~Sink() = default;

void Sink::Write(std::string_view bytes) {
    m_block += bytes;
    if (m_block.size() >= BlockSize) {
        Send(m_block);
        m_block.clear();
    }
}

void Sink::Close() {
    Send(m_block);
    m_block.clear();
    Finish();
}

void StandardOutput::Send(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) {
        FailOnStandardOutput(errno);
    }
}

void StandardOutput::Finish() {
    if (std::fflush(stdout) != 0) {
        FailOnStandardOutput(errno);
    }
}

FileOutput::FileOutput(const std::string& path) : m_path(path) {
    std::string why;
    m_file = platform::AtomicFile::Create(path, &why);
    if (!m_file) {
        throw Failure(path + ": " + why);
    }
}

void FileOutput::Send(std::string_view bytes) {
    std::string why;
    if (!m_file->Write(bytes, &why)) {
        throw Failure(m_path + ": " + why);
    }
}

void FileOutput::Finish() {
    std::string why;
    if (!m_file->Commit(&why)) {
        throw Failure(m_path + ": " + why);
    }
}

void RefuseExisting(const std::string& path) {
    if (platform::PathExists(path)) {
        throw Failure(path + ": already there; --replace overwrites it");
    }
}

}  // namespace quillet::tool
