#include "Quillet/document/DocumentWriter.h"

#include <algorithm>

#include "Quillet/Db_TableData.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/xml/Face.h"

namespace quillet {

namespace {

// The number of tables in the header of the document.
constexpr std::size_t HeaderTables = 2;

}  // namespace

// One of the four lists of <table> elements.
struct DocumentWriter::Section {
    const char* m_element;
    const char* m_nameInLog;
    std::size_t m_begin;
    std::size_t m_end;
    bool m_tablesOnly;
    bool m_rows;
};

bool DocumentWriter::Write(const xml::Node& document, const xml::Node& parent) {
    const std::size_t count = m_registry.Count();
    const std::size_t split = std::min(HeaderTables, count);
    const xml::Node database = document.CreateElement("database");
    const xml::Node header = document.CreateElement("header");
    bool good = WriteSection(document, header, {"structure", "header structure", 0, split, false, false});
    good &= WriteSection(document, header, {"data", "header data", 0, split, false, true});
    database.AppendChild(header);
    const xml::Node body = document.CreateElement("body");
    good &= WriteSection(document, body, {"structure", "body structure", split, count, true, false});
    good &= WriteSection(document, body, {"data", "body data", split, count, true, true});
    database.AppendChild(body);
    (parent.IsNull() ? document : parent).AppendChild(database);
    return good;
}

bool DocumentWriter::WriteSection(const xml::Node& document, const xml::Node& parent,
                                  const Section& section) {
    bool good = true;
    const xml::Node list = document.CreateElement(section.m_element);
    xml::Face documentFace(document);
    xml::Face tableFace;
    for (std::size_t i = section.m_begin; i < section.m_end; ++i) {
        const CString& name = m_registry.NameAt(i);
        const DbTableInfo* const info = m_registry.Find(name);
        if (section.m_tablesOnly && (info == nullptr || info->GetType() != DbTableInfo::Table)) {
            continue;
        }
        const xml::Node table = document.CreateElement("table");
        IDispatch* const element = tableFace.Show(table);
        bool saved = true;
        try {
            table.SetAttribute("name", name.View());
            saved = section.m_rows ? m_registry.DataAt(i)->Save(documentFace.Get(), element)
                                   : m_registry.DescrAt(i)->Save(documentFace.Get(), element);
        } catch (const xml::DomError&) {
            saved = false;
        }
        if (!saved) {
            CString line;
            line.Format("Error on table \"%s\" - %s saving", name.ToUtf8().c_str(), section.m_nameInLog);
            m_log.Add({Log::Kind::SaveFault, line, name});
            m_lastFailure = line;
            good = false;
        }
        list.AppendChild(table);
    }
    parent.AppendChild(list);
    return good;
}

}  // namespace quillet
