#include "Quillet/document/CatalogScanner.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "Quillet/base/Rollback.h"
#include "Quillet/platform/Clock.h"
#include "Quillet/platform/File.h"
#include "Quillet/rows/RowScanner.h"
#include "Quillet/xml/Document.h"
#include "Quillet/xml/Face.h"

namespace quillet {

namespace {

constexpr std::size_t WindowBytes = std::size_t(1) << 20;
constexpr std::string_view TagBlanks = " \t\r\n";
// Far below the number of elements that documents are limited to.
constexpr std::size_t MostRows = 50'000'000;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

// The lists are children of the second child of the database.
constexpr std::size_t BodyPlace = 1;
constexpr std::size_t StructurePlace = 0;
constexpr std::size_t RowsPlace = 1;
constexpr std::size_t DepthOfLists = 3;

std::size_t BlankLength(std::string_view text) {
    return std::min(text.find_first_not_of(TagBlanks), text.size());
}

}  // namespace

std::size_t CatalogScanner::TagLength(std::string_view text) {
    char quote = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char unit = text[i];
        if (quote != 0) {
            quote = unit == quote ? char(0) : quote;
        } else if (unit == '"' || unit == '\'') {
            quote = unit;
        } else if (unit == '>') {
            return i + 1;
        }
    }
    return std::string_view::npos;
}

void CatalogScanner::KeepFirstRows(const CString& table, std::uint64_t rows) {
    m_wanted = Lowered(table);
    m_wantedRows = rows;
}

std::unique_ptr<DbTableDescr> CatalogScanner::TakeStructure() {
    return std::move(m_structures[*m_wanted]);
}

bool CatalogScanner::Scan() {
    m_buffer.resize(WindowBytes + 1);
    if (!ReadMore()) {
        return false;
    }
    if (Ahead().starts_with(ByteOrderMark)) {
        m_rest += ByteOrderMark;
        m_at += ByteOrderMark.size();
    }
    for (;;) {
        const std::size_t blanks = BlankLength(Ahead());
        m_rest += Ahead().substr(0, blanks);
        m_at += blanks;
        if (!Ahead().empty()) {
            if (!TakeTag()) {
                return false;
            }
        } else if (!ReadMore()) {
            break;
        }
    }
    return !m_file.HasFailed() && m_children.size() == 1 && m_children.front() == 1;
}

bool CatalogScanner::ReadMore() {
    const std::string_view ahead = Ahead();
    std::memmove(m_buffer.data(), ahead.data(), ahead.size());
    m_have = ahead.size();
    m_at = 0;
    const std::size_t before = m_have;
    while (m_have < WindowBytes) {
        const std::size_t read = m_file.Read(m_buffer.data() + m_have, WindowBytes - m_have);
        if (read == 0) {
            break;
        }
        m_have += read;
    }
    m_buffer[m_have] = 0;
    return m_have > before;
}

// What is ahead is no blank.
bool CatalogScanner::TakeTag() {
    std::size_t length = TagLength(Ahead());
    while (length == std::string_view::npos) {
        if (!ReadMore()) {
            return false;
        }
        length = TagLength(Ahead());
    }
    const std::string_view tag = Ahead().substr(0, length);
    if (tag.size() < 3 || tag.front() != '<' || tag[1] == '!') {
        return false;
    }
    if (tag[1] == '?') {
        if (!IsKnownDeclaration(tag)) {
            return false;
        }
        m_rest += tag;
        m_at += length;
        return true;
    }
    m_rest += tag;
    m_at += length;
    if (tag[1] == '/') {
        return EndElement();
    }
    return StartElement(tag, tag[tag.size() - 2] == '/');
}

// That of a document in UTF-8, at its beginning.
bool CatalogScanner::IsKnownDeclaration(std::string_view tag) const {
    if (!tag.starts_with("<?xml ") || !tag.ends_with("?>") || !(m_rest.empty() || m_rest == ByteOrderMark)) {
        return false;
    }
    const std::size_t place = tag.find("encoding");
    const std::string_view encoding = tag.substr(std::min(place, tag.size()));
    return encoding.empty() || encoding.starts_with("encoding=\"UTF-8\"") ||
           encoding.starts_with("encoding=\"utf-8\"");
}

bool CatalogScanner::IsIn(std::size_t list) const {
    // The counts include the open elements themselves.
    return m_children.size() == DepthOfLists + 1 && m_children[1] == BodyPlace + 1 &&
           m_children[2] == list + 1;
}

bool CatalogScanner::StartElement(std::string_view tag, bool isEmpty) {
    const bool isTable = IsIn(RowsPlace);
    const std::size_t place = m_children.back()++;
    if (isEmpty) {
        return true;
    }
    m_children.push_back(0);
    if (IsIn(StructurePlace)) {
        m_structureStart = m_rest.size() - tag.size();
    }
    if (!isTable) {
        return true;
    }
    const std::string copy(tag);
    ScannedRows& rows = m_tables[place];
    const double start = platform::CounterSeconds();
    const bool isRead = ReadRows(copy, rows);
    rows.m_seconds = platform::CounterSeconds() - start;
    return isRead;
}

bool CatalogScanner::EndElement() {
    if (m_children.size() == 1) {
        return false;
    }
    const bool isStructure = IsIn(StructurePlace);
    m_children.pop_back();
    return !isStructure || ReadStructure(std::string_view(m_rest).substr(m_structureStart));
}

bool CatalogScanner::ReadStructure(std::string_view text) {
    xml::Document document;
    if (!document.LoadText(text)) {
        return false;
    }
    // These structures are nobody's, so that they must not count as changes.
    const Rollback counter([count = DbItem::m_changeCounter] { DbItem::m_changeCounter = count; });
    xml::Face face;
    for (xml::Node table = document.Root().FirstChild().FirstChild(); !table.IsNull();
         table = table.NextSibling()) {
        const std::optional<std::string> name = table.FirstAttributeValue();
        if (!name) {
            return false;
        }
        std::unique_ptr<DbTableDescr>& descr = m_structures[Lowered(CString(*name))];
        if (descr != nullptr) {
            return false;
        }
        descr = std::make_unique<DbTableDescr>(nullptr);
        // What is malformed is said when the structure is registered.
        m_hasMalformedStructure = !descr->Load(face.Show(table)) || m_hasMalformedStructure;
    }
    return true;
}

bool CatalogScanner::ReadRows(std::string_view tag, ScannedRows& rows) {
    std::string name;
    if (!xml::FirstAttributeOfText(tag, name)) {
        return false;
    }
    const auto structure = m_structures.find(Lowered(CString(name)));
    if (structure == m_structures.end()) {
        return false;
    }
    const bool isWanted = m_wanted == Lowered(CString(name));
    std::optional<RowScanner> scanner;
    for (;;) {
        const bool isFirst = isWanted && rows.m_count < m_wantedRows;
        if (!scanner || !(isFirst || m_rowsAre == Rows::Kept)) {
            rows.m_rows = std::make_shared<ColumnStore>();
            scanner.emplace(*structure->second, *rows.m_rows);
        }
        if (isFirst) {
            m_firstRows.m_rows = rows.m_rows;
        }
        const std::uint64_t before = scanner->Rows();
        const std::uint64_t misfitsBefore = scanner->Misfits();
        RowScanner::Stop stop = RowScanner::Stop::NoRow;
        m_at += scanner->Read(Ahead(), stop);
        if (rows.m_misfits == 0 && scanner->Misfits() > 0) {
            rows.m_firstMisfit = rows.m_count - before + scanner->FirstMisfit();
        }
        rows.m_count += scanner->Rows() - before;
        rows.m_misfits += scanner->Misfits() - misfitsBefore;
        const std::size_t blanks = BlankLength(Ahead());
        const bool isAtEnd = m_have - m_at - blanks <= RowScanner::StartBytes;
        if (stop == RowScanner::Stop::Unknown) {
            return false;
        }
        if (stop == RowScanner::Stop::NoRow && !isAtEnd) {
            break;
        }
        if (!ReadMore()) {
            // Whatever is left is looked at as markup.
            break;
        }
    }
    m_rows += rows.m_count;
    return m_rows <= MostRows;
}

}  // namespace quillet
