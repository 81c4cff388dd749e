#include "Quillet/document/DocumentReader.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "Quillet/Db_Exception.h"
#include "Quillet/Db_TableData.h"
#include "Quillet/document/CatalogScanner.h"
#include "Quillet/document/CountRows.h"
#include "Quillet/document/Omissions.h"
#include "Quillet/platform/Clock.h"
#include "Quillet/platform/File.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/rows/RowScanner.h"
#include "Quillet/xml/Document.h"
#include "Quillet/xml/Face.h"

namespace quillet {

namespace {

// The node, or the exception that a walk into nothing raises.
xml::Node Required(xml::Node node) {
    if (node.IsNull()) {
        throw new DbException("Invalid pointer");
    }
    return node;
}

bool IsDatabase(const xml::Node& node) {
    return CString(node.Name()).CompareNoCase("database") == 0;
}

// Null for a pipe, which could not be read a second time.
std::unique_ptr<platform::ReadableFile> OpenRegular(const CString& path) {
    return platform::IsRegularFile(path.ToUtf8()) ? platform::ReadableFile::Open(path.ToUtf8()) : nullptr;
}

// The root, or null.
xml::Node DatabaseOf(const xml::Document& document) {
    xml::Node node = document.Root().FirstChild();
    while (!node.IsNull() && !IsDatabase(node)) {
        node = node.NextSibling();
    }
    return node;
}

// Whether the element is one of those of which a catalog has one in each place.
bool IsOfSkeleton(const xml::Node& node) {
    const CString name(node.Name());
    constexpr std::array<const char*, 4> Names = {"header", "body", "structure", "data"};
    return std::any_of(Names.begin(), Names.end(),
                       [&](const char* known) { return name.CompareNoCase(known) == 0; });
}

// Whether the file is blank; a byte-order mark doesn't count.
bool IsBlankFile(const CString& path) {
    const std::unique_ptr<platform::ReadableFile> file = platform::ReadableFile::Open(path.ToUtf8());
    if (file == nullptr) {
        return false;
    }
    constexpr std::string_view Blanks = " \t\r\n\xEF\xBB\xBF";
    std::array<char, 4096> block{};
    std::size_t count = 0;
    while ((count = file->Read(block.data(), block.size())) > 0) {
        if (std::string_view(block.data(), count).find_first_not_of(Blanks) != std::string_view::npos) {
            return false;
        }
    }
    return !file->HasFailed();
}

CString NameOf(const xml::Node& table) {
    const std::optional<std::string> name = table.FirstAttributeValue();
    if (!name) {
        throw new DbException("Invalid pointer");
    }
    return CString(*name);
}

}  // namespace

// Hands over the two structures and the two lists of rows, each before the next one is looked for. The walk
// goes by position; of several roots the last one is taken. Throws DbException, by pointer, where it leads
// into nothing.
template <typename OnStructure, typename OnData>
void DocumentReader::Walk(const xml::Document& document, OnStructure onStructure, OnData onData) {
    xml::Node database;
    for (xml::Node child = document.Root().FirstChild(); !child.IsNull(); child = child.NextSibling()) {
        if (IsDatabase(child)) {
            NotePassedOver(database, "the file");
            database = child;
        }
    }
    const xml::Node header = Required(Required(database).FirstChild());
    const xml::Node headerStructure = Required(header.FirstChild());
    onStructure(headerStructure);
    const xml::Node headerData = Required(headerStructure.NextSibling());
    onData(headerData);
    NoteSiblings(headerData, "<header>");
    const xml::Node body = Required(header.NextSibling());
    const xml::Node bodyStructure = Required(body.FirstChild());
    onStructure(bodyStructure);
    const xml::Node bodyData = Required(bodyStructure.NextSibling());
    onData(bodyData);
    NoteSiblings(bodyData, "<body>");
    NoteSiblings(body, "<database>");
}

void DocumentReader::NoteSiblings(const xml::Node& last, const char* parent) {
    for (xml::Node node = last.NextSibling(); !node.IsNull(); node = node.NextSibling()) {
        if (IsOfSkeleton(node)) {
            NotePassedOver(node, parent);
        }
    }
}

// Logs an element of which there is one already. If it is empty, nothing is lost.
void DocumentReader::NotePassedOver(const xml::Node& node, const char* parent) {
    if (node.IsNull()) {
        return;
    }
    CString line;
    line.Format("A surplus <%s> in %s is left out", node.Name().c_str(), parent);
    m_log.Add(Log::Kind::ReadFault, line);
    if (!node.FirstChild().IsNull()) {
        m_omissions.Note(line);
    }
}

// Values would be saved as they are read, with the names of the entities in the place of their text.
void DocumentReader::NoteEntities(const xml::Document& document) {
    if (document.HasEntities()) {
        Omit({Log::Kind::ReadFault, "Entities that a document type declares are not resolved"});
    }
}

void DocumentReader::ReadDatabase(const CString& path) {
    xml::Document document;
    Scanned scanned;
    if (!ScanDatabase(path, document, scanned)) {
        scanned.clear();
        document.LoadFile(path.ToUtf8());
    }
    NoteEntities(document);
    bool isBody = false;
    try {
        Walk(
            document, [this](const xml::Node& structure) { ReadStructure(structure); },
            [&](const xml::Node& data) { ReadData(data, std::exchange(isBody, true) ? &scanned : nullptr); });
    } catch (DbException* exception) {
        exception->Delete();
        LogUnreadable(path, document);
    }
}

// Reads a file without making nodes of the body's rows. False, and nothing is registered, for a file that has
// to be read in the general way.
bool DocumentReader::ScanDatabase(const CString& path, xml::Document& rest, Scanned& scanned) const {
    const std::unique_ptr<platform::ReadableFile> file = OpenRegular(path);
    if (file == nullptr) {
        return false;
    }
    const std::optional<platform::FileStamp> before = file->Stamp();
    CatalogScanner scanner(*file);
    if (!scanner.Scan() || !before || file->Stamp() != before || !rest.LoadText(scanner.Rest()) ||
        !AreNew(rest)) {
        return false;
    }
    scanned.swap(scanner.Tables());
    const xml::Node body = DatabaseOf(rest).FirstChild().NextSibling();
    const xml::Node data = body.FirstChild().NextSibling();
    std::size_t place = 0;
    for (xml::Node table = data.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
        if (scanned.count(place++) > 0 && !table.FirstChild().IsNull()) {
            return false;
        }
    }
    return true;
}

// Whether all tables that the document describes have names of their own, so that each gets the rows that
// were read by its structure.
bool DocumentReader::AreNew(const xml::Document& document) const {
    std::set<CString> names;
    const xml::Node database = DatabaseOf(document);
    if (database.IsNull()) {
        return false;
    }
    xml::Node part = database.FirstChild();
    for (int i = 0; i < 2; ++i, part = part.NextSibling()) {
        if (part.IsNull() || part.FirstChild().IsNull() || part.FirstChild().NextSibling().IsNull()) {
            return false;
        }
        for (xml::Node table = part.FirstChild().FirstChild(); !table.IsNull(); table = table.NextSibling()) {
            const std::optional<std::string> name = table.FirstAttributeValue();
            if (!name || m_registry.Find(CString(*name)) != nullptr ||
                !names.insert(Lowered(CString(*name))).second) {
                return false;
            }
        }
    }
    return true;
}

void DocumentReader::ReadUnread(const CString& path, const ScannedPlaces& scanned, Unread& unread) {
    xml::Document document;
    document.LoadFile(path.ToUtf8());
    NoteEntities(document);
    std::set<CString> names;
    std::size_t described = 0;
    bool isBody = false;
    try {
        Walk(
            document,
            [&](const xml::Node& structure) {
                CheckList(structure, scanned);
                for (xml::Node table = structure.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
                    names.insert(Lowered(NameOf(table)));
                    ++described;
                }
            },
            [&](const xml::Node& data) {
                if (!std::exchange(isBody, true)) {
                    CheckList(data, scanned);
                }
                ReadUnreadData(data, scanned, names, unread);
            });
    } catch (DbException* exception) {
        exception->Delete();
        LogUnreadable(path, document);
        return;
    }
    if (described != scanned.m_described) {
        m_omissions.Note("tables that sequential reading did not reach");
    }
}

void DocumentReader::CheckList(const xml::Node& list, const ScannedPlaces& scanned) {
    const std::optional<std::uint64_t> place = list.OffsetInText();
    if (!list.FirstChild().IsNull() && (!place || scanned.m_lists.count(*place) == 0)) {
        m_omissions.Note("sequential reading took another part of the file for a <" + CString(list.Name()) +
                         ">");
    }
}

// names are those of the structure whose rows are still to come; each is taken once.
void DocumentReader::ReadUnreadData(const xml::Node& data, const ScannedPlaces& scanned,
                                    std::set<CString>& names, Unread& unread) {
    for (xml::Node table = data.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
        const CString name = NameOf(table);
        if (names.erase(Lowered(name)) == 0) {
            OmitRows(name);
            continue;
        }
        const auto found = std::find_if(unread.begin(), unread.end(), [&](const UnreadTable& waiting) {
            return waiting.m_name.CompareNoCase(name) == 0;
        });
        if (found == unread.end()) {
            const auto place = scanned.m_tables.find(Lowered(name));
            if (place != scanned.m_tables.end() && place->second != table.OffsetInText()) {
                m_omissions.Note("sequential reading took the rows of '" + name +
                                 "' from another part of the file");
            }
            continue;
        }
        DbTableData& rows = *found->m_data;
        const bool changed = rows.IsChanged();
        rows.DropXmlSource();
        ReadRows(rows, table, name);
        rows.Sync();
        if (changed) {
            rows.SetChanged();
        }
        unread.erase(found);
    }
}

std::size_t DocumentReader::ReadStructureText(const CString& xml) {
    xml::Document document;
    std::string storage;
    try {
        document.LoadText(xml.ViewUtf8(storage));
        return ReadStructure(Required(document.Root().FirstChild()));
    } catch (DbException* exception) {
        exception->Delete();
        Omit({Log::Kind::NoCatalog, InvalidFormat});
        return 0;
    }
}

bool DocumentReader::DescribesTable(const CString& xml, const CString& name) {
    xml::Document document;
    std::string storage;
    document.LoadText(xml.ViewUtf8(storage));
    for (xml::Node table = document.Root().FirstChild().FirstChild(); !table.IsNull();
         table = table.NextSibling()) {
        if (CString(table.FirstAttributeValue().value_or(std::string())).CompareNoCase(name) == 0) {
            return true;
        }
    }
    return false;
}

void DocumentReader::ReadDataText(const CString& xml) {
    xml::Document document;
    std::string storage;
    try {
        document.LoadText(xml.ViewUtf8(storage));
        ReadData(Required(document.Root().FirstChild()));
    } catch (DbException* exception) {
        exception->Delete();
        Omit({Log::Kind::NoCatalog, InvalidFormat});
    }
}

void DocumentReader::ReadTableText(const CString& xml) {
    std::string storage;
    const std::string_view text = xml.ViewUtf8(storage);
    if (ScanTable(text)) {
        return;
    }
    xml::Document document;
    document.LoadText(text);
    const xml::Node table = Required(document.Root().FirstChild());
    const CString name = NameOf(table);
    const DbTableInfo* const info = m_registry.Find(name);
    if (info == nullptr) {
        throw new DbException("Invalid pointer");
    }
    ReadRows(*info->GetData(), table, name);
}

// Reads the rows without making nodes of them. False, and nothing has changed, for a text that has to be read
// in the general way.
bool DocumentReader::ScanTable(std::string_view text) {
    const std::size_t tag = text.starts_with("<table ") ? CatalogScanner::TagLength(text) : text.npos;
    std::string name;
    if (tag == text.npos || !xml::FirstAttributeOfText(text.substr(0, tag), name)) {
        return false;
    }
    const DbTableInfo* const info = m_registry.Find(CString(name));
    if (info == nullptr || !info->GetData()->CanTakeRows()) {
        return false;
    }
    ScannedRows scanned;
    const double before = platform::CounterSeconds();
    RowScanner scanner(*info->GetDescr(), *scanned.m_rows);
    RowScanner::Stop stop = RowScanner::Stop::NoRow;
    const std::size_t rows = scanner.Read(text.substr(tag), stop);
    std::string rest(text.substr(0, tag));
    rest += text.substr(tag + rows);
    xml::Document document;
    if (stop != RowScanner::Stop::NoRow || !document.LoadText(rest)) {
        return false;
    }
    const xml::Node table = document.Root().FirstChild();
    if (table.IsNull() || !table.FirstChild().IsNull() || table.FirstAttributeValue() != name) {
        return false;
    }
    scanned.m_count = scanner.Rows();
    scanned.m_misfits = scanner.Misfits();
    scanned.m_firstMisfit = scanner.FirstMisfit();
    scanned.m_seconds = platform::CounterSeconds() - before;
    info->GetData()->TakeRows(scanned);
    return true;
}

DocumentReader::Table DocumentReader::ReadFirstRows(const CString& path, const CString& table,
                                                    std::uint64_t rows) {
    const std::unique_ptr<platform::ReadableFile> file = OpenRegular(path);
    if (file == nullptr) {
        return {};
    }
    CatalogScanner scanner(*file, CatalogScanner::Rows::Counted);
    scanner.KeepFirstRows(table, rows);
    Table found;
    if (CountRows(scanner)) {
        found.m_descr = scanner.TakeStructure();
    }
    if (found.m_descr == nullptr) {
        return {};
    }
    found.m_data = std::make_unique<DbTableData>(nullptr, found.m_descr.get());
    found.m_data->TakeRows(scanner.FirstRows());
    return found;
}

std::size_t DocumentReader::ReadStructure(const xml::Node& structure) {
    std::size_t tables = 0;
    xml::Face face;
    for (xml::Node table = structure.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
        ++tables;
        const CString name = NameOf(table);
        const DbTableInfo* const info = m_registry.Create(name, DbTableInfo::Table, "", nullptr);
        if (info == nullptr) {
            m_omissions.Note("Table '" + name + "' stands twice in the structure");
        } else if (!info->GetDescr()->Load(face.Show(table))) {
            Omit({Log::Kind::ReadFault, "Table '" + name + "' has a malformed structure", name},
                 info->GetDescr());
        }
    }
    return tables;
}

void DocumentReader::ReadData(const xml::Node& data, const Scanned* scanned) {
    std::size_t place = 0;
    for (xml::Node table = data.FirstChild(); !table.IsNull(); table = table.NextSibling(), ++place) {
        const CString name = NameOf(table);
        const DbTableInfo* const info = m_registry.Find(name);
        if (info == nullptr || info->GetData()->IsInitialized()) {
            OmitRows(name);
        } else {
            const bool isScanned = scanned != nullptr && scanned->count(place) > 0;
            ReadRows(*info->GetData(), table, name, isScanned ? &scanned->at(place) : nullptr);
        }
    }
}

void DocumentReader::ReadRows(DbTableData& data, const xml::Node& table, const CString& name,
                              const ScannedRows* scanned) {
    if (scanned != nullptr) {
        data.TakeRows(*scanned);
        return;
    }
    xml::Face face(table);
    if (!data.Load(face.Get())) {
        Omit(MalformedRows(name), &data);
    }
}

DbLogEntry DocumentReader::MalformedRows(const CString& table) {
    return {DbLogEntry::Kind::MalformedRows, "Table '" + table + "' has malformed rows", table};
}

void DocumentReader::OmitRows(const CString& name) {
    Omit({Log::Kind::ReadFault,
          m_registry.Find(name) == nullptr
              ? "Table '" + name + "' has rows but no structure, they are left out"
              : "Table '" + name + "' has rows in two places of the file, the later ones are left out",
          name});
}

void DocumentReader::Omit(const DbLogEntry& entry, const DbItem* part) {
    m_log.Add(entry);
    m_omissions.Note(entry, part);
}

void DocumentReader::LogUnreadable(const CString& path, const xml::Document& document) {
    const xml::ReadError& error = document.Error();
    const std::string place = error.m_line == 0 ? "" : "line " + std::to_string(error.m_line) + ": ";
    m_log.Add(Log::Kind::NoCatalog, InvalidFormat);
    NoteUnreadable(path, error.m_message.empty() ? CString() : CString(place + error.m_message));
}

void DocumentReader::NoteUnreadable(const CString& path, const CString& why) {
    if (!IsBlankFile(path)) {
        m_omissions.Note(why.IsEmpty() ? DbLogEntry{Log::Kind::NoCatalog, InvalidFormat}
                                       : DbLogEntry{Log::Kind::ReadFault, why});
    }
}

}  // namespace quillet
