// Our documents as scripts see them, and the model saved into and loaded from a foreign document, which is
// called late-bound.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Quillet/xml/Document.h"
#include "support/DispatchStub.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using quillet::xml::Document;
using quillet::xml::Node;
using Strings = std::vector<std::string>;

// A foreign document object model: forwards every call to one of our automation objects, and has no interface
// but IDispatch.
class ForeignObject final : public IDispatch {
public:
    // The model's behaviour, shared by all objects.
    struct Behaviour {
        // The number of calls until one fails; negative for never.
        int m_callsLeft = -1;
        // Called to fail by throwing, which no automation interface allows.
        std::function<void()> m_throw;
        // Accepts any attribute, and records the values.
        bool m_takesAnything = false;
        Strings m_taken;
        // The number of calls, and of lookups by name.
        int m_calls = 0;
        int m_lookUps = 0;
    };
    static Behaviour& TheBehaviour() {
        static Behaviour behaviour;
        return behaviour;
    }

    static CComPtr<IDispatch> Wrap(IDispatch* inner) {
        CComPtr<IDispatch> wrapper;
        if (inner != nullptr) {
            wrapper.Attach(new ForeignObject(inner));
        }
        return wrapper;
    }
    static std::size_t Living() { return Objects().size(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        if (iid != IID_IUnknown && iid != IID_IDispatch) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        return m_inner->GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override {
        ++TheBehaviour().m_lookUps;
        const HRESULT result = m_inner->GetIDsOfNames(iid, names, count, locale, ids);
        if (SUCCEEDED(result) && count > 0) {
            m_names[ids[0]] = CString(static_cast<const WCHAR*>(names[0])).ToUtf8();
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
        Behaviour& behaviour = TheBehaviour();
        ++behaviour.m_calls;
        if (behaviour.m_callsLeft == 0) {
            if (behaviour.m_throw) {
                behaviour.m_throw();
            }
            return DISP_E_EXCEPTION;
        }
        if (behaviour.m_callsLeft > 0) {
            --behaviour.m_callsLeft;
        }
        std::vector<VARIANTARG> arguments;
        for (UINT i = 0; i < parameters->cArgs; ++i) {
            arguments.push_back(parameters->rgvarg[i]);
            if (arguments.back().vt == VT_DISPATCH) {
                const auto known = Objects().find(arguments.back().pdispVal);
                if (known != Objects().end()) {
                    arguments.back().pdispVal = known->second->m_inner.Get();
                }
            }
        }
        if (behaviour.m_takesAnything && m_names[id] == "setAttribute") {
            for (const VARIANTARG& argument : arguments) {
                behaviour.m_taken.push_back(TextOf(CComVariant(argument)));
            }
            return S_OK;
        }
        DISPPARAMS unwrapped{arguments.data(), parameters->rgdispidNamedArgs, parameters->cArgs,
                             parameters->cNamedArgs};
        CComVariant answer;
        const HRESULT called =
            m_inner->Invoke(id, iid, locale, flags, &unwrapped, &answer, exception, badArgument);
        if (FAILED(called) || result == nullptr) {
            return called;
        }
        if (answer.vt == VT_DISPATCH && answer.pdispVal != nullptr) {
            answer = CComVariant(Wrap(answer.pdispVal).Get());
        }
        VariantInit(result);
        return VariantCopy(result, &answer);
    }

private:
    explicit ForeignObject(IDispatch* inner) : m_inner(inner) { Objects()[this] = this; }
    ~ForeignObject() { Objects().erase(this); }

    static std::map<const IDispatch*, ForeignObject*>& Objects() {
        static std::map<const IDispatch*, ForeignObject*> objects;
        return objects;
    }

    ULONG m_references = 1;
    CComPtr<IDispatch> m_inner;
    std::map<DISPID, std::string> m_names;
};

// A foreign document with a root element <t>; at the end no object may still be referenced.
class ForeignDom : public testing::Test {
protected:
    ForeignDom()
        : m_document(ForeignObject::Wrap(m_target.Automation())),
          m_element(ForeignObject::Wrap(m_target.Element())) {
        ForeignObject::TheBehaviour() = {};
    }
    ~ForeignDom() override {
        m_document = {};
        m_element = {};
        EXPECT_EQ(ForeignObject::Living(), 0U);
        ForeignObject::TheBehaviour() = {};
    }

    // The root element of a text.
    static CComPtr<IDispatch> Foreign(const std::string& text) {
        return ForeignObject::Wrap(ElementOf(text).Get());
    }
    static void FailAfter(int calls) { ForeignObject::TheBehaviour().m_callsLeft = calls; }
    static int Calls() { return ForeignObject::TheBehaviour().m_calls; }

    SaveTarget m_target;
    CComPtr<IDispatch> m_document;
    CComPtr<IDispatch> m_element;
};

// A table in a database, with the fields n (long), t (text) and f (boolean).
class ForeignTable : public ForeignDom {
protected:
    ForeignTable() : m_info(m_database.CreateTable("T", DbTableInfo::Table)) {
        Descr().CreateField("n", true, DbFieldDescr::Long);
        Descr().CreateField("t t", false, DbFieldDescr::Text);
        Descr().CreateField("f", false, DbFieldDescr::Boolean);
        TakeLog(m_database);
    }

    DbTableDescr& Descr() { return *m_info->GetDescr(); }
    DbTableData& Data() { return *m_info->GetData(); }
    DbTableRow& NewRow(LONG number, const CString& text) {
        DbTableRow& row = Data()[Data().AddRow()];
        row[uint64(0)].GetVariant() = Long(number);
        row[uint64(1)].GetVariant() = CComVariant(text);
        return row;
    }

    DbDatabase m_database;
    DbTableInfo* m_info;
};

TEST_F(ForeignDom, Wrapper_ShowsNothingOfOurs) {
    EXPECT_NE(Node(m_element.Get()).Foreign(), nullptr);
    EXPECT_EQ(Node(m_target.Element()).Foreign(), nullptr);
}

TEST_F(ForeignDom, Automation_OfANode_IsThatNode) {
    EXPECT_EQ(Node(m_element.Get()).Automation().Get(), m_element.Get());
    EXPECT_EQ(Node().Automation().Get(), nullptr);
    EXPECT_EQ(Node(Node(m_target.Element()).Automation().Get()).Name(), Node(m_target.Element()).Name());
}

TEST(NodeAutomation, SavesAndLoadsTheModel_AndKeepsTheTree) {
    CComPtr<IDispatch> kept;
    {
        Document document;
        const Node root = document.Root();
        root.AppendChild(root.CreateElement("fields"));
        const Node element = root.FirstChild();
        DbFieldDescr field;
        field.SetName("a b");
        EXPECT_TRUE(field.Save(root.Automation().Get(), element.Automation().Get()));
        kept = element.FirstChild().Automation();
    }
    DbFieldDescr loaded;
    EXPECT_TRUE(loaded.Load(kept.Get())) << "the document is gone";
    EXPECT_EQ(loaded.GetName(), "a b");
}

TEST_F(ForeignDom, FieldSave_WritesTheSameElement) {
    DbFieldDescr field;
    field.SetName("a <b>");
    field.SetKey(true);
    field.SetType(VT_R8);
    EXPECT_TRUE(field.Save(m_document.Get(), m_element.Get()));
    EXPECT_EQ(m_target.Content(), "<field name=\"a &lt;b&gt;\" key=\"true\" type=\"5\" required=\"0\" />\n");
}

TEST_F(ForeignDom, FieldLoad_ReadsNameKeyAndType) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(Foreign("<field name='a b' key='true' type='8' required='-1' x='y'/>").Get()));
    EXPECT_EQ(field.GetName().ToUtf8(), "a b");
    EXPECT_TRUE(field.IsKey());
    EXPECT_EQ(field.GetDbType(), DbFieldDescr::Text);
    EXPECT_FALSE(field.IsRequired());
}

TEST_F(ForeignDom, FieldLoad_WhatIsNoElement_IsFalse) {
    DbFieldDescr field;
    const auto element = Foreign("<t a='1'>text</t>");
    EXPECT_FALSE(field.Load(InvokeByName(element.Get(), "firstChild").Object().Get()));
    EXPECT_FALSE(field.Load(InvokeByName(element.Get(), "attributes").Object().Get()));
}

TEST_F(ForeignTable, DescriptorSaveAndLoad_ComesBack) {
    EXPECT_TRUE(Descr().Save(m_document.Get(), m_element.Get()));
    EXPECT_EQ(m_target.Content(),
              "<field name=\"n\" key=\"true\" type=\"3\" required=\"0\" />\n"
              "<field name=\"t t\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"f\" key=\"false\" type=\"11\" required=\"0\" />\n");
    DbTableDescr read(nullptr);
    EXPECT_TRUE(read.Load(m_element.Get()));
    ASSERT_EQ(read.size(), 3U);
    EXPECT_EQ(read[1].GetName().ToUtf8(), "t t");
    EXPECT_TRUE(read[0].IsKey());
    EXPECT_EQ(read[2].GetIndex(), 2);
}

TEST_F(ForeignTable, RowSaveAndLoad_ComesBack) {
    DbTableRow& row = NewRow(-5, "<a & \"b\">\t\r\n\u017C\U0001F600");
    EXPECT_TRUE(row.Save(m_document.Get(), m_element.Get()));
    EXPECT_EQ(
        m_target.Content(),
        "<row n=\"-5\" t_t=\"&lt;a &amp; &quot;b&quot;&gt;&#9;&#13;&#10;\u017C\U0001F600\" f=\"false\" />\n");
    DbTableRow& read = NewRow(0, "");
    EXPECT_TRUE(read.Load(InvokeByName(m_element.Get(), "firstChild").Object().Get()));
    EXPECT_EQ(read[uint64(0)].GetValue().lVal, -5);
    EXPECT_EQ(TextOf(read[uint64(1)].GetValue()), "<a & \"b\">\t\r\n\u017C\U0001F600");
}

TEST_F(ForeignTable, RowSave_AttributesArriveInFieldOrder) {
    ForeignObject::TheBehaviour().m_takesAnything = true;
    EXPECT_TRUE(NewRow(1, "x").Save(m_document.Get(), m_element.Get()));
    EXPECT_EQ(ForeignObject::TheBehaviour().m_taken, (Strings{"1", "n", "x", "t_t", "false", "f"}));
}

TEST_F(ForeignTable, RowSave_TextThatXmlCannotCarry_IsRefusedWhateverTheDomTakes) {
    ForeignObject::TheBehaviour().m_takesAnything = true;
    for (const CString& text : {Units({1}), Units({'a', 0x1F}), Units({0xD800}), Units({0xDC00, 'b'}),
                                Units({0xFFFE}), Units({0xFFFF}), Units({'a', 0, 'b'})}) {
        EXPECT_FALSE(NewRow(1, text).Save(m_document.Get(), m_element.Get()))
            << testing::PrintToString(text.ToUtf8());
        EXPECT_EQ(TakeLog(m_database),
                  (Strings{"Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), t_t, 1"}));
    }
    EXPECT_EQ(m_target.Content(), "");
}

TEST_F(ForeignTable, FieldSave_NameThatXmlCannotCarry_IsRefusedWhateverTheDomTakes) {
    ForeignObject::TheBehaviour().m_takesAnything = true;
    for (const CString& name : {Units({1}), Units({0xD800}), Units({0xFFFE})}) {
        DbFieldDescr field;
        field.SetName(name);
        EXPECT_FALSE(field.Save(m_document.Get(), m_element.Get())) << testing::PrintToString(name.ToUtf8());
    }
    EXPECT_EQ(m_target.Content(), "");
}

TEST_F(ForeignTable, RowSave_NamesThatXmlRefusesOrThatStandTwice_AreRefusedWhateverTheDomTakes) {
    ForeignObject::TheBehaviour().m_takesAnything = true;
    Descr()[1].SetName("1st");
    EXPECT_FALSE(NewRow(1, "x").Save(m_document.Get(), m_element.Get()));
    Descr()[1].SetName("n");
    EXPECT_FALSE(NewRow(1, "x").Save(m_document.Get(), m_element.Get()));
    EXPECT_EQ(m_target.Content(), "");
    EXPECT_EQ(
        TakeLog(m_database),
        (Strings{"Table 'T' can't be saved: the field '1st' would be saved as '1st', which is no name in XML",
                 "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), 1st, 1",
                 "Table 'T' can't be saved: the fields 'n' and 'n' would both be saved as 'n'",
                 "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), n, 1"}));
}

TEST_F(ForeignTable, DataSaveAndLoad_ComesBack) {
    NewRow(1, "a");
    NewRow(2, "b");
    EXPECT_TRUE(Data().Save(m_document.Get(), m_element.Get()));
    EXPECT_EQ(m_target.Content(),
              "<row n=\"1\" t_t=\"a\" f=\"false\" />\n<row n=\"2\" t_t=\"b\" f=\"false\" />\n");
    Data().Clear();
    EXPECT_TRUE(Data().Load(m_element.Get()));
    ASSERT_EQ(Data().size(), 2U);
    EXPECT_EQ(TextOf(Data()[1][uint64(1)].GetValue()), "b");
    const Strings lines = TakeLog(m_database);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].find("Table 'T' [2 rows] data parsed in: "), 0U) << lines[0];
}

TEST_F(ForeignTable, DatabaseSave_WithAndWithoutAParent_WritesTheSame) {
    NewRow(1, "a");
    EXPECT_TRUE(m_database.Save(m_document.Get(), m_element.Get()));
    SaveTarget ours;
    EXPECT_TRUE(m_database.Save(ours.Automation(), ours.Element()));
    EXPECT_EQ(m_target.Content(), ours.Content());
    Document whole;
    const CComPtr<IDispatch> wholeDocument = ForeignObject::Wrap(whole.Automation().Get());
    EXPECT_TRUE(m_database.Save(wholeDocument.Get(), nullptr));
    EXPECT_EQ(whole.SaveText(), ours.Content());
}

TEST_F(ForeignTable, Save_ParentOfOursAndDocumentOfTheirs_IsFalse) {
    EXPECT_FALSE(NewRow(1, "a").Save(m_document.Get(), m_target.Element()));
    EXPECT_FALSE(NewRow(1, "a").Save(m_target.Automation(), m_element.Get()));
    EXPECT_FALSE(Descr().Save(m_document.Get(), m_target.Element()));
    EXPECT_FALSE(NewRow(1, "a").Save(nullptr, m_element.Get()));
    EXPECT_EQ(m_target.Content(), "");
}

TEST_F(ForeignTable, RowSave_DomThatFailsAtAnyCall_IsFalseAndLogsTheField) {
    DbTableRow& row = NewRow(1, "a");
    EXPECT_TRUE(row.Save(m_document.Get(), m_element.Get()));
    const int calls = Calls();
    ASSERT_GT(calls, 4);
    const std::string content = m_target.Content();
    for (int failing = 0; failing < calls; ++failing) {
        FailAfter(failing);
        EXPECT_FALSE(row.Save(m_document.Get(), m_element.Get())) << failing;
        EXPECT_EQ(m_target.Content(), content) << failing;
        const Strings lines = TakeLog(m_database);
        ASSERT_EQ(lines.size(), 1U) << failing;
        EXPECT_EQ(lines[0].find("Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), "), 0U)
            << lines[0];
    }
}

TEST_F(ForeignTable, DescriptorSave_DomThatFailsAtAnyCall_IsFalse) {
    EXPECT_TRUE(Descr().Save(m_document.Get(), m_element.Get()));
    const int calls = Calls();
    for (int failing = 0; failing < calls; ++failing) {
        FailAfter(failing);
        EXPECT_FALSE(Descr().Save(m_document.Get(), m_element.Get())) << failing;
    }
}

TEST_F(ForeignTable, DescriptorLoad_DomThatFailsAtAnyCall_IsFalse) {
    const auto element = Foreign("<t><field name='a' type='3' key='true'/><field name='b' type='8'/></t>");
    DbTableDescr whole(nullptr);
    EXPECT_TRUE(whole.Load(element.Get()));
    const int calls = Calls();
    for (int failing = 0; failing < calls; ++failing) {
        DbTableDescr read(nullptr);
        FailAfter(failing);
        EXPECT_FALSE(read.Load(element.Get())) << failing;
        EXPECT_LE(read.size(), 2U);
    }
}

TEST_F(ForeignTable, DataSaveAndLoad_DomThatFailsAtAnyCall_IsFalse) {
    NewRow(1, "a");
    EXPECT_TRUE(Data().Save(m_document.Get(), m_element.Get()));
    const int saveCalls = Calls();
    for (int failing = 0; failing < saveCalls; ++failing) {
        FailAfter(failing);
        EXPECT_FALSE(Data().Save(m_document.Get(), m_element.Get())) << failing;
    }
    FailAfter(-1);
    ForeignObject::TheBehaviour().m_calls = 0;
    Data().Clear();
    EXPECT_TRUE(Data().Load(m_element.Get()));
    const int loadCalls = Calls();
    for (int failing = 0; failing < loadCalls; ++failing) {
        Data().Clear();
        FailAfter(failing);
        EXPECT_FALSE(Data().Load(m_element.Get())) << failing;
    }
    FailAfter(-1);
}

TEST_F(ForeignTable, DatabaseSave_DomThatFailsAtAnyCall_IsFalseAndThrowsNothing) {
    NewRow(1, "a");
    EXPECT_TRUE(m_database.Save(m_document.Get(), m_element.Get()));
    const int calls = Calls();
    for (int failing = 0; failing < calls; ++failing) {
        FailAfter(failing);
        EXPECT_FALSE(m_database.Save(m_document.Get(), m_element.Get())) << failing;
    }
    FailAfter(-1);
}

// Saves and loads every part of the model once for each call that can fail, which throws; the parts must
// return false and let no exception out.
class ThrowingDom : public ForeignTable, public testing::WithParamInterface<int> {
protected:
    using Operation = std::function<bool()>;

    // What the object throws: a standard exception, a number, one of ours by pointer, std::bad_alloc.
    static void Throw() {
        switch (GetParam()) {
            case 0:
                throw std::runtime_error("the foreign document is gone");
            case 1:
                throw 7;
            case 2:
                throw new DbException("a foreign failure");
            default:
                throw std::bad_alloc();
        }
    }
    static void ExpectFalseAtAnyCall(const Operation& operation) {
        ForeignObject::Behaviour& behaviour = ForeignObject::TheBehaviour();
        behaviour.m_callsLeft = -1;
        behaviour.m_calls = 0;
        EXPECT_TRUE(operation());
        const int calls = Calls();
        EXPECT_GT(calls, 0);
        behaviour.m_throw = Throw;
        for (int failing = 0; failing < calls; ++failing) {
            FailAfter(failing);
            EXPECT_NO_THROW(EXPECT_FALSE(operation()) << failing) << failing;
        }
        FailAfter(-1);
        behaviour.m_throw = {};
    }
};

TEST_P(ThrowingDom, Field_SaveAndLoad_AreFalse) {
    DbFieldDescr field;
    field.SetName("a");
    ExpectFalseAtAnyCall([&] { return field.Save(m_document.Get(), m_element.Get()); });
    const auto element = Foreign("<field name='a' type='3' key='true'/>");
    ExpectFalseAtAnyCall([&] { return field.Load(element.Get()); });
}

TEST_P(ThrowingDom, Structure_SaveAndLoad_AreFalse) {
    ExpectFalseAtAnyCall([&] { return Descr().Save(m_document.Get(), m_element.Get()); });
    const auto element = Foreign("<t><field name='a' type='3'/><field name='b' type='8'/></t>");
    ExpectFalseAtAnyCall([&] {
        DbTableDescr read(nullptr);
        return read.Load(element.Get());
    });
}

TEST_P(ThrowingDom, Row_SaveAndLoad_AreFalse) {
    DbTableRow& row = NewRow(1, "a");
    ExpectFalseAtAnyCall([&] { return row.Save(m_document.Get(), m_element.Get()); });
    const auto element = Foreign("<row n='1' t='b' f='true'/>");
    ExpectFalseAtAnyCall([&] { return row.Load(element.Get()); });
}

TEST_P(ThrowingDom, Data_SaveAndLoad_AreFalse) {
    NewRow(1, "a");
    ExpectFalseAtAnyCall([&] { return Data().Save(m_document.Get(), m_element.Get()); });
    const auto element = Foreign("<t><row n='1' t='b' f='true'/></t>");
    ExpectFalseAtAnyCall([&] { return Data().Load(element.Get()); });
}

TEST_P(ThrowingDom, Database_Save_IsFalse) {
    NewRow(1, "a");
    ExpectFalseAtAnyCall([&] { return m_database.Save(m_document.Get(), m_element.Get()); });
}

std::string WhatIsThrown(const testing::TestParamInfo<int>& info) {
    return Strings{"StandardException", "Number", "OursByPointer",
                   "BadAlloc"}[static_cast<std::size_t>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(All, ThrowingDom, testing::Range(0, 4), WhatIsThrown);

TEST_F(ForeignDom, NodeWalk_PassesOverRemarksAndInstructions) {
    const CComPtr<IDispatch> document = ForeignObject::Wrap(m_target.Automation());
    const Node root(document.Get());
    const Node instruction = root.CreateProcessingInstruction("p", "data");
    const Node element(m_element.Get());
    element.AppendChild(instruction);
    element.AppendChild(root.CreateElement("a"));
    element.AppendChild(root.CreateProcessingInstruction("q", "data"));
    element.AppendChild(root.CreateElement("b"));
    EXPECT_EQ(element.CountChildren(), 2U);
    EXPECT_EQ(element.FirstChild().Name(), "a");
    EXPECT_EQ(element.FirstChild().NextSibling().Name(), "b");
    EXPECT_TRUE(element.FirstChild().NextSibling().NextSibling().IsNull());
}

TEST_F(ForeignDom, NodeWalk_PassesOverBlanksThatAreKept) {
    const auto element = Foreign("<t>&#32;<a/>&#9;&#13;&#10;<b/>&#32;</t>");
    const Node node(element.Get());
    EXPECT_EQ(node.CountChildren(), 2U);
    EXPECT_EQ(node.FirstChild().Name(), "a");
    EXPECT_EQ(node.FirstChild().NextSibling().Name(), "b");
    const auto text = Foreign("<t>&#160;</t>");
    EXPECT_EQ(Node(text.Get()).FirstChild().Name(), "#text");
}

TEST_F(ForeignTable, RowSave_ManyFields_AsksForTheMemberOnce) {
    for (int i = 0; i < 30; ++i) {
        Descr().CreateField(CString("field " + std::to_string(i)), false, DbFieldDescr::Text);
    }
    DbTableRow& row = NewRow(1, "a");
    ForeignObject::TheBehaviour().m_lookUps = 0;
    EXPECT_TRUE(row.Save(m_document.Get(), m_element.Get()));
    EXPECT_LE(ForeignObject::TheBehaviour().m_lookUps, 3);
    const auto saved = InvokeByName(m_element.Get(), "firstChild").Object();
    ForeignObject::TheBehaviour().m_lookUps = 0;
    EXPECT_TRUE(row.Load(saved.Get()));
    EXPECT_LE(ForeignObject::TheBehaviour().m_lookUps, 4 + static_cast<int>(row.size()));
}

// An automation object that answers every call in the same way.
class StubbornObject final : public DispatchStub {
public:
    enum class Answer { NoNames, Failure, Nothing, Null, NoObject, Number, Text, Itself };
    static constexpr Answer All[] = {Answer::NoNames,  Answer::Failure, Answer::Nothing, Answer::Null,
                                     Answer::NoObject, Answer::Number,  Answer::Text,    Answer::Itself};

    explicit StubbornObject(Answer answer) : m_answer(answer) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
        m_references += *object == nullptr ? 0 : 1;
        return *object == nullptr ? E_NOINTERFACE : S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_references; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID* ids) override {
        ids[0] = m_answer == Answer::NoNames ? DISPID_UNKNOWN : 1;
        return m_answer == Answer::NoNames ? DISP_E_UNKNOWNNAME : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        CComVariant value;
        switch (m_answer) {
            case Answer::NoNames:
            case Answer::Failure:
                return DISP_E_EXCEPTION;
            case Answer::Null:
                value = NullVariant();
                break;
            case Answer::NoObject:
                value = CComVariant(static_cast<IDispatch*>(nullptr));
                break;
            case Answer::Number:
                value = Long(1);
                break;
            case Answer::Text:
                value = CComVariant("text");
                break;
            case Answer::Itself:
                value = CComVariant(static_cast<IDispatch*>(this));
                break;
            default:
                break;
        }
        return VariantCopy(result, &value);
    }

    ULONG References() const { return m_references; }

private:
    Answer m_answer;
    ULONG m_references = 1;
};

TEST_F(ForeignTable, Save_ObjectThatIsNoDocument_IsFalseAndLeavesNoReferences) {
    DbTableRow& row = NewRow(1, "a");
    for (const StubbornObject::Answer answer : StubbornObject::All) {
        StubbornObject stubborn(answer);
        const auto expectRefused = [&](IDispatch* document, IDispatch* parent) {
            EXPECT_FALSE(row.Save(document, parent));
            EXPECT_FALSE(Data().Save(document, parent));
            EXPECT_FALSE(Descr()[0].Save(document, parent));
            EXPECT_FALSE(Descr().Save(document, parent));
            EXPECT_FALSE(m_database.Save(document, parent));
        };
        // An object that accepts every call can't be told from a document.
        if (answer != StubbornObject::Answer::Itself) {
            expectRefused(&stubborn, &stubborn);
            expectRefused(&stubborn, m_element.Get());
        }
        if (answer == StubbornObject::Answer::NoNames || answer == StubbornObject::Answer::Failure) {
            expectRefused(m_document.Get(), &stubborn);
        }
        expectRefused(m_target.Automation(), &stubborn);
        expectRefused(&stubborn, m_target.Element());
        EXPECT_EQ(stubborn.References(), 1U) << static_cast<int>(answer);
    }
    EXPECT_EQ(m_target.Content(), "");
}

TEST_F(ForeignTable, Load_ObjectThatIsNoElement_IsFalseAndLeavesNoReferences) {
    DbTableRow& row = NewRow(1, "a");
    for (const StubbornObject::Answer answer : StubbornObject::All) {
        StubbornObject stubborn(answer);
        DbFieldDescr field;
        // The type of a node that is an element is the number 1, so this one passes for an element that has
        // no attributes and no children.
        const bool isElement = answer == StubbornObject::Answer::Number;
        EXPECT_EQ(row.Load(&stubborn), isElement) << static_cast<int>(answer);
        EXPECT_EQ(field.Load(&stubborn), isElement) << static_cast<int>(answer);
        EXPECT_EQ(row[uint64(0)].GetValue().lVal, 1);
        EXPECT_EQ(stubborn.References(), 1U) << static_cast<int>(answer);
    }
    for (const StubbornObject::Answer answer :
         {StubbornObject::Answer::NoNames, StubbornObject::Answer::Failure}) {
        StubbornObject stubborn(answer);
        EXPECT_FALSE(Descr().Load(&stubborn));
        EXPECT_FALSE(Data().Load(&stubborn));
        EXPECT_EQ(stubborn.References(), 1U);
    }
}

// Our documents, called by name.
class OurAutomation : public testing::Test {
protected:
    OurAutomation() {
        EXPECT_TRUE(m_document.LoadText("<t a='1' b='&lt;'><x/>text<y c='2'/></t>"));
        m_object = m_document.Automation();
        m_element = InvokeByName(m_object.Get(), "documentElement").Object();
        m_text = InvokeByName(m_element.Get(), "xml").Text();
    }

    Document m_document;
    CComPtr<IDispatch> m_object;
    CComPtr<IDispatch> m_element;
    std::string m_text;
};

TEST_F(OurAutomation, NodeNameAndType_OfEveryKindOfNode) {
    EXPECT_EQ(InvokeByName(m_object.Get(), "nodeName").Text(), "#document");
    EXPECT_EQ(InvokeByName(m_object.Get(), "nodeType").m_value.lVal, 9);
    EXPECT_EQ(InvokeByName(m_element.Get(), "nodeName").Text(), "t");
    EXPECT_EQ(InvokeByName(m_element.Get(), "tagName").Text(), "t");
    EXPECT_EQ(InvokeByName(m_element.Get(), "nodeType").m_value.lVal, 1);
    const auto text =
        InvokeByName(InvokeByName(m_element.Get(), "firstChild").Object().Get(), "nextSibling").Object();
    EXPECT_EQ(InvokeByName(text.Get(), "nodeName").Text(), "#text");
    EXPECT_EQ(InvokeByName(text.Get(), "nodeType").m_value.lVal, 3);
    EXPECT_EQ(InvokeByName(text.Get(), "nodeValue").Text(), "text");
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    const auto attribute = InvokeByName(attributes.Get(), "item", {Long(1)}).Object();
    EXPECT_EQ(InvokeByName(attribute.Get(), "nodeName").Text(), "b");
    EXPECT_EQ(InvokeByName(attribute.Get(), "name").Text(), "b");
    EXPECT_EQ(InvokeByName(attribute.Get(), "nodeValue").Text(), "<");
    EXPECT_EQ(InvokeByName(attribute.Get(), "value").Text(), "<");
    EXPECT_EQ(InvokeByName(attribute.Get(), "nodeType").m_value.lVal, 2);
    const auto instruction =
        InvokeByName(m_object.Get(), "createProcessingInstruction", {CComVariant("p"), CComVariant("d")})
            .Object();
    EXPECT_EQ(InvokeByName(instruction.Get(), "nodeType").m_value.lVal, 7);
    EXPECT_EQ(InvokeByName(instruction.Get(), "nodeName").Text(), "p");
    EXPECT_EQ(InvokeByName(instruction.Get(), "nodeValue").Text(), "d");
}

TEST_F(OurAutomation, Walk_ChildrenSiblingsAndParents) {
    EXPECT_TRUE(InvokeByName(m_element.Get(), "hasChildNodes").m_value.boolVal == VARIANT_TRUE);
    const auto first = InvokeByName(m_element.Get(), "firstChild").Object();
    const auto last = InvokeByName(m_element.Get(), "lastChild").Object();
    EXPECT_EQ(InvokeByName(first.Get(), "nodeName").Text(), "x");
    EXPECT_EQ(InvokeByName(last.Get(), "nodeName").Text(), "y");
    EXPECT_TRUE(InvokeByName(last.Get(), "nextSibling").IsNothing());
    EXPECT_TRUE(InvokeByName(first.Get(), "firstChild").IsNothing());
    EXPECT_TRUE(InvokeByName(first.Get(), "lastChild").IsNothing());
    EXPECT_EQ(InvokeByName(first.Get(), "hasChildNodes").m_value.boolVal, VARIANT_FALSE);
    EXPECT_EQ(InvokeByName(InvokeByName(first.Get(), "parentNode").Object().Get(), "nodeName").Text(), "t");
    EXPECT_EQ(InvokeByName(InvokeByName(m_element.Get(), "parentNode").Object().Get(), "nodeName").Text(),
              "#document");
    EXPECT_TRUE(InvokeByName(m_object.Get(), "parentNode").IsNothing());
    EXPECT_EQ(InvokeByName(InvokeByName(first.Get(), "ownerDocument").Object().Get(), "nodeName").Text(),
              "#document");
    EXPECT_TRUE(InvokeByName(m_object.Get(), "attributes").IsNothing());
}

TEST_F(OurAutomation, Lists_CountAndGiveTheirItems) {
    const auto children = InvokeByName(m_element.Get(), "childNodes").Object();
    EXPECT_EQ(InvokeByName(children.Get(), "length").m_value.lVal, 3);
    EXPECT_EQ(InvokeByName(InvokeByName(children.Get(), "item", {Long(0)}).Object().Get(), "nodeName").Text(),
              "x");
    EXPECT_EQ(InvokeByName(InvokeByName(children.Get(), "item", {Long(2)}).Object().Get(), "nodeName").Text(),
              "y");
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    EXPECT_EQ(InvokeByName(attributes.Get(), "length").m_value.lVal, 2);
    EXPECT_EQ(
        InvokeByName(InvokeByName(attributes.Get(), "item", {CComVariant("1")}).Object().Get(), "nodeName")
            .Text(),
        "b");
}

TEST_F(OurAutomation, Lists_ItemOutOfRange_IsNothing) {
    const auto children = InvokeByName(m_element.Get(), "childNodes").Object();
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    for (const LONG index : {-1, 3, 99, 2147483647}) {
        EXPECT_TRUE(InvokeByName(children.Get(), "item", {Long(index)}).IsNothing()) << index;
        EXPECT_TRUE(InvokeByName(attributes.Get(), "item", {Long(index)}).IsNothing()) << index;
    }
}

TEST_F(OurAutomation, Lists_ItemWithoutANumber_Fails) {
    const auto children = InvokeByName(m_element.Get(), "childNodes").Object();
    EXPECT_FALSE(InvokeByName(children.Get(), "item").Succeeded());
    EXPECT_FALSE(InvokeByName(children.Get(), "item", {CComVariant("x")}).Succeeded());
    EXPECT_FALSE(InvokeByName(children.Get(), "nodeName").Succeeded());
}

TEST_F(OurAutomation, Attributes_GetAndSet) {
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {CComVariant("b")}).Text(), "<");
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {CComVariant("absent")}).m_value.vt, VT_NULL);
    EXPECT_TRUE(InvokeByName(m_element.Get(), "setAttribute", {CComVariant("a"), Long(-5)}).Succeeded());
    EXPECT_TRUE(InvokeByName(m_element.Get(), "setAttribute", {CComVariant("new"), CComVariant("\u017C")})
                    .Succeeded());
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {CComVariant("a")}).Text(), "-5");
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {CComVariant("new")}).Text(), "\u017C");
}

TEST_F(OurAutomation, SetAttribute_WhatXmlRefuses_Fails) {
    EXPECT_FALSE(
        InvokeByName(m_element.Get(), "setAttribute", {CComVariant("1"), CComVariant("x")}).Succeeded());
    EXPECT_FALSE(
        InvokeByName(m_element.Get(), "setAttribute", {CComVariant("a"), CComVariant("\x01")}).Succeeded());
    EXPECT_FALSE(
        InvokeByName(m_element.Get(), "setAttribute", {CComVariant("a"), CComVariant(Units({0xFFFE}))})
            .Succeeded());
    EXPECT_FALSE(
        InvokeByName(m_element.Get(), "setAttribute", {CComVariant("a"), CComVariant(Units({0xD800}))})
            .Succeeded());
    EXPECT_FALSE(InvokeByName(m_element.Get(), "setAttribute", {CComVariant("a")}).Succeeded());
    EXPECT_FALSE(
        InvokeByName(m_element.Get(), "setAttribute", {CComVariant("a"), NullVariant()}).Succeeded());
    EXPECT_FALSE(
        InvokeByName(m_object.Get(), "setAttribute", {CComVariant("a"), CComVariant("x")}).Succeeded());
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {CComVariant("a")}).Text(), "1");
}

TEST_F(OurAutomation, CreateAndAppend_BuildADocument) {
    Document document;
    const auto object = document.Automation();
    const auto instruction = InvokeByName(object.Get(), "createProcessingInstruction",
                                          {CComVariant("xml"), CComVariant("version='1.0' encoding='UTF-8'")})
                                 .Object();
    EXPECT_TRUE(InvokeByName(object.Get(), "appendChild", {CComVariant(instruction.Get())}).Succeeded());
    const auto root = InvokeByName(object.Get(), "createElement", {CComVariant("root")}).Object();
    EXPECT_TRUE(InvokeByName(root.Get(), "parentNode").IsNothing());
    EXPECT_TRUE(InvokeByName(root.Get(), "nextSibling").IsNothing());
    const InvokeResult appended = InvokeByName(object.Get(), "appendChild", {CComVariant(root.Get())});
    EXPECT_EQ(InvokeByName(appended.Object().Get(), "nodeName").Text(), "root");
    const auto child = InvokeByName(object.Get(), "createElement", {CComVariant("child")}).Object();
    EXPECT_TRUE(InvokeByName(root.Get(), "appendChild", {CComVariant(child.Get())}).Succeeded());
    const std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n<child />\n</root>\n";
    EXPECT_EQ(document.SaveText(), text);
    EXPECT_EQ(InvokeByName(object.Get(), "xml").Text(), text);
    EXPECT_EQ(InvokeByName(root.Get(), "xml").Text(), "<root>\n<child />\n</root>\n");
    EXPECT_EQ(InvokeByName(InvokeByName(object.Get(), "documentElement").Object().Get(), "nodeName").Text(),
              "root");
}

TEST_F(OurAutomation, CreatedElements_BeforeTheyAreAppended_AreNobodysSiblings) {
    const auto first = InvokeByName(m_object.Get(), "createElement", {CComVariant("first")}).Object();
    const auto second = InvokeByName(m_object.Get(), "createElement", {CComVariant("second")}).Object();
    EXPECT_TRUE(InvokeByName(first.Get(), "nextSibling").IsNothing());
    EXPECT_TRUE(InvokeByName(second.Get(), "nextSibling").IsNothing());
    EXPECT_TRUE(InvokeByName(first.Get(), "parentNode").IsNothing());
    EXPECT_EQ(InvokeByName(InvokeByName(m_object.Get(), "childNodes").Object().Get(), "length").m_value.lVal,
              1);
}

TEST_F(OurAutomation, AppendChild_WhatIsNoNodeOfTheDocument_Fails) {
    Document other;
    const auto stranger =
        InvokeByName(other.Automation().Get(), "createElement", {CComVariant("x")}).Object();
    EXPECT_FALSE(InvokeByName(m_element.Get(), "appendChild", {CComVariant(stranger.Get())}).Succeeded());
    EXPECT_FALSE(InvokeByName(m_element.Get(), "appendChild", {CComVariant("x")}).Succeeded());
    EXPECT_FALSE(InvokeByName(m_element.Get(), "appendChild", {CComVariant(static_cast<IDispatch*>(nullptr))})
                     .Succeeded());
    EXPECT_FALSE(InvokeByName(m_element.Get(), "appendChild").Succeeded());
    EXPECT_FALSE(InvokeByName(m_element.Get(), "appendChild", {CComVariant(m_element.Get())}).Succeeded());
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    EXPECT_FALSE(InvokeByName(m_element.Get(), "appendChild", {CComVariant(attributes.Get())}).Succeeded());
}

TEST_F(OurAutomation, CreateElement_RefusedNames_Fail) {
    for (const char* name : {"", "1", "a b", "<"}) {
        EXPECT_FALSE(InvokeByName(m_object.Get(), "createElement", {CComVariant(name)}).Succeeded()) << name;
    }
    EXPECT_FALSE(InvokeByName(m_object.Get(), "createElement").Succeeded());
    EXPECT_FALSE(
        InvokeByName(m_object.Get(), "createProcessingInstruction", {CComVariant("p"), CComVariant("?>")})
            .Succeeded());
}

TEST_F(OurAutomation, Names_AnyCase_AreKnownAndOthersRefused) {
    EXPECT_EQ(InvokeByName(m_element.Get(), "NODENAME").Text(), "t");
    EXPECT_EQ(InvokeByName(m_element.Get(), "unknownMember").m_result, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(InvokeByName(m_element.Get(), "").m_result, DISP_E_UNKNOWNNAME);
}

TEST_F(OurAutomation, GetIDsOfNames_ParameterNames_AreUnknown) {
    quillet::WideString member(CString("item").View());
    quillet::WideString parameter(CString("index").View());
    LPOLESTR names[] = {member.data(), parameter.data()};
    DISPID ids[] = {77, 77};
    EXPECT_EQ(m_element->GetIDsOfNames(IID_NULL, names, 2, LOCALE_USER_DEFAULT, ids), DISP_E_UNKNOWNNAME);
    LPOLESTR none[] = {nullptr};
    DISPID id = 77;
    EXPECT_EQ(m_element->GetIDsOfNames(IID_NULL, none, 1, LOCALE_USER_DEFAULT, &id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], DISPID_VALUE);
    EXPECT_EQ(ids[1], DISPID_UNKNOWN);
}

TEST_F(OurAutomation, Invoke_UnknownMember_IsRefused) {
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    for (const DISPID id : {DISPID(-1), DISPID(-4), DISPID(9999)}) {
        CComVariant result;
        EXPECT_EQ(m_element->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, &result,
                                    nullptr, nullptr),
                  DISP_E_MEMBERNOTFOUND)
            << id;
    }
}

TEST_F(OurAutomation, Invoke_WithoutAPlaceForTheResult_Works) {
    quillet::WideString name(CString("createElement").View());
    LPOLESTR names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    ASSERT_TRUE(SUCCEEDED(m_object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)));
    CComVariant argument("a");
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    EXPECT_TRUE(SUCCEEDED(m_object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                           nullptr, nullptr, nullptr)));
}

TEST_F(OurAutomation, Invoke_ArgumentsByReference_AreLookedThrough) {
    const auto byReference = [](VARTYPE type, void* referred) {
        CComVariant reference;
        reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
        reference.byref = referred;
        return reference;
    };
    CComVariant text("b");
    const CComVariant toText = byReference(VT_BSTR, &text.bstrVal);
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {toText}).Text(), "<");
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {byReference(VT_VARIANT, &text)}).Text(), "<");
    CComVariant nested = toText;
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {byReference(VT_VARIANT, &nested)}).Text(), "<");
    LONG number = 1;
    const CComVariant toNumber = byReference(VT_I4, &number);
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    EXPECT_EQ(
        InvokeByName(InvokeByName(attributes.Get(), "item", {toNumber}).Object().Get(), "nodeName").Text(),
        "b");
    EXPECT_TRUE(InvokeByName(m_element.Get(), "setAttribute", {toText, toNumber}).Succeeded());
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {toText}).Text(), "1");
    const auto made = InvokeByName(m_object.Get(), "createElement", {toText}).Object();
    IDispatch* node = made.Get();
    const InvokeResult appended =
        InvokeByName(m_element.Get(), "appendChild", {byReference(VT_DISPATCH, &node)});
    EXPECT_EQ(InvokeByName(appended.Object().Get(), "nodeName").Text(), "b");
    EXPECT_EQ(InvokeByName(InvokeByName(m_element.Get(), "lastChild").Object().Get(), "nodeName").Text(),
              "b");
    EXPECT_FALSE(
        InvokeByName(m_element.Get(), "appendChild", {byReference(VT_VARIANT, nullptr)}).Succeeded());
}

TEST_F(OurAutomation, PropertyPut_ValueOfAnAttribute_IsTaken) {
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    const auto attribute = InvokeByName(attributes.Get(), "getNamedItem", {CComVariant("a")}).Object();
    EXPECT_TRUE(
        InvokeByName(attribute.Get(), "VALUE", {CComVariant("\u017C<")}, DISPATCH_PROPERTYPUT).Succeeded());
    EXPECT_EQ(InvokeByName(m_element.Get(), "getAttribute", {CComVariant("a")}).Text(), "\u017C<");
    EXPECT_TRUE(InvokeByName(attribute.Get(), "nodeValue", {Long(-5)}, DISPATCH_PROPERTYPUT).Succeeded());
    EXPECT_EQ(InvokeByName(attribute.Get(), "value").Text(), "-5");
    EXPECT_TRUE(InvokeByName(attribute.Get(), "text", {CComVariant("")}, DISPATCH_PROPERTYPUT).Succeeded());
    EXPECT_EQ(InvokeByName(attribute.Get(), "text").Text(), "");
}

TEST_F(OurAutomation, PropertyPut_WithoutAValue_IsRefused) {
    const auto attribute =
        InvokeByName(InvokeByName(m_element.Get(), "attributes").Object().Get(), "item", {Long(0)}).Object();
    quillet::WideString name(CString("value").View());
    LPOLESTR names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    ASSERT_TRUE(SUCCEEDED(attribute->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)));
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    for (DISPPARAMS* const parameters : {&none, static_cast<DISPPARAMS*>(nullptr)}) {
        EXPECT_FALSE(SUCCEEDED(attribute->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT,
                                                 parameters, nullptr, nullptr, nullptr)));
    }
    EXPECT_EQ(InvokeByName(m_element.Get(), "xml").Text(), m_text);
}

TEST_F(OurAutomation, PropertyPut_ValueThatHasNoPlaceInXml_LeavesTheOld) {
    const auto attribute =
        InvokeByName(InvokeByName(m_element.Get(), "attributes").Object().Get(), "item", {Long(0)}).Object();
    for (const CComVariant& refused : {CComVariant("\x01"), CComVariant(Units({0xD800})), NullVariant()}) {
        EXPECT_FALSE(InvokeByName(attribute.Get(), "value", {refused}, DISPATCH_PROPERTYPUT).Succeeded());
    }
    EXPECT_FALSE(InvokeByName(attribute.Get(), "value", {Long(0), CComVariant("x")}, DISPATCH_PROPERTYPUT)
                     .Succeeded());
    EXPECT_EQ(InvokeByName(attribute.Get(), "value").Text(), "1");
}

TEST_F(OurAutomation, PropertyPut_ValueOfAText_IsTaken) {
    const auto text =
        InvokeByName(InvokeByName(m_element.Get(), "firstChild").Object().Get(), "nextSibling").Object();
    EXPECT_TRUE(
        InvokeByName(text.Get(), "nodeValue", {CComVariant("a & b")}, DISPATCH_PROPERTYPUT).Succeeded());
    EXPECT_EQ(InvokeByName(m_element.Get(), "text").Text(), "a & b");
    EXPECT_FALSE(
        InvokeByName(text.Get(), "nodeValue", {CComVariant("\x02")}, DISPATCH_PROPERTYPUT).Succeeded());
    EXPECT_EQ(InvokeByName(text.Get(), "nodeValue").Text(), "a & b");
}

TEST_F(OurAutomation, PropertyPut_WhatIsOnlyRead_IsRefused) {
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    const auto attribute = InvokeByName(attributes.Get(), "item", {Long(0)}).Object();
    const auto expectRefused = [](const CComPtr<IDispatch>& object, const char* name) {
        for (const WORD flags : {WORD(DISPATCH_PROPERTYPUT), WORD(DISPATCH_PROPERTYPUTREF)}) {
            EXPECT_EQ(InvokeByName(object.Get(), name, {CComVariant("1")}, flags).m_result,
                      DISP_E_MEMBERNOTFOUND)
                << name;
        }
    };
    for (const char* name : {"nodeName", "nodeValue", "text", "xml", "firstChild", "setAttribute"}) {
        expectRefused(m_element, name);
        expectRefused(m_object, name);
    }
    expectRefused(attributes, "length");
    expectRefused(attributes, "item");
    expectRefused(attribute, "name");
    EXPECT_EQ(InvokeByName(m_element.Get(), "xml").Text(), m_text);
}

TEST_F(OurAutomation, Names_OfEveryMemberInAnyCase_AreOneMember) {
    for (const std::string name : {"item",          "length",
                                   "nodeName",      "tagName",
                                   "name",          "nodeValue",
                                   "value",         "nodeType",
                                   "parentNode",    "childNodes",
                                   "firstChild",    "lastChild",
                                   "nextSibling",   "previousSibling",
                                   "hasChildNodes", "attributes",
                                   "ownerDocument", "appendChild",
                                   "getAttribute",  "setAttribute",
                                   "xml",           "documentElement",
                                   "createElement", "createProcessingInstruction",
                                   "baseName",      "text",
                                   "getNamedItem"}) {
        std::vector<DISPID> ids;
        for (const CString& spelling :
             {CString(name), CString(name).MakeLower(), CString(name).MakeUpper()}) {
            quillet::WideString wide(spelling.View());
            LPOLESTR names[] = {wide.data()};
            ids.push_back(DISPID_UNKNOWN);
            EXPECT_EQ(m_element->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &ids.back()), S_OK)
                << spelling.ToUtf8();
        }
        EXPECT_THAT(ids, testing::Each(ids.front())) << name;
    }
    for (const char* name : {"nodeNam", "nodeNamee", "node Name", "\u0130tem", "\u017Fetattribute"}) {
        EXPECT_EQ(InvokeByName(m_element.Get(), name).m_result, DISP_E_UNKNOWNNAME) << name;
    }
}

TEST_F(OurAutomation, Text_OfEveryKindOfNode) {
    EXPECT_EQ(InvokeByName(m_element.Get(), "text").Text(), "text");
    EXPECT_EQ(InvokeByName(m_object.Get(), "text").Text(), "text");
    EXPECT_EQ(InvokeByName(InvokeByName(m_element.Get(), "firstChild").Object().Get(), "text").Text(), "");
    const auto nested = ElementOf("<t>a<x>b<y><![CDATA[c]]></y></x><z/>d<x>e</x></t>");
    EXPECT_EQ(InvokeByName(nested.Get(), "text").Text(), "abcde");
    const auto inner =
        InvokeByName(InvokeByName(nested.Get(), "firstChild").Object().Get(), "nextSibling").Object();
    EXPECT_EQ(InvokeByName(inner.Get(), "text").Text(), "bc");
    const auto instruction =
        InvokeByName(m_object.Get(), "createProcessingInstruction", {CComVariant("p"), CComVariant("d")})
            .Object();
    EXPECT_EQ(InvokeByName(instruction.Get(), "text").Text(), "d");
    ASSERT_TRUE(InvokeByName(m_element.Get(), "appendChild", {CComVariant(instruction.Get())}).Succeeded());
    EXPECT_EQ(InvokeByName(m_element.Get(), "text").Text(), "text");
}

TEST_F(OurAutomation, BaseName_IsTheNameBehindThePrefix) {
    const auto element = ElementOf("<p:t q:a='1' b='2'/>");
    EXPECT_EQ(InvokeByName(element.Get(), "baseName").Text(), "t");
    const auto attributes = InvokeByName(element.Get(), "attributes").Object();
    EXPECT_EQ(
        InvokeByName(InvokeByName(attributes.Get(), "item", {Long(0)}).Object().Get(), "baseName").Text(),
        "a");
    EXPECT_EQ(
        InvokeByName(InvokeByName(attributes.Get(), "item", {Long(1)}).Object().Get(), "baseName").Text(),
        "b");
}

TEST_F(OurAutomation, PreviousSibling_WalksBack) {
    const auto last = InvokeByName(m_element.Get(), "lastChild").Object();
    const auto middle = InvokeByName(last.Get(), "previousSibling").Object();
    EXPECT_EQ(InvokeByName(middle.Get(), "nodeName").Text(), "#text");
    const auto first = InvokeByName(middle.Get(), "previousSibling").Object();
    EXPECT_EQ(InvokeByName(first.Get(), "nodeName").Text(), "x");
    EXPECT_TRUE(InvokeByName(first.Get(), "previousSibling").IsNothing());
    // Elements without a parent have no siblings.
    InvokeByName(m_object.Get(), "createElement", {CComVariant("first")});
    const auto second = InvokeByName(m_object.Get(), "createElement", {CComVariant("second")}).Object();
    EXPECT_TRUE(InvokeByName(second.Get(), "previousSibling").IsNothing());
    EXPECT_TRUE(InvokeByName(m_element.Get(), "previousSibling").IsNothing());
    const auto instruction =
        InvokeByName(m_object.Get(), "createProcessingInstruction", {CComVariant("p"), CComVariant("d")})
            .Object();
    ASSERT_TRUE(InvokeByName(m_object.Get(), "appendChild", {CComVariant(instruction.Get())}).Succeeded());
    EXPECT_EQ(
        InvokeByName(InvokeByName(instruction.Get(), "previousSibling").Object().Get(), "nodeName").Text(),
        "t");
}

TEST_F(OurAutomation, GetNamedItem_OfAttributesOnly) {
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    EXPECT_EQ(InvokeByName(InvokeByName(attributes.Get(), "getNamedItem", {CComVariant("b")}).Object().Get(),
                           "value")
                  .Text(),
              "<");
    EXPECT_TRUE(InvokeByName(attributes.Get(), "getNamedItem", {CComVariant("B")}).IsNothing());
    EXPECT_FALSE(InvokeByName(attributes.Get(), "getNamedItem").Succeeded());
    const auto children = InvokeByName(m_element.Get(), "childNodes").Object();
    EXPECT_FALSE(InvokeByName(children.Get(), "getNamedItem", {CComVariant("x")}).Succeeded());
}

TEST_F(OurAutomation, QueryInterface_KnownAndUnknownInterfaces) {
    void* found = nullptr;
    EXPECT_EQ(m_element->QueryInterface(IID_IDispatch, &found), S_OK);
    ASSERT_NE(found, nullptr);
    static_cast<IDispatch*>(found)->Release();
    EXPECT_EQ(m_element->QueryInterface(IID_NULL, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(m_element->QueryInterface(IID_IDispatch, nullptr), E_POINTER);
}

TEST_F(OurAutomation, TypeInfo_ThereIsNone) {
    UINT count = 9;
    EXPECT_EQ(m_element->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(m_element->GetTypeInfoCount(nullptr), E_POINTER);
}

TEST_F(OurAutomation, Objects_OutliveTheDocument) {
    auto document = std::make_unique<Document>();
    ASSERT_TRUE(document->LoadText("<t a='1'><x/></t>"));
    const auto element = InvokeByName(document->Automation().Get(), "documentElement").Object();
    const auto children = InvokeByName(element.Get(), "childNodes").Object();
    const auto attribute =
        InvokeByName(InvokeByName(element.Get(), "attributes").Object().Get(), "item", {Long(0)}).Object();
    document.reset();
    EXPECT_EQ(InvokeByName(children.Get(), "length").m_value.lVal, 1);
    EXPECT_EQ(InvokeByName(attribute.Get(), "value").Text(), "1");
    EXPECT_TRUE(
        InvokeByName(element.Get(), "setAttribute", {CComVariant("b"), CComVariant("2")}).Succeeded());
    const auto owner = InvokeByName(element.Get(), "ownerDocument").Object();
    const auto made = InvokeByName(owner.Get(), "createElement", {CComVariant("y")}).Object();
    EXPECT_TRUE(InvokeByName(element.Get(), "appendChild", {CComVariant(made.Get())}).Succeeded());
    EXPECT_EQ(InvokeByName(element.Get(), "xml").Text(), "<t a=\"1\" b=\"2\">\n<x />\n<y />\n</t>\n");
}

TEST_F(OurAutomation, SavedRows_WhenAScriptWalks_AreNodes) {
    DbTableDescr descr(nullptr);
    descr.CreateField("n", false, DbFieldDescr::Long);
    DbTableData data(nullptr, &descr);
    data.AddRows(3);
    SaveTarget target;
    ASSERT_TRUE(data.Save(target.Automation(), target.Element()));
    const auto children = InvokeByName(target.Element(), "childNodes").Object();
    EXPECT_EQ(InvokeByName(children.Get(), "length").m_value.lVal, 3);
    const auto last = InvokeByName(target.Element(), "lastChild").Object();
    EXPECT_EQ(InvokeByName(last.Get(), "getAttribute", {CComVariant("n")}).Text(), "0");
    EXPECT_TRUE(InvokeByName(last.Get(), "setAttribute", {CComVariant("n"), Long(7)}).Succeeded());
    EXPECT_TRUE(data.Save(target.Automation(), target.Element()));
    EXPECT_EQ(InvokeByName(children.Get(), "length").m_value.lVal, 6);
}

}  // namespace
