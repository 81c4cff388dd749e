#include "Quillet/Db_Item.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "Quillet/Db_XmlSerializable.h"

namespace {

// Makes protected members public, and reports a fixed size.
class OpenItem : public DbItem {
public:
    using DbItem::AddChild;
    using DbItem::DbItem;
    using DbItem::RemoveChild;

    uint64 GetSize() const override { return DbItem::GetSize() + m_extraSize; }

    uint64 m_extraSize = 0;
};

// Counts its calls.
class CountingItem : public DbItem {
public:
    using DbItem::DbItem;

    bool IsChanged() override {
        ++m_asked;
        return DbItem::IsChanged();
    }
    void Sync() override {
        m_syncs->push_back(this);
        DbItem::Sync();
    }

    int m_asked = 0;
    std::vector<DbItem*>* m_syncs = nullptr;
};

uint64 ChildCount(const DbItem& item) {
    return (item.DbItem::GetSize() - 8) / 22;
}

TEST(DbItem, Construct_WithoutParent_IsAnUnchangedRoot) {
    DbItem item;
    EXPECT_EQ(item.GetParent(), nullptr);
    EXPECT_FALSE(item.IsChanged());
    EXPECT_EQ(item.GetChangeId(), 0);
    EXPECT_EQ(item.GetSize(), 8U);
    EXPECT_EQ(item.CalcSize(), 8U);
}

TEST(DbItem, Construct_WithParent_AppendsItselfToTheParent) {
    DbItem parent;
    DbItem child(&parent);
    EXPECT_EQ(child.GetParent(), &parent);
    EXPECT_EQ(parent.GetSize(), 22U + 8U);
    EXPECT_EQ(child.GetSize(), 8U);
}

TEST(DbItem, CopyConstruct_ChildOfAParent_DoesNotRegisterWithTheParent) {
    DbItem parent;
    DbItem original(&parent);
    const DbItem copy(original);
    EXPECT_EQ(DbItem(copy).GetParent(), &parent);
    EXPECT_EQ(ChildCount(parent), 1U);
}

TEST(DbItem, CopyConstruct_ParentOfChildren_SharesTheChildPointers) {
    DbItem original;
    DbItem first(&original);
    DbItem second(&original);
    DbItem copy(original);
    EXPECT_EQ(ChildCount(copy), 2U);
    second.SetChanged();
    EXPECT_TRUE(copy.IsChanged());
    EXPECT_EQ(first.GetParent(), &original);
}

TEST(DbItem, CopyConstruct_ChangedItem_CopiesBothStamps) {
    DbItem original;
    original.SetChanged();
    DbItem changedCopy(original);
    EXPECT_TRUE(changedCopy.IsChanged());
    EXPECT_EQ(changedCopy.GetChangeId(), original.GetChangeId());
    original.Sync();
    DbItem cleanCopy(original);
    EXPECT_FALSE(cleanCopy.IsChanged());
    EXPECT_EQ(cleanCopy.GetChangeId(), original.GetChangeId());
}

TEST(DbItem, CopyConstruct_CopyDies_OriginalKeepsItsChildren) {
    DbItem original;
    DbItem child(&original);
    { const DbItem copy(original); }
    EXPECT_EQ(ChildCount(original), 1U);
    EXPECT_EQ(child.LiveParent(), &original);
}

TEST(DbItem, CopyConstruct_SharedChildDiesBeforeTheCopy_CopyDiesQuietly) {
    auto original = std::make_unique<DbItem>();
    auto child = std::make_unique<DbItem>(original.get());
    auto copy = std::make_unique<DbItem>(*original);
    child.reset();
    original.reset();
    EXPECT_EQ(ChildCount(*copy), 1U) << "the pointer is copied, not followed";
    copy.reset();
}

TEST(DbItem, Assign_ItemWithChildren_ForgetsItsOwnAndTakesTheOthers) {
    DbItem target;
    DbItem forgotten(&target);
    DbItem source;
    DbItem first(&source);
    DbItem second(&source);
    target = source;
    EXPECT_EQ(ChildCount(target), 2U);
    forgotten.SetChanged();
    EXPECT_FALSE(target.IsChanged());
    second.SetChanged();
    EXPECT_TRUE(target.IsChanged());
}

TEST(DbItem, Assign_ForgottenChild_IsNeitherDeletedNorFollowedLater) {
    auto target = std::make_unique<DbItem>();
    auto forgotten = std::make_unique<DbItem>(target.get());
    const DbItem source;
    *target = source;
    EXPECT_EQ(forgotten->GetParent(), target.get());
    target.reset();
    forgotten->SetChanged();
    EXPECT_TRUE(forgotten->IsChanged());
    forgotten.reset();
}

TEST(DbItem, Assign_OtherParent_CopiesTheParentWithoutRegistering) {
    DbItem parent;
    DbItem source(&parent);
    DbItem target;
    target = source;
    EXPECT_EQ(target.GetParent(), &parent);
    EXPECT_EQ(ChildCount(parent), 1U);
}

TEST(DbItem, Assign_OtherParentDiesFirst_TargetNeverFollowsIt) {
    auto parent = std::make_unique<DbItem>();
    auto source = std::make_unique<DbItem>(parent.get());
    auto target = std::make_unique<DbItem>();
    *target = *source;
    parent.reset();
    target.reset();
    source->SetChanged();
    EXPECT_TRUE(source->IsChanged());
}

TEST(DbItem, Assign_ChangedItem_CopiesBothStamps) {
    DbItem source;
    source.SetChanged();
    source.Sync();
    DbItem target;
    target.SetChanged();
    target = source;
    EXPECT_FALSE(target.IsChanged());
    EXPECT_EQ(target.GetChangeId(), source.GetChangeId());
}

TEST(DbItem, Assign_Itself_ChangesNothing) {
    DbItem parent;
    DbItem item(&parent);
    DbItem child(&item);
    item.SetChanged();
    DbItem& alias = item;
    item = alias;
    EXPECT_EQ(ChildCount(item), 1U);
    EXPECT_EQ(ChildCount(parent), 1U);
    EXPECT_TRUE(item.IsChanged());
}

TEST(DbItem, Assign_ChildFromItsOwnParent_DoesNotBecomeItsOwnChild) {
    DbItem parent;
    DbItem child(&parent);
    DbItem sibling(&parent);
    child = parent;
    EXPECT_FALSE(child.IsChanged());
    sibling.SetChanged();
    EXPECT_TRUE(child.IsChanged());
}

TEST(DbItem, Assign_CopyOfItsOwnParent_AnswersWithoutEnd) {
    DbItem parent;
    DbItem child(&parent);
    DbItem copyOfParent;
    copyOfParent = parent;
    child = copyOfParent;
    child.SetChanged();
    EXPECT_TRUE(child.IsChanged());
}

TEST(DbItem, Destroy_Child_LeavesItsParentsList) {
    DbItem parent;
    DbItem first(&parent);
    {
        DbItem middle(&parent);
        middle.SetChanged();
        EXPECT_TRUE(parent.IsChanged());
    }
    DbItem last(&parent);
    EXPECT_EQ(ChildCount(parent), 2U);
    EXPECT_FALSE(parent.IsChanged());
}

TEST(DbItem, Destroy_Parent_LeavesChildrenAliveWithTheirParentPointer) {
    auto parent = std::make_unique<DbItem>();
    const DbItem* const address = parent.get();
    auto child = std::make_unique<DbItem>(parent.get());
    child->SetChanged();
    parent.reset();
    EXPECT_EQ(child->GetParent(), address);
    EXPECT_EQ(child->LiveParent(), nullptr);
    EXPECT_TRUE(child->IsChanged());
    child.reset();
}

TEST(DbItem, Destroy_ParentBeforeAChildOfAChild_EachDiesQuietly) {
    auto root = std::make_unique<DbItem>();
    auto child = std::make_unique<DbItem>(root.get());
    auto grandchild = std::make_unique<DbItem>(child.get());
    child.reset();
    EXPECT_EQ(ChildCount(*root), 0U);
    root.reset();
    EXPECT_EQ(grandchild->LiveParent(), nullptr);
    grandchild.reset();
}

TEST(DbItem, AddChild_SamePointerTwice_StandsTwice) {
    OpenItem parent;
    OpenItem child;
    parent.AddChild(&child);
    parent.AddChild(&child);
    EXPECT_EQ(ChildCount(parent), 2U);
    parent.RemoveChild(&child);
    EXPECT_EQ(ChildCount(parent), 1U);
    parent.RemoveChild(&child);
    EXPECT_EQ(ChildCount(parent), 0U);
}

TEST(DbItem, RemoveChild_AbsentPointer_ChangesNothing) {
    OpenItem parent;
    DbItem child(&parent);
    DbItem stranger;
    parent.RemoveChild(&stranger);
    parent.RemoveChild(nullptr);
    EXPECT_EQ(ChildCount(parent), 1U);
}

TEST(DbItem, RemoveChild_OneOfMany_KeepsTheOrderOfTheRest) {
    std::vector<DbItem*> syncs;
    OpenItem parent;
    std::vector<std::unique_ptr<CountingItem>> children;
    for (int i = 0; i < 9; ++i) {
        children.push_back(std::make_unique<CountingItem>(&parent));
        children.back()->m_syncs = &syncs;
    }
    parent.RemoveChild(children[0].get());
    parent.RemoveChild(children[4].get());
    parent.Sync();
    const std::vector<DbItem*> expected = {children[1].get(), children[2].get(), children[3].get(),
                                           children[5].get(), children[6].get(), children[7].get(),
                                           children[8].get()};
    EXPECT_EQ(syncs, expected);
}

TEST(DbItem, RemoveChild_ThenParentDies_ChildIsNotTouched) {
    auto parent = std::make_unique<OpenItem>();
    DbItem child(parent.get());
    parent->RemoveChild(&child);
    EXPECT_EQ(child.GetParent(), parent.get());
    parent.reset();
    child.SetChanged();
    EXPECT_TRUE(child.IsChanged());
}

TEST(DbItem, RemoveChild_ThenParentDiesFirst_ChildDiesQuietly) {
    auto parent = std::make_unique<OpenItem>();
    auto child = std::make_unique<DbItem>(parent.get());
    parent->RemoveChild(child.get());
    parent.reset();
    child.reset();
    SUCCEED() << "nothing freed was touched";
}

TEST(DbItem, SetChanged_TakesTheNextCountOfTheProcess) {
    DbItem item;
    const std::int32_t before = DbItem::m_changeCounter;
    item.SetChanged();
    EXPECT_EQ(DbItem::m_changeCounter, before + 1);
    EXPECT_EQ(item.GetChangeId(), before + 1);
}

TEST(DbItem, SetChanged_OnDifferentItems_GivesIncreasingStamps) {
    DbItem first;
    DbItem second;
    second.SetChanged();
    first.SetChanged();
    EXPECT_GT(first.GetChangeId(), second.GetChangeId());
}

TEST(DbItem, SetChanged_TouchesNeitherParentNorChildren) {
    DbItem root;
    DbItem middle(&root);
    DbItem leaf(&middle);
    leaf.SetChanged();
    leaf.Sync();
    const long leafStamp = leaf.GetChangeId();
    middle.SetChanged();
    EXPECT_FALSE(leaf.IsChanged());
    EXPECT_EQ(leaf.GetChangeId(), leafStamp);
    const DbItem rootAlone(root);
    EXPECT_TRUE(middle.IsChanged());
    middle.Sync();
    EXPECT_FALSE(root.IsChanged());
}

TEST(DbItem, IsChanged_ChangedGrandchild_IsSeenFromTheRoot) {
    DbItem root;
    DbItem child(&root);
    DbItem grandchild(&child);
    grandchild.SetChanged();
    EXPECT_TRUE(root.IsChanged());
    EXPECT_EQ(root.GetChangeId(), DbItem::m_changeCounter);
    root.Sync();
    EXPECT_FALSE(root.IsChanged());
    EXPECT_FALSE(child.IsChanged());
    EXPECT_FALSE(grandchild.IsChanged());
    EXPECT_EQ(root.GetChangeId(), DbItem::m_changeCounter) << "the stamp outlives the sync";
}

TEST(DbItem, IsChanged_EveryChildIsAsked_AlsoBehindAChangedOne) {
    DbItem parent;
    CountingItem first(&parent);
    CountingItem second(&parent);
    parent.SetChanged();
    first.SetChanged();
    EXPECT_TRUE(parent.IsChanged());
    EXPECT_EQ(first.m_asked, 1);
    EXPECT_EQ(second.m_asked, 1);
}

TEST(DbItem, Sync_OfAChild_LeavesTheParentChanged) {
    DbItem parent;
    DbItem child(&parent);
    parent.SetChanged();
    child.SetChanged();
    child.Sync();
    EXPECT_FALSE(child.IsChanged());
    EXPECT_TRUE(parent.IsChanged());
}

TEST(DbItem, Sync_ThenChange_IsChangedAgain) {
    DbItem item;
    item.SetChanged();
    item.Sync();
    item.SetChanged();
    EXPECT_TRUE(item.IsChanged());
}

TEST(DbItem, GetChangeId_OfASubtree_IsTheLatestStampInIt) {
    DbItem root;
    DbItem left(&root);
    DbItem right(&root);
    DbItem leaf(&left);
    leaf.SetChanged();
    const long leafStamp = leaf.GetChangeId();
    right.SetChanged();
    const long rightStamp = right.GetChangeId();
    EXPECT_EQ(root.GetChangeId(), rightStamp);
    EXPECT_EQ(left.GetChangeId(), leafStamp);
    root.SetChanged();
    EXPECT_EQ(root.GetChangeId(), DbItem::m_changeCounter);
    EXPECT_GT(root.GetChangeId(), rightStamp);
}

TEST(DbItem, GetSize_IsTwentyTwoPerChildAndEight) {
    DbItem parent;
    std::vector<std::unique_ptr<DbItem>> children;
    for (uint64 count = 1; count <= 20; ++count) {
        children.push_back(std::make_unique<DbItem>(&parent));
        EXPECT_EQ(parent.GetSize(), 22 * count + 8);
    }
}

TEST(DbItem, CalcSize_AddsUpTheDerivedEstimatesOfTheSubtree) {
    OpenItem root;
    root.m_extraSize = 100;
    OpenItem child(&root);
    child.m_extraSize = 1000;
    const OpenItem grandchild(&child);
    EXPECT_EQ(root.CalcSize(), (22 + 8 + 100) + (22 + 8 + 1000) + 8U);
}

class SerializableProbe : public DbXmlSerializable {
public:
    bool Save(IDispatch*, IDispatch*) override { return m_state == 1; }
    bool Load(IDispatch*) override { return m_state == 2; }

    int m_state = 0;
};

class SerializableHolder : public SerializableProbe {
public:
    void AssignBase(const DbXmlSerializable& other) { DbXmlSerializable::operator=(other); }
};

TEST(DbXmlSerializable, SaveAndLoad_ThroughTheInterface_ReachTheDerivedClass) {
    SerializableProbe probe;
    probe.m_state = 2;
    DbXmlSerializable& serializable = probe;
    EXPECT_FALSE(serializable.Save(nullptr, nullptr));
    EXPECT_TRUE(serializable.Load(nullptr));
}

TEST(DbXmlSerializable, AssignBase_CopiesNothing) {
    SerializableHolder target;
    target.m_state = 1;
    const SerializableProbe source;
    target.AssignBase(source);
    EXPECT_EQ(target.m_state, 1);
}

}  // namespace
