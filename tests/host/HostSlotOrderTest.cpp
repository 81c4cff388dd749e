// The order of the virtual functions in the tables of classes, which hosts compiled earlier rely on.
#include <Quillet/IQuillet.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

namespace {

using quillet::CComVariant;
using quillet::CString;
using Slots = std::vector<std::size_t>;

// A virtual destructor takes the first two slots: one ends the object, the other deletes it too.
constexpr std::size_t SlotsOfDestructor = 2;
constexpr std::size_t NotVirtual = static_cast<std::size_t>(-1);

// The slot of a virtual function, counted from 0. A pointer to a member function holds its offset in the
// table, and a bit that tells it from an address: with the offset, or, where functions may have odd
// addresses, with the adjustment.
template <typename Function>
std::size_t SlotOf(Function function) {
    struct Pointer {
        std::uintptr_t m_function;
        std::ptrdiff_t m_adjustment;
    } pointer = {};
    static_assert(sizeof(function) == sizeof(pointer));
    std::memcpy(&pointer, &function, sizeof(pointer));
    const bool isVirtual = (pointer.m_function & 1U) != 0 || (pointer.m_adjustment & 1) != 0;
    return isVirtual ? (pointer.m_function & ~std::uintptr_t{1}) / sizeof(void*) : NotVirtual;
}

template <typename... Functions>
Slots SlotsOf(Functions... functions) {
    return {SlotOf(functions)...};
}

// As many slots as there are functions, from the first after the destructor on.
Slots InOrder(std::size_t count) {
    Slots slots(count);
    std::iota(slots.begin(), slots.end(), SlotsOfDestructor);
    return slots;
}

// Functions of a class, told from others of their name by their parameters.
template <typename Class, typename Result, typename... Parameters>
auto Overload(Result (Class::*function)(Parameters...)) {
    return function;
}

// Classes of a host: their first function of their own comes after the last of the library.
class HostRecordset : public DbRecordset {
public:
    virtual void Own() {}
};

class HostTableDef : public DbTableDef {
public:
    virtual void Own() {}
};

class HostQueryDef : public DbQueryDef {
public:
    virtual void Own() {}
};

class WithFunctions {
public:
    virtual ~WithFunctions() = default;
    virtual void First() {}
    virtual void Second() {}
    void Third() {}
};

TEST(HostSlotOrderTest, SlotOf_TellsTheOrderOfDeclarations) {
    EXPECT_EQ(SlotsOf(&WithFunctions::First, &WithFunctions::Second, &WithFunctions::Third),
              (Slots{SlotsOfDestructor, SlotsOfDestructor + 1, NotVirtual}));
}

TEST(HostSlotOrderTest, DbRecordset) {
    using R = DbRecordset;
    const Slots slots = SlotsOf(
        Overload<R, bool>(&R::Open), Overload<R, bool, CString>(&R::Open),
        Overload<R, bool, DbTableDef*>(&R::Open), Overload<R, bool, DbQueryDef*>(&R::Open), &R::Close,
        &R::Move, &R::MoveFirst, &R::MoveNext, &R::MoveLast, &R::MovePrev, &R::Find, &R::FindFirst,
        &R::FindNext, &R::FindPrev, &R::FindLast, Overload<R, bool, CString, CComVariant*, uint64>(&R::Seek),
        Overload<R, bool, CString, CComVariant*>(&R::Seek), &R::IsBookmark, &R::GetBookmark, &R::SetBookmark,
        &R::GetLastModifiedBookmark, &R::SetAbsolutePosition, &R::GetAbsolutePosition, &R::IsOpen, &R::IsEOF,
        &R::IsBOF, &R::IsDeleted, &R::IsFieldNull, &R::SetFieldNull, &R::GetRecordCount, &R::GetFieldCount,
        &R::CanUpdate, Overload<R, bool, CString>(&R::SetCurrentIndex),
        Overload<R, bool, const DbTableDescr::DbIndex*>(&R::SetCurrentIndex), &R::GetCurrentIndex,
        &R::GetCurrentRow, &R::SetDatabase, Overload<R, void, uint64, CComVariant&>(&R::GetFieldValue),
        Overload<R, void, CString, CComVariant&>(&R::GetFieldValue),
        Overload<R, CComVariant, CString>(&R::GetFieldValue),
        Overload<R, void, uint64, CComVariant&>(&R::SetFieldValue),
        Overload<R, void, CString, CComVariant&>(&R::SetFieldValue),
        Overload<R, const DbFieldDescr*, uint64>(&R::GetFieldInfo),
        Overload<R, const DbFieldDescr*, CString>(&R::GetFieldInfo), &R::GetDefaultDBName, &R::GetDefaultSQL,
        &R::InitFieldExchange, &R::AddNew, &R::Edit, &R::Delete, &R::Update, &R::CancelUpdate, &R::Requery,
        &R::ExportCVS, &HostRecordset::Own);
    EXPECT_EQ(slots, InOrder(slots.size()));
}

TEST(HostSlotOrderTest, DbTableDef) {
    using T = DbTableDef;
    const Slots slots =
        SlotsOf(&T::Create, &T::Open, &T::Close, &T::GetTableDescr, &T::IsOpen, &T::GetTableName,
                &T::GetDatabase, &T::CreateIndex, &T::CreateField, Overload<T, bool, int>(&T::DeleteField),
                Overload<T, bool, CString>(&T::DeleteField), &T::Append, &T::CanUpdate,
                Overload<T, const DbFieldDescr*, CString>(&T::GetFieldInfo),
                Overload<T, const DbFieldDescr*, int>(&T::GetFieldInfo), &T::GetFieldCount,
                &T::GetRecordCount, &HostTableDef::Own);
    EXPECT_EQ(slots, InOrder(slots.size()));
}

TEST(HostSlotOrderTest, DbQueryDef) {
    using Q = DbQueryDef;
    const Slots slots = SlotsOf(&Q::Close, &Q::GetSQL, &Q::Create, &Q::IsOpen, &HostQueryDef::Own);
    EXPECT_EQ(slots, InOrder(slots.size()));
}

}  // namespace
