// The rows of a table and their memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Quillet/rows/ColumnBlock.h"
#include "Quillet/rows/RowArena.h"
#include "Quillet/rows/RowTokens.h"

class DbFieldValue;
class DbRows;
class DbTableDescr;
class DbTableRow;

namespace quillet {

// The columns for the rows of a structure, which may be null.
ColumnKinds ColumnKindsOf(const DbTableDescr* descr);

// Rows by their storage positions. A row that nobody has asked for is kept in columns; a row that somebody
// has asked for is an object, which never moves, stays until the row is deleted, and alone tells what the row
// holds. So is a row with a value that its column can't hold.
//
// Members throw only std::bad_alloc, and leave the rows unchanged then.
class ColumnStore {
public:
    using Structure = std::shared_ptr<DbTableDescr*>;

    // Rows without an owner, to be handed over to one later.
    ColumnStore() = default;
    // Rows become children of their owner when they are made, as long as it lives.
    ColumnStore(DbRows& owner, Structure structure);
    ColumnStore(const ColumnStore&) = delete;
    ColumnStore& operator=(const ColumnStore&) = delete;
    ~ColumnStore();

    std::size_t Size() const { return m_size; }
    // The structure of the rows that were not made; null once it is gone.
    const DbTableDescr* Descr() const { return m_structure == nullptr ? nullptr : *m_structure; }

    // Appends rows with one cell for each field, empty or with the fields' default values. Those of another
    // parent than the owner are made at once, with that parent's structure.
    void Append(std::size_t rows, DbRows& parent, const Structure& structure, bool initValues);
    // For a reader that fills one row after another: the block that the next rows go to, with room for one at
    // least; it counts them itself (ColumnBlock::Use) and then here. No row must have been deleted.
    ColumnBlock& OpenBlock(const ColumnKinds& kinds);
    void CountRows(std::uint32_t rows);
    // The rows, which had no owner, get one. It takes those that were made.
    void HandOver(DbRows& owner, Structure structure);
    void Delete(std::size_t position);
    // Deletes the last rows. Can't fail.
    void DropLast(std::size_t rows);

    // The row, which is made if it was not.
    DbTableRow& RowAt(std::size_t position);
    // Null if it was not made.
    DbTableRow* MadeRowAt(std::size_t position) const {
        const std::uint32_t slot = SlotOf(position);
        return BlockOf(slot).RowAt(WithinBlock(slot));
    }
    // The block of a row, for whoever keeps it. As long as somebody does, no slot in it is given to another
    // row, and its columns keep their values.
    std::shared_ptr<const ColumnBlock> ShareBlockOf(std::size_t position) const {
        return m_blocks[SlotOf(position) >> SlotBits];
    }
    // Copies the blocks that others keep.
    void OwnBlocks();
    // The slots that blocks have in use, for rows or for deleted ones.
    std::size_t SlotsInUse() const;
    bool HasMadeRows() const { return m_made > 0; }
    // How many cells the row has.
    std::size_t WidthOf(std::size_t position) const;

    // How the cell of an object is read: once by the virtual GetVariant, or the value that it stores.
    enum class Reading : std::uint8_t { Virtual, Stored };

    // Rows from a position on whose slots follow one another in a block without objects.
    struct Run {
        const ColumnBlock* m_block;
        std::uint32_t m_slot;
        std::uint32_t m_rows;
    };
    // The run is empty where the row at the position has an object. It is no longer than asked for.
    Run RunAt(std::size_t position, std::size_t most) const;

    // Slots are numbered over all blocks, MostSlots for each.
    std::uint32_t SlotOf(std::size_t position) const {
        return m_isDense ? static_cast<std::uint32_t>(position) : m_slots[position];
    }
    static std::uint32_t WithinBlock(std::uint32_t slot) { return slot & (ColumnBlock::MostSlots - 1); }
    static std::size_t BlockNumberOf(std::uint32_t slot) { return slot >> SlotBits; }
    std::size_t BlockCount() const { return m_blocks.size(); }
    // Null where a block was freed.
    const ColumnBlock* BlockAt(std::size_t number) const { return m_blocks[number].get(); }
    ColumnBlock* BlockAt(std::size_t number) { return m_blocks[number].get(); }

    // A cell, empty where the row has none.
    CellView CellAt(std::size_t position, std::size_t field) const {
        return CellInSlot(SlotOf(position), field);
    }
    // The same by the slot of the row.
    template <Reading How = Reading::Virtual>
    CellView CellInSlot(std::uint32_t slot, std::size_t field) const {
        const ColumnBlock& block = BlockOf(slot);
        const DbTableRow* const row = block.RowAt(WithinBlock(slot));
        if (row != nullptr) {
            return How == Reading::Virtual ? CellOf(*row, field) : StoredCellOf(*row, field);
        }
        return field < block.Columns() ? block.Get(field, WithinBlock(slot)) : CellView();
    }
    // Gives a cell a value and flag without a stamp; the row is made where its column can't hold the value.
    // No effect where the row has no such cell.
    void SetCell(std::size_t position, std::size_t field, const CellView& value);
    static CellView CellOf(const DbTableRow& row, std::size_t field);
    static CellView StoredCellOf(const DbTableRow& row, std::size_t field);

    // Points to the row as long as it lives, and to null afterwards.
    std::shared_ptr<DbTableRow*> TokenOf(std::size_t position) { return m_tokens.Of(RowAt(position)); }

    // The owner goes, or shows other rows: the rows live on without it.
    void OwnerGoes(const DbRows& owner);
    bool HasOwner() const { return m_ownerLives; }
    bool IsOwnedBy(const DbRows& rows) const { return m_ownerLives && m_owner == &rows; }

    // The rows from a position on that were made.
    template <typename Use>
    void ForEachMade(std::size_t first, Use use) const {
        for (std::size_t i = first; m_made > 0 && i < m_size; ++i) {
            if (DbTableRow* const row = MadeRowAt(i)) {
                use(*row);
            }
        }
    }
    std::size_t UnmadeRows() const { return m_size - m_made; }
    // The estimate of DbItem::CalcSize of the rows that were not made.
    std::uint64_t SizeOfUnmadeRows() const;

    // A field was added: prepares the columns, then inserts them. The second step can't fail; the rows must
    // be those that they were before. Nobody else must keep a block (OwnBlocks).
    void MakeColumns(std::size_t position, const DbTableDescr& descr);
    void InsertColumns(std::size_t position);
    void EraseColumns(std::size_t position);

private:
    static constexpr std::uint32_t SlotBits = 12;
    static_assert(ColumnBlock::MostSlots == 1U << SlotBits);
    static constexpr std::size_t NoBlock = SIZE_MAX;
    static constexpr std::size_t MostBlocks = std::size_t(1) << (32 - SlotBits);

    ColumnBlock& BlockOf(std::uint32_t slot) const { return *m_blocks[BlockNumberOf(slot)]; }
    bool IsShared(std::size_t block) const { return m_blocks[block].use_count() > 1; }
    // Blocks that are in use.
    template <typename Use>
    void ForEachBlock(Use use) const;

    void ReserveSlots(std::size_t rows);
    void ListSlots();
    ColumnBlock& Tail(const ColumnKinds& kinds);
    void AppendSlots(std::size_t rows, const ColumnKinds& kinds);
    void FreeSlot(std::uint32_t slot);
    void Repack(std::size_t block);
    struct RowShape;
    DbTableRow& MakeRow(std::uint32_t slot);
    DbTableRow& MakeRow(std::uint32_t slot, const RowShape& shape);

    DbRows* m_owner = nullptr;
    bool m_ownerLives = false;
    Structure m_structure;
    RowArena m_arena;
    RowTokens m_tokens;
    std::size_t m_size = 0;
    std::size_t m_made = 0;
    // Null where a block was freed.
    std::vector<std::shared_ptr<ColumnBlock>> m_blocks;
    // The rows that each block holds.
    std::vector<std::uint32_t> m_live;
    // The block that new rows go to.
    std::size_t m_tail = NoBlock;
    // Whether each row's slot is its position; otherwise m_slots tells it.
    bool m_isDense = true;
    std::vector<std::uint32_t> m_slots;
};

}  // namespace quillet
