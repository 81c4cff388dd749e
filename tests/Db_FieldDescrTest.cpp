#include "Quillet/Db_FieldDescr.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Quillet/platform/NumberText.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using FieldType = DbFieldDescr::eFieldType;

CComVariant Converted(const DbFieldDescr& field, const char* text) {
    CComVariant value(Long(-77));
    field.Convert(value, CString(text).GetString());
    return value;
}

DbFieldDescr FieldOf(unsigned short variantType) {
    DbFieldDescr field;
    field.SetType(variantType);
    return field;
}

TEST(DbFieldDescr, Construct_Default_HasNoTypeAndNoName) {
    DbFieldDescr field;
    EXPECT_EQ(field.GetType(), VT_EMPTY);
    EXPECT_EQ(field.GetDbType(), FieldType::Empty);
    EXPECT_EQ(field.GetTypeString().ToUtf8(), "empty");
    EXPECT_TRUE(field.GetName().IsEmpty());
    EXPECT_TRUE(field.GetSafeName().IsEmpty());
    EXPECT_FALSE(field.IsKey());
    EXPECT_FALSE(field.IsRequired());
    EXPECT_EQ(field.GetIndex(), -1);
    EXPECT_EQ(field.GetParent(), nullptr);
}

TEST(DbFieldDescr, Construct_WithParent_RegistersAndKeepsTheIndex) {
    DbItem parent;
    DbFieldDescr field(&parent, 4);
    EXPECT_EQ(field.GetIndex(), 4);
    EXPECT_EQ(field.LiveParent(), &parent);
    field.SetChanged();
    EXPECT_TRUE(parent.IsChanged());
}

TEST(DbFieldDescr, EnumeratorValues_AreThoseOfTheAutomationInterface) {
    EXPECT_EQ(int(FieldType::Empty), 0);
    EXPECT_EQ(int(FieldType::Boolean), 1);
    EXPECT_EQ(int(FieldType::Integer), 2);
    EXPECT_EQ(int(FieldType::Long), 3);
    EXPECT_EQ(int(FieldType::Float), 4);
    EXPECT_EQ(int(FieldType::Double), 5);
    EXPECT_EQ(int(FieldType::Text), 6);
    EXPECT_EQ(int(FieldType::Binary), 7);
    EXPECT_EQ(sizeof(FieldType), 4U);
}

TEST(DbFieldDescr, SetName_EveryReplacedCharacter_GivesTheSafeName) {
    DbFieldDescr field;
    field.SetName("a b/c\\d<e>(f)*");
    EXPECT_EQ(field.GetName().ToUtf8(), "a b/c\\d<e>(f)*");
    EXPECT_EQ(field.GetSafeName().ToUtf8(), "a_b_S_c_BS_d_L_e_G__LP_f_RP__STAR_");
}

TEST(DbFieldDescr, SetName_EachCharacterAlone_HasItsReplacement) {
    const std::pair<const char*, const char*> cases[] = {
        {" ", "_"},   {"/", "_S_"},  {"\\", "_BS_"}, {"<", "_L_"},
        {">", "_G_"}, {"(", "_LP_"}, {")", "_RP_"},  {"*", "_STAR_"},
    };
    for (const auto& [name, safeName] : cases) {
        DbFieldDescr field;
        field.SetName(name);
        EXPECT_EQ(field.GetSafeName().ToUtf8(), safeName);
    }
}

TEST(DbFieldDescr, SetName_RepeatedCharacters_AreAllReplaced) {
    DbFieldDescr field;
    field.SetName("a  b//c");
    EXPECT_EQ(field.GetSafeName().ToUtf8(), "a__b_S__S_c");
}

TEST(DbFieldDescr, SetName_OtherCharacters_StayAsTheyAre) {
    DbFieldDescr field;
    field.SetName("A_b.c-d&e\"f'g[h]\u017C1");
    EXPECT_EQ(field.GetSafeName().ToUtf8(), "A_b.c-d&e\"f'g[h]\u017C1");
}

TEST(DbFieldDescr, SetName_Again_RebuildsTheSafeName) {
    DbFieldDescr field;
    field.SetName("a b");
    field.SetName("c/d");
    EXPECT_EQ(field.GetSafeName().ToUtf8(), "c_S_d");
    field.SetName(field.GetSafeName());
    EXPECT_EQ(field.GetName().ToUtf8(), "c_S_d");
}

TEST(DbFieldDescr, SetType_Short_GivesALongField) {
    DbFieldDescr field = FieldOf(VT_I2);
    EXPECT_EQ(field.GetType(), VT_I4);
    EXPECT_EQ(field.GetVariant().lVal, 0);
}

TEST(DbFieldDescr, SetDbType_Integer_ReportsLong) {
    DbFieldDescr field;
    field.SetDbType(FieldType::Integer);
    EXPECT_EQ(field.GetDbType(), FieldType::Long);
    EXPECT_EQ(field.GetTypeString().ToUtf8(), "long");
    EXPECT_EQ(field.GetType(), VT_I4);
}

TEST(DbFieldDescr, SetType_EachKnownType_SetsItsDefaultValue) {
    EXPECT_EQ(FieldOf(VT_I4).GetVariant().vt, VT_I4);
    EXPECT_EQ(FieldOf(VT_I4).GetVariant().lVal, 0);
    EXPECT_EQ(FieldOf(VT_R4).GetVariant().vt, VT_R4);
    EXPECT_EQ(FieldOf(VT_R4).GetVariant().fltVal, 0.0F);
    EXPECT_EQ(FieldOf(VT_R8).GetVariant().vt, VT_R8);
    EXPECT_EQ(FieldOf(VT_R8).GetVariant().dblVal, 0.0);
    EXPECT_EQ(FieldOf(VT_BSTR).GetVariant().vt, VT_BSTR);
    EXPECT_EQ(TextOf(FieldOf(VT_BSTR).GetVariant()), "");
    EXPECT_EQ(FieldOf(VT_BOOL).GetVariant().vt, VT_BOOL);
    EXPECT_EQ(FieldOf(VT_BOOL).GetVariant().boolVal, VARIANT_FALSE);
}

TEST(DbFieldDescr, SetType_Binary_DefaultIsOneZeroByteFromLowerBoundOne) {
    EXPECT_EQ(ContentOf(FieldOf(ByteArrayType).GetVariant()), (ArrayContent{1, std::string(1, '\0')}));
}

TEST(DbFieldDescr, SetType_Date_IsStoredAsText) {
    DbFieldDescr field = FieldOf(VT_DATE);
    EXPECT_EQ(field.GetDbType(), FieldType::Text);
    EXPECT_EQ(TextOf(field.GetVariant()), "");
    EXPECT_EQ(TextOf(Converted(field, "2001-02-03")), "2001-02-03");
}

TEST(DbFieldDescr, SetType_UnknownType_EmptiesTheDefaultAndKeepsTheConverter) {
    DbFieldDescr field = FieldOf(VT_I4);
    field.SetType(VT_CY);
    EXPECT_EQ(field.GetType(), VT_EMPTY);
    const CComVariant value = Converted(field, "42");
    EXPECT_EQ(value.vt, VT_I4);
    EXPECT_EQ(value.lVal, 42);
}

TEST(DbFieldDescr, SetType_EveryUnknownNumber_GivesNoType) {
    for (const unsigned type : {0U,  1U,  6U,  9U,  10U,   12U,   13U,   14U,   16U,    17U,
                                18U, 19U, 20U, 21U, 8192U, 8194U, 8200U, 8210U, 16395U, 65535U}) {
        EXPECT_EQ(FieldOf(static_cast<unsigned short>(type)).GetType(), VT_EMPTY) << type;
    }
}

TEST(DbFieldDescr, SetDefaultValue_OfAnotherVariant_LeavesTheFieldsOwn) {
    DbFieldDescr field = FieldOf(VT_I4);
    CComVariant value("old");
    field.SetDefaultValue(VT_R8, value);
    EXPECT_EQ(value.vt, VT_R8);
    EXPECT_EQ(field.GetType(), VT_I4);
    EXPECT_EQ(Converted(field, "1").vt, VT_R8) << "the converter is the field's";
}

TEST(DbFieldDescr, SetKey_IsKeptAndTakenBack) {
    DbFieldDescr field;
    field.SetKey(true);
    EXPECT_TRUE(field.IsKey());
    field.SetKey(false);
    EXPECT_FALSE(field.IsKey());
}

TEST(DbFieldDescr, FieldTypeToVariantType_EveryMember_FollowsTheTable) {
    const std::vector<std::pair<FieldType, unsigned>> table = {
        {FieldType::Empty, 0}, {FieldType::Boolean, 11}, {FieldType::Integer, 2}, {FieldType::Long, 3},
        {FieldType::Float, 4}, {FieldType::Double, 5},   {FieldType::Text, 8},    {FieldType::Binary, 8209},
    };
    for (const auto& [field, variant] : table) {
        EXPECT_EQ(DbFieldDescr::FieldTypeToVariantType(field), variant);
        EXPECT_EQ(DbFieldDescr::VariantTypeToFieldType(static_cast<unsigned short>(variant)), field);
    }
}

TEST(DbFieldDescr, TypeMappings_UnknownValues_GiveNothing) {
    for (const int unknown : {8, 9, -1, 8209}) {
        EXPECT_EQ(DbFieldDescr::FieldTypeToVariantType(static_cast<FieldType>(unknown)), 0);
    }
    EXPECT_EQ(DbFieldDescr::VariantTypeToFieldType(8210), FieldType::Empty);
    EXPECT_EQ(DbFieldDescr::VariantTypeToFieldType(VT_DATE), FieldType::Empty);
    EXPECT_EQ(DbFieldDescr::VariantTypeToFieldType(VT_UI1), FieldType::Empty);
}

TEST(DbFieldDescr, DbTypeToFieldType_AccessCodes_KnowFourTypes) {
    for (short code = -1; code <= 20; ++code) {
        const FieldType expected = code == 3    ? FieldType::Integer
                                   : code == 4  ? FieldType::Long
                                   : code == 7  ? FieldType::Double
                                   : code == 10 ? FieldType::Text
                                                : FieldType::Empty;
        EXPECT_EQ(DbFieldDescr::DbTypeToFieldType(code), expected) << code;
    }
}

TEST(DbFieldDescr, GetTypeString_EveryVariantType_HasItsWord) {
    const std::vector<std::pair<unsigned short, const char*>> words = {
        {0, "empty"}, {3, "long"},     {4, "float"},     {5, "double"},
        {8, "text"},  {11, "boolean"}, {8209, "binary"},
    };
    for (const auto& [type, word] : words) {
        EXPECT_EQ(FieldOf(type).GetTypeString().ToUtf8(), word);
    }
}

TEST(DbFieldDescr, GetTypeString_DefaultValueOfAnotherType_FollowsTheVariant) {
    DbFieldDescr field;
    field.GetVariant() = Short(1);
    EXPECT_EQ(field.GetTypeString().ToUtf8(), "integer");
    field.GetVariant() = DateVariant(1);
    EXPECT_EQ(field.GetTypeString().ToUtf8(), "unknown");
}

TEST(DbFieldDescr, GetSize_CountsTheNamesTwiceAndTheValue) {
    DbFieldDescr field = FieldOf(VT_I4);
    constexpr uint64 Bare = 8 + 5 + 24 + 2 + 8 + 8;
    EXPECT_EQ(field.GetSize(), Bare);
    field.SetName("a b/");
    EXPECT_EQ(field.GetSize(), Bare + 2 * 4 + 2 * 6);
    field.SetType(VT_BSTR);
    EXPECT_EQ(field.GetSize(), Bare - 24 + 2 * 4 + 2 * 6);
}

TEST(DbFieldDescr, Convert_LongField_ReadsNumbersAndKeepsOtherText) {
    const DbFieldDescr field = FieldOf(VT_I4);
    EXPECT_EQ(Converted(field, "42").lVal, 42);
    EXPECT_EQ(Converted(field, " -7 ").lVal, -7);
    EXPECT_EQ(TextOf(Converted(field, "abc")), "abc");
    EXPECT_EQ(TextOf(Converted(field, "")), "");
    EXPECT_EQ(TextOf(Converted(field, "99999999999")), "99999999999");
}

TEST(DbFieldDescr, Convert_FloatFields_TakeEmptyTextAsZero) {
    EXPECT_EQ(Converted(FieldOf(VT_R4), "").vt, VT_R4);
    EXPECT_EQ(Converted(FieldOf(VT_R4), "").fltVal, 0.0F);
    EXPECT_EQ(Converted(FieldOf(VT_R8), "").vt, VT_R8);
    EXPECT_EQ(Converted(FieldOf(VT_R8), "").dblVal, 0.0);
}

TEST(DbFieldDescr, Convert_FloatFields_UnderstandEitherDecimalSeparator) {
    for (const char* text : {"1.25", "1,25"}) {
        EXPECT_EQ(Converted(FieldOf(VT_R4), text).fltVal, 1.25F) << text;
        EXPECT_EQ(Converted(FieldOf(VT_R8), text).dblVal, 1.25) << text;
    }
}

TEST(DbFieldDescr, Convert_FloatFieldTextThatIsNoNumber_StaysWithTheProcessSeparator) {
    const CComVariant value = Converted(FieldOf(VT_R8), "a.b,c");
    const WCHAR separator = quillet::platform::DecimalSeparator();
    const CString expected = separator == '.' ? CString("a.b.c") : Units({'a', separator, 'b', ',', 'c'});
    EXPECT_EQ(TextOf(value), expected.ToUtf8());
}

TEST(DbFieldDescr, Convert_TextField_CopiesTheText) {
    EXPECT_EQ(TextOf(Converted(FieldOf(VT_BSTR), " 1,5 \u017C ")), " 1,5 \u017C ");
    EXPECT_EQ(TextOf(Converted(FieldOf(VT_BSTR), "")), "");
}

TEST(DbFieldDescr, Convert_BooleanField_ReadsWordsAndNumbers) {
    const DbFieldDescr field = FieldOf(VT_BOOL);
    for (const char* text : {"true", "True", "TRUE", "-1", "1", "2"}) {
        EXPECT_EQ(Converted(field, text).vt, VT_BOOL) << text;
        EXPECT_EQ(Converted(field, text).boolVal, VARIANT_TRUE) << text;
    }
    for (const char* text : {"false", "False", "0"}) {
        EXPECT_EQ(Converted(field, text).vt, VT_BOOL) << text;
        EXPECT_EQ(Converted(field, text).boolVal, VARIANT_FALSE) << text;
    }
    EXPECT_EQ(TextOf(Converted(field, "yes")), "yes");
    EXPECT_EQ(TextOf(Converted(field, "")), "");
}

TEST(DbFieldDescr, Convert_BinaryField_DecodesFromLowerBoundZero) {
    const DbFieldDescr field = FieldOf(ByteArrayType);
    EXPECT_EQ(ContentOf(Converted(field, "QUJD")), (ArrayContent{0, "ABC"}));
    EXPECT_EQ(ContentOf(Converted(field, "")), (ArrayContent{0, ""}));
    EXPECT_EQ(ContentOf(Converted(field, "!?")), (ArrayContent{0, ""}));
}

TEST(DbFieldDescr, Convert_FieldWithoutConverter_KeepsTheText) {
    EXPECT_EQ(TextOf(Converted(DbFieldDescr(), "12")), "12");
}

TEST(DbFieldDescr, Copy_OfAField_TakesEverythingButTheParentsList) {
    DbItem parent;
    DbFieldDescr field(&parent, 3);
    field.SetName("a b");
    field.SetKey(true);
    field.SetType(VT_R8);
    field.SetNull(true);
    DbFieldDescr copy(field);
    EXPECT_EQ(copy.GetName().ToUtf8(), "a b");
    EXPECT_EQ(copy.GetSafeName().ToUtf8(), "a_b");
    EXPECT_TRUE(copy.IsKey());
    EXPECT_TRUE(copy.IsNull());
    EXPECT_EQ(copy.GetType(), VT_R8);
    EXPECT_EQ(Converted(copy, "").vt, VT_R8);
    EXPECT_EQ(copy.GetParent(), &parent);
    EXPECT_EQ(parent.GetSize(), 22U + 8U);
}

TEST(DbFieldDescr, Assign_OfAField_KeepsIndexParentAndStamps) {
    DbItem parent;
    DbFieldDescr source;
    source.SetName("a b");
    source.SetKey(true);
    source.SetType(VT_R4);
    source.SetNull(true);
    source.SetChanged();
    DbFieldDescr target(&parent, 7);
    target = source;
    EXPECT_EQ(target.GetName().ToUtf8(), "a b");
    EXPECT_EQ(target.GetSafeName().ToUtf8(), "a_b");
    EXPECT_TRUE(target.IsKey());
    EXPECT_TRUE(target.IsNull());
    EXPECT_EQ(target.GetType(), VT_R4);
    EXPECT_EQ(Converted(target, "").vt, VT_R4);
    EXPECT_EQ(target.GetIndex(), 7);
    EXPECT_EQ(target.GetParent(), &parent);
    EXPECT_FALSE(target.IsChanged());
}

TEST(DbFieldDescr, LifeToken_NamesTheFieldAsLongAsItLives) {
    auto field = std::make_unique<DbFieldDescr>();
    const auto token = field->LifeToken();
    EXPECT_EQ(*token, field.get());
    EXPECT_EQ(field->LifeToken(), token);
    field.reset();
    EXPECT_EQ(*token, nullptr);
}

TEST(DbFieldDescr, LifeToken_OfACopy_IsItsOwn) {
    auto field = std::make_unique<DbFieldDescr>();
    const auto token = field->LifeToken();
    DbFieldDescr copy(*field);
    EXPECT_EQ(*copy.LifeToken(), &copy);
    DbFieldDescr assigned;
    const auto ofAssigned = assigned.LifeToken();
    assigned = *field;
    EXPECT_EQ(assigned.LifeToken(), ofAssigned);
    *field = copy;
    EXPECT_EQ(*token, field.get());
    field.reset();
    EXPECT_EQ(*ofAssigned, &assigned);
    EXPECT_EQ(*token, nullptr);
}

TEST(DbFieldDescr, Save_Field_WritesFourAttributesInOrder) {
    DbFieldDescr field = FieldOf(VT_I2);
    field.SetName("a b");
    field.SetKey(true);
    SaveTarget target;
    EXPECT_TRUE(field.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "<field name=\"a b\" key=\"true\" type=\"3\" required=\"0\" />\n");
}

TEST(DbFieldDescr, Save_EachType_WritesItsNumber) {
    SaveTarget target;
    const unsigned short types[] = {VT_EMPTY, VT_BOOL, VT_R4, VT_R8, VT_BSTR};
    for (const unsigned short type : types) {
        EXPECT_TRUE(FieldOf(type).Save(target.Automation(), target.Element()));
    }
    EXPECT_TRUE(FieldOf(ByteArrayType).Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(),
              "<field name=\"\" key=\"false\" type=\"0\" required=\"0\" />\n"
              "<field name=\"\" key=\"false\" type=\"11\" required=\"0\" />\n"
              "<field name=\"\" key=\"false\" type=\"4\" required=\"0\" />\n"
              "<field name=\"\" key=\"false\" type=\"5\" required=\"0\" />\n"
              "<field name=\"\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"\" key=\"false\" type=\"8209\" required=\"0\" />\n");
}

TEST(DbFieldDescr, Save_NameWithMarkup_IsEscaped) {
    DbFieldDescr field;
    field.SetName("<\"&'>");
    SaveTarget target;
    EXPECT_TRUE(field.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(),
              "<field name=\"&lt;&quot;&amp;'&gt;\" key=\"false\" type=\"0\" required=\"0\" />\n");
}

TEST(DbFieldDescr, Save_NameThatXmlCannotCarry_IsFalse) {
    for (const CString& name :
         {Units({'a', 1}), Units({0xD800}), Units({0xFFFE}), Units({'a', 0xDC00, 'b'})}) {
        DbFieldDescr field;
        field.SetName(name);
        SaveTarget target;
        EXPECT_FALSE(field.Save(target.Automation(), target.Element()));
    }
}

TEST(DbFieldDescr, Save_WithoutDocumentOrParent_IsFalse) {
    DbFieldDescr field = FieldOf(VT_I4);
    field.SetName("a");
    SaveTarget target;
    EXPECT_FALSE(field.Save(nullptr, target.Element()));
    EXPECT_FALSE(field.Save(target.Automation(), nullptr));
    EXPECT_FALSE(field.Save(nullptr, nullptr));
    EXPECT_EQ(target.Content(), "");
}

TEST(DbFieldDescr, Save_ParentOfAnotherDocument_IsFalse) {
    DbFieldDescr field = FieldOf(VT_I4);
    const SaveTarget target;
    const SaveTarget other;
    EXPECT_FALSE(field.Save(target.Automation(), other.Element()));
}

TEST(DbFieldDescr, Load_WholeElement_ReadsNameKeyAndType) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(ElementOf("<field name='a b' key='true' type='5' required='0'/>").Get()));
    EXPECT_EQ(field.GetName().ToUtf8(), "a b");
    EXPECT_EQ(field.GetSafeName().ToUtf8(), "a_b");
    EXPECT_TRUE(field.IsKey());
    EXPECT_EQ(field.GetDbType(), FieldType::Double);
}

TEST(DbFieldDescr, Load_RequiredField_LeavesRequiredFalse) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(ElementOf("<field required='-1' name='a'/>").Get()));
    EXPECT_FALSE(field.IsRequired());
}

TEST(DbFieldDescr, Load_ElementOfAnotherName_IsReadAlike) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(ElementOf("<column name='a' type='8' width='3'/>").Get()));
    EXPECT_EQ(field.GetName().ToUtf8(), "a");
    EXPECT_EQ(field.GetDbType(), FieldType::Text);
}

TEST(DbFieldDescr, Load_AttributeNames_AreComparedExactly) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(ElementOf("<field Name='a' TYPE='3' Key='true'/>").Get()));
    EXPECT_TRUE(field.GetName().IsEmpty());
    EXPECT_EQ(field.GetType(), VT_EMPTY);
    EXPECT_FALSE(field.IsKey());
}

TEST(DbFieldDescr, Load_KeyWords_OnlyLowerCaseTrueCounts) {
    for (const char* word : {"false", "True", "TRUE", "1", "-1", ""}) {
        DbFieldDescr field;
        field.SetKey(true);
        EXPECT_TRUE(field.Load(ElementOf("<field key='" + std::string(word) + "'/>").Get()));
        EXPECT_FALSE(field.IsKey()) << word;
    }
}

TEST(DbFieldDescr, Load_TypeText_IsReadAsALeadingInteger) {
    const std::vector<std::pair<const char*, unsigned>> cases = {
        {"3", 3},  {" 5", 5}, {"8x", 8},     {"4.7", 4}, {"2", 3}, {"7", 8},        {"8209", 8209},
        {"x3", 0}, {"", 0},   {"double", 0}, {"6", 0},   {"0", 0}, {"99999999", 0},
    };
    for (const auto& [text, type] : cases) {
        DbFieldDescr field;
        EXPECT_TRUE(field.Load(ElementOf("<field type='" + std::string(text) + "'/>").Get()));
        EXPECT_EQ(field.GetType(), type) << '"' << text << '"';
    }
}

TEST(DbFieldDescr, Load_BinaryType_HasTheOneByteDefaultAndReadsEmptyTextAsNoBytes) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(ElementOf("<field type='8209'/>").Get()));
    EXPECT_EQ(ContentOf(field.GetVariant()), (ArrayContent{1, std::string(1, '\0')}));
    EXPECT_EQ(ContentOf(Converted(field, "")), (ArrayContent{0, ""}));
}

TEST(DbFieldDescr, Load_UnknownType_KeepsValuesAsText) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(ElementOf("<field name='a' type='6'/>").Get()));
    EXPECT_EQ(field.GetType(), VT_EMPTY);
    EXPECT_EQ(TextOf(Converted(field, "12.5")), "12.5");
}

TEST(DbFieldDescr, Load_WhatIsNoElement_IsFalse) {
    DbFieldDescr field;
    EXPECT_FALSE(field.Load(nullptr));
    const auto parent = ElementOf("<t>some text</t>");
    EXPECT_FALSE(field.Load(InvokeByName(parent.Get(), "firstChild").Object().Get()));
    EXPECT_FALSE(field.Load(InvokeByName(parent.Get(), "childNodes").Object().Get()));
}

TEST(DbFieldDescr, SaveAndLoad_EveryName_ComesBack) {
    for (const CString& name : {CString("a b"), CString("<&>\"'"), CString("tab\tline\nreturn\r"),
                                CString("\u017C\U0001F600"), CString(" edge ")}) {
        DbFieldDescr field = FieldOf(VT_BOOL);
        field.SetName(name);
        SaveTarget target;
        ASSERT_TRUE(field.Save(target.Automation(), target.Element()));
        DbFieldDescr read;
        EXPECT_TRUE(read.Load(ElementOf(target.Content()).Get()));
        EXPECT_EQ(read.GetName(), name);
        EXPECT_EQ(read.GetType(), VT_BOOL);
    }
}

TEST(DbFieldDescr, Destroy_ThroughTheItem_FreesTheField) {
    DbItem parent;
    DbItem* const item = new DbFieldDescr(&parent, 0);
    delete item;
    DbFieldValue* const value = new DbFieldDescr(&parent, 1);
    delete value;
    EXPECT_EQ(parent.GetSize(), 8U);
}

}  // namespace
