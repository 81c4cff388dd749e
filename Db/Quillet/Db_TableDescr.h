// The structure of one table.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Quillet/Db_FieldDescr.h"
#include "Quillet/Db_Filter.h"
#include "Quillet/Db_XmlSerializable.h"

class DbDatabase;
class DbTableRow;

namespace quillet {
class CurrentIndex;
}

// The ordered fields of a table (as a vector: element i is the field at position i), a lookup of their names
// without regard to case and with one pair of enclosing square brackets passed over, named indexes, and row
// filters. It owns all of them; take fields out with DeleteField or Clear, not through the vector.
class QUILLET_API DbTableDescr : public std::vector<DbFieldDescr*>, public DbXmlSerializable, public DbItem {
public:
    // A named list of fields by which rows can be ordered and searched.
    class QUILLET_API DbIndex {
    public:
        // The position of a field that does not exist.
        static constexpr uint64 NoField = ~uint64(0);

        explicit DbIndex(const quillet::CString& name);
        DbIndex(const quillet::CString& name, const std::vector<quillet::CString>& fields);
        // Field names separated by commas; blanks outside square brackets are passed over. The brackets
        // around a name are removed, except around the last one.
        DbIndex(const quillet::CString& name, const quillet::CString& fieldList);
        DbIndex(const DbIndex& other);
        DbIndex& operator=(const DbIndex& other);
        ~DbIndex();

        void AddField(quillet::CString name);

        // Lower case.
        const quillet::CString& GetName() const { return m_name; }
        const std::vector<quillet::CString>& GetFieldNames() const { return m_fieldNames; }
        // Positions of the fields, known once the index is registered with a descriptor; they follow fields
        // that are created and deleted, and are NoField for one that is gone.
        const std::vector<uint64>& GetFieldIndexes() const { return m_fieldIndexes; }
        std::vector<uint64>& GetFieldIndexes() { return m_fieldIndexes; }
        // The visible positions of the rows in the order of the index, if one was set; empty otherwise.
        const std::vector<uint64>& GetRowOrder() const { return m_rowOrder; }
        std::vector<uint64>& GetRowOrder() {
            m_ascendingTypes.reset();
            return m_rowOrder;
        }

        // Points to this object as long as it lives, and to null afterwards. A copy has its own token.
        const std::shared_ptr<DbIndex*>& LifeToken() const { return m_life; }

    private:
        friend class DbTableDescr;
        friend class quillet::CurrentIndex;

        void MoveFieldIndexes(std::vector<uint64>& positions);

        std::shared_ptr<DbIndex*> m_life = std::make_shared<DbIndex*>(this);
        quillet::CString m_name;
        std::vector<uint64> m_fieldIndexes;
        std::vector<quillet::CString> m_fieldNames;
        // Kept with an index, and no part of it.
        mutable std::vector<uint64> m_rowOrder;
        // The types of the values in as many leading fields as the row order was found to ascend by; nothing
        // while nobody looked.
        mutable std::optional<std::vector<VARTYPE>> m_ascendingTypes;
    };

    // The descriptor becomes a child of the database and tells it of fields that are created and deleted;
    // null for a separate descriptor.
    explicit DbTableDescr(DbDatabase* db);
    DbTableDescr(const DbTableDescr&) = delete;
    DbTableDescr& operator=(const DbTableDescr&) = delete;
    ~DbTableDescr() override;

    // Appends one <field> element for each field. False as soon as one fails; indexes and filters are not
    // written. What a document object model throws is a failure too; nothing is thrown but our own
    // std::bad_alloc. The same for Load.
    bool Save(IDispatch* document, IDispatch* parentElement) override;
    // Appends a field for each child of the element, whatever its name; a field that fails ends the load with
    // false and stays. Existing fields are kept. A name lookup before Load hides the new fields from later
    // lookups.
    bool Load(IDispatch* element) override;

    // An index without fields; null where the name is empty. The existing one where the name is taken.
    virtual DbIndex* CreateIndex(quillet::CString name);
    // True where an index of the name exists, which then stays as it is, or was made; false for an empty name
    // or an unknown field.
    virtual bool CreateIndex(quillet::CString name, const std::vector<quillet::CString>& fields);
    virtual bool CreateIndex(quillet::CString name, const quillet::CString& fieldList);
    // Takes over the index, unless it returns false or throws: then it stays the caller's. Where the name is
    // taken the given index is deleted, the existing one stays, and the result is true.
    virtual bool CreateIndex(quillet::CString name, DbIndex* index);
    // Has every filter evaluate the row; they keep their results.
    virtual void Evaluate(const DbTableRow& row);
    // Makes a filter, appends it to the others and returns it; it lives until ClearFilters, Clear or the end
    // of the descriptor. The operator is one of <, <=, =, ==, >=, >, != and <>. A side that names a field is
    // that field. Any other side is a literal: it loses one quote mark (', " or U+FF91) at each end and is
    // converted to the type of the field on the other side, where either decimal separator is understood for
    // a float.
    //
    // Null, and nothing is made, for another operator, where neither side is a field, for a literal that is
    // no value of the field's type, for a field without type, and for two fields of different types.
    //
    // Values are compared as quillet::Order has it, and only values of one type are equal. Null is equal to
    // null, and neither less nor greater than anything. Where a field is a text, = ignores case. So does !=
    // where the value on the left is a text, whatever the field is.
    virtual DbFilter* AddFilter(quillet::CString left, quillet::CString op, quillet::CString right);
    // Deletes every filter.
    virtual void ClearFilters();
    virtual bool DeleteIndex(quillet::CString name);
    // Deletes indexes, filters and fields. The name lookup is emptied, not marked for rebuilding.
    virtual void Clear();

    uint64 GetSize() const override;

    // The position of a field, from 0; -1 for an unknown name. Of fields with one name the first is found.
    int GetFieldIndex(const quillet::CString& name) const;
    bool IsField(quillet::CString name) const;
    bool IsField(uint64 i) const { return i < size(); }

    // The field at a position or of a name. Where there is none, a field without name and type that belongs
    // to nobody; what is written to it is lost.
    const DbFieldDescr& GetField(int i) const;
    const DbFieldDescr& GetField(const quillet::CString& name) const;
    DbFieldDescr& operator[](uint64 i);
    DbFieldDescr& operator[](const quillet::CString& name);

    // Appends a field; the rows of the table get its default value. False where the name is taken. A name of
    // which no document can make an attribute is taken, and so is one whose safe name another field has: the
    // table can't be saved with rows then, and the log of that save names the field.
    bool CreateField(const quillet::CString& name, bool key, DbFieldDescr::eFieldType type);
    // The same with name, key flag and type of another field.
    bool CreateField(const DbFieldDescr& field);
    // The same for a name that may be taken, as it may be in a file: the first field of the name is found by
    // it.
    void AppendField(const DbFieldDescr& field);
    // Removes a field; the rows lose its cells. False where there is none. The fields after it move up, but
    // keep the index that they had.
    bool DeleteField(int i);
    bool DeleteField(const quillet::CString& name);

    // Whether every field of the index exists; false for null. An index that lost a field finds nothing and
    // orders nothing until a field of the name is there again.
    bool CheckIndexFields(const DbIndex* index) const;
    // Null for an unknown name.
    DbIndex* FindIndex(const quillet::CString& name) const;

    // Points to this object as long as it lives, for rows that follow the structure.
    const std::shared_ptr<DbTableDescr*>& LifeToken() const { return m_life; }

    const std::vector<std::unique_ptr<DbFilter>>& GetFilters() const { return m_filters; }
    // Hands over all filters, and takes them back in place of those that are there.
    std::vector<std::unique_ptr<DbFilter>> TakeAllFilters();
    void GiveAllFilters(std::vector<std::unique_ptr<DbFilter>> filters) { m_filters.swap(filters); }
    // Appends a filter to the others; no effect for null.
    void AppendFilter(std::unique_ptr<DbFilter> filter);
    // Hands over those of the filters that are here, in the order in which they were made.
    std::vector<std::unique_ptr<DbFilter>> TakeFilters(const std::vector<DbFilter*>& filters);

private:
    void ClearAll();
    void Append(const quillet::CString& name, bool key, VARTYPE type);
    DbFilter::Operand OperandOf(const quillet::CString& text) const;
    // The name lookup is what it would be if it were made now.
    bool AreNamesKnown() const;
    void NameField(std::size_t position) const;
    std::vector<uint64> PositionsOf(const DbIndex& index) const;
    // The positions that the fields of each index have now, in the order of the indexes.
    std::vector<std::vector<uint64>> IndexPositions() const;
    void MoveIndexPositions(std::vector<std::vector<uint64>>& positions);

    std::shared_ptr<DbTableDescr*> m_life = std::make_shared<DbTableDescr*>(this);
    mutable bool m_namesStale = true;
    mutable std::map<quillet::CString, int> m_names;
    // How many fields the lookup knows, and DbFieldDescr::Renames when it was made.
    mutable std::size_t m_namedFields = 0;
    mutable std::uint64_t m_namedAt = 0;
    // An index may be registered under more than one name.
    std::map<quillet::CString, std::shared_ptr<DbIndex>> m_indexes;
    std::vector<std::unique_ptr<DbFilter>> m_filters;
};
