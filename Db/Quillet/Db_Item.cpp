#include "Quillet/Db_Item.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace quillet {

void ChildList::Grow(std::size_t capacity) {
    auto* grown = static_cast<Head*>(std::malloc(BytesFor(capacity)));
    if (grown == nullptr) {
        throw std::bad_alloc();
    }
    *grown = m_head == nullptr ? Head{} : *m_head;
    grown->m_capacity = static_cast<std::uint32_t>(capacity);
    grown->m_owned = 1;
    std::copy(begin(), end(), reinterpret_cast<DbItem**>(grown + 1));
    Clear();
    m_head = grown;
}

void ChildList::Free() {
    if (m_head->m_owned != 0) {
        std::free(m_head);
    }
    m_head = nullptr;
}

void ChildList::UseMemory(void* memory, std::size_t capacity) {
    Clear();
    m_head = new (memory) Head{0, static_cast<std::uint32_t>(capacity), 0, 0};
}

void ChildList::Reserve(std::size_t capacity) {
    if (capacity > 0 && (m_head == nullptr || capacity > m_head->m_capacity)) {
        Grow(capacity);
    }
}

void ChildList::Append(DbItem* item) {
    constexpr std::size_t FewChildren = 4;
    if (m_head == nullptr) {
        Grow(FewChildren);
    } else if (m_head->m_size == m_head->m_capacity) {
        Grow(std::max(FewChildren, std::size_t(m_head->m_capacity) * 2));
    }
    Items()[m_head->m_size++] = item;
}

template <typename Predicate>
void ChildList::KeepBorrowedIf(Predicate predicate) {
    if (m_head != nullptr) {
        DbItem** const newEnd = std::stable_partition(begin(), end(), predicate);
        m_head->m_size = static_cast<std::uint32_t>(newEnd - begin());
        m_head->m_borrowed = m_head->m_size;
    }
}

void ChildList::Remove(const DbItem* item) {
    DbItem** const found = std::find(begin(), end(), item);
    if (found == end()) {
        return;
    }
    if (found < OwnBegin()) {
        --m_head->m_borrowed;
    }
    std::copy(found + 1, end(), found);
    --m_head->m_size;
}

void ChildList::Borrow(const ChildList& other) {
    if (other.Size() == 0) {
        return;
    }
    Reserve(other.Size());
    std::copy(other.begin(), other.end(), Items());
    m_head->m_size = other.m_head->m_size;
    m_head->m_borrowed = m_head->m_size;
}

template <typename Predicate>
void ChildList::KeepIf(Predicate predicate) {
    if (m_head != nullptr) {
        DbItem** const newEnd = std::stable_partition(OwnBegin(), end(), predicate);
        m_head->m_size = static_cast<std::uint32_t>(newEnd - begin());
    }
}

}  // namespace quillet

std::int32_t DbItem::m_changeCounter = 0;

namespace {

// Apart from the counter of stamps, which a host may set to any number.
std::uint64_t g_stampMoves = 0;

}  // namespace

DbItem::DbItem(DbItem* parent) : m_parent(reinterpret_cast<std::uintptr_t>(parent)) {
    if (parent != nullptr) {
        parent->AddChild(this);
        m_parent |= ListedBit;
    }
}

DbItem::DbItem(const DbItem& other)
    : m_parent(other.m_parent & ~ListedBit), m_changeId(other.m_changeId), m_syncId(other.m_syncId) {
    m_children.Borrow(other.m_children);
}

DbItem& DbItem::operator=(const DbItem& other) {
    if (this == &other) {
        return *this;
    }
    quillet::ChildList borrowed;
    borrowed.Borrow(other.m_children);
    ++g_stampMoves;
    m_changeId = other.m_changeId;
    m_syncId = other.m_syncId;
    if (ParentPointer() != other.ParentPointer()) {
        if (DbItem* const parent = LiveParent()) {
            parent->RemoveChild(this);
        }
        m_parent = other.m_parent & ~ListedBit;
    }
    ReleaseChildren();
    m_children.Swap(borrowed);
    // A walk over an item that is its own descendant would not end.
    m_children.KeepBorrowedIf([this](const DbItem* child) { return !child->Reaches(this); });
    return *this;
}

bool DbItem::Reaches(const DbItem* item) const {
    return this == item || std::any_of(m_children.begin(), m_children.end(),
                                       [&](const DbItem* child) { return child->Reaches(item); });
}

DbItem* DbItem::GetParent() {
    return ParentPointer();
}

bool DbItem::IsChanged() {
    bool changed = m_changeId > m_syncId;
    for (DbItem* const child : m_children) {
        changed |= child->IsChanged();
    }
    return changed;
}

void DbItem::SetChanged() {
    // Past the largest count the stamps start anew from the smallest, without undefined behaviour.
    const std::int32_t before = std::atomic_ref(m_changeCounter).fetch_add(1, std::memory_order_relaxed);
    m_changeId = static_cast<std::int32_t>(static_cast<std::uint32_t>(before) + 1U);
    ++g_stampMoves;
}

void DbItem::Sync() {
    // Most items are never changed: they are looked at, not written.
    if (m_syncId != m_changeId) {
        m_syncId = m_changeId;
    }
    for (DbItem* const child : m_children) {
        child->Sync();
    }
}

long DbItem::GetChangeId() {
    long latest = m_changeId;
    for (DbItem* const child : m_children) {
        latest = std::max(latest, child->GetChangeId());
    }
    return latest;
}

uint64 DbItem::GetSize() const {
    return EstimateOf(m_children.Size());
}

uint64 DbItem::EstimateOf(std::size_t children) {
    constexpr uint64 ChildEstimate = 22;
    constexpr uint64 OwnEstimate = 8;
    return children * ChildEstimate + OwnEstimate;
}

uint64 DbItem::CalcSize() {
    uint64 size = GetSize();
    for (DbItem* const child : m_children) {
        size += child->CalcSize();
    }
    return size;
}

std::uint64_t DbItem::StampMoves() {
    return g_stampMoves;
}

void DbItem::NoteMove(const DbItem* child) const {
    // A stamp that is not above the parent's own is never the latest below the parent.
    if (child != nullptr && (child->m_changeId > m_changeId || child->HasChildren())) {
        ++g_stampMoves;
    }
}

void DbItem::NoteChildrenGo() const {
    if (HasChildren()) {
        ++g_stampMoves;
    }
}

void DbItem::AddChild(DbItem* child) {
    NoteMove(child);
    m_children.Append(child);
}

void DbItem::RemoveChild(DbItem* child) {
    NoteMove(child);
    m_children.Remove(child);
    if (child != nullptr && child->LiveParent() == this) {
        child->Unlist();
    }
}

void DbItem::ReleaseChildren() {
    ReleaseChildrenOutside(nullptr, nullptr);
}

void DbItem::ReleaseChildrenOutside(const void* begin, const void* end) {
    NoteChildrenGo();
    for (DbItem** child = m_children.OwnBegin(); child != m_children.end(); ++child) {
        const void* const place = *child;
        if ((place < begin || place >= end) && (*child)->LiveParent() == this) {
            (*child)->Unlist();
        }
    }
    m_children.Clear();
}

void DbItem::DropUnlisted() {
    NoteChildrenGo();
    m_children.KeepIf([this](const DbItem* child) { return child->LiveParent() == this; });
}
