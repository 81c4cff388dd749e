#include "Quillet/query/QueryBuilder.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <typeinfo>

#include "Quillet/Db_TableData.h"
#include "Quillet/document/LazyReader.h"
#include "Quillet/platform/Clock.h"
#include "Quillet/query/QueryFields.h"
#include "Quillet/query/SqlAnalyzer.h"
#include "Quillet/query/SqlText.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/registry/Upcalls.h"
#include "Quillet/rows/CellCopies.h"
#include "Quillet/rows/CellFilter.h"
#include "Quillet/rows/DistinctRows.h"
#include "Quillet/rows/OrderOfRows.h"
#include "Quillet/values/Names.h"

namespace quillet {

namespace {

using Params = parser::QueryAnalysisParams;

// The stamp of no data.
constexpr long NoStamp = std::numeric_limits<std::int32_t>::min();

bool SelectsAll(const Params& params) {
    return params.fields.front() == "*";
}

// Whether the answer is the source itself.
bool IsWholeTable(const Params& params, const DbTableDescr& source) {
    if (params.tables.size() != 1 || !params.conditions.empty() || !params.order.empty() || params.top >= 0) {
        return false;
    }
    if (SelectsAll(params)) {
        return true;
    }
    // Names in brackets are other names here.
    const auto same = [](const CString& name, const DbFieldDescr* field) {
        return name.CompareNoCase(field->GetName()) == 0;
    };
    return std::equal(params.fields.begin(), params.fields.end(), source.begin(), source.end(), same);
}

// Whether the rows are evaluated by nothing but the filters of the query, which are all our own.
bool EvaluatesCells(const Params& params, const DbTableDescr& descr) {
    return typeid(descr) == typeid(DbTableDescr) && RowsCondition::AreOwn(params.filters) &&
           std::all_of(descr.GetFilters().begin(), descr.GetFilters().end(),
                       [](const auto& filter) { return typeid(*filter) == typeid(DbFilter); });
}

// The visible positions of the first rows for which the clause holds, by the cells of the rows.
std::vector<uint64> FindByCells(const RowsView& view, RowsCondition condition, uint64 limit,
                                std::optional<uint64>& last) {
    std::vector<uint64> found;
    for (uint64 i = 0; i < view.Count() && found.size() < limit;) {
        uint64 end = i + 1;
        // A limit may end the search within a run.
        if (limit >= view.Count() && view.HasRow(i)) {
            const ColumnStore::Run run = view.RunAt(i);
            end = i + std::max(run.m_rows, 1U);
            if (run.m_rows > 0) {
                condition.Select(view, run, i, found);
                last = end - 1;
                i = end;
            }
        }
        for (; i < end; ++i) {
            if (view.HasRow(i)) {
                last = i;
                if (condition.Holds(view, i)) {
                    found.push_back(i);
                }
            }
        }
    }
    return found;
}

// The same by the descriptor's own way to evaluate a row.
std::vector<uint64> FindByRows(const Params& params, DbTableDescr& descr, DbRows& rows, uint64 limit) {
    std::vector<uint64> found;
    for (uint64 i = 0; i < rows.GetRowsCount() && found.size() < limit; ++i) {
        if (const DbTableRow* const row = rows.GetRow(static_cast<int>(i))) {
            // Rows of a query may follow another descriptor than the one that is searched.
            descr.Evaluate(*row);
            if (params.clause->evaluate()) {
                found.push_back(i);
            }
        }
    }
    return found;
}

std::vector<uint64> FindRows(const Params& params, DbTableDescr& descr, DbRows& rows) {
    const uint64 limit = params.top < 0 ? rows.GetRowsCount() : static_cast<uint64>(params.top);
    if (!EvaluatesCells(params, descr)) {
        return FindByRows(params, descr, rows, limit);
    }
    std::optional<uint64> last;
    std::vector<uint64> found =
        FindByCells(RowsView(rows), RowsCondition(*params.clause, params.filters), limit, last);
    // Filters that a host keeps show the row that was looked at last.
    if (last && descr.GetFilters().size() > params.filters.size()) {
        descr.Evaluate(*rows.GetRow(static_cast<int>(*last)));
    }
    return found;
}

// Keeps the elements at the places, in their order.
void Pick(const std::vector<uint64>& places, std::vector<uint64>& positions) {
    std::vector<uint64> picked(places.size());
    std::transform(places.begin(), places.end(), picked.begin(),
                   [&](uint64 place) { return positions[place]; });
    positions = std::move(picked);
}

// Whether the entry's rows are computed from another's and have to follow them.
bool Follows(const DbTableInfo& entry) {
    return entry.GetType() == DbTableInfo::Query && entry.GetRelated() != nullptr && !entry.IsJoin();
}

// Appends the fields at the positions, and drops the positions of those whose name is taken.
void CopyFields(DbTableDescr& from, std::vector<uint64>& fields, DbTableDescr& to) {
    const auto isTaken = [&](uint64 field) { return !to.CreateField(from[field]); };
    fields.erase(std::remove_if(fields.begin(), fields.end(), isTaken), fields.end());
}

}  // namespace

class QueryBuilder::RefreshScope {
public:
    explicit RefreshScope(QueryBuilder& builder) : m_builder(builder) { ++m_builder.m_depth; }
    RefreshScope(const RefreshScope&) = delete;
    RefreshScope& operator=(const RefreshScope&) = delete;
    ~RefreshScope() {
        if (--m_builder.m_depth == 0) {
            m_builder.m_refreshed.clear();
        }
    }

private:
    QueryBuilder& m_builder;
};

bool QueryBuilder::Query(const CString& sql, CString& name) {
    return Ask(sql, nullptr, name);
}

bool QueryBuilder::Analyze(const CString& sql, Params& params) {
    const RefreshScope scope(*this);
    return SqlAnalyzer(*this, m_log, params).Analyze(sql);
}

bool QueryBuilder::Verify(const CString& sql) {
    Params params;
    if (!Analyze(sql, params)) {
        return false;
    }
    RemoveFilters(params);
    return true;
}

DbTableInfo* QueryBuilder::Find(const CString& name) {
    m_reader.ReadStructure();
    return m_registry.Find(name);
}

DbTableInfo* QueryBuilder::FindInStep(const CString& name) {
    DbTableInfo* const info = Find(name);
    if (info != nullptr) {
        m_reader.ReadUntil(info->GetData());
        Refresh(*info);
    }
    return info;
}

void QueryBuilder::Refresh(DbTableInfo& info) {
    const RefreshScope scope(*this);
    for (DbTableInfo* const query : QueriesUpTo(info)) {
        if (!m_refreshed.emplace(query, nullptr).second) {
            continue;
        }
        if (!IsInStep(*query)) {
            CString name;
            Ask(query->GetSql(), query, name);
        }
        m_refreshed[query] = &LowestOf(*query);
    }
}

void QueryBuilder::RefreshAll() {
    const RefreshScope scope(*this);
    for (auto& [key, entry] : m_registry.All()) {
        Refresh(entry);
    }
}

std::vector<DbTableInfo*> QueryBuilder::QueriesUpTo(DbTableInfo& info) const {
    std::vector<DbTableInfo*> queries;
    for (DbTableInfo* query = &info; Follows(*query) && m_refreshed.count(query) == 0;
         query = query->GetRelated()) {
        queries.push_back(query);
    }
    std::reverse(queries.begin(), queries.end());
    return queries;
}

const DbTableInfo& QueryBuilder::LowestOf(const DbTableInfo& query) const {
    const auto source = m_refreshed.find(query.GetRelated());
    return source == m_refreshed.end() || source->second == nullptr ? query.LowestQuery() : *source->second;
}

bool QueryBuilder::IsInStep(const DbTableInfo& query) const {
    const DbTableInfo* const source = query.GetRelated();
    const bool follows = source == nullptr || source->GetData() == nullptr ||
                         query.GetSyncStamp() == source->GetData()->LatestStamp();
    return follows && (source == nullptr || !Follows(*source) || LowestOf(query).IsQuerySync());
}

bool QueryBuilder::Ask(const CString& sql, DbTableInfo* answer, CString& name) {
    // A query over several tables refreshes those after the first within its own call.
    constexpr std::size_t DeepestCall = 200;
    const RefreshScope scope(*this);
    name = NextName();
    CString text = sql;
    JoinLines(text);
    LowerOutsideQuotes(text);
    if (text.Find("select") < 0) {
        return FindTable(WithoutBrackets(text), name);
    }
    if (m_depth > DeepestCall) {
        LogCycle(sql);
        return false;
    }
    const double start = platform::CounterSeconds();
    Params params;
    if (!Analyze(text, params) || !Answer(sql, params, answer, name)) {
        if (answer != nullptr) {
            // The caller did not ask for this text, and it is tried again each time.
            RemoveFilters(params);
        }
        return false;
    }
    RemoveFilters(params);
    m_log.Print(Log::Kind::QueryReport, Log::Place(name), "Query '%s' processed in %.4f [s]",
                name.ToUtf8().c_str(), platform::CounterSeconds() - start);
    return true;
}

CString QueryBuilder::NextName() {
    CString name;
    name.Format("Query_%d", static_cast<int>(Upcalls::NextQueryNumber()));
    return name;
}

void QueryBuilder::LogCycle(const CString& sql) {
    m_log.Print(Log::Kind::QueryFault, "Query '%s' stands on itself, or on too many other queries",
                sql.ToUtf8().c_str());
}

bool QueryBuilder::FindTable(const CString& text, CString& name) {
    const DbTableInfo* const info = Find(text);
    if (info == nullptr) {
        m_log.Print(Log::Kind::QueryFault, Log::Place(text), "SQL Analyze - table '%s' not found",
                    text.ToUtf8().c_str());
        return false;
    }
    name = info->GetName();
    return true;
}

bool QueryBuilder::Answer(const CString& sql, const Params& params, DbTableInfo* answer, CString& name) {
    DbTableInfo& source = *m_registry.Find(params.tables.front());
    const bool isRefresh = answer != nullptr;
    if (!isRefresh) {
        answer = m_registry.FindQuery(sql);
    }
    if (answer != nullptr) {
        // The answer's own source can't depend on it, unless they share their contents.
        const bool mayBeBelow = answer->GetRelated() != &source || m_registry.IsShared(*answer);
        if (mayBeBelow && source.DependsOn(*answer)) {
            LogCycle(sql);
            return false;
        }
        name = answer->GetName();
        if (!isRefresh && params.tables.size() == 1 && answer->GetRelated() == &source && IsInStep(*answer)) {
            return true;
        }
    }
    if (!isRefresh && IsWholeTable(params, *source.GetDescr())) {
        name = source.GetName();
        return true;
    }
    if (!params.clause->IsValid()) {
        return false;
    }
    while (answer == nullptr && m_registry.Find(name) != nullptr) {
        name = NextName();
    }
    return Build(sql, params, source, answer, name);
}

bool QueryBuilder::Build(const CString& sql, const Params& params, DbTableInfo& source, DbTableInfo* answer,
                         const CString& name) {
    DbTableDescr& descr = *source.GetDescr();
    std::vector<uint64> fields;
    std::vector<uint64> order;
    if (SelectsAll(params)) {
        fields.resize(descr.size());
        std::iota(fields.begin(), fields.end(), uint64{0});
    } else if (!FindFields(params, params.fields, descr, fields)) {
        return false;
    }
    if (!FindFields(params, params.order, descr, order)) {
        return false;
    }

    m_reader.ReadUntil(source.GetData());
    if (!source.GetData()->ParseXmlData()) {
        m_log.Add(UnreadRowsEntry(params.tables.front(), m_reader.LastReadError()));
        return false;
    }
    DbRows& rows = *source.GetData()->GetRows();
    const long stamp = source.GetData()->LatestStamp();
    std::vector<uint64> found = FindRows(params, descr, rows);
    if (!order.empty()) {
        Pick(OrderOfRows({RowsView(rows), found}, order), found);
        if (params.desc) {
            std::reverse(found.begin(), found.end());
        }
    }
    if (params.distinct) {
        Pick(DistinctRows({RowsView(rows), found}, fields), found);
    }

    const bool isStampKnown = source.GetData()->IsLatestStampKnown();
    if (answer == nullptr) {
        // An answer that can't be finished is never registered.
        auto newDescr = std::make_unique<DbTableDescr>(&m_database);
        auto newData = std::make_unique<DbTableData>(&m_database, newDescr.get());
        Fill(*newDescr, *newData, params, descr, rows, fields, found);
        answer = m_registry.Create(name, DbTableInfo::Query, newDescr.get(), newData.get(), sql, &source);
        static_cast<void>(newDescr.release());
        static_cast<void>(newData.release());
    } else {
        // Nor is one in step.
        answer->SetSyncStamp(NoStamp);
        m_registry.Renew(*answer, source);
        Fill(*answer->GetDescr(), *answer->GetData(), params, descr, rows, fields, found);
    }
    if (isStampKnown) {
        source.GetData()->ConfirmLatestStamp();
    }
    answer->SetSyncStamp(stamp);
    // An answer is no change of the catalog.
    answer->GetDescr()->Sync();
    answer->GetData()->Sync();
    return true;
}

void QueryBuilder::Fill(DbTableDescr& toDescr, DbTableData& toData, const Params& params, DbTableDescr& descr,
                        DbRows& rows, std::vector<uint64>& fields, std::vector<uint64>& found) {
    if (!SelectsAll(params)) {
        CopyFields(descr, fields, toDescr);
        toData.GetRows()->AddRows(found.size(), false);
        RowsView target(*toData.GetRows());
        CopyCells({RowsView(rows), found}, fields, target, 0, 0);
        return;
    }
    // Rows show their cells by position, so every field is there, whatever its name.
    for (const DbFieldDescr* const field : descr) {
        toDescr.AppendField(*field);
    }
    for (uint64& position : found) {
        position = rows.GetStoragePosition(position);
    }
    toData.Bind(rows.GetLender(), found);
}

bool QueryBuilder::FindFields(const Params& params, const std::vector<CString>& names,
                              const DbTableDescr& descr, std::vector<uint64>& fields) {
    const QueryFields known(descr);
    std::vector<bool> isFound(descr.size());
    for (const CString& name : names) {
        const int field = known.Find(name);
        if (field < 0) {
            m_log.Add(NoFieldEntry(name, params.tables.front()));
            return false;
        }
        const auto position = static_cast<std::size_t>(field);
        if (!isFound[position]) {
            isFound[position] = true;
            fields.push_back(position);
        }
    }
    return true;
}

void QueryBuilder::RemoveFilters(const Params& params) {
    if (params.filters.empty()) {
        return;
    }
    if (const DbTableInfo* const source = m_registry.Find(params.tables.front())) {
        source->GetDescr()->TakeFilters(params.filters);
    }
}

}  // namespace quillet
