// Field names with which a table can't be saved.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Quillet/platform/Automation.h"

class DbTableDescr;

namespace quillet {

// A field under whose safe name no row can be saved.
struct UnsavableField {
    // Its position, from 0, and that of the earlier field that has the same safe name; none where the safe
    // name itself is the fault.
    std::size_t m_field = 0;
    std::optional<std::size_t> m_same;
    // In words, with the names of both fields.
    std::string m_why;
};

// The name under which the cells of the field at a position are saved; empty, which no document accepts,
// where there is none.
const std::string& NameInFile(const DbTableDescr* descr, std::size_t position);

// Every such field, in their order. A table without rows is still saved: fields are written with their
// names as text.
std::vector<UnsavableField> UnsavableFields(const DbTableDescr& descr);

}  // namespace quillet
