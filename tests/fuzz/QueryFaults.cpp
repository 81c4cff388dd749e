#include "fuzz/QueryFaults.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/CountingDescr.h"

namespace quillet::test {

namespace {

using Strings = std::vector<std::string>;

struct Field {
    const char* m_name;
    DbFieldDescr::eFieldType m_type;
};

// Tables with every type of cell, with missing and equal values and values of another type than the field's,
// and queries over a table, over such a query, and over two tables.
class SmallCatalog {
public:
    SmallCatalog() {
        DbTableData& parts = Create("parts", {{"number", DbFieldDescr::Long},
                                              {"name", DbFieldDescr::Text},
                                              {"length", DbFieldDescr::Double},
                                              {"short", DbFieldDescr::Integer},
                                              {"flag", DbFieldDescr::Boolean},
                                              {"net weight", DbFieldDescr::Float},
                                              {"höhe", DbFieldDescr::Double}});
        parts.AddRows(6);
        const char* const names[] = {"beam", "Beam", "sheet 2,5", "", "Träger", "select"};
        for (uint64 i = 0; i < parts.size(); ++i) {
            DbTableRow& row = parts[i];
            row[0].SetValue(CComVariant(static_cast<LONG>(i % 3)));
            row[1].SetValue(CComVariant(names[i]));
            row[2].SetValue(CComVariant(static_cast<double>(i) / 4));
            row[3].SetValue(CComVariant(static_cast<SHORT>(i)));
            row[4].SetValue(CComVariant(i % 2 == 0));
            row[5].SetValue(CComVariant(1.5F));
            row[6].SetValue(CComVariant(-1.0));
        }
        parts[2][0].GetVariant().vt = VT_NULL;
        parts[3][2].GetVariant().Clear();
        parts[4][6].GetVariant().SetText(OLESTR("none"));
        Create("from", {{"number", DbFieldDescr::Long}, {"by", DbFieldDescr::Text}}).AddRows(2);
        Create("empty", {});
        CreateQuery("few", "select * from parts where number < 2", "parts");
        CreateQuery("fewer", "select top 2 name, number from few order by name", "few");
        CreateQuery("both", "select number from parts, [from]", "parts");
        for (const char* const name : {"few", "fewer", "both"}) {
            m_database.GetTableData(name);
        }
        // There is nothing to save.
        m_database.Sync();
    }
    SmallCatalog(const SmallCatalog&) = delete;
    SmallCatalog& operator=(const SmallCatalog&) = delete;
    ~SmallCatalog() {
        DbDatabase::m_queriesCount = m_queriesCount;
        m_database.Sync();
    }

    DbDatabase& Database() { return m_database; }

    int FilterCount() const {
        int count = 0;
        for (const CountingDescr* const descr : m_descrs) {
            count += descr->m_alive;
        }
        return count;
    }

    void ClearFilters() {
        for (CountingDescr* const descr : m_descrs) {
            descr->ClearFilters();
        }
    }

    Strings Lines() {
        std::vector<CString> lines;
        m_database.GetError(lines);
        Strings narrow(lines.size());
        std::transform(lines.begin(), lines.end(), narrow.begin(),
                       [](const CString& line) { return line.ToUtf8(); });
        return narrow;
    }

private:
    DbTableData& Create(const char* name, const std::vector<Field>& fields) {
        DbTableInfo& info =
            Create(DbTableInfo(name, DbTableInfo::Table, 0, "", NewDescr(), nullptr, nullptr));
        for (const Field& field : fields) {
            info.GetDescr()->CreateField(field.m_name, false, field.m_type);
        }
        return *info.GetData();
    }

    void CreateQuery(const char* name, const char* sql, const char* source) {
        Create(DbTableInfo(name, DbTableInfo::Query, 0, sql, NewDescr(), nullptr,
                           m_database.GetTableInfo(source)));
    }

    DbTableInfo& Create(DbTableInfo info) { return *m_database.CreateTable(&info); }

    // The database owns it once it has a table.
    CountingDescr* NewDescr() {
        m_descrs.push_back(new CountingDescr(&m_database));
        return m_descrs.back();
    }

    const std::int32_t m_queriesCount = DbDatabase::m_queriesCount;
    DbDatabase m_database;
    std::vector<CountingDescr*> m_descrs;
};

// Names of the fields and every cell as text.
Strings Contents(DbDatabase& database, const CString& table) {
    Strings contents;
    DbTableData& data = *database.GetTableData(table);
    for (const DbFieldDescr* const field : *database.GetTableDescr(table)) {
        contents.push_back(field->GetName().ToUtf8());
    }
    for (uint64 i = 0; i < data.size(); ++i) {
        for (const DbFieldValue* const cell : data[i]) {
            CString text;
            cell->ValueToString(text);
            contents.push_back(std::to_string(cell->GetType()) + " " + text.ToUtf8());
        }
    }
    return contents;
}

// Passes one text to one catalog, in every way in which it takes queries.
class Examination {
public:
    explicit Examination(const std::string& query) : m_query(query), m_line(query) {
        m_line.Replace("\r", " ");
        m_line.Replace("\n", " ");
    }

    std::string Faults() {
        Analyze();
        Verify();
        Query();
        return std::move(m_faults);
    }

private:
    DbDatabase& Database() { return m_catalog.Database(); }

    void Require(bool holds, const char* what) {
        if (!holds) {
            m_faults += what;
            m_faults += '\n';
        }
    }

    void Analyze() {
        m_catalog.Lines();
        {
            parser::QueryAnalysisParams params;
            m_isGood = Database().AnalyzeSQL(m_line, &params);
            const Strings lines = m_catalog.Lines();
            Require(lines.size() >= 2, "an analysis has a line at its beginning and one at its end");
            Require(
                !lines.empty() && lines.back() == (m_isGood ? "SQL Analyze - ok" : "SQL Analyze - failed"),
                "the last line says how the analysis went");
            // Filters of the catalog's own queries are created and deleted before.
            Require(params.filters.size() <= params.conditions.size(), "no condition is two filters");
            Require(!m_isGood || params.filters.size() == params.conditions.size(),
                    "each condition of a good text is a filter");
            Require(!m_isGood || (!params.fields.empty() && !params.tables.empty() && params.parts.empty()),
                    "a good text has fields and tables, and nothing is left of its conditions");
            // Both must succeed, whether the clause is valid or not.
            params.clause->evaluate();
            params.clause->GetRPNString();
            m_top = params.top;
        }
        m_catalog.ClearFilters();
    }

    void Verify() {
        const int tables = Database().GetTablesCount();
        Require(Database().VerifySQL(m_line) == m_isGood, "a check says what the analysis says");
        Require(!m_isGood || m_catalog.FilterCount() == 0, "filters are gone after a check that succeeded");
        Require(Database().GetTablesCount() == tables, "a check makes no table");
        m_catalog.ClearFilters();
    }

    void Query() {
        const int tables = Database().GetTablesCount();
        CString name;
        if (!Database().Query(m_query, name)) {
            Require(Database().GetTablesCount() == tables, "a query that fails makes no table");
            Require(!m_catalog.Lines().empty(), "a query that fails says why");
            m_catalog.ClearFilters();
            return;
        }
        Require(m_catalog.FilterCount() == 0, "filters are gone after a query that succeeded");
        Require(Database().GetTablesCount() <= tables + 1, "a query makes one table at most");
        Require(Database().IsTable(name), "the name of an answer is that of a table");
        if (!m_faults.empty()) {
            return;
        }
        const bool isQueryText = Lowered(m_query).Find("select") >= 0;
        const bool isMade = Database().GetTablesCount() > tables;
        if (isMade) {
            Require(isQueryText && m_isGood, "a table is made for a good text only");
            Require(m_top < 0 || Database().GetTableData(name)->size() <= static_cast<uint64>(m_top),
                    "no more rows than the text allows");
        }
        AskAgain(name);
        FollowChanges(name, isMade);
    }

    void AskAgain(const CString& name) {
        const Strings contents = Contents(Database(), name);
        CString again;
        Require(Database().Query(m_query, again) && again == name, "the answer to the same text is the same");
        Require(Contents(Database(), name) == contents, "the rows of the same text are the same");
        Require(m_catalog.FilterCount() == 0, "filters are gone after a query that was answered before");
    }

    // Whatever happens to the tables, the answer can be read.
    void FollowChanges(const CString& name, bool isMade) {
        DbTableData& parts = *Database().GetTableData("parts");
        parts[0].SetValue("number", CComVariant(LONG(2)));
        Contents(Database(), name);
        parts.DeleteRow(1);
        Contents(Database(), name);
        Database().GetTableDescr("parts")->CreateField("added", false, DbFieldDescr::Long);
        Contents(Database(), name);
        Database().ClearTable("from");
        Contents(Database(), name);
        if (isMade) {
            Database().DeleteTable(name);
            Require(!Database().IsTable(name), "an answer can be dropped");
        }
    }

    const CString m_query;
    // The text as a query analyses it: in one line.
    CString m_line;
    SmallCatalog m_catalog;
    std::string m_faults;
    bool m_isGood = false;
    std::int32_t m_top = -1;
};

}  // namespace

std::string FaultsOf(const std::string& query) {
    return Examination(query).Faults();
}

}  // namespace quillet::test
