#include "Quillet/Db_DocumentReader.h"

#include "Quillet/Db_Exception.h"
#include "Quillet/Db_Log.h"
#include "Quillet/Db_Registry.h"
#include "Quillet/Db_TableData.h"
#include "xml/Document.h"
#include "xml/Face.h"

namespace quillet {

namespace {

// The node, or the exception that a walk into nothing raises.
xml::Node Required(xml::Node node) {
    if (node.IsNull()) {
        throw new DbException("Invalid pointer");
    }
    return node;
}

// The last child of the document that is called "database", in any case.
xml::Node FindDatabase(const xml::Document& document) {
    xml::Node database;
    for (xml::Node child = document.Root().FirstChild(); !child.IsNull(); child = child.NextSibling()) {
        if (CString(child.Name()).CompareNoCase("database") == 0) {
            database = child;
        }
    }
    return database;
}

CString NameOf(const xml::Node& table) {
    const std::optional<std::string> name = table.FirstAttributeValue();
    if (!name) {
        throw new DbException("Invalid pointer");
    }
    return CString(*name);
}

}  // namespace

void DbDocumentReader::ReadDatabase(const CString& path) {
    xml::Document document;
    document.LoadFile(path.ToUtf8());
    try {
        const xml::Node header = Required(Required(FindDatabase(document)).FirstChild());
        const xml::Node headerStructure = Required(header.FirstChild());
        ReadStructure(headerStructure);
        ReadData(Required(headerStructure.NextSibling()));
        const xml::Node body = Required(header.NextSibling());
        const xml::Node bodyStructure = Required(body.FirstChild());
        ReadStructure(bodyStructure);
        ReadData(Required(bodyStructure.NextSibling()));
    } catch (DbException* exception) {
        exception->Delete();
        LogInvalidFormat();
    }
}

std::size_t DbDocumentReader::ReadStructureText(const CString& xml) {
    xml::Document document;
    std::string storage;
    try {
        document.LoadText(xml.ViewUtf8(storage));
        return ReadStructure(Required(document.Root().FirstChild()));
    } catch (DbException* exception) {
        exception->Delete();
        LogInvalidFormat();
        return 0;
    }
}

bool DbDocumentReader::DescribesTable(const CString& xml, const CString& name) {
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

void DbDocumentReader::ReadDataText(const CString& xml) {
    xml::Document document;
    std::string storage;
    try {
        document.LoadText(xml.ViewUtf8(storage));
        ReadData(Required(document.Root().FirstChild()));
    } catch (DbException* exception) {
        exception->Delete();
        LogInvalidFormat();
    }
}

void DbDocumentReader::ReadTableText(const CString& xml) {
    xml::Document document;
    std::string storage;
    document.LoadText(xml.ViewUtf8(storage));
    const xml::Node table = Required(document.Root().FirstChild());
    const CString name = NameOf(table);
    const DbTableInfo* const info = m_registry.Find(name);
    if (info == nullptr) {
        throw new DbException("Invalid pointer");
    }
    ReadRows(*info->GetData(), table, name);
}

std::size_t DbDocumentReader::ReadStructure(const xml::Node& structure) {
    std::size_t tables = 0;
    xml::Face face;
    for (xml::Node table = structure.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
        ++tables;
        const CString name = NameOf(table);
        const DbTableInfo* const info = m_registry.Create(name, DbTableInfo::Table, "", nullptr);
        if (info != nullptr && !info->GetDescr()->Load(face.Show(table))) {
            m_log.Print("Table '%s' has a malformed structure", name.ToUtf8().c_str());
        }
    }
    return tables;
}

void DbDocumentReader::ReadData(const xml::Node& data) {
    for (xml::Node table = data.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
        const CString name = NameOf(table);
        const DbTableInfo* const info = m_registry.Find(name);
        if (info == nullptr) {
            m_log.Print("Table '%s' has rows but no structure, they are left out", name.ToUtf8().c_str());
        } else if (info->GetData()->IsInitialized()) {
            m_log.Print("Table '%s' has rows in two places of the file, the later ones are left out",
                        name.ToUtf8().c_str());
        } else {
            ReadRows(*info->GetData(), table, name);
        }
    }
}

void DbDocumentReader::ReadRows(DbTableData& data, const xml::Node& table, const CString& name) {
    xml::Face face(table);
    if (!data.Load(face.Get())) {
        m_log.Print("Table '%s' has malformed rows", name.ToUtf8().c_str());
    }
}

void DbDocumentReader::LogInvalidFormat() {
    m_log.Add("Invalid xml database file format");
}

}  // namespace quillet
