// The fields of a table by their names as a query text has them.
#pragma once

#include <optional>
#include <unordered_map>

#include "Quillet/base/CString.h"

class DbTableDescr;

namespace quillet {

// The analyser puts blanks around operators, even in square brackets, and so alters the name of a field that
// holds one. A name that no field has is therefore looked up a second time, among the names of the fields
// with the same blanks put in; it is found where exactly one fits.
//
// Lives no longer than the structure, which must not change meanwhile.
class QueryFields {
public:
    explicit QueryFields(const DbTableDescr& descr) : m_descr(descr) {}

    bool AreOf(const DbTableDescr& descr) const { return &m_descr == &descr; }

    // The position of the field, with or without brackets around its name; -1 for an unknown name.
    int Find(const CString& written) const;
    // The side of a condition: the name of its field in brackets where blanks altered it, and else as it is
    // written.
    CString Side(const CString& written) const;

private:
    int FindAltered(const CString& written) const;
    void Note(const CString& spaced, int field) const;

    const DbTableDescr& m_descr;
    // By their altered and lowered names, made when one is first asked for.
    mutable std::optional<std::unordered_map<CString, int>> m_altered;
};

}  // namespace quillet
