#include "Quillet/xml/Document.h"
#include "Quillet/xml/Nesting.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using quillet::xml::AttributeReader;
using quillet::xml::Document;
using quillet::xml::DomError;
using quillet::xml::LeafElement;
using quillet::xml::MaxDepth;
using quillet::xml::Node;

std::string Repeated(const std::string& text, std::size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

std::string Nested(std::size_t depth, const std::string& inside = "") {
    return Repeated("<a>", depth) + inside + Repeated("</a>", depth);
}

// A document with an element <t>.
class XmlDocument : public testing::Test {
protected:
    XmlDocument() : m_element(m_document.Root().CreateElement("t")) {
        m_document.Root().AppendChild(m_element);
    }

    std::string AttributeText(const std::string& value) {
        m_element.SetAttribute("v", value);
        const std::string text = m_document.SaveText();
        const std::string start = "<t v=\"";
        const std::string end = "\" />\n";
        return text.substr(start.size(), text.size() - start.size() - end.size());
    }

    Document m_document;
    Node m_element;
};

template <typename Call>
bool Refuses(Call call) {
    try {
        call();
    } catch (const DomError& error) {
        EXPECT_FALSE(error.m_message.empty());
        return true;
    }
    return false;
}

std::vector<std::pair<std::string, std::string>> AttributesOf(const Node& element) {
    std::vector<std::pair<std::string, std::string>> attributes;
    AttributeReader reader(element);
    while (reader.Next()) {
        attributes.emplace_back(reader.Name(), reader.Value());
    }
    return attributes;
}

std::vector<std::string> ChildNames(const Node& parent) {
    std::vector<std::string> names;
    for (Node child = parent.FirstChild(); !child.IsNull(); child = child.NextSibling()) {
        names.push_back(child.Name());
    }
    return names;
}

using Strings = std::vector<std::string>;

TEST_F(XmlDocument, SaveText_NewDocument_IsEmpty) {
    EXPECT_EQ(Document().SaveText(), "");
}

TEST_F(XmlDocument, SaveText_Elements_StandOnALineEach) {
    const Node child = m_document.Root().CreateElement("child");
    child.AppendChild(m_document.Root().CreateElement("leaf"));
    m_element.AppendChild(child);
    m_element.AppendChild(m_document.Root().CreateElement("second"));
    EXPECT_EQ(m_document.SaveText(), "<t>\n<child>\n<leaf />\n</child>\n<second />\n</t>\n");
}

TEST_F(XmlDocument, SaveText_Declaration_StandsInDoubleQuotes) {
    Document document;
    const Node root = document.Root();
    root.AppendChild(root.CreateProcessingInstruction("xml", "version='1.0' encoding='UTF-8'"));
    root.AppendChild(root.CreateElement("t"));
    EXPECT_EQ(document.SaveText(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<t />\n");
}

TEST_F(XmlDocument, SetAttribute_Markup_IsEscaped) {
    EXPECT_EQ(AttributeText("&<>\"'"), "&amp;&lt;&gt;&quot;'");
    EXPECT_EQ(AttributeText("\t\n\r"), "&#9;&#10;&#13;");
    EXPECT_EQ(AttributeText("]]>"), "]]&gt;");
    EXPECT_EQ(AttributeText("&amp;"), "&amp;amp;");
}

TEST_F(XmlDocument, SetAttribute_TextBeyondAscii_StaysUtf8) {
    EXPECT_EQ(AttributeText("<\u017C\U0001F600>"), "&lt;\u017C\U0001F600&gt;");
    EXPECT_EQ(AttributeText("\x7F\u0085\uFFFD"), "\x7F\u0085\uFFFD");
}

TEST_F(XmlDocument, SetAttribute_TextThatXmlCannotCarry_IsRefused) {
    for (unsigned code = 0; code < 0x20; ++code) {
        const bool allowed = code == '\t' || code == '\n' || code == '\r';
        const std::string text = "a" + std::string(1, static_cast<char>(code)) + "b";
        EXPECT_EQ(Refuses([&] { m_element.SetAttribute("v", text); }), !allowed) << code;
    }
    EXPECT_TRUE(Refuses([&] { m_element.SetAttribute("v", "\uFFFE"); }));
    EXPECT_TRUE(Refuses([&] { m_element.SetAttribute("v", "a\uFFFF"); }));
    EXPECT_TRUE(Refuses([&] { m_element.SetAttribute("v", "\xED\xA0\x80"); }));
    EXPECT_TRUE(Refuses([&] { m_element.SetAttribute("v", "a\xFF"); }));
}

TEST_F(XmlDocument, SetAttribute_AfterARefusal_KeepsTheOldValue) {
    m_element.SetAttribute("v", "old");
    EXPECT_TRUE(Refuses([&] { m_element.SetAttribute("v", "new\x01"); }));
    EXPECT_EQ(m_document.SaveText(), "<t v=\"old\" />\n");
}

TEST_F(XmlDocument, SetAttribute_SameNameAgain_ReplacesTheValue) {
    m_element.SetAttribute("v", "1");
    m_element.SetAttribute("w", "2");
    m_element.SetAttribute("v", "3");
    EXPECT_EQ(m_document.SaveText(), "<t v=\"3\" w=\"2\" />\n");
}

const char* const BadNames[] = {"",       " ",      "a b",     "1a",           "-a",  ".a",  "a<",
                                "a>",     "a&b",    "a=b",     "a/b",          "\t",  "a\"", "a'",
                                "\u00D7", "\u037E", "a\u2028", "\xFF",         "a\n", "a;b", "(a)",
                                "a*",     "[a]",    "\uFFFE",  "\xED\xA0\x80", "a,b", "a\\b"};
const char* const GoodNames[] = {"a",      "_",      ":",       "A1",         "a-b.c_d",
                                 "\u017C", "\u540D", "a\u00B7", "\U00010000", "a\u0300"};

TEST_F(XmlDocument, CreateElement_NameThatXmlRefuses_IsRefused) {
    for (const char* name : BadNames) {
        EXPECT_TRUE(Refuses([&] { m_document.Root().CreateElement(name); })) << testing::PrintToString(name);
        EXPECT_TRUE(Refuses([&] { m_element.SetAttribute(name, "x"); })) << testing::PrintToString(name);
        EXPECT_TRUE(Refuses([&] { m_document.Root().CreateProcessingInstruction(name, ""); }))
            << testing::PrintToString(name);
    }
    EXPECT_EQ(m_document.SaveText(), "<t />\n");
}

TEST_F(XmlDocument, CreateElement_NamesThatXmlAllows_AreTaken) {
    for (const char* name : GoodNames) {
        EXPECT_EQ(m_document.Root().CreateElement(name).Name(), name);
        EXPECT_FALSE(Refuses([&] { m_element.SetAttribute(name, "x"); })) << name;
    }
}

TEST_F(XmlDocument, CreateProcessingInstruction_ThatHoldsItsOwnEnd_IsRefused) {
    EXPECT_TRUE(Refuses([&] { m_document.Root().CreateProcessingInstruction("p", "a?>b"); }));
}

TEST_F(XmlDocument, CreateProcessingInstruction_DataThatXmlCannotCarry_IsRefused) {
    EXPECT_TRUE(Refuses([&] { m_document.Root().CreateProcessingInstruction("p", "a\x01"); }));
    EXPECT_TRUE(Refuses([&] { m_document.Root().CreateProcessingInstruction("p", "\xFF"); }));
}

TEST_F(XmlDocument, CreateElement_ThatIsNeverAppended_IsNotSaved) {
    const Node stray = m_document.Root().CreateElement("stray");
    EXPECT_EQ(m_document.SaveText(), "<t />\n");
    EXPECT_EQ(ChildNames(m_document.Root()), (Strings{"t"}));
    EXPECT_TRUE(stray.NextSibling().IsNull());
}

TEST_F(XmlDocument, NextSibling_OfNodesThatStandNowhere_IsNone) {
    const Node first = m_document.Root().CreateElement("first");
    const Node second = m_document.Root().CreateElement("second");
    EXPECT_TRUE(first.NextSibling().IsNull());
    EXPECT_TRUE(second.NextSibling().IsNull());
}

TEST_F(XmlDocument, AppendChild_OfAnAncestorOrItself_IsRefused) {
    const Node child = m_document.Root().CreateElement("child");
    m_element.AppendChild(child);
    EXPECT_TRUE(Refuses([&] { child.AppendChild(m_element); }));
    EXPECT_TRUE(Refuses([&] { child.AppendChild(child); }));
    EXPECT_TRUE(Refuses([&] { child.AppendChild(m_document.Root()); }));
    EXPECT_EQ(m_document.SaveText(), "<t>\n<child />\n</t>\n");
}

TEST_F(XmlDocument, AppendChild_OfAnotherDocumentOrNothing_IsRefused) {
    Document other;
    EXPECT_TRUE(Refuses([&] { m_element.AppendChild(other.Root().CreateElement("x")); }));
    EXPECT_TRUE(Refuses([&] { m_element.AppendChild(Node()); }));
    EXPECT_TRUE(Refuses([&] { Node().AppendChild(m_element); }));
}

TEST_F(XmlDocument, AppendChild_NodeThatStandsElsewhere_IsMoved) {
    const Node first = m_document.Root().CreateElement("first");
    const Node second = m_document.Root().CreateElement("second");
    m_element.AppendChild(first);
    m_element.AppendChild(second);
    second.AppendChild(first);
    EXPECT_EQ(m_document.SaveText(), "<t>\n<second>\n<first />\n</second>\n</t>\n");
}

TEST_F(XmlDocument, NullNode_AnswersWithNothing) {
    const Node none;
    EXPECT_TRUE(none.IsNull());
    EXPECT_TRUE(none.FirstChild().IsNull());
    EXPECT_TRUE(none.NextSibling().IsNull());
    EXPECT_EQ(none.CountChildren(), 0U);
    EXPECT_EQ(none.Name(), "");
    EXPECT_FALSE(none.IsElement());
    EXPECT_EQ(none.FirstAttributeValue(), std::nullopt);
    EXPECT_TRUE(AttributesOf(none).empty());
    EXPECT_TRUE(Refuses([&] { none.CreateElement("a"); }));
    EXPECT_TRUE(Refuses([&] { none.SetAttribute("a", "b"); }));
}

TEST_F(XmlDocument, LoadText_Document_GivesItsNodes) {
    Document document;
    ASSERT_TRUE(
        document.LoadText("<?xml version=\"1.0\"?>\n<t a='1' b=\"&lt;&#65;&quot;&apos;\">\n <x/> <!-- c -->"
                          " text <y></y>\n</t>"));
    const Node root = document.Root().FirstChild();
    EXPECT_EQ(root.Name(), "t");
    EXPECT_TRUE(root.IsElement());
    EXPECT_EQ(root.CountChildren(), 3U);
    EXPECT_EQ(ChildNames(root).front(), "x");
    EXPECT_EQ(ChildNames(root).back(), "y");
    EXPECT_FALSE(root.FirstChild().NextSibling().IsElement()) << "text is a child like any other";
    EXPECT_EQ(AttributesOf(root),
              (std::vector<std::pair<std::string, std::string>>{{"a", "1"}, {"b", "<A\"'"}}));
    EXPECT_EQ(root.FirstAttributeValue(), "1");
    EXPECT_TRUE(root.NextSibling().IsNull());
    EXPECT_EQ(document.Error().m_message, "");
}

TEST_F(XmlDocument, LoadText_BlanksInAttributes_AreBlanksUnlessEscaped) {
    Document document;
    ASSERT_TRUE(document.LoadText("<t a='x\ty\nz' b='x&#9;y&#10;z'/>"));
    const auto attributes = AttributesOf(document.Root().FirstChild());
    EXPECT_EQ(attributes[0].second, "x y z");
    EXPECT_EQ(attributes[1].second, "x\ty\nz");
}

TEST_F(XmlDocument, LoadText_CDataSection_IsText) {
    Document document;
    ASSERT_TRUE(document.LoadText("<t><![CDATA[<&>]]></t>"));
    EXPECT_EQ(document.Root().FirstChild().CountChildren(), 1U);
    EXPECT_FALSE(document.Root().FirstChild().FirstChild().IsElement());
}

TEST_F(XmlDocument, LoadText_ByteOrderMark_IsPassedOver) {
    Document document;
    ASSERT_TRUE(document.LoadText("\xEF\xBB\xBF<t a='\u017C'/>"));
    EXPECT_EQ(document.Root().FirstChild().FirstAttributeValue(), "\u017C");
}

TEST_F(XmlDocument, LoadText_Again_ReplacesTheContent) {
    Document document;
    ASSERT_TRUE(document.LoadText("<a/>"));
    ASSERT_TRUE(document.LoadText("<b/>"));
    EXPECT_EQ(ChildNames(document.Root()), (Strings{"b"}));
    ASSERT_FALSE(document.LoadText("<c>"));
    EXPECT_TRUE(ChildNames(document.Root()).empty());
    EXPECT_FALSE(document.Error().m_message.empty());
    ASSERT_TRUE(document.LoadText("<d/>"));
    EXPECT_EQ(document.Error().m_message, "");
    EXPECT_EQ(document.Error().m_line, 0U);
}

class XmlMalformed : public testing::TestWithParam<const char*> {};

TEST_P(XmlMalformed, LoadText_IsFalseAndLeavesAnEmptyDocument) {
    Document document;
    EXPECT_FALSE(document.LoadText(GetParam())) << GetParam();
    EXPECT_FALSE(document.Error().m_message.empty());
    EXPECT_TRUE(document.Root().FirstChild().IsNull());
    EXPECT_EQ(document.SaveText(), "");
}

INSTANTIATE_TEST_SUITE_P(BrokenMarkup, XmlMalformed,
                         testing::Values("", "   ", "text alone", "<", "<a", "<a>", "</a>", "<a></b>",
                                         "<a><b></a></b>", "<a b>", "<a b=>", "<a b=c/>", "<a b='1/>",
                                         "<a b='1\"/>", "<a b='1'", "<a/", "<a><![CDATA[x</a>",
                                         "<a><!-- x</a>", "<!DOCTYPE a [", "<?xml", "<1/>", "< a/>",
                                         "<a>&lt;", "<!-- only a remark -->"));

INSTANTIATE_TEST_SUITE_P(BrokenNames, XmlMalformed,
                         testing::Values("<a b='1'c='2'/>", "<a$/>", "<a b$='1'/>"));

TEST_F(XmlDocument, LoadText_InvalidUtf8_IsFalseAtItsLine) {
    for (const char* bytes : {"\xFF", "\xC3\x28", "\xED\xA0\x80", "\xC0\x80", "\xF4\x90\x80\x80"}) {
        Document document;
        EXPECT_FALSE(document.LoadText("<a>\n<b c='" + std::string(bytes) + "'/>\n</a>"));
        EXPECT_EQ(document.Error().m_line, 2U);
        EXPECT_TRUE(document.Root().FirstChild().IsNull());
    }
}

TEST_F(XmlDocument, LoadText_SixteenBitText_IsRead) {
    std::string text = "\xFF\xFE";
    for (const char* unit = "<a b='x'/>"; *unit != 0; ++unit) {
        text += std::string{*unit, '\0'};
    }
    Document document;
    EXPECT_TRUE(document.LoadText(text));
    EXPECT_EQ(document.Root().FirstChild().FirstAttributeValue(), "x");
}

TEST_F(XmlDocument, LoadText_Error_NamesItsLine) {
    const std::pair<const char*, std::size_t> cases[] = {{"<a b=c/>", 1},
                                                         {"<a>\n<b c=d/>\n</a>", 2},
                                                         {"<a>\r\n\r\n<b c=d/>\r\n</a>", 3},
                                                         {"\n\n\n<a b=c/>", 4}};
    for (const auto& [text, line] : cases) {
        Document document;
        EXPECT_FALSE(document.LoadText(text));
        EXPECT_EQ(document.Error().m_line, line) << text;
    }
}

TEST_F(XmlDocument, LoadText_EntitiesOfTheDocumentType_AreNotExpanded) {
    Document document;
    if (document.LoadText("<!DOCTYPE a [<!ENTITY e 'expanded'>]><a b='&e;'>&e;</a>")) {
        EXPECT_EQ(document.SaveText().find("expanded"), std::string::npos);
    }
}

TEST_F(XmlDocument, LoadText_EntitiesThatGrowWithoutBound_CostNothing) {
    std::string type = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 30; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        type += "<!ENTITY e" + std::to_string(i) + " '" + Repeated(before, 10) + "'>";
    }
    Document document;
    if (document.LoadText(type + "]><a>&e29;</a>")) {
        EXPECT_LT(document.SaveText().size(), 200U);
    }
}

TEST_F(XmlDocument, LoadText_ExternalEntity_IsNotFetched) {
    const TemporaryFolder folder;
    WriteBytes(folder / "secret.txt", "secret");
    Document document;
    if (document.LoadText("<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + Utf8(folder / "secret.txt") +
                          "'>]><a b='&e;'>&e;</a>")) {
        EXPECT_EQ(document.SaveText().find("secret</a>"), std::string::npos);
        EXPECT_EQ(document.SaveText().find("\"secret\""), std::string::npos);
    }
}

TEST_F(XmlDocument, LoadText_DepthOfTheLimit_IsReadAndOneMoreRefused) {
    Document document;
    EXPECT_TRUE(document.LoadText(Nested(MaxDepth)));
    EXPECT_FALSE(document.LoadText(Nested(MaxDepth + 1)));
    EXPECT_NE(document.Error().m_message.find(std::to_string(MaxDepth)), std::string::npos);
    EXPECT_EQ(document.Error().m_line, 0U);
    EXPECT_TRUE(document.Root().FirstChild().IsNull());
}

TEST_F(XmlDocument, LoadText_TextInsideTheDeepestElement_IsNoLevelOfItsOwn) {
    Document document;
    EXPECT_TRUE(document.LoadText(Nested(MaxDepth, "text")));
}

TEST_F(XmlDocument, LoadText_AMillionNestedElements_AreRefused) {
    Document document;
    EXPECT_FALSE(document.LoadText(Nested(1000000)));
    EXPECT_FALSE(document.LoadText(Repeated("<a>", 1000000)));
    EXPECT_TRUE(document.Root().FirstChild().IsNull());
}

TEST_F(XmlDocument, LoadText_ManySiblings_AreRead) {
    Document document;
    ASSERT_TRUE(document.LoadText("<t>" + Repeated("<a b='1'/>", 200000) + "</t>"));
    EXPECT_EQ(document.Root().FirstChild().CountChildren(), 200000U);
}

TEST_F(XmlDocument, LoadFile_File_IsRead) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / std::filesystem::path(u8"\u017C.xml");
    WriteBytes(path, "<t a='1'/>");
    Document document;
    EXPECT_TRUE(document.LoadFile(Utf8(path))) << document.Error().m_message;
    EXPECT_EQ(document.Root().FirstChild().Name(), "t");
}

TEST_F(XmlDocument, LoadFile_NoSuchFileOrAFolder_IsFalseWithAReason) {
    const TemporaryFolder folder;
    Document document;
    ASSERT_TRUE(document.LoadText("<t/>"));
    EXPECT_FALSE(document.LoadFile(Utf8(folder / "absent.xml")));
    EXPECT_FALSE(document.Error().m_message.empty());
    EXPECT_EQ(document.Error().m_line, 0U);
    EXPECT_TRUE(document.Root().FirstChild().IsNull());
    EXPECT_FALSE(document.LoadFile(Utf8(folder.Path())));
    EXPECT_FALSE(document.LoadFile(""));
}

TEST_F(XmlDocument, LoadFile_Error_NamesItsLine) {
    const TemporaryFolder folder;
    WriteBytes(folder / "bad.xml", "<a>\n<b c=d/>\n</a>");
    Document document;
    EXPECT_FALSE(document.LoadFile(Utf8(folder / "bad.xml")));
    EXPECT_EQ(document.Error().m_line, 2U);
    WriteBytes(folder / "bytes.xml", "<a>\n\n<b c='\xFF'/>\n</a>");
    EXPECT_FALSE(document.LoadFile(Utf8(folder / "bytes.xml")));
    EXPECT_EQ(document.Error().m_line, 3U);
}

TEST_F(XmlDocument, SaveFile_WritesWhatSaveTextGives) {
    const TemporaryFolder folder;
    m_element.SetAttribute("v", "\u017C<");
    std::string why;
    EXPECT_TRUE(m_document.SaveFile(Utf8(folder / "a.xml"), &why)) << why;
    EXPECT_EQ(ReadBytes(folder / "a.xml"), m_document.SaveText());
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST_F(XmlDocument, SaveFile_WhereNoFileCanBe_IsFalseWithAReason) {
    const TemporaryFolder folder;
    std::string why;
    EXPECT_FALSE(m_document.SaveFile(Utf8(folder.Path()), &why));
    EXPECT_FALSE(why.empty());
    EXPECT_FALSE(m_document.SaveFile(Utf8(folder / "absent" / "a.xml")));
    EXPECT_TRUE(folder.Names().empty());
}

TEST_F(XmlDocument, SaveAndLoad_DocumentOfElements_ComesBack) {
    const Node child = m_document.Root().CreateElement("child");
    child.SetAttribute("a", " <&>\"'\t\r\n\u017C ");
    m_element.AppendChild(child);
    Document read;
    ASSERT_TRUE(read.LoadText(m_document.SaveText()));
    EXPECT_EQ(read.SaveText(), m_document.SaveText());
    EXPECT_EQ(read.Root().FirstChild().FirstChild().FirstAttributeValue(), " <&>\"'\t\r\n\u017C ");
}

TEST_F(XmlDocument, LeafElement_Appended_IsWrittenInOrder) {
    for (const char* value : {"1", "<2>"}) {
        LeafElement leaf(m_document.Root(), m_element, "row");
        leaf.Attribute("a", std::string_view(value));
        leaf.Attribute("b", CString("\u017C").View());
        leaf.Append();
    }
    EXPECT_EQ(m_document.SaveText(),
              "<t>\n<row a=\"1\" b=\"\u017C\" />\n<row a=\"&lt;2&gt;\" b=\"\u017C\" />\n</t>\n");
}

TEST_F(XmlDocument, LeafElement_DestroyedBeforeAppend_IsDropped) {
    {
        LeafElement leaf(m_document.Root(), m_element, "row");
        leaf.Attribute("a", std::string_view("1"));
    }
    EXPECT_EQ(m_document.SaveText(), "<t />\n");
    EXPECT_EQ(m_element.CountChildren(), 0U);
}

TEST_F(XmlDocument, LeafElement_NameTwiceOrRefused_IsRefused) {
    LeafElement leaf(m_document.Root(), m_element, "row");
    leaf.Attribute("a", std::string_view("1"));
    EXPECT_TRUE(Refuses([&] { leaf.Attribute("a", std::string_view("2")); }));
    for (const char* name : BadNames) {
        EXPECT_TRUE(Refuses([&] {
            LeafElement(m_document.Root(), m_element, "row").Attribute(name, OLESTR("x"));
        })) << testing::PrintToString(name);
    }
}

TEST_F(XmlDocument, PackedLeaves_WhenWalked_AreNodes) {
    for (int i = 0; i < 3; ++i) {
        LeafElement leaf(m_document.Root(), m_element, "row");
        leaf.Attribute("n", std::string_view(std::to_string(i)));
        leaf.Attribute("t", CString("<\t\r\n&\">\u017C").View());
        leaf.Append();
    }
    const std::string text = m_document.SaveText();
    EXPECT_EQ(m_element.CountChildren(), 3U);
    EXPECT_EQ(ChildNames(m_element), (Strings{"row", "row", "row"}));
    EXPECT_EQ(AttributesOf(m_element.FirstChild().NextSibling()),
              (std::vector<std::pair<std::string, std::string>>{{"n", "1"}, {"t", "<\t\r\n&\">\u017C"}}));
    EXPECT_EQ(m_document.SaveText(), text);
}

TEST_F(XmlDocument, PackedLeaves_BehindAndBeforeElements_KeepTheOrder) {
    const auto addLeaf = [&](const char* name) {
        LeafElement leaf(m_document.Root(), m_element, name);
        leaf.Append();
    };
    const Node start = m_document.Root().CreateElement("start");
    m_element.AppendChild(start);
    addLeaf("one");
    addLeaf("two");
    EXPECT_EQ(start.NextSibling().Name(), "one");
    addLeaf("three");
    m_element.AppendChild(m_document.Root().CreateElement("middle"));
    addLeaf("four");
    EXPECT_EQ(m_document.SaveText(),
              "<t>\n<start />\n<one />\n<two />\n<three />\n<middle />\n<four />\n</t>\n");
    EXPECT_EQ(ChildNames(m_element), (Strings{"start", "one", "two", "three", "middle", "four"}));
    addLeaf("five");
    EXPECT_EQ(ChildNames(m_element).back(), "five");
}

TEST_F(XmlDocument, PackedLeaves_OfAMovedElement_MoveWithIt) {
    const Node parent = m_document.Root().CreateElement("parent");
    {
        LeafElement leaf(m_document.Root(), parent, "row");
        leaf.Append();
    }
    m_element.AppendChild(parent);
    EXPECT_EQ(m_document.SaveText(), "<t>\n<parent>\n<row />\n</parent>\n</t>\n");
    EXPECT_EQ(ChildNames(parent), (Strings{"row"}));
}

TEST_F(XmlDocument, PackedLeaves_ManyMegabytes_AreAllThere) {
    const std::string value(1000, 'v');
    for (int i = 0; i < 5000; ++i) {
        LeafElement leaf(m_document.Root(), m_element, "row");
        leaf.Attribute("n", std::string_view(std::to_string(i)));
        leaf.Attribute("v", std::string_view(value));
        leaf.Append();
    }
    const std::string text = m_document.SaveText();
    EXPECT_EQ(m_element.CountChildren(), 5000U);
    int expected = 0;
    for (Node row = m_element.FirstChild(); !row.IsNull(); row = row.NextSibling()) {
        ASSERT_EQ(row.FirstAttributeValue(), std::to_string(expected++));
    }
    EXPECT_TRUE(m_document.SaveText() == text);
}

TEST_F(XmlDocument, PackedLeaves_UnderTheDocument_AreWritten) {
    Document document;
    {
        LeafElement leaf(document.Root(), document.Root(), "row");
        leaf.Append();
    }
    EXPECT_EQ(document.SaveText(), "<row />\n");
    EXPECT_EQ(ChildNames(document.Root()), (Strings{"row"}));
}

TEST_F(XmlDocument, SaveText_VeryDeepTree_IsWrittenWithoutRecursion) {
    constexpr std::size_t Depth = 200000;
    Node inner = m_document.Root().CreateElement("a");
    for (std::size_t i = 1; i < Depth; ++i) {
        const Node outer = m_document.Root().CreateElement("a");
        outer.AppendChild(inner);
        inner = outer;
    }
    m_element.AppendChild(inner);
    const std::string text = m_document.SaveText();
    EXPECT_EQ(text.size(), std::string("<t>\n</t>\n").size() +
                               (Depth - 1) * std::string("<a>\n</a>\n").size() +
                               std::string("<a />\n").size());
    const CComPtr<IDispatch> automation = m_document.Automation();
    EXPECT_EQ(InvokeByName(automation.Get(), "xml").m_value.Text().size(), text.size());
}

TEST_F(XmlDocument, Nodes_OfAnAutomationClient_KeepTheTreeAlive) {
    CComPtr<IDispatch> element;
    {
        Document document;
        ASSERT_TRUE(document.LoadText("<t><a b='1'/></t>"));
        element = InvokeByName(document.Automation().Get(), "documentElement").Object();
        ASSERT_TRUE(document.LoadText("<other/>"));
    }
    EXPECT_EQ(InvokeByName(element.Get(), "nodeName").Text(), "t");
    EXPECT_EQ(Node(element.Get()).FirstChild().Name(), "a");
}

TEST_F(XmlDocument, FirstAttributeOfText_StartTag_GivesItsValue) {
    const auto first = [](const char* text) {
        std::string value = "nothing";
        return quillet::xml::FirstAttributeOfText(text, value) ? value : std::string("none");
    };
    EXPECT_EQ(first("<x name=\"a&lt;b\">"), "a<b");
    EXPECT_EQ(first("<x name='a\"b' other=\"c\"><y z='d'/>"), "a\"b");
    EXPECT_EQ(first("<x\n name = \"a\"/>"), "a");
    EXPECT_EQ(first("<x name=\"\"/>"), "");
    EXPECT_EQ(first("<x name=\"a>b\">"), "a>b");
    EXPECT_EQ(first("<x><y name='a'/></x>"), "none");
    EXPECT_EQ(first("<x>"), "none");
    EXPECT_EQ(first("<x name="), "none");
    EXPECT_EQ(first("<x name=\"a"), "none");
    EXPECT_EQ(first(""), "none");
}

}  // namespace
