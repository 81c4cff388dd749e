// Rows that were read without a document.
#pragma once

#include <cstdint>
#include <memory>

#include "Quillet/rows/ColumnStore.h"

namespace quillet {

// The rows of one table, before it takes them.
struct ScannedRows {
    std::shared_ptr<ColumnStore> m_rows = std::make_shared<ColumnStore>();
    // How many there are, also where they were not kept.
    std::uint64_t m_count = 0;
    // How many have another number of values than the table has fields, and the number of the first of them,
    // from 1.
    std::uint64_t m_misfits = 0;
    std::uint64_t m_firstMisfit = 0;
    // How long it took to read them.
    double m_seconds = 0;
};

}  // namespace quillet
