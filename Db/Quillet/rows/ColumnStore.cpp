#include "Quillet/rows/ColumnStore.h"

#include <algorithm>
#include <new>
#include <numeric>
#include <typeinfo>
#include <utility>

#include "Quillet/Db_Rows.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/base/Reserve.h"
#include "Quillet/base/Rollback.h"

namespace quillet {

namespace {

// A block of so many slots is packed when no more than one in so many is in use.
constexpr std::uint32_t FewestToRepack = 64;
constexpr std::uint32_t RepackFactor = 4;

const DbTableDescr* DescrOf(const ColumnStore::Structure& structure) {
    return structure == nullptr ? nullptr : *structure;
}

// Whether the field gives every row the same default value; a host's class may give each another.
bool HasOneDefault(const DbFieldDescr& field) {
    return typeid(field) == typeid(DbFieldDescr);
}

}  // namespace

ColumnKinds ColumnKindsOf(const DbTableDescr* descr) {
    ColumnKinds kinds;
    if (descr != nullptr) {
        kinds.reserve(descr->size());
        for (const DbFieldDescr* const field : *descr) {
            kinds.push_back(ColumnKindOf(field->GetType()));
        }
    }
    return kinds;
}

// What an object is made of, besides its values.
struct ColumnStore::RowShape {
    DbRows* m_parent;
    // The parent lists the row as its child.
    bool m_isListed;
    const Structure& m_structure;
    std::size_t m_cells;
};

ColumnStore::ColumnStore(DbRows& owner, Structure structure)
    : m_owner(&owner), m_ownerLives(true), m_structure(std::move(structure)) {
}

ColumnStore::~ColumnStore() {
    ForEachMade(0, [](DbTableRow& row) { row.~DbTableRow(); });
}

template <typename Use>
void ColumnStore::ForEachBlock(Use use) const {
    for (const std::shared_ptr<ColumnBlock>& block : m_blocks) {
        if (block != nullptr) {
            use(*block);
        }
    }
}

void ColumnStore::Append(std::size_t rows, DbRows& parent, const Structure& structure, bool initValues) {
    const DbTableDescr* const descr = DescrOf(structure);
    const ColumnKinds kinds = ColumnKindsOf(descr);
    const std::size_t first = m_size;
    ReserveSlots(rows);
    Rollback appended([&] { DropLast(m_size - first); });
    while (m_size - first < rows) {
        AppendSlots(rows - (m_size - first), kinds);
    }
    if (!IsOwnedBy(parent)) {
        for (std::size_t row = first; row < m_size; ++row) {
            MakeRow(SlotOf(row), {&parent, true, structure, kinds.size()});
        }
    }
    for (std::size_t i = 0; initValues && i < kinds.size(); ++i) {
        DbFieldDescr& field = *descr->at(i);
        const bool hasOneDefault = HasOneDefault(field);
        CellView value = CellView::Variant(field.GetVariant());
        for (std::size_t row = first; row < m_size; ++row) {
            if (!hasOneDefault && row > first) {
                value = CellView::Variant(field.GetVariant());
            }
            SetCell(row, i, value);
        }
    }
    appended.Keep();
}

// Takes slots of one block into use, one at least.
void ColumnStore::AppendSlots(std::size_t rows, const ColumnKinds& kinds) {
    ColumnBlock& block = Tail(kinds);
    const auto taken =
        static_cast<std::uint32_t>(std::min<std::size_t>(rows, ColumnBlock::MostSlots - block.Used()));
    block.Reserve(block.Used() + taken);
    const auto slot = static_cast<std::uint32_t>(m_tail << SlotBits) + block.Used();
    if (!m_isDense) {
        for (std::uint32_t i = 0; i < taken; ++i) {
            m_slots.push_back(slot + i);
        }
    }
    block.Use(taken);
    m_live[m_tail] += taken;
    m_size += taken;
}

// The block that the next rows go to; it has room for one at least.
ColumnBlock& ColumnStore::Tail(const ColumnKinds& kinds) {
    if (m_tail != NoBlock && !IsShared(m_tail) && m_blocks[m_tail]->Used() < ColumnBlock::MostSlots &&
        m_blocks[m_tail]->Fits(kinds)) {
        return *m_blocks[m_tail];
    }
    if (m_isDense && m_size % ColumnBlock::MostSlots != 0) {
        ListSlots();
    }
    auto block = std::make_unique<ColumnBlock>(kinds);
    auto place = m_blocks.end();
    if (m_isDense) {
        // An empty tail of another structure is replaced.
        place = m_blocks.begin() + static_cast<std::ptrdiff_t>(m_size >> SlotBits);
    } else {
        place = std::find(m_blocks.begin(), m_blocks.end(), nullptr);
    }
    const auto index = static_cast<std::size_t>(place - m_blocks.begin());
    if (index == MostBlocks) {
        throw std::bad_alloc();
    }
    if (place == m_blocks.end()) {
        ReserveOneMore(m_blocks);
        ReserveOneMore(m_live);
        m_blocks.emplace_back();
        m_live.push_back(0);
    }
    m_blocks[index] = std::move(block);
    m_tail = index;
    return *m_blocks[index];
}

ColumnBlock& ColumnStore::OpenBlock(const ColumnKinds& kinds) {
    const bool isFirst = m_blocks.size() <= 1;
    const std::size_t texts = m_tail == NoBlock ? 0 : m_blocks[m_tail]->TextBytes();
    ReserveSlots(ColumnBlock::MostSlots);
    ColumnBlock& block = Tail(kinds);
    if (block.Used() == 0 && texts > 0) {
        // The next block takes about as much.
        constexpr std::size_t Slack = 64;
        block.ReserveTexts(texts + texts / Slack);
    }
    block.Reserve(isFirst ? block.Used() + 1 : ColumnBlock::MostSlots);
    return block;
}

void ColumnStore::CountRows(std::uint32_t rows) {
    m_size += rows;
    m_live[m_tail] += rows;
}

void ColumnStore::HandOver(DbRows& owner, Structure structure) {
    m_owner = &owner;
    m_ownerLives = true;
    m_structure = std::move(structure);
}

// A row can be deleted without memory after that.
void ColumnStore::ReserveSlots(std::size_t rows) {
    if (m_slots.capacity() < m_size + rows) {
        m_slots.reserve(std::max(m_size + rows, m_slots.capacity() * 2));
    }
}

void ColumnStore::ListSlots() {
    if (m_isDense) {
        m_slots.resize(m_size);
        std::iota(m_slots.begin(), m_slots.end(), 0U);
        m_isDense = false;
    }
}

void ColumnStore::Delete(std::size_t position) {
    const std::uint32_t slot = SlotOf(position);
    if (position + 1 != m_size || IsShared(slot >> SlotBits)) {
        ListSlots();
    }
    if (DbTableRow* const row = MadeRowAt(position)) {
        m_tokens.RowGoes(*row);
        BlockOf(slot).SetRow(WithinBlock(slot), nullptr);
        const std::size_t bytes = DbTableRow::PieceBytes(row->CellsInPiece());
        row->~DbTableRow();
        m_arena.Release(row, bytes);
        --m_made;
    }
    if (!m_isDense) {
        m_slots.erase(m_slots.begin() + static_cast<std::ptrdiff_t>(position));
    }
    --m_size;
    FreeSlot(slot);
}

void ColumnStore::FreeSlot(std::uint32_t slot) {
    const std::size_t index = slot >> SlotBits;
    ColumnBlock& block = *m_blocks[index];
    --m_live[index];
    const bool isShared = IsShared(index);
    if (m_live[index] == 0 && index == m_tail && !isShared) {
        block.Clear();
    } else if (m_live[index] == 0) {
        m_blocks[index].reset();
        m_tail = index == m_tail ? NoBlock : m_tail;
    } else if (WithinBlock(slot) + 1 == block.Used() && !isShared) {
        block.GiveBackLast();
    } else if (block.Used() >= FewestToRepack && m_live[index] * RepackFactor <= block.Used()) {
        try {
            Repack(index);
        } catch (const std::bad_alloc&) {
            // The next deletion tries again.
        }
    }
    if (m_isDense && index != m_tail) {
        // The block before an empty tail has room again.
        m_blocks.resize(index + 1);
        m_live.resize(index + 1);
        m_tail = m_blocks[index] == nullptr ? NoBlock : index;
    }
    if (m_size == 0 && !m_isDense) {
        m_blocks.clear();
        m_live.clear();
        m_slots.clear();
        m_tail = NoBlock;
        m_isDense = true;
    }
}

// Moves the rows of a block together, so that slots of deleted rows don't take memory for ever.
void ColumnStore::Repack(std::size_t index) {
    const ColumnBlock& from = *m_blocks[index];
    auto to = std::make_unique<ColumnBlock>(from);
    to->Reserve(m_live[index]);
    if (from.HasRows()) {
        to->MakeRoomForRows();
    }
    std::vector<std::size_t> positions;
    positions.reserve(m_live[index]);
    for (std::size_t position = 0; position < m_size; ++position) {
        if (m_slots[position] >> SlotBits == index) {
            const std::uint32_t slot = WithinBlock(m_slots[position]);
            const std::uint32_t target = to->Used();
            to->Use(1);
            for (std::size_t column = 0; column < from.Columns(); ++column) {
                to->Put(column, target, from.Get(column, slot));
            }
            if (DbTableRow* const row = from.RowAt(slot)) {
                to->SetRow(target, row);
            }
            positions.push_back(position);
        }
    }
    const auto first = static_cast<std::uint32_t>(index << SlotBits);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        m_slots[positions[i]] = first + static_cast<std::uint32_t>(i);
    }
    m_blocks[index] = std::move(to);
}

void ColumnStore::DropLast(std::size_t rows) {
    for (; rows > 0; --rows) {
        Delete(m_size - 1);
    }
}

DbTableRow& ColumnStore::RowAt(std::size_t position) {
    DbTableRow* const row = MadeRowAt(position);
    return row == nullptr ? MakeRow(SlotOf(position)) : *row;
}

// With the values in the columns.
DbTableRow& ColumnStore::MakeRow(std::uint32_t slot) {
    return MakeRow(slot, {m_owner, m_ownerLives, m_structure, BlockOf(slot).Columns()});
}

DbTableRow& ColumnStore::MakeRow(std::uint32_t slot, const RowShape& shape) {
    ColumnBlock& block = BlockOf(slot);
    const std::uint32_t within = WithinBlock(slot);
    block.MakeRoomForRows();
    const std::size_t bytes = DbTableRow::PieceBytes(shape.m_cells);
    void* const piece = m_arena.Allocate(bytes);
    Rollback allocated([&] { m_arena.Release(piece, bytes); });
    auto* const row = new (piece) DbTableRow(shape.m_isListed ? shape.m_parent : nullptr);
    Rollback made([&] { row->~DbTableRow(); });
    if (!shape.m_isListed) {
        row->NameParent(shape.m_parent);
    }
    row->m_descr = shape.m_structure;
    row->MakeCells(shape.m_cells);
    const std::size_t cells = std::min(shape.m_cells, block.Columns());
    for (std::size_t i = 0; i < cells; ++i) {
        DbFieldValue& cell = row->m_block[i];
        const CellView value = block.Get(i, within);
        value.CopyTo(cell.m_value);
        cell.m_null = value.IsNull();
        cell.m_index = block.IndexOf(i);
    }
    made.Keep();
    allocated.Keep();
    block.SetRow(within, row);
    ++m_made;
    return *row;
}

ColumnStore::Run ColumnStore::RunAt(std::size_t position, std::size_t most) const {
    const std::uint32_t slot = SlotOf(position);
    const std::uint32_t within = WithinBlock(slot);
    const ColumnBlock& block = BlockOf(slot);
    if (block.HasRows()) {
        return {&block, within, 0};
    }
    most = std::min<std::size_t>({most, m_size - position, ColumnBlock::MostSlots - within});
    std::size_t rows = m_isDense ? most : 1;
    while (rows < most && m_slots[position + rows] == slot + rows) {
        ++rows;
    }
    return {&block, within, static_cast<std::uint32_t>(rows)};
}

std::size_t ColumnStore::WidthOf(std::size_t position) const {
    const DbTableRow* const row = MadeRowAt(position);
    return row == nullptr ? BlockOf(SlotOf(position)).Columns() : row->size();
}

CellView ColumnStore::CellOf(const DbTableRow& row, std::size_t field) {
    const DbFieldValue* const cell = row.CellAt(field);
    return cell == nullptr ? CellView() : CellView::Variant(cell->GetVariant(), cell->IsNull());
}

CellView ColumnStore::StoredCellOf(const DbTableRow& row, std::size_t field) {
    const DbFieldValue* const cell = row.CellAt(field);
    return cell == nullptr ? CellView() : CellView::Variant(cell->GetValue(), cell->IsNull());
}

void ColumnStore::SetCell(std::size_t position, std::size_t field, const CellView& value) {
    const std::uint32_t slot = SlotOf(position);
    ColumnBlock& block = BlockOf(slot);
    DbTableRow* row = block.RowAt(WithinBlock(slot));
    if (row == nullptr && field < block.Columns()) {
        if (!IsShared(slot >> SlotBits) && block.Put(field, WithinBlock(slot), value)) {
            return;
        }
        row = &MakeRow(slot);
    }
    if (DbFieldValue* const cell = row == nullptr ? nullptr : row->CellAt(field)) {
        value.CopyTo(cell->GetVariant());
        cell->SetNull(value.IsNull());
    }
}

void ColumnStore::OwnBlocks() {
    for (std::size_t i = 0; i < m_blocks.size(); ++i) {
        if (IsShared(i)) {
            m_blocks[i] = m_blocks[i]->Copy();
        }
    }
}

std::size_t ColumnStore::SlotsInUse() const {
    std::size_t slots = 0;
    ForEachBlock([&](const ColumnBlock& block) { slots += block.Used(); });
    return slots;
}

void ColumnStore::OwnerGoes(const DbRows& owner) {
    m_ownerLives = m_ownerLives && m_owner != &owner;
}

std::uint64_t ColumnStore::SizeOfUnmadeRows() const {
    std::uint64_t size = 0;
    WideString wide;
    for (std::size_t i = 0; UnmadeRows() > 0 && i < m_size; ++i) {
        if (MadeRowAt(i) != nullptr) {
            continue;
        }
        const std::size_t cells = WidthOf(i);
        size += DbTableRow::EstimateOf(cells);
        for (std::size_t field = 0; field < cells; ++field) {
            const CellView value = CellAt(i, field);
            size += value.GetKind() == CellView::Kind::Text ? DbFieldValue::EstimateOfText(value.Wide(wide))
                                                            : DbFieldValue::EstimateOfOther();
        }
    }
    return size;
}

void ColumnStore::MakeColumns(std::size_t position, const DbTableDescr& descr) {
    const DbFieldDescr& field = descr.GetField(static_cast<int>(position));
    const CellView value = CellView::Variant(field.GetVariant());
    const auto index = static_cast<int>(position);
    bool isKept = HasOneDefault(field);
    ForEachBlock([&](ColumnBlock& block) {
        isKept = isKept && block.MakeColumn(ColumnKindOf(field.GetType()), index, value);
    });
    if (isKept) {
        return;
    }
    // The value stands in objects only.
    for (std::size_t row = 0; row < m_size; ++row) {
        RowAt(row);
    }
    ForEachBlock([&](ColumnBlock& block) { block.MakeColumn(CellView::Kind::Empty, index, CellView()); });
}

void ColumnStore::InsertColumns(std::size_t position) {
    ForEachBlock([&](ColumnBlock& block) { block.InsertColumn(position); });
}

void ColumnStore::EraseColumns(std::size_t position) {
    ForEachBlock([&](ColumnBlock& block) { block.EraseColumn(position); });
}

}  // namespace quillet
