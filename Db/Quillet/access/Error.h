// What is wrong with an Access file, and where.
#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Quillet/access/Bytes.h"

namespace quillet::access {

// A place in a file, as far as it is known.
struct Place {
    // The table that was read, in UTF-8.
    std::string m_table;
    std::optional<PageNumber> m_page;
    // From the page's first byte.
    std::optional<std::size_t> m_offset;
};

// Thrown by value within this layer and to those who use it.
class Error : public std::runtime_error {
public:
    enum eKind {
        // No Access file at all.
        NotAccess,
        // An Access file, or one of its kin, that is not read.
        Refused,
        // The file contradicts itself.
        Damaged,
        // The system could not read.
        Unreadable,
    };

    // The text names the fault without its place.
    Error(eKind kind, const std::string& text, const Place& place = {});

    eKind Kind() const { return m_kind; }
    const std::string& Text() const { return m_text; }
    const Place& Where() const { return m_place; }

    // The same error, its table named.
    Error InTable(const std::string& table) const;

private:
    eKind m_kind;
    std::string m_text;
    Place m_place;
};

inline Error DamagedPage(PageNumber page, const std::string& text) {
    return {Error::Damaged, text, {"", page, std::nullopt}};
}

inline Error DamagedPlace(PageNumber page, std::size_t offset, const std::string& text) {
    return {Error::Damaged, text, {"", page, offset}};
}

// What was found damaged while reading went on. Keeps the first reports and counts all, so a file that is
// nothing but damage costs no memory.
class DamageLog {
public:
    void Add(const Error& error);

    std::size_t Count() const { return m_count; }
    const std::vector<Error>& First() const { return m_first; }

private:
    static constexpr std::size_t MostKept = 100;

    std::size_t m_count = 0;
    std::vector<Error> m_first;
};

}  // namespace quillet::access
