// One row of a table.
#pragma once

#include <concepts>
#include <memory>
#include <type_traits>
#include <vector>

#include "Quillet/Db_FieldValue.h"
#include "Quillet/Db_XmlSerializable.h"

class DbTableDescr;

namespace quillet {
class ColumnStore;
class NewCells;
}  // namespace quillet

// The cells of a row, in field order (as a vector: element i is the cell of field i). The row owns them;
// those that it was made with are in one block.
class QUILLET_API DbTableRow : public std::vector<DbFieldValue*>, public DbXmlSerializable, public DbItem {
public:
    enum eCmpResult : std::int32_t { CmpEqual = 0, CmpLess = 1, CmpGreater = 2 };

    // A row without cells; the parent lists it as its child.
    explicit DbTableRow(DbItem* parent);
    DbTableRow(const DbTableRow&) = delete;
    DbTableRow& operator=(const DbTableRow&) = delete;
    ~DbTableRow() override;

    // Appends <row> with one attribute for each cell, named by the field's safe name. When the document
    // refuses or throws, the row is not appended, the database's log says at which field, and why where that
    // is the field's name, and the result is false. Only our own std::bad_alloc is thrown. The same holds for
    // Load.
    bool Save(IDispatch* document, IDispatch* parentElement) override;
    // Reads the cells from the element's attributes by position, whatever their names. Attributes beyond the
    // cells are left out, and cells beyond the attributes keep what they hold; the table's data counts such
    // rows. False when the element is none.
    bool Load(IDispatch* element) override;

    uint64 GetSize() const override;

    // The structure that the cells follow; not owned, and null from the moment that it is gone.
    void SetDescr(DbTableDescr* descr);
    DbTableDescr* GetDescr() const { return m_descr ? *m_descr : nullptr; }

    // Puts a cell at a position and takes ownership of it; no effect if there is no such position. Nothing is
    // marked as changed: call SetChanged if it has to be saved. The previous cell is not deleted: the caller
    // may delete it while the row lives. A cell that the row was made with is deleted with the row, or
    // earlier by the caller. A cell belongs to one row: the caller must not pass one that is in another row.
    void SetFieldValuePtr(uint64 i, DbFieldValue* v);

    // The cell at a position or of a field's name. Where there is none, an empty value that belongs to
    // nobody; what is written to it is lost.
    DbFieldValue& operator[](uint64 i) {
        DbFieldValue* const cell = CellAt(i);
        return cell == nullptr ? NoCell() : *cell;
    }
    const DbFieldValue& operator[](uint64 i) const { return GetField(i); }
    DbFieldValue& operator[](const quillet::CString& name);
    const DbFieldValue& operator[](const quillet::CString& name) const;
    DbFieldValue& GetField(uint64 i) { return (*this)[i]; }
    const DbFieldValue& GetField(uint64 i) const {
        const DbFieldValue* const cell = CellAt(i);
        return cell == nullptr ? NoCell() : *cell;
    }

    // Sets a cell from text, as DbFieldValue::ValueFromString of a string does, and marks the row changed.
    void SetValue(const quillet::CString& name, const quillet::CString& text);
    // Sets a cell, keeping its type, and marks the cell changed.
    void SetValue(const quillet::CString& name, const quillet::CComVariant& v);
    // One of the two for any text or number: a text for everything that converts to a CString, a value for a
    // number of any type and for a boolean. A zero is a number, never a null text. A null pointer and a
    // single character are refused by the compiler.
    template <typename Value>
    requires quillet::PlainNumber<Value> || std::convertible_to<const Value&, quillet::CString>
    void SetValue(const quillet::CString& name, const Value& value) {
        if constexpr (quillet::PlainNumber<Value>) {
            SetValue(name, quillet::CComVariant(value));
        } else {
            SetValue(name, quillet::CString(value));
        }
    }

    // Has the descriptor's filters evaluate this row.
    void Evaluate();

    // Whether this row's cell is greater than the other's at the first of the fields (positions) where they
    // differ; true where none differs.
    bool Compare(std::vector<uint64>& fields, const DbTableRow& other);
    // Whether the function holds for this row's cell and the other's at each of the fields.
    bool Compare(std::vector<quillet::CString>& names,
                 bool (*function)(const quillet::CComVariant&, const quillet::CComVariant&),
                 const DbTableRow& other);
    bool Compare(std::vector<uint64>& fields,
                 bool (*function)(const quillet::CComVariant&, const quillet::CComVariant&),
                 const DbTableRow& other);

    // Orders by the fields in turn: texts are equal without regard to case but ordered with it.
    eCmpResult CompareEx(const std::vector<uint64>& fields, const DbTableRow& other);
    // The same with key values on the left, one for each field; a key that holds fewer equals anything in the
    // rest.
    static eCmpResult CompareEx(const std::vector<uint64>& fields,
                                const std::vector<quillet::CComVariant>& key, const DbTableRow& row);
    // The same; the key must hold one value for each field, whatever count says.
    static eCmpResult CompareEx(const std::vector<uint64>& fields, const quillet::CComVariant* key, int count,
                                const DbTableRow& row);

private:
    friend class DbRows;
    friend class quillet::ColumnStore;
    friend class quillet::NewCells;

    // The bytes of the piece of memory that holds a row, at its beginning, and its cells.
    static std::size_t PieceBytes(std::size_t cells);
    // Makes empty cells, after the row in its piece. If it throws, the row can only be destroyed.
    void MakeCells(std::size_t count);
    std::size_t CellsInPiece() const { return m_blockCells; }
    int FieldIndex(const quillet::CString& name) const;
    // Null if there is none.
    DbFieldValue* CellAt(uint64 i) const {
        return i < size() ? std::vector<DbFieldValue*>::operator[](i) : nullptr;
    }
    static DbFieldValue& NoCell();
    void LogFailedSave(std::size_t position);
    // The estimate of GetSize for a row with so many cells.
    static uint64 EstimateOf(std::size_t cells);
    // A cell for the index that is in no row yet, with room reserved for it in this row.
    std::unique_ptr<DbFieldValue> MakeCell(uint64 index, const DbFieldValue& value);
    // Neither fails.
    void InsertCell(uint64 index, std::unique_ptr<DbFieldValue> cell);
    void EraseCell(uint64 index);
    bool IsInBlock(const DbFieldValue* cell) const {
        return cell >= m_block && cell < m_block + m_blockCells;
    }
    void DestroyCells();

    std::shared_ptr<DbTableDescr*> m_descr;
    // The cells in the row's own piece.
    DbFieldValue* m_block = nullptr;
    std::size_t m_blockCells = 0;
};
