// Documents out of memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Quillet/xml/Document.h"
#include "support/OutOfMemory.h"
#include "support/TestHelpers.h"

namespace {

using quillet::test::Attempt;
using quillet::test::ExpectStepWholeOrNotAtAll;
using quillet::test::Failing;
using quillet::test::Step;
using quillet::test::SweepAttempts;
using quillet::test::Try;
using quillet::xml::Document;
using quillet::xml::Face;
using quillet::xml::LeafElement;
using quillet::xml::Node;

const std::string Sample = "<t a=\"a value that takes memory of its own\">\n<c />\n</t>\n";

// Free space in the pages of a document needs no allocation, so the texts here are larger than a page.
const std::string Large(40000, 'x');

class XmlOutOfMemory : public testing::TestWithParam<Step<Document>> {};

Node RootElement(const Document& document) {
    return document.Root().FirstChild();
}

void AppendRow(const Document& document, const std::string& text) {
    LeafElement row(document.Root(), RootElement(document), "row_with_a_long_name");
    row.Attribute("name", std::string_view("a value"));
    row.Attribute("other", std::string_view(text));
    row.Append();
}

// Identifies the document, but is short enough to print.
std::string Summary(const Document& document) {
    const std::string text = document.SaveText();
    return std::to_string(text.size()) + " bytes, " + std::to_string(std::hash<std::string>()(text)) + ", " +
           text.substr(0, 80);
}

std::unique_ptr<Document> MadeDocument() {
    auto document = std::make_unique<Document>();
    EXPECT_TRUE(document->LoadText(Sample));
    AppendRow(*document, Large);
    AppendRow(*document, "short");
    return document;
}

TEST_P(XmlOutOfMemory, StepHappensWholeOrNotAtAll) {
    ExpectStepWholeOrNotAtAll(GetParam(), MadeDocument, Summary);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, XmlOutOfMemory,
    testing::Values(
        Step<Document>{"AppendElement",
                       [](Document& document) {
                           RootElement(document).AppendChild(document.Root().CreateElement("e" + Large));
                       }},
        Step<Document>{"AppendInstruction",
                       [](Document& document) {
                           document.Root().AppendChild(
                               document.Root().CreateProcessingInstruction("target", Large));
                       }},
        Step<Document>{"SetAttribute",
                       [](Document& document) {
                           RootElement(document).SetAttribute("b" + Large, std::string_view("1"));
                       }},
        Step<Document>{
            "ReplaceAttribute",
            [](Document& document) { RootElement(document).SetAttribute("a", std::string_view(Large)); }},
        Step<Document>{"AppendLeaf", [](Document& document) { AppendRow(document, Large + Large + Large); }},
        Step<Document>{"WalkOverLeaves",
                       [](Document& document) { EXPECT_EQ(RootElement(document).CountChildren(), 3U); }}));

// Creating a node throws std::bad_alloc, whatever a host catches.
TEST(DocumentOutOfMemory, CreatedNodes_ThrowBadAlloc) {
    SweepAttempts([](std::size_t failing, Failing which) {
        Document document;
        return Try(failing, which, [&] {
            document.Root().CreateElement("an_element_with_a_long_name");
            document.Root().CreateProcessingInstruction("xml", "version='1.0' encoding='UTF-8'");
        });
    });
}

TEST(DocumentOutOfMemory, ADocumentThatIsRead_IsNeverTakenForAMalformedOne) {
    std::string utf16 = "\xFF\xFE";
    for (const char letter : Sample) {
        utf16 += letter;
        utf16 += '\0';
    }
    for (const std::string& text : {Sample, utf16}) {
        SweepAttempts([&](std::size_t failing, Failing which) {
            Document document;
            bool loaded = false;
            const Attempt attempt = Try(failing, which, [&] { loaded = document.LoadText(text); });
            EXPECT_EQ(loaded, attempt.m_isDone);
            EXPECT_EQ(document.SaveText(), loaded ? Sample : "");
            return attempt;
        });
    }
}

TEST(DocumentOutOfMemory, TheFirstAttribute_IsFoundOrThrown) {
    const std::string row = "<table name=\"a name &amp; more that takes memory of its own\">";
    SweepAttempts([&](std::size_t failing, Failing which) {
        std::string value;
        bool found = false;
        const Attempt attempt =
            Try(failing, which, [&] { found = quillet::xml::FirstAttributeOfText(row, value); });
        EXPECT_EQ(found, attempt.m_isDone);
        EXPECT_EQ(value, found ? "a name & more that takes memory of its own" : "");
        return attempt;
    });
}

// Scripts get E_OUTOFMEMORY.
TEST(DocumentOutOfMemory, CallsOfScripts_SayIt) {
    struct ScriptCall {
        const char* m_member;
        std::vector<CComVariant> m_arguments;
        WORD m_flags;
    };
    const ScriptCall calls[] = {
        {"xml", {}, DISPATCH_PROPERTYGET},
        {"text", {}, DISPATCH_PROPERTYGET},
        {"nodeName", {}, DISPATCH_PROPERTYGET},
        {"childNodes", {}, DISPATCH_PROPERTYGET},
        {"attributes", {}, DISPATCH_PROPERTYGET},
        {"getAttribute", {CComVariant("a")}, DISPATCH_METHOD},
        {"setAttribute", {CComVariant("a"), CComVariant("another value that takes memory")}, DISPATCH_METHOD},
    };
    for (const ScriptCall& call : calls) {
        SCOPED_TRACE(call.m_member);
        quillet::WideString name(CString(call.m_member).View());
        LPOLESTR names[] = {name.data()};
        std::vector<VARIANTARG> reversed(call.m_arguments.rbegin(), call.m_arguments.rend());
        SweepAttempts([&](std::size_t failing, Failing which) {
            Document document;
            EXPECT_TRUE(document.LoadText(Sample));
            const CComPtr<IDispatch> element =
                quillet::test::InvokeByName(document.Automation().Get(), "documentElement").Object();
            DISPID member = DISPID_UNKNOWN;
            EXPECT_EQ(element->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member), S_OK);
            DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
            CComVariant answer;
            HRESULT result = E_UNEXPECTED;
            const Attempt attempt = Try(failing, which, [&] {
                result = element->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, call.m_flags, &parameters,
                                         &answer, nullptr, nullptr);
            });
            EXPECT_TRUE(attempt.m_isDone);
            EXPECT_EQ(result, attempt.m_ranOut ? E_OUTOFMEMORY : S_OK);
            return attempt;
        });
    }
}

// A row, a structure and a field are saved and loaded completely, or the call throws std::bad_alloc; nothing
// incomplete stays in the document.
TEST(DocumentOutOfMemory, SavedRows_AreWholeInTheDocument) {
    DbTableDescr descr(nullptr);
    descr.CreateField("name", false, DbFieldDescr::Text);
    descr.CreateField("height", false, DbFieldDescr::Double);
    descr.CreateField("bytes", false, DbFieldDescr::Binary);
    DbTableData data(nullptr, &descr);
    data.AddRow();
    data[0].SetValue("name", "a name that takes memory of its own");
    data[0].SetValue("height", CComVariant(123456.789));
    data[0].SetValue("bytes", quillet::test::ByteArray("some bytes of the cell"));
    std::string expected;
    {
        quillet::test::SaveTarget target;
        ASSERT_TRUE(descr.Save(target.Automation(), target.Element()));
        ASSERT_TRUE(data.Save(target.Automation(), target.Element()));
        expected = target.Content();
    }
    SweepAttempts([&](std::size_t failing, Failing which) {
        quillet::test::SaveTarget target;
        bool saved = false;
        const Attempt attempt = Try(failing, which, [&] {
            saved = descr.Save(target.Automation(), target.Element()) &&
                    data.Save(target.Automation(), target.Element());
        });
        EXPECT_EQ(saved, attempt.m_isDone);
        const std::string content = target.Content();
        EXPECT_EQ(content, expected.substr(0, content.size()));
        EXPECT_TRUE(content.empty() || content.back() == '\n');
        EXPECT_EQ(content == expected, saved);
        return attempt;
    });
}

}  // namespace
