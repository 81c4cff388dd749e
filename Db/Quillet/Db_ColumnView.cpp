#include "Quillet/Db_ColumnView.h"

#include <algorithm>

#include "Quillet/Db_Rows.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/rows/ColumnBlock.h"
#include "Quillet/rows/RowsView.h"

using quillet::CComVariant;
using quillet::CellView;
using quillet::ColumnBlock;
using quillet::ColumnStore;
using quillet::CString;
using quillet::RowsView;

namespace {

using Type = DbColumnView::Type;

static_assert(DbColumnView::BlockRows == ColumnBlock::MostSlots);

// Rows that follow one another in the table's columns are copied if there are fewer.
constexpr std::uint32_t FewestSharedRows = 256;
constexpr std::size_t BitsPerElement = 64;

Type TypeOfKind(CellView::Kind kind) {
    switch (kind) {
        case CellView::Kind::Double:
            return Type::Double;
        case CellView::Kind::Float:
            return Type::Float;
        case CellView::Kind::Long:
            return Type::Long;
        case CellView::Kind::Short:
            return Type::Short;
        case CellView::Kind::Boolean:
            return Type::Boolean;
        case CellView::Kind::Text:
            return Type::Text;
        default:
            return Type::Other;
    }
}

}  // namespace

// Fills the contents with the rows of a table.
class DbColumnView::Maker {
public:
    Maker(const RowsView& rows, const quillet::ColumnKinds& kinds, Contents& contents)
        : m_rows(rows), m_kinds(kinds), m_contents(contents) {}

    void Make() {
        uint64 begin = 0;
        uint64 position = 0;
        while (position < m_rows.Count()) {
            const ColumnStore::Run run =
                m_rows.HasRow(position) ? m_rows.RunAt(position) : ColumnStore::Run();
            // No row is added to a block that is full, so that it can be kept.
            if (run.m_rows >= FewestSharedRows && run.m_block->Used() == ColumnBlock::MostSlots) {
                CopyRows(begin, position);
                AddBlock(position, run.m_rows, m_rows.ShareBlockOf(position), run.m_slot);
                begin = position + run.m_rows;
            }
            position += std::max(run.m_rows, 1U);
        }
        CopyRows(begin, position);
    }

private:
    void CopyRows(uint64 begin, uint64 end) {
        for (; begin < end; begin += BlockRows) {
            AddBlock(begin, static_cast<std::uint32_t>(std::min<uint64>(BlockRows, end - begin)), nullptr, 0);
        }
    }

    // The rows are copied where they don't follow one another in a block, from a slot on.
    void AddBlock(uint64 first, std::uint32_t rows, const std::shared_ptr<const ColumnBlock>& shared,
                  std::uint32_t slot) {
        Block& block = m_contents.m_blocks.emplace_back();
        block.m_firstRow = first;
        block.m_rows = rows;
        block.m_columns.resize(m_kinds.size());
        for (std::size_t i = 0; i < m_kinds.size(); ++i) {
            Block::Column& column = block.m_columns[i];
            column.m_type = m_contents.m_fields[i].m_type;
            if (shared != nullptr && i < shared->Columns() && shared->KindOf(i) == m_kinds[i] &&
                column.m_type != Type::Other && shared->Filled(i) >= slot + rows) {
                Take(shared, i, slot, rows, column);
            } else {
                Copy(first, rows, i, column);
            }
        }
    }

    void Copy(uint64 first, std::uint32_t rows, std::size_t field, Block::Column& column) const {
        const auto block = std::make_shared<ColumnBlock>(quillet::ColumnKinds{m_kinds[field]});
        block->Reserve(rows);
        block->Use(rows);
        for (std::uint32_t row = 0; row < rows; ++row) {
            const uint64 position = first + row;
            if (!m_rows.HasRow(position)) {
                continue;
            }
            CellView cell = m_rows.Store()
                                .CellInSlot<ColumnStore::Reading::Stored>(m_rows.SlotOf(position), field)
                                .Plain();
            if (cell.GetKind() != CellView::Kind::Null) {
                cell = cell.Unflagged();
            }
            if (!block->Put(0, row, cell)) {
                cell.CopyTo(column.m_others.emplace_back(row, CComVariant()).second);
            }
        }
        block->FillUp();
        Take(block, 0, 0, rows, column);
        for (const auto& [row, value] : column.m_others) {
            column.m_states[row] = State::OtherType;
        }
    }

    // The values of a column's slots.
    static void Take(const std::shared_ptr<const ColumnBlock>& block, std::size_t from, std::uint32_t slot,
                     std::uint32_t rows, Block::Column& column) {
        column.m_values = block->Values(from) + ColumnBlock::WidthOf(block->KindOf(from)) * slot;
        column.m_texts = block->Texts().data();
        column.m_block = block;
        if (block->States(from) == nullptr) {
            return;
        }
        const std::span<const State> states(block->States(from) + slot, rows);
        if (std::all_of(states.begin(), states.end(), [](State state) { return state == State::Value; })) {
            return;
        }
        column.m_states.assign(states.begin(), states.end());
        column.m_missing.resize((rows + BitsPerElement - 1) / BitsPerElement);
        for (std::size_t row = 0; row < rows; ++row) {
            const std::uint64_t bit = states[row] == State::Value ? 0 : 1;
            column.m_missing[row / BitsPerElement] |= bit << (row % BitsPerElement);
        }
    }

    const RowsView& m_rows;
    const quillet::ColumnKinds& m_kinds;
    Contents& m_contents;
};

DbColumnView::DbColumnView(DbRows& rows) {
    const RowsView view(rows);
    const auto contents = std::make_shared<Contents>();
    contents->m_rows = view.Count();
    const DbTableDescr* const descr = rows.Descr();
    const quillet::ColumnKinds kinds = quillet::ColumnKindsOf(descr);
    contents->m_fields.reserve(kinds.size());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        contents->m_fields.push_back({descr->GetField(static_cast<int>(i)).GetName(), TypeOfKind(kinds[i])});
    }
    Maker(view, kinds, *contents).Make();
    m_contents = contents;
}

const CString& DbColumnView::NameOf(std::size_t column) const {
    static const CString none;
    return column < Columns() ? m_contents->m_fields[column].m_name : none;
}

DbColumnView::Type DbColumnView::TypeOf(std::size_t column) const {
    return column < Columns() ? m_contents->m_fields[column].m_type : Type::Other;
}

std::span<const DbColumnView::Block> DbColumnView::Blocks() const {
    return m_contents == nullptr ? std::span<const Block>() : m_contents->m_blocks;
}

template <typename Value>
std::span<const Value> DbColumnView::Block::ValuesOf(std::size_t column, Type type) const {
    if (column >= m_columns.size() || m_columns[column].m_type != type) {
        return {};
    }
    return {reinterpret_cast<const Value*>(m_columns[column].m_values), m_rows};
}

std::span<const double> DbColumnView::Block::Doubles(std::size_t column) const {
    return ValuesOf<double>(column, Type::Double);
}

std::span<const float> DbColumnView::Block::Floats(std::size_t column) const {
    return ValuesOf<float>(column, Type::Float);
}

std::span<const LONG> DbColumnView::Block::Longs(std::size_t column) const {
    return ValuesOf<LONG>(column, Type::Long);
}

std::span<const SHORT> DbColumnView::Block::Shorts(std::size_t column) const {
    return ValuesOf<SHORT>(column, Type::Short);
}

std::span<const VARIANT_BOOL> DbColumnView::Block::Booleans(std::size_t column) const {
    return ValuesOf<VARIANT_BOOL>(column, Type::Boolean);
}

DbColumnView::Texts DbColumnView::Block::TextsOf(std::size_t column) const {
    const std::span<const TextPlace> places = ValuesOf<TextPlace>(column, Type::Text);
    return places.empty() ? Texts() : Texts(m_columns[column].m_texts, places);
}

std::span<const std::uint64_t> DbColumnView::Block::Missing(std::size_t column) const {
    return column < m_columns.size() ? m_columns[column].m_missing : std::span<const std::uint64_t>();
}

DbColumnView::State DbColumnView::Block::StateOf(std::size_t column, std::size_t row) const {
    if (column >= m_columns.size() || row >= m_rows) {
        return State::Empty;
    }
    const std::vector<State>& states = m_columns[column].m_states;
    return states.empty() ? State::Value : states[row];
}

CComVariant DbColumnView::Block::Value(std::size_t column, std::size_t row) const {
    CComVariant value;
    switch (StateOf(column, row)) {
        case State::Empty:
            break;
        case State::Null:
        case State::FlaggedNull:
            value.vt = VT_NULL;
            break;
        case State::OtherType: {
            const auto& others = m_columns[column].m_others;
            const auto other =
                std::lower_bound(others.begin(), others.end(), row,
                                 [](const auto& entry, std::size_t wanted) { return entry.first < wanted; });
            value = other->second;
            break;
        }
        case State::Value:
            TypedValue(column, row).CopyTo(value);
            break;
    }
    return value;
}

CellView DbColumnView::Block::TypedValue(std::size_t column, std::size_t row) const {
    switch (m_columns[column].m_type) {
        case Type::Double:
            return CellView::Double(Doubles(column)[row]);
        case Type::Float:
            return CellView::Float(Floats(column)[row]);
        case Type::Long:
            return CellView::Long(Longs(column)[row]);
        case Type::Short:
            return CellView::Short(Shorts(column)[row]);
        case Type::Boolean:
            return CellView::Boolean(Booleans(column)[row]);
        case Type::Text:
            return CellView::Text(TextsOf(column)[row]);
        case Type::Other:
            break;
    }
    return {};
}
