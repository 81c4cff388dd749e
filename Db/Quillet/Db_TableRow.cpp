#include "Quillet/Db_TableRow.h"

#include <algorithm>
#include <memory>
#include <new>

#include "Quillet/Db_LogEntry.h"
#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/base/OutOfRange.h"
#include "Quillet/base/Reserve.h"
#include "Quillet/rows/CellComparison.h"
#include "Quillet/rows/RowWriting.h"
#include "Quillet/values/FieldNames.h"
#include "Quillet/xml/Face.h"

using quillet::CComVariant;
using quillet::CompareCells;
using quillet::CString;
using quillet::WideString;

namespace {

// Attribute text as wide characters, without an allocation for each.
class WideText {
public:
    const WCHAR* Set(std::string_view utf8) {
        m_text.clear();
        quillet::AppendWide(utf8, m_text);
        return m_text.c_str();
    }

private:
    WideString m_text;
};

}  // namespace

DbTableRow::DbTableRow(DbItem* parent) : DbItem(parent) {
}

DbTableRow::~DbTableRow() {
    ReleaseChildrenOutside(m_block, m_block + m_blockCells);
    erase(std::remove_if(begin(), end(), [&](const DbFieldValue* cell) { return IsInBlock(cell); }), end());
    if (!empty()) {
        // A cell at two positions is deleted once.
        std::sort(begin(), end());
        erase(std::unique(begin(), end()), end());
        for (const DbFieldValue* cell : *this) {
            delete cell;
        }
    }
    // A number has nothing to free; leaving it alone avoids writing to all of the table's memory.
    for (DbFieldValue* cell = m_block; cell != m_block + m_blockCells; ++cell) {
        if (cell->m_value.OwnsMemory() || cell->HasChildren()) {
            cell->DbFieldValue::~DbFieldValue();
        }
    }
}

void DbTableRow::SetDescr(DbTableDescr* descr) {
    m_descr = descr == nullptr ? nullptr : descr->LifeToken();
}

// -1 for an unknown name, and where there is no structure.
int DbTableRow::FieldIndex(const CString& name) const {
    const DbTableDescr* const descr = GetDescr();
    return descr == nullptr ? -1 : descr->GetFieldIndex(name);
}

std::size_t DbTableRow::PieceBytes(std::size_t cells) {
    return sizeof(DbTableRow) + cells * sizeof(DbFieldValue) + quillet::ChildList::BytesFor(cells);
}

void DbTableRow::MakeCells(std::size_t count) {
    reserve(count);
    m_block = reinterpret_cast<DbFieldValue*>(this + 1);
    PlaceChildren(m_block + count, count);
    for (; m_blockCells < count; ++m_blockCells) {
        auto* const cell = new (m_block + m_blockCells) DbFieldValue(this, static_cast<int>(m_blockCells));
        cell->m_inBlock = true;
        push_back(cell);
    }
}

std::unique_ptr<DbFieldValue> DbTableRow::MakeCell(uint64 index, const DbFieldValue& value) {
    auto cell = std::make_unique<DbFieldValue>(this, static_cast<int>(index));
    cell->m_value = value.GetVariant();
    quillet::ReserveOneMore(*this);
    return cell;
}

void DbTableRow::InsertCell(uint64 index, std::unique_ptr<DbFieldValue> cell) {
    insert(begin() + static_cast<std::ptrdiff_t>(std::min<uint64>(index, size())), cell.release());
}

void DbTableRow::EraseCell(uint64 index) {
    if (index < size()) {
        const DbFieldValue* const cell = at(index);
        if (std::count(begin(), end(), cell) == 1) {
            delete cell;
        }
        erase(begin() + static_cast<std::ptrdiff_t>(index));
    }
}

bool DbTableRow::Save(IDispatch* document, IDispatch* parentElement) {
    std::size_t position = 0;
    try {
        const DbTableDescr* const descr = GetDescr();
        quillet::AppendRow(
            quillet::xml::Node(document), quillet::xml::Node(parentElement), size(),
            [&](std::size_t field) -> const std::string& { return quillet::NameInFile(descr, field); },
            [&](std::size_t field) { return quillet::CellView::Variant(GetField(field).GetVariant()); },
            position);
        return true;
    } catch (const quillet::xml::DomError&) {
        LogFailedSave(position);
        return false;
    }
}

void DbTableRow::LogFailedSave(std::size_t position) {
    auto* const rows = dynamic_cast<DbRows*>(LiveParent());
    if (rows == nullptr) {
        return;
    }
    const DbTableDescr* const descr = GetDescr();
    const auto* const data = dynamic_cast<DbTableData*>(rows->LiveParent());
    const CString table = data == nullptr ? CString() : data->TableName();
    const int field = static_cast<int>(position);
    const CString name = descr == nullptr ? CString() : descr->GetField(field).GetName();
    CString line;
    if (descr != nullptr && data != nullptr) {
        for (const quillet::UnsavableField& unsavable : quillet::UnsavableFields(*descr)) {
            if (unsavable.m_field == position) {
                line.Format("Table '%s' can't be saved: %s", table.ToUtf8().c_str(), unsavable.m_why.c_str());
                rows->LogToDatabase({DbLogEntry::Kind::SaveFault, line, table, 0, name});
            }
        }
    }
    line.Format("Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), %s, %d",
                descr == nullptr ? "" : descr->GetField(field).GetSafeName().ToUtf8().c_str(), field);
    rows->LogToDatabase({DbLogEntry::Kind::SaveTrace, line, table, rows->NumberOf(*this), name});
}

bool DbTableRow::Load(IDispatch* element) {
    try {
        const quillet::xml::Node node(element);
        const DbTableDescr* const descr = GetDescr();
        if (node.IsNull() || !node.IsElement() || descr == nullptr) {
            return false;
        }
        WideText wide;
        std::size_t values = 0;
        quillet::xml::AttributeReader attributes(node);
        for (; attributes.Next(); ++values) {
            if (values < size() && values < descr->size()) {
                const WCHAR* const text = wide.Set(attributes.Value());
                GetField(values).ValueFromString(*descr->at(values), text);
            }
        }
        if (values != size()) {
            if (auto* const rows = dynamic_cast<DbRows*>(LiveParent())) {
                rows->NoteMisfit();
            }
        }
        return true;
    } catch (const quillet::xml::DomError&) {
        return false;
    }
}

uint64 DbTableRow::GetSize() const {
    return EstimateOf(0) - DbItem::EstimateOf(0) + DbItem::GetSize();
}

uint64 DbTableRow::EstimateOf(std::size_t cells) {
    constexpr uint64 OwnEstimate = 8;
    return DbItem::EstimateOf(cells) + OwnEstimate;
}

void DbTableRow::SetFieldValuePtr(uint64 i, DbFieldValue* v) {
    if (i < size()) {
        at(i) = v;
    }
}

DbFieldValue& DbTableRow::NoCell() {
    return quillet::OutOfRange<DbFieldValue>();
}

DbFieldValue& DbTableRow::operator[](const CString& name) {
    return (*this)[static_cast<uint64>(FieldIndex(name))];
}

const DbFieldValue& DbTableRow::operator[](const CString& name) const {
    return (*this)[static_cast<uint64>(FieldIndex(name))];
}

void DbTableRow::SetValue(const CString& name, const CString& text) {
    const int index = FieldIndex(name);
    if (index >= 0) {
        GetField(static_cast<uint64>(index)).ValueFromString(GetDescr()->GetField(index), text);
        SetChanged();
    }
}

void DbTableRow::SetValue(const CString& name, const CComVariant& v) {
    (*this)[name].SetValue(v);
}

void DbTableRow::Evaluate() {
    if (DbTableDescr* const descr = GetDescr()) {
        descr->Evaluate(*this);
    }
}

bool DbTableRow::Compare(std::vector<uint64>& fields, const DbTableRow& other) {
    return CompareEx(fields, other) != CmpLess;
}

bool DbTableRow::Compare(std::vector<CString>& names,
                         bool (*function)(const CComVariant&, const CComVariant&), const DbTableRow& other) {
    std::vector<uint64> fields;
    fields.reserve(names.size());
    for (const CString& name : names) {
        fields.push_back(static_cast<uint64>(FieldIndex(name)));
    }
    return Compare(fields, function, other);
}

bool DbTableRow::Compare(std::vector<uint64>& fields,
                         bool (*function)(const CComVariant&, const CComVariant&), const DbTableRow& other) {
    return function != nullptr && std::all_of(fields.begin(), fields.end(), [&](uint64 field) {
               return function(GetField(field).GetVariant(), other.GetField(field).GetVariant());
           });
}

DbTableRow::eCmpResult DbTableRow::CompareEx(const std::vector<uint64>& fields, const DbTableRow& other) {
    for (const uint64 field : fields) {
        const eCmpResult result =
            CompareCells(GetField(field).GetVariant(), other.GetField(field).GetVariant());
        if (result != CmpEqual) {
            return result;
        }
    }
    return CmpEqual;
}

DbTableRow::eCmpResult DbTableRow::CompareEx(const std::vector<uint64>& fields,
                                             const std::vector<CComVariant>& key, const DbTableRow& row) {
    for (std::size_t i = 0; i < std::min(fields.size(), key.size()); ++i) {
        const eCmpResult result = CompareCells(key[i], row.GetField(fields[i]).GetVariant());
        if (result != CmpEqual) {
            return result;
        }
    }
    return CmpEqual;
}

DbTableRow::eCmpResult DbTableRow::CompareEx(const std::vector<uint64>& fields, const CComVariant* key, int,
                                             const DbTableRow& row) {
    for (std::size_t i = 0; key != nullptr && i < fields.size(); ++i) {
        const eCmpResult result = CompareCells(key[i], row.GetField(fields[i]).GetVariant());
        if (result != CmpEqual) {
            return result;
        }
    }
    return CmpEqual;
}
