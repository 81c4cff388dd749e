// Calls every member of every automation object once.
#pragma once

#include <string>
#include <vector>

#include "AutomationHelpers.h"

namespace quillet::test {

inline void AskAboutTables(IDbDatabase* catalog, std::vector<std::string>& answers) {
    answers.push_back(AnswerOf(catalog, &IDbDatabase::get_TablesCount));
    for (const long index : {-1L, 0L, 2L, 8L}) {
        answers.push_back(AnswerOf(catalog, &IDbDatabase::TableName, index));
    }
    const auto source = ObjectOf(catalog, &IDbDatabase::get_Source);
    answers.push_back(AnswerOf(source.Get(), &IDbSource::get_FilePath));
    answers.push_back(AnswerOf(source.Get(), &IDbSource::get_IsXmlBased));
    answers.push_back(AnswerOf(source.Get(), &IDbSource::get_SequentialAccess));
    answers.push_back(AnswerOf(source.Get(), &IDbSource::get_ForceXML));
    answers.push_back(ResultText(source->put_ForceXML(VARIANT_TRUE)));
    answers.push_back(ResultText(source->put_SequentialAccess(VARIANT_FALSE)));
    answers.push_back(ResultText(source->put_FilePath(Bstr("none.xml"))));
}

inline void AskAboutFields(IDbDatabase* catalog, std::vector<std::string>& answers) {
    for (const auto& fields : {ObjectOf(catalog, &IDbDatabase::TableDescrByIndex, 2L),
                               ObjectOf(catalog, &IDbDatabase::TableDescrByName, Bstr("ipe")),
                               ObjectOf(catalog, &IDbDatabase::TableDescr, Long(2)),
                               ObjectOf(catalog, &IDbDatabase::TableDescr, CComVariant("IPE"))}) {
        answers.push_back(AnswerOf(fields.Get(), &IDbTableDescr::get_FieldsCount));
    }
    const auto fields = ObjectOf(catalog, &IDbDatabase::TableDescrByName, Bstr("SHS"));
    answers.push_back(ResultText(fields->CreateField(Bstr("count"), FieldType::Long)));
    answers.push_back(ResultText(fields->CreateIndex(Bstr("by weight"), Bstr("G"))));
    const auto made = ObjectOf(fields.Get(), &IDbTableDescr::FieldByName, Bstr("count"));
    answers.push_back(AnswerOf(made.Get(), &IDbFieldDescr::get_Index));
    answers.push_back(AnswerOf(made.Get(), &IDbFieldDescr::get_Type));
    answers.push_back(ResultText(made->put_Type(FieldType::Float)));
    answers.push_back(AnswerOf(made.Get(), &IDbFieldDescr::get_TypeName));
    answers.push_back(ResultText(fields->DeleteField(12)));
    answers.push_back(AnswerOf(fields.Get(), &IDbTableDescr::get_FieldsCount));
    const auto first = ObjectOf(fields.Get(), &IDbTableDescr::FieldByIndex, 0L);
    answers.push_back(AnswerOf(first.Get(), &IDbFieldDescr::get_Name));
    answers.push_back(ObjectOf(fields.Get(), &IDbTableDescr::FieldByIndex, 99L) ? "a field" : "no field");
}

inline void AskAboutRows(IDbDatabase* catalog, std::vector<std::string>& answers) {
    for (const auto& rows : {ObjectOf(catalog, &IDbDatabase::TableDataByIndex, 2L),
                             ObjectOf(catalog, &IDbDatabase::TableDataByName, Bstr("ipe")),
                             ObjectOf(catalog, &IDbDatabase::TableData, Long(2)),
                             ObjectOf(catalog, &IDbDatabase::TableData, CComVariant("IPE"))}) {
        answers.push_back(AnswerOf(rows.Get(), &IDbTableData::get_RowsCount));
    }
    const auto rows = ObjectOf(catalog, &IDbDatabase::TableDataByName, Bstr("IPE"));
    for (long i = 0; i < 3; ++i) {
        const auto row = ObjectOf(rows.Get(), &IDbTableData::Row, i);
        answers.push_back(AnswerOf(row.Get(), &IDbTableRow::get_FieldsCount));
        const auto name = ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 0L);
        answers.push_back(AnswerOf(name.Get(), &IDbFieldValue::get_Value));
        const auto height = ObjectOf(row.Get(), &IDbTableRow::FieldByName, Bstr("h"));
        answers.push_back(AnswerOf(height.Get(), &IDbFieldValue::get_Index));
        answers.push_back(ResultText(height->put_Value(CComVariant(100.5 + static_cast<double>(i)))));
        answers.push_back(AnswerOf(height.Get(), &IDbFieldValue::get_Value));
        answers.push_back(ResultText(height->put_Value(NullVariant())));
        answers.push_back(AnswerOf(height.Get(), &IDbFieldValue::get_Value));
    }
    const auto added = ObjectOf(rows.Get(), &IDbTableData::AddRow);
    answers.push_back(AnswerOf(added.Get(), &IDbTableRow::get_FieldsCount));
    answers.push_back(AnswerOf(rows.Get(), &IDbTableData::get_RowsCount));
    answers.push_back(ResultText(rows->RemoveRow(18)));
    answers.push_back(AnswerOf(rows.Get(), &IDbTableData::get_RowsCount));
    const auto nothing = ObjectOf(rows.Get(), &IDbTableData::Row, 99L);
    answers.push_back(AnswerOf(nothing.Get(), &IDbTableRow::get_FieldsCount));
}

inline void AskAboutHeader(IDbDatabase* catalog, std::vector<std::string>& answers) {
    const auto header = ObjectOf(catalog, &IDbDatabase::get_Header);
    for (const auto member :
         {&IDbHeader::get_Category, &IDbHeader::get_Symbol, &IDbHeader::get_Title,
          &IDbHeader::get_CatalogType, &IDbHeader::get_UnitsType, &IDbHeader::get_Version}) {
        answers.push_back(AnswerOf(header.Get(), member));
    }
    for (const auto member :
         {&IDbHeader::put_Category, &IDbHeader::put_Symbol, &IDbHeader::put_Title,
          &IDbHeader::put_CatalogType, &IDbHeader::put_UnitsType, &IDbHeader::put_Version}) {
        answers.push_back(ResultText((header.Get()->*member)(Bstr("z\u00F3\u0142ty"))));
    }
    answers.push_back(AnswerOf(header.Get(), &IDbHeader::get_CatalogType));
    const auto properties = ObjectOf(catalog, &IDbDatabase::get_Properties);
    for (const auto member :
         {&IDbProperties::get_Units, &IDbProperties::get_Material, &IDbProperties::get_UnitLong,
          &IDbProperties::get_UnitSect, &IDbProperties::get_UnitWeight}) {
        answers.push_back(AnswerOf(properties.Get(), member));
    }
    for (const auto member :
         {&IDbProperties::put_Units, &IDbProperties::put_Material, &IDbProperties::put_UnitLong,
          &IDbProperties::put_UnitSect, &IDbProperties::put_UnitWeight}) {
        answers.push_back(ResultText((properties.Get()->*member)(Bstr("inch"))));
    }
    answers.push_back(AnswerOf(properties.Get(), &IDbProperties::get_UnitSect));
}

inline void AskQueries(IDbDatabase* catalog, std::vector<std::string>& answers) {
    Bstr name("before");
    answers.push_back(AnswerOf(catalog, &IDbDatabase::Query, Bstr("select name, h from HEA where h > 800"),
                               name.Address()));
    // The number in the name counts per process.
    answers.push_back(name.Utf8().substr(0, 6));
    const auto rows = ObjectOf(catalog, &IDbDatabase::TableDataByName, name);
    answers.push_back(AnswerOf(rows.Get(), &IDbTableData::get_RowsCount));
    const auto info = ObjectOf(catalog, &IDbDatabase::TableInfoByName, name);
    answers.push_back(AnswerOf(info.Get(), &IDbTableInfo::get_sql));
    answers.push_back(AnswerOf(info.Get(), &IDbTableInfo::get_Type));
    answers.push_back(AnswerOf(catalog, &IDbDatabase::Query, Bstr("nonsense"), name.Address()));
    for (const FindMode mode : {FindMode::First, FindMode::Next, FindMode::Last, FindMode::Previous}) {
        answers.push_back(AnswerOf(catalog, &IDbDatabase::Find, mode, Bstr("HEB"), Bstr("h > 400")));
    }
    answers.push_back(ResultText(catalog->CreateTable(Bstr("Made"))));
    answers.push_back(ResultText(catalog->DeleteTable(Bstr("UPE"))));
    answers.push_back(AnswerOf(catalog, &IDbDatabase::get_TablesCount));
}

// The log contains times, so only its presence is recorded.
inline std::vector<std::string> AskEverything(IDbDatabase* catalog, const std::string& copy) {
    std::vector<std::string> answers;
    AskAboutFields(catalog, answers);
    AskAboutRows(catalog, answers);
    AskAboutHeader(catalog, answers);
    AskQueries(catalog, answers);
    answers.push_back(AnswerOf(catalog, &IDbDatabase::get_ErrorLog).size() > 2 ? "a log" : "no log");
    answers.push_back(ResultText(catalog->Save(Bstr(copy.c_str()))));
    AskAboutTables(catalog, answers);
    answers.push_back(ResultText(catalog->Create(Bstr(copy.c_str()))));
    answers.push_back(AnswerOf(catalog, &IDbDatabase::get_TablesCount));
    answers.push_back(ResultText(catalog->Save(Bstr(copy.c_str()))));
    return answers;
}

}  // namespace quillet::test
