#include "Quillet/document/LazyReader.h"

#include <algorithm>
#include <string>
#include <utility>

#include "Quillet/Db_Source.h"
#include "Quillet/Db_TableData.h"
#include "Quillet/platform/Clock.h"
#include "Quillet/records/AccessImporter.h"
#include "Quillet/registry/HeaderTables.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/registry/Upcalls.h"
#include "Quillet/xml/Document.h"

namespace quillet {

namespace {

constexpr const char* HeaderStructurePath = "\\database\\header\\structure";
constexpr const char* HeaderDataPath = "\\database\\header\\data";
constexpr const char* BodyStructurePath = "\\database\\body\\structure";
constexpr const char* BodyTablePath = "\\database\\body\\data\\table";

}  // namespace

void LazyReader::Reset() {
    m_error.Clear();
    m_pending = true;
    m_unread.clear();
    m_handedOut.clear();
    m_cut = 0;
    m_passed = 0;
    m_scanned.reset();
    m_endIsLogged = false;
    m_identity.reset();
    m_omissions.Clear();
}

void LazyReader::MarkRead() {
    m_pending = false;
}

void LazyReader::ReadStructure() {
    if (!m_pending || (!m_source.IsXmlBased() && !m_source.IsMdbBased())) {
        return;
    }
    const bool wasEof = m_source.IsEof();
    const std::size_t lines = m_log.Added();
    m_pending = false;
    try {
        Read();
    } catch (...) {
        m_registry.Clear();
        Reset();
        m_error.SetToCurrentException();
        m_source.Rewind(wasEof);
        m_log.BackTo(lines);
        throw;
    }
    m_error.Clear();
    Upcalls::Sync(m_owner);
}

void LazyReader::Read() {
    m_identity = platform::FileIdentity::Of(m_source.GetFile().ToUtf8());
    if (m_source.IsMdbBased()) {
        if (!m_importer.Import()) {
            m_omissions.Note("a table that can't be read");
        }
    } else if (m_source.IsSequentialAccess()) {
        ReadSequentially();
    } else {
        DocumentReader(m_registry, m_log, m_omissions).ReadDatabase(m_source.GetFile());
        CreateHeaderTable(m_registry);
        CreatePropertiesTable(m_registry);
    }
}

void LazyReader::ReadSequentially() {
    DocumentReader reader(m_registry, m_log, m_omissions);
    CString xml;
    ScannedPlaces scanned;
    bool good = m_source.ExtractXmlNode(HeaderStructurePath, xml);
    if (good) {
        scanned.m_lists.insert(m_source.Place());
        scanned.m_described = reader.ReadStructureText(xml);
    }
    // A search for rows that are not announced would run to the end of the file, past the body.
    if (m_registry.Count() > 0) {
        good = m_source.ExtractXmlNode(HeaderDataPath, xml);
        if (good) {
            scanned.m_lists.insert(m_source.Place());
            reader.ReadDataText(xml);
        }
    }
    good = good && m_source.ExtractXmlNode(BodyStructurePath, xml);
    if (!good) {
        LogEnd();
        reader.NoteUnreadable(m_source.GetFile(), m_source.ReadFailure());
        CreateHeaderTable(m_registry);
        CreatePropertiesTable(m_registry);
        return;
    }
    // The fixed tables come before those of the body, unless the body has them.
    if (!DocumentReader::DescribesTable(xml, HeaderTable)) {
        CreateHeaderTable(m_registry);
    }
    if (!DocumentReader::DescribesTable(xml, PropertiesTable)) {
        CreatePropertiesTable(m_registry);
    }
    const std::size_t first = m_registry.Count();
    scanned.m_lists.insert(m_source.Place());
    scanned.m_described += reader.ReadStructureText(xml);
    m_scanned = std::move(scanned);
    for (std::size_t i = first; i < m_registry.Count(); ++i) {
        m_unread.push_back({m_registry.NameAt(i), m_registry.DataAt(i)});
    }
    CheckEnd();
}

DbTableData* LazyReader::ReadNextTable() {
    if (m_source.IsEof()) {
        return nullptr;
    }
    try {
        DbTableData* const data = CutNextTable();
        m_error.Clear();
        return data;
    } catch (...) {
        m_error.SetToCurrentException();
        m_source.Rewind(false);
        m_passed = 0;
        throw;
    }
}

DbTableData* LazyReader::CutNextTable() {
    while (!m_unread.empty()) {
        const double start = platform::CounterSeconds();
        CString xml;
        if (!m_source.ExtractXmlNode(BodyTablePath, xml)) {
            break;
        }
        if (++m_passed <= m_cut) {
            // Read before, through a file that had to be opened anew.
            continue;
        }
        const auto table = UnreadOf(xml);
        if (table == m_unread.end()) {
            ++m_cut;
            CheckEnd();
            continue;
        }
        DbTableData* const data = table->m_data;
        m_scanned->m_tables.insert_or_assign(Lowered(table->m_name), m_source.Place());
        m_handedOut.insert_or_assign(data, *table);
        data->SetXmlSource(xml);
        m_unread.erase(table);
        ++m_cut;
        CheckEnd();
        const CString& name = m_registry.Find(data)->GetName();
        m_log.Print(Log::Kind::Report, Log::Place(name), "Table '%s' xml source extracted in %.4f [s]",
                    name.ToUtf8().c_str(), platform::CounterSeconds() - start);
        return data;
    }
    if (m_source.IsSequentialAccess()) {
        m_source.Release();
    }
    CheckEnd();
    return nullptr;
}

// Reading has come to the end of a file that lacks the rows of some tables.
void LazyReader::CheckEnd() {
    if (m_source.IsEof() && !m_unread.empty() && !m_endIsLogged) {
        m_endIsLogged = true;
        LogEnd();
    }
}

void LazyReader::LogEnd() {
    if (m_source.IsFileBad()) {
        m_log.Print(Log::Kind::ReadFault, "File '%s' could not be read: %s",
                    m_source.GetFile().ToUtf8().c_str(), m_source.ReadFailure().ToUtf8().c_str());
    } else {
        m_log.Add(Log::Kind::NoCatalog, DocumentReader::InvalidFormat);
    }
}

// Which table the rows belong to. The format puts them in the order of the structure; where a file does not,
// the name decides. The end for rows that no unread table waits for.
Unread::iterator LazyReader::UnreadOf(const CString& xml) {
    std::string storage;
    std::string name;
    if (!xml::FirstAttributeOfText(xml.ViewUtf8(storage), name)) {
        return m_unread.begin();
    }
    const auto found = std::find_if(m_unread.begin(), m_unread.end(), [&](const UnreadTable& table) {
        return table.m_name.CompareNoCase(name) == 0;
    });
    if (found == m_unread.end()) {
        DocumentReader(m_registry, m_log, m_omissions).OmitRows(name);
    }
    return found;
}

void LazyReader::Reach(const DbTableData* data) {
    if (IsUnread(data)) {
        while (!data->IsInitialized() && ReadNextTable() != nullptr) {
        }
    }
}

void LazyReader::ReadUntil(const DbTableData* data) {
    Reach(data);
    const auto table = IsUnread(data) ? FindUnread(data) : m_unread.end();
    if (table != m_unread.end() && !std::exchange(table->m_isReported, true)) {
        m_log.Print(Log::Kind::ReadFault, Log::Place(table->m_name),
                    "Table '%s' was not reached in the file, its rows are missing",
                    table->m_name.ToUtf8().c_str());
    }
}

void LazyReader::ReadAll() {
    while (ReadNextTable() != nullptr) {
    }
}

void LazyReader::ParseRows(const DbTableData& data, const CString& xml) {
    Omissions ofOtherText;
    const bool isHandedOut = m_handedOut.count(&data) > 0;
    const auto takenBack = isHandedOut ? m_unread.end() : FindUnread(&data);
    const bool isOfFile = isHandedOut || takenBack != m_unread.end();
    try {
        DocumentReader(m_registry, m_log, isOfFile ? m_omissions : ofOtherText).ReadTableText(xml);
    } catch (...) {
        m_error.SetToCurrentException();
        throw;
    }
    m_handedOut.erase(&data);
    if (takenBack != m_unread.end()) {
        m_unread.erase(takenBack);
    }
    m_error.Clear();
}

void LazyReader::Forget(const DbTableData* data) {
    const auto table = FindUnread(data);
    if (table != m_unread.end()) {
        m_unread.erase(table);
    }
    m_handedOut.erase(data);
    m_omissions.Forget(data);
}

void LazyReader::ForgetStructure(const DbTableDescr* descr) {
    m_omissions.Forget(descr);
}

CString LazyReader::ReadRest(const CString& path) {
    const DbLogEntry missing = FindMissing(path);
    if (!missing.m_text.IsEmpty()) {
        m_error.Set(missing);
    }
    return missing.m_text;
}

DbLogEntry LazyReader::FindMissing(const CString& path) {
    const bool isAllRead = !m_scanned && m_handedOut.empty();
    if ((isAllRead && m_omissions.IsEmpty()) || !IsOwnFile(path)) {
        return {};
    }
    TakeBackUnparsed();
    if (!m_omissions.IsEmpty() || !m_scanned) {
        return IsSourceFile(path) ? m_omissions.First() : DbLogEntry();
    }
    if (!IsWhatWasScanned(path)) {
        // A later change of the file says nothing about what was read from it.
        return {Log::Kind::ReadFault,
                m_unread.empty() ? CString() : "it was changed or moved before every table was read"};
    }
    Omissions found;
    DocumentReader(m_registry, m_log, found).ReadUnread(path, *m_scanned, m_unread);
    m_omissions.AppendThoseOfTables(found);
    const bool isUnparsed = std::any_of(m_unread.begin(), m_unread.end(), [](const UnreadTable& table) {
        return table.m_data->IsInitialized();
    });
    if (found.IsEmpty() && !isUnparsed) {
        m_unread.clear();
        m_scanned.reset();
        m_error.Clear();
    }
    // A table whose text could not be parsed can't be saved; that error says more.
    return isUnparsed && !m_error.IsOutOfMemory() ? m_omissions.First() : found.First();
}

// Unread tables can be taken only from the very same file, unchanged. To see that it holds nothing else, any
// file of its length will do: another time or name says nothing about the contents.
bool LazyReader::IsWhatWasScanned(const CString& path) const {
    const auto file = platform::ReadableFile::Open(path.ToUtf8());
    const std::optional<platform::FileStamp> now = file ? file->Stamp() : std::nullopt;
    const platform::FileStamp* const then = m_source.ScannedStamp();
    if (now && then != nullptr) {
        return m_unread.empty() ? now->m_size == then->m_size : *now == *then;
    }
    return m_unread.empty() && IsSourceFile(path);
}

// Tables whose text was cut out of the file and could not be parsed become unread again.
void LazyReader::TakeBackUnparsed() {
    for (std::size_t i = 0; i < m_registry.Count(); ++i) {
        DbTableData* const data = m_registry.DataAt(i);
        if (m_handedOut.count(data) > 0 && !data->ParseXmlData()) {
            const auto text = m_handedOut.find(data);
            m_unread.push_back(text->second);
            m_handedOut.erase(text);
        }
    }
}

// Where there is no file any more, nothing can be lost.
bool LazyReader::IsSourceFile(const CString& path) const {
    const auto target = platform::FileIdentity::Of(path.ToUtf8());
    return target &&
           (target == m_identity || target == platform::FileIdentity::Of(m_source.GetFile().ToUtf8()));
}

bool LazyReader::IsOwnFile(const CString& path) const {
    if (path == m_source.GetFile() || IsSourceFile(path)) {
        return true;
    }
    const auto place = platform::FilePlace::Of(path.ToUtf8());
    return place && place == platform::FilePlace::Of(m_source.GetFile().ToUtf8());
}

void LazyReader::MarkWritten() noexcept {
    m_scanned.reset();
    m_unread.clear();
    m_handedOut.clear();
    m_omissions.Clear();
    m_error.Clear();
    m_identity.reset();
    try {
        m_identity = platform::FileIdentity::Of(m_source.GetFile().ToUtf8());
    } catch (const std::bad_alloc&) {
        // The path of the source is still checked.
    }
}

DbLogEntry LazyReader::LastReadFault() const {
    if (m_error.IsSet()) {
        return m_error.Entry();
    }
    return m_omissions.IsEmpty() ? DbLogEntry{Log::Kind::ReadFault, Unreached()} : m_omissions.First();
}

// The tables that sequential reading did not reach and won't reach any more, in one line.
CString LazyReader::Unreached() const {
    constexpr std::size_t MostNames = 8;
    std::string names;
    std::size_t count = 0;
    for (const UnreadTable& table : m_unread) {
        if (m_source.IsEof() && !table.m_data->IsInitialized() && ++count <= MostNames) {
            names += (names.empty() ? "'" : ", '") + table.m_name.ToUtf8() + "'";
        }
    }
    if (count == 0) {
        return {};
    }
    const std::string why = m_source.ReadFailure().ToUtf8();
    const std::string more = count > MostNames ? " and " + std::to_string(count - MostNames) + " more" : "";
    return CString(why + (why.empty() ? "" : ": ") + "sequential reading did not reach the rows of " + names +
                   more);
}

Unread::iterator LazyReader::FindUnread(const DbTableData* data) {
    return std::find_if(m_unread.begin(), m_unread.end(),
                        [&](const UnreadTable& table) { return table.m_data == data; });
}

// Rows that a program gave the table itself are not expected from the file.
bool LazyReader::IsUnread(const DbTableData* data) {
    return !data->IsInitialized() && FindUnread(data) != m_unread.end();
}

}  // namespace quillet
