#include "Quillet/document/CountRows.h"

#include <initializer_list>
#include <set>
#include <string>

#include "Quillet/document/CatalogScanner.h"
#include "Quillet/platform/File.h"
#include "Quillet/xml/Document.h"

namespace quillet {

namespace {

// Whether the element has exactly the children of these names.
bool HasChildren(const xml::Node& element, std::initializer_list<const char*> names) {
    xml::Node child = element.IsNull() ? element : element.FirstChild();
    for (const char* const name : names) {
        if (child.IsNull() || child.Name() != name) {
            return false;
        }
        child = child.NextSibling();
    }
    return child.IsNull();
}

CString LoweredNameOf(const xml::Node& table) {
    return Lowered(CString(table.FirstAttributeValue().value_or("")));
}

// Calls take for the lowered names of the tables in a list, as long as it returns true; whether it always
// did.
template <typename Take>
bool ForEachTable(const xml::Node& list, Take take) {
    xml::Node table = list.FirstChild();
    while (!table.IsNull() && take(LoweredNameOf(table))) {
        table = table.NextSibling();
    }
    return table.IsNull();
}

// The root, after a declaration.
xml::Node RootOf(const xml::Document& document) {
    xml::Node node = document.Root().FirstChild();
    while (!node.IsNull() && !node.NextSibling().IsNull()) {
        node = node.NextSibling();
    }
    return node;
}

}  // namespace

std::optional<std::map<CString, std::uint64_t>> CountRows(const CString& path) {
    const std::unique_ptr<platform::ReadableFile> file =
        platform::IsRegularFile(path.ToUtf8()) ? platform::ReadableFile::Open(path.ToUtf8()) : nullptr;
    if (file == nullptr) {
        return std::nullopt;
    }
    CatalogScanner scanner(*file, CatalogScanner::Rows::Counted);
    return CountRows(scanner);
}

std::optional<std::map<CString, std::uint64_t>> CountRows(CatalogScanner& scanner) {
    xml::Document rest;
    if (!scanner.Scan() || scanner.HasMalformedStructure() || !rest.LoadText(scanner.Rest())) {
        return std::nullopt;
    }
    const xml::Node database = RootOf(rest);
    if (database.IsNull() || database.Name() != "database" || !HasChildren(database, {"header", "body"})) {
        return std::nullopt;
    }
    const xml::Node header = database.FirstChild();
    const xml::Node body = header.NextSibling();
    if (!HasChildren(header, {"structure", "data"}) || !HasChildren(body, {"structure", "data"})) {
        return std::nullopt;
    }
    const xml::Node structure = body.FirstChild();
    std::set<CString> names;
    std::map<CString, std::uint64_t> counts;
    if (!ForEachTable(header.FirstChild(), [&](const CString& name) { return names.insert(name).second; }) ||
        !ForEachTable(structure, [&](const CString& name) {
            return names.count(name) == 0 && counts.emplace(name, 0).second;
        })) {
        return std::nullopt;
    }
    names.clear();
    std::size_t place = 0;
    for (xml::Node table = structure.NextSibling().FirstChild(); !table.IsNull();
         table = table.NextSibling(), ++place) {
        const CString name = LoweredNameOf(table);
        const auto rows = scanner.Tables().find(place);
        if (counts.count(name) == 0 || !names.insert(name).second || !table.FirstChild().IsNull()) {
            return std::nullopt;
        }
        if (rows != scanner.Tables().end()) {
            if (rows->second.m_misfits > 0) {
                return std::nullopt;
            }
            counts[name] = rows->second.m_count;
        }
    }
    return counts;
}

}  // namespace quillet
