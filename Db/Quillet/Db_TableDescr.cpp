#include "Quillet/Db_TableDescr.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "Quillet/base/OutOfRange.h"
#include "Quillet/base/Reserve.h"
#include "Quillet/base/Rollback.h"
#include "Quillet/registry/Upcalls.h"
#include "Quillet/values/Names.h"
#include "Quillet/xml/Face.h"

using quillet::CString;
using quillet::Lowered;
using quillet::WithoutBrackets;

namespace {

std::vector<CString> ParseFieldList(const CString& list) {
    std::vector<CString> names;
    CString name;
    bool inBrackets = list[0] == '[';
    for (const WCHAR unit : list.View()) {
        if (unit == ',') {
            names.push_back(WithoutBrackets(name));
            name.Empty();
            continue;
        }
        if (unit == '[' || unit == ']') {
            inBrackets = unit == '[';
        }
        if (unit != ' ' || inBrackets) {
            name += unit;
        }
    }
    if (!name.IsEmpty()) {
        names.push_back(name);
    }
    return names;
}

}  // namespace

DbTableDescr::DbIndex::DbIndex(const CString& name) : m_name(Lowered(name)) {
}

DbTableDescr::DbIndex::DbIndex(const CString& name, const std::vector<CString>& fields)
    : m_name(Lowered(name)), m_fieldNames(fields) {
}

DbTableDescr::DbIndex::DbIndex(const CString& name, const CString& fieldList)
    : m_name(Lowered(name)), m_fieldNames(ParseFieldList(fieldList)) {
}

DbTableDescr::DbIndex::DbIndex(const DbIndex& other)
    : m_name(other.m_name),
      m_fieldIndexes(other.m_fieldIndexes),
      m_fieldNames(other.m_fieldNames),
      m_rowOrder(other.m_rowOrder),
      m_ascendingTypes(other.m_ascendingTypes) {
}

DbTableDescr::DbIndex& DbTableDescr::DbIndex::operator=(const DbIndex& other) {
    if (this != &other) {
        m_name = other.m_name;
        m_fieldIndexes = other.m_fieldIndexes;
        m_fieldNames = other.m_fieldNames;
        m_rowOrder = other.m_rowOrder;
        m_ascendingTypes = other.m_ascendingTypes;
    }
    return *this;
}

DbTableDescr::DbIndex::~DbIndex() {
    *m_life = nullptr;
}

void DbTableDescr::DbIndex::AddField(CString name) {
    m_fieldNames.push_back(std::move(name));
}

void DbTableDescr::DbIndex::MoveFieldIndexes(std::vector<uint64>& positions) {
    if (m_fieldIndexes != positions) {
        m_fieldIndexes.swap(positions);
        m_ascendingTypes.reset();
    }
}

DbTableDescr::DbTableDescr(DbDatabase* db) : DbItem(quillet::Upcalls::AsItem(db)) {
}

DbTableDescr::~DbTableDescr() {
    *m_life = nullptr;
    ClearAll();
}

bool DbTableDescr::Save(IDispatch* document, IDispatch* parentElement) {
    return std::all_of(begin(), end(),
                       [&](DbFieldDescr* field) { return field->Save(document, parentElement); });
}

bool DbTableDescr::Load(IDispatch* element) {
    try {
        const quillet::xml::Node node(element);
        if (node.IsNull()) {
            return false;
        }
        quillet::xml::Face face;
        int index = 0;
        for (quillet::xml::Node child = node.FirstChild(); !child.IsNull(); child = child.NextSibling()) {
            quillet::ReserveOneMore(*this);
            push_back(new DbFieldDescr(this, index++));
            if (!back()->Load(face.Show(child))) {
                return false;
            }
        }
        return true;
    } catch (const quillet::xml::DomError&) {
        return false;
    }
}

DbTableDescr::DbIndex* DbTableDescr::CreateIndex(CString name) {
    auto index = std::make_unique<DbIndex>(name);
    const CString key = Lowered(name);
    if (!CreateIndex(name, index.get())) {
        return nullptr;
    }
    // Registered, or already deleted in favour of the one that exists.
    static_cast<void>(index.release());
    const auto found = m_indexes.find(key);
    return found == m_indexes.end() ? nullptr : found->second.get();
}

bool DbTableDescr::CreateIndex(CString name, const std::vector<CString>& fields) {
    if (FindIndex(name) != nullptr) {
        return true;
    }
    auto index = std::make_unique<DbIndex>(name, fields);
    const bool taken = CreateIndex(name, index.get());
    if (taken) {
        static_cast<void>(index.release());
    }
    return taken;
}

bool DbTableDescr::CreateIndex(CString name, const CString& fieldList) {
    return CreateIndex(std::move(name), ParseFieldList(fieldList));
}

bool DbTableDescr::CreateIndex(CString name, DbIndex* index) {
    if (name.IsEmpty() || !CheckIndexFields(index)) {
        return false;
    }
    name.MakeLower();
    const auto registered = std::find_if(m_indexes.begin(), m_indexes.end(),
                                         [&](const auto& entry) { return entry.second.get() == index; });
    const bool isRegistered = registered != m_indexes.end();
    if (m_indexes.count(name) > 0) {
        if (!isRegistered) {
            delete index;
        }
        return true;
    }
    std::vector<uint64> positions = PositionsOf(*index);
    // The index stays the caller's until it is registered.
    const auto keeper = std::make_shared<std::unique_ptr<DbIndex>>();
    m_indexes.emplace(name, isRegistered ? registered->second : std::shared_ptr<DbIndex>(keeper, index));
    if (!isRegistered) {
        keeper->reset(index);
    }
    index->GetFieldIndexes() = std::move(positions);
    return true;
}

std::vector<uint64> DbTableDescr::PositionsOf(const DbIndex& index) const {
    std::vector<uint64> positions;
    positions.reserve(index.GetFieldNames().size());
    for (const CString& field : index.GetFieldNames()) {
        const int position = GetFieldIndex(field);
        positions.push_back(position == -1 ? DbIndex::NoField : static_cast<uint64>(position));
    }
    return positions;
}

std::vector<std::vector<uint64>> DbTableDescr::IndexPositions() const {
    std::vector<std::vector<uint64>> positions;
    positions.reserve(m_indexes.size());
    for (const auto& [name, index] : m_indexes) {
        positions.push_back(PositionsOf(*index));
    }
    return positions;
}

void DbTableDescr::MoveIndexPositions(std::vector<std::vector<uint64>>& positions) {
    auto next = positions.begin();
    for (const auto& [name, index] : m_indexes) {
        index->MoveFieldIndexes(*next++);
    }
}

void DbTableDescr::Evaluate(const DbTableRow& row) {
    for (const std::unique_ptr<DbFilter>& filter : m_filters) {
        filter->Evaluate(row);
    }
}

DbFilter* DbTableDescr::AddFilter(CString left, CString op, CString right) {
    std::unique_ptr<DbFilter> filter = DbFilter::Create(OperandOf(left), op, OperandOf(right));
    if (filter == nullptr) {
        return nullptr;
    }
    m_filters.push_back(std::move(filter));
    return m_filters.back().get();
}

DbFilter::Operand DbTableDescr::OperandOf(const CString& text) const {
    const int index = GetFieldIndex(text);
    return index == -1 ? DbFilter::Operand{-1, VT_EMPTY, text}
                       : DbFilter::Operand{index, GetField(index).GetType(), {}};
}

void DbTableDescr::ClearFilters() {
    m_filters.clear();
}

std::vector<std::unique_ptr<DbFilter>> DbTableDescr::TakeFilters(const std::vector<DbFilter*>& filters) {
    const std::unordered_set<const DbFilter*> list(filters.begin(), filters.end());
    std::vector<std::unique_ptr<DbFilter>> taken;
    taken.reserve(filters.size());
    const auto isElsewhere = [&](const std::unique_ptr<DbFilter>& filter) {
        return list.count(filter.get()) == 0;
    };
    const auto first = std::stable_partition(m_filters.begin(), m_filters.end(), isElsewhere);
    taken.assign(std::make_move_iterator(first), std::make_move_iterator(m_filters.end()));
    m_filters.erase(first, m_filters.end());
    return taken;
}

bool DbTableDescr::DeleteIndex(CString name) {
    return m_indexes.erase(Lowered(std::move(name))) > 0;
}

void DbTableDescr::Clear() {
    quillet::Upcalls::FieldsWillChange(LiveParent(), *this);
    ClearAll();
    SetChanged();
}

void DbTableDescr::ClearAll() {
    m_indexes.clear();
    m_names.clear();
    m_filters.clear();
    ReleaseEach([this](auto release) {
        for (DbFieldDescr* const field : *this) {
            if (field != nullptr) {
                release(*field);
            }
        }
    });
    for (const DbFieldDescr* field : *this) {
        delete field;
    }
    clear();
}

uint64 DbTableDescr::GetSize() const {
    constexpr uint64 OwnEstimate = 9;
    return DbItem::GetSize() + OwnEstimate;
}

int DbTableDescr::GetFieldIndex(const CString& name) const {
    if (m_namesStale) {
        m_names.clear();
        m_namedFields = 0;
        m_namedAt = DbFieldDescr::Renames();
        for (std::size_t i = 0; i < size(); ++i) {
            NameField(i);
        }
        m_namesStale = false;
    }
    const auto found = m_names.find(Lowered(WithoutBrackets(name)));
    return found == m_names.end() ? -1 : found->second;
}

bool DbTableDescr::AreNamesKnown() const {
    return !m_namesStale && m_namedFields == size() && m_namedAt == DbFieldDescr::Renames();
}

// Of fields with one name the first is found.
void DbTableDescr::NameField(std::size_t position) const {
    m_names.emplace(Lowered(at(position)->GetName()), static_cast<int>(position));
    m_namedFields = position + 1;
}

bool DbTableDescr::IsField(CString name) const {
    return GetFieldIndex(name) != -1;
}

const DbFieldDescr& DbTableDescr::GetField(int i) const {
    return i >= 0 && static_cast<uint64>(i) < size() ? *at(static_cast<uint64>(i))
                                                     : quillet::OutOfRange<DbFieldDescr>();
}

const DbFieldDescr& DbTableDescr::GetField(const CString& name) const {
    return GetField(GetFieldIndex(name));
}

DbFieldDescr& DbTableDescr::operator[](uint64 i) {
    return i < size() ? *at(i) : quillet::OutOfRange<DbFieldDescr>();
}

DbFieldDescr& DbTableDescr::operator[](const CString& name) {
    return (*this)[static_cast<uint64>(GetFieldIndex(name))];
}

bool DbTableDescr::CreateField(const CString& name, bool key, DbFieldDescr::eFieldType type) {
    if (GetFieldIndex(name) != -1) {
        return false;
    }
    Append(name, key, DbFieldDescr::FieldTypeToVariantType(type));
    return true;
}

bool DbTableDescr::CreateField(const DbFieldDescr& field) {
    return CreateField(field.GetName(), field.IsKey(), field.GetDbType());
}

void DbTableDescr::AppendField(const DbFieldDescr& field) {
    Append(field.GetName(), field.IsKey(), field.GetType());
}

void DbTableDescr::Append(const CString& name, bool key, VARTYPE type) {
    quillet::Upcalls::FieldsWillChange(LiveParent(), *this);
    // An existing lookup need not be rebuilt for one more name.
    m_namesStale = !AreNamesKnown();
    const std::size_t position = size();
    auto field = std::make_unique<DbFieldDescr>(this, static_cast<int>(position));
    field->SetName(name);
    field->SetKey(key);
    field->SetType(type);
    push_back(field.get());
    quillet::Rollback appended([this] {
        pop_back();
        m_namesStale = true;
    });
    if (!m_namesStale) {
        NameField(position);
        m_namedAt = DbFieldDescr::Renames();
    }
    std::vector<std::vector<uint64>> positions = IndexPositions();
    SetChanged();
    quillet::Upcalls::FieldsChanged(LiveParent(), *this, position, true);
    appended.Keep();
    static_cast<void>(field.release());
    MoveIndexPositions(positions);
}

bool DbTableDescr::DeleteField(int i) {
    if (i < 0 || static_cast<uint64>(i) >= size()) {
        return false;
    }
    quillet::Upcalls::FieldsWillChange(LiveParent(), *this);
    std::unique_ptr<DbFieldDescr> field(at(static_cast<uint64>(i)));
    erase(begin() + i);
    m_namesStale = true;
    quillet::Rollback erased([&] {
        // The room is there.
        insert(begin() + i, field.release());
        m_namesStale = true;
    });
    std::vector<std::vector<uint64>> positions = IndexPositions();
    quillet::Upcalls::FieldsChanged(LiveParent(), *this, static_cast<uint64>(i), false);
    erased.Keep();
    MoveIndexPositions(positions);
    SetChanged();
    return true;
}

bool DbTableDescr::DeleteField(const CString& name) {
    return DeleteField(GetFieldIndex(name));
}

bool DbTableDescr::CheckIndexFields(const DbIndex* index) const {
    return index != nullptr && std::all_of(index->GetFieldNames().begin(), index->GetFieldNames().end(),
                                           [&](const CString& name) { return IsField(name); });
}

DbTableDescr::DbIndex* DbTableDescr::FindIndex(const CString& name) const {
    const auto found = m_indexes.find(Lowered(name));
    return found == m_indexes.end() ? nullptr : found->second.get();
}

void DbTableDescr::AppendFilter(std::unique_ptr<DbFilter> filter) {
    if (filter != nullptr) {
        m_filters.push_back(std::move(filter));
    }
}

std::vector<std::unique_ptr<DbFilter>> DbTableDescr::TakeAllFilters() {
    return std::exchange(m_filters, {});
}
