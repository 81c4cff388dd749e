// The item tree: every object of the model knows its parent and its children and carries a change stamp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "Quillet/platform/Automation.h"

class DbItem;

namespace quillet {

// The children of an item, in order. A single pointer as long as there are none, which is the case for most
// items.
class QUILLET_API ChildList {
public:
    ChildList() = default;
    ChildList(const ChildList&) = delete;
    ChildList& operator=(const ChildList&) = delete;
    ~ChildList() { Clear(); }

    bool IsEmpty() const { return Size() == 0; }
    std::size_t Size() const { return m_head == nullptr ? 0 : m_head->m_size; }
    DbItem** begin() const { return m_head == nullptr ? nullptr : Items(); }
    DbItem** end() const { return m_head == nullptr ? nullptr : Items() + m_head->m_size; }

    void Reserve(std::size_t capacity);
    void Append(DbItem* item);
    // Removes the first occurrence; nothing where there is none.
    void Remove(const DbItem* item);
    // The caller's memory for that many children; the list uses it as long as it holds no more.
    static constexpr std::size_t BytesFor(std::size_t capacity) {
        return sizeof(Head) + capacity * sizeof(DbItem*);
    }
    void UseMemory(void* memory, std::size_t capacity);
    void Swap(ChildList& other) { std::swap(m_head, other.m_head); }
    // Copies the pointers of another item's list. The items stay children of that item.
    void Borrow(const ChildList& other);
    // Keeps only the items for which the predicate holds, in order.
    template <typename Predicate>
    void KeepIf(Predicate predicate);
    // The same for a list that holds nothing but borrowed items.
    template <typename Predicate>
    void KeepBorrowedIf(Predicate predicate);
    void Clear() {
        if (m_head != nullptr) {
            Free();
        }
    }

    // The items that are children of this list's owner, without the borrowed ones at the beginning.
    DbItem** OwnBegin() const { return m_head == nullptr ? nullptr : Items() + m_head->m_borrowed; }

private:
    struct Head {
        std::uint32_t m_size;
        std::uint32_t m_capacity;
        std::uint32_t m_borrowed;
        // Whether the memory is the list's own.
        std::uint32_t m_owned;
    };

    DbItem** Items() const { return reinterpret_cast<DbItem**>(m_head + 1); }
    void Grow(std::size_t capacity);
    void Free();

    Head* m_head = nullptr;
};

}  // namespace quillet

// A node of the model. Parent and child links never own: the creator of a child deletes it. An item's
// destructor removes it from its parent's list; an item whose parent is gone keeps the pointer for GetParent
// and never follows it. Use items from one thread at a time.
class QUILLET_API DbItem {
public:
    // The counter for all change stamps of the process; it only grows.
    static std::int32_t m_changeCounter;

    // Appends itself to the parent's children; a null parent makes it a root.
    explicit DbItem(DbItem* parent = nullptr);
    // Copies the parent pointer without becoming a child of it, the stamps, and the pointers to the children,
    // which stay the other's children: using the copy after one of them died is the caller's fault.
    DbItem(const DbItem& other);
    // As the copy constructor. The children that were listed before are forgotten, not deleted; an item that
    // was the child of another parent than the other's is no longer listed there. An ancestor of this item
    // does not become its child. Out of memory nothing is changed.
    DbItem& operator=(const DbItem& other);
    virtual ~DbItem() {
        if (DbItem* const parent = LiveParent()) {
            parent->RemoveChild(this);
        }
        if (!m_children.IsEmpty()) {
            ReleaseChildren();
        }
    }

    // The parent, dead or alive; null for a root.
    virtual DbItem* GetParent();
    // Whether this item or one below it was changed after its last Sync.
    virtual bool IsChanged();
    // Stamps this item, and no other, with a new count.
    virtual void SetChanged();
    // Marks this item and all below it as unchanged.
    virtual void Sync();
    // The latest stamp of this item and all below it; 0 where nothing was ever changed.
    virtual long GetChangeId();
    // An estimate of the item's own size in bytes.
    virtual uint64 GetSize() const;
    // The estimates of this item and all below it, added up.
    virtual uint64 CalcSize();

    // The parent while it lives and lists this item; null otherwise.
    DbItem* LiveParent() const { return IsListed() ? ParentPointer() : nullptr; }

protected:
    void AddChild(DbItem* child);
    // Removes the first occurrence; nothing where there is none.
    void RemoveChild(DbItem* child);

    // For owners of many children: reserves room for them, and releases all of them before they are deleted,
    // so that none has to be searched for.
    void ReserveChildren(std::size_t count) { m_children.Reserve(count); }
    void PlaceChildren(void* memory, std::size_t capacity) {
        NoteChildrenGo();
        m_children.UseMemory(memory, capacity);
    }
    void ReleaseChildren();
    // The same for an owner that is about to destroy the children in its own memory, [begin, end).
    void ReleaseChildrenOutside(const void* begin, const void* end);
    bool HasChildren() const { return !m_children.IsEmpty(); }
    // The parent of a root, for GetParent alone: it does not list this item.
    void NameParent(DbItem* parent) { m_parent = reinterpret_cast<std::uintptr_t>(parent); }
    // Lists a root as the last child.
    void Adopt(DbItem& root) {
        AddChild(&root);
        root.m_parent = reinterpret_cast<std::uintptr_t>(this) | ListedBit;
    }
    // The estimate of GetSize for an item with so many children.
    static uint64 EstimateOf(std::size_t children);
    // Grows with everything in the process that may change what GetChangeId says, other than an override of
    // it: stamps, and items with stamps that come and go.
    static std::uint64_t StampMoves();
    // Releases the children among the items that forEach gives to its argument, in one pass over the list.
    template <typename ForEach>
    void ReleaseEach(ForEach forEach) {
        forEach([this](DbItem& item) {
            if (item.LiveParent() == this) {
                item.Unlist();
            }
        });
        DropUnlisted();
    }

private:
    static constexpr std::uintptr_t ListedBit = 1;

    bool IsListed() const { return (m_parent & ListedBit) != 0; }
    DbItem* ParentPointer() const { return reinterpret_cast<DbItem*>(m_parent & ~ListedBit); }
    void Unlist() { m_parent &= ~ListedBit; }
    void DropUnlisted();
    // To be called before a child comes or goes, and before all of them go.
    void NoteMove(const DbItem* child) const;
    void NoteChildrenGo() const;
    // Whether the item is this one or a descendant of it.
    bool Reaches(const DbItem* item) const;

    // The parent, and in the lowest bit whether it lives and lists this item as its child.
    std::uintptr_t m_parent;
    quillet::ChildList m_children;
    std::int32_t m_changeId = 0;
    std::int32_t m_syncId = 0;
};
