// A file in memory, as files read at any position go, whose reads can be counted and made to fail.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/platform/RandomAccessFile.h"

namespace quillet::test {

class MemoryFile : public platform::RandomAccessFile {
public:
    // What a file does, also after its owner has taken it.
    struct Plan {
        int m_reads = 0;
        // The read that fails, the first being 1; 0 for none.
        int m_failing = 0;
        // Where each read began.
        std::vector<std::uint64_t> m_positions;
    };

    explicit MemoryFile(std::string bytes, std::shared_ptr<Plan> plan = std::make_shared<Plan>())
        : m_bytes(std::move(bytes)), m_plan(std::move(plan)) {}

    std::optional<std::size_t> ReadAt(std::uint64_t position, std::span<std::uint8_t> buffer,
                                      std::string* why) override {
        m_plan->m_positions.push_back(position);
        if (++m_plan->m_reads == m_plan->m_failing) {
            *why = "the disk is broken";
            return std::nullopt;
        }
        const std::size_t start = static_cast<std::size_t>(std::min<std::uint64_t>(position, m_bytes.size()));
        const std::size_t count = std::min(buffer.size(), m_bytes.size() - start);
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(start), count, buffer.begin());
        return count;
    }

    std::optional<std::uint64_t> Size(std::string*) const override { return m_bytes.size(); }

private:
    const std::string m_bytes;
    const std::shared_ptr<Plan> m_plan;
};

}  // namespace quillet::test
