// Rows that were saved into a document stay there as they were, whatever becomes of the table.
#include "Quillet/rows/SavedRows.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Quillet/rows/RowsView.h"
#include "support/CatalogHelpers.h"
#include "support/OutOfMemory.h"
#include "support/RowHelpers.h"

namespace quillet::test {
namespace {

constexpr uint64 ManyRows = 2 * ColumnBlock::MostSlots + 40;

std::string RowText(uint64 number) {
    const std::string text = std::to_string(number);
    return "<row d=\"" + text + ".5\" t=\"t&lt;" + text + "\" n=\"" + text + "\" />\n";
}

std::string RowTexts(uint64 rows) {
    std::string text;
    for (uint64 i = 0; i < rows; ++i) {
        text += RowText(i);
    }
    return text;
}

// A table without a database.
class Table {
public:
    explicit Table(uint64 rows) {
        m_descr->CreateField("d", false, DbFieldDescr::Double);
        m_descr->CreateField("t", false, DbFieldDescr::Text);
        m_descr->CreateField("n", false, DbFieldDescr::Long);
        Add(rows);
    }

    // Rows that are not made.
    void Add(uint64 rows) {
        RowsView view(*m_data->GetRows());
        for (uint64 i = m_data->AddRows(rows); rows > 0; ++i, --rows) {
            view.SetCell(i, 0, CellView::Double(static_cast<double>(m_next) + 0.5));
            const std::string text = "t<" + std::to_string(m_next);
            view.SetCell(i, 1, CellView::Text(text));
            view.SetCell(i, 2, CellView::Long(static_cast<LONG>(m_next++)));
        }
    }

    bool Save(const SaveTarget& target) { return m_data->Save(target.Automation(), target.Element()); }
    std::string Saved() {
        SaveTarget target;
        EXPECT_TRUE(Save(target));
        return target.Content();
    }
    // Whether the rows are left with the document, from the first one on.
    bool IsLeft() const { return SavedRows::Take(RowsView(*m_data->GetRows()), 0) != nullptr; }

    std::unique_ptr<DbTableDescr> m_descr = std::make_unique<DbTableDescr>(nullptr);
    std::unique_ptr<DbTableData> m_data = std::make_unique<DbTableData>(nullptr, m_descr.get());

private:
    uint64 m_next = 0;
};

struct Change {
    const char* m_name;
    std::function<void(Table&)> m_make;
};

void PrintTo(const Change& change, std::ostream* out) {
    *out << change.m_name;
}

void DeleteLastRows(Table& table, uint64 rows) {
    for (; rows > 0; --rows) {
        table.m_data->DeleteRow(table.m_data->size() - 1);
    }
}

class SavedRowsAfter : public testing::TestWithParam<Change> {};

TEST_P(SavedRowsAfter, AChange_AreWhatTheyWere) {
    for (const uint64 rows : {uint64{40}, ManyRows}) {
        Table table(rows);
        ASSERT_TRUE(table.IsLeft());
        SaveTarget target;
        ASSERT_TRUE(table.Save(target));
        GetParam().m_make(table);
        EXPECT_EQ(target.Content(), RowTexts(rows)) << rows;
        EXPECT_EQ(target.Content(), RowTexts(rows)) << rows;
        EXPECT_EQ(xml::Node(target.Element()).CountChildren(), rows);
        EXPECT_EQ(target.Content(), RowTexts(rows)) << rows;
    }
}

TEST_P(SavedRowsAfter, AChange_LeaveTheTableWhatItIsWithoutADocument) {
    for (const uint64 rows : {uint64{40}, ManyRows}) {
        Table alone(rows);
        Table table(rows);
        SaveTarget target;
        ASSERT_TRUE(table.Save(target));
        GetParam().m_make(alone);
        GetParam().m_make(table);
        if (table.m_data != nullptr) {
            EXPECT_EQ(table.Saved(), alone.Saved());
            table.Add(30);
            alone.Add(30);
            DeleteLastRows(table, 5);
            DeleteLastRows(alone, 5);
            EXPECT_EQ(table.Saved(), alone.Saved());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Changes, SavedRowsAfter,
    testing::Values(
        Change{"Nothing", [](Table&) {}},
        Change{"AValue", [](Table& table) { (*table.m_data)[3][uint64(2)].SetValue(Long(-1)); }},
        Change{"AValueInColumns",
               [](Table& table) { RowsView(*table.m_data->GetRows()).SetCell(3, 2, CellView::Long(-1)); }},
        Change{"ATextInColumns",
               [](Table& table) { RowsView(*table.m_data->GetRows()).SetCell(3, 1, CellView::Text("new")); }},
        Change{"EveryRowMade",
               [](Table& table) {
                   for (uint64 i = 0; i < table.m_data->size(); ++i) {
                       (*table.m_data)[i][uint64(0)].SetValue(CComVariant(0.25));
                   }
               }},
        Change{"ARowAdded", [](Table& table) { table.Add(1); }},
        Change{"ManyRowsAdded", [](Table& table) { table.Add(ColumnBlock::MostSlots); }},
        Change{"TheFirstRowDeleted", [](Table& table) { table.m_data->DeleteRow(0); }},
        Change{"TheLastRowReplaced",
               [](Table& table) {
                   DeleteLastRows(table, 1);
                   table.Add(1);
               }},
        Change{"TheLastRowsReplaced",
               [](Table& table) {
                   DeleteLastRows(table, 35);
                   table.Add(70);
               }},
        Change{"NearlyAllRowsDeleted", [](Table& table) { DeleteLastRows(table, table.m_data->size() - 2); }},
        Change{"AllRowsDeletedAndOthersAdded",
               [](Table& table) {
                   DeleteLastRows(table, table.m_data->size());
                   table.Add(50);
               }},
        Change{"AFieldCreated",
               [](Table& table) {
                   table.m_descr->CreateField("x", false, DbFieldDescr::Text);
                   table.m_data->Update(3, true);
               }},
        Change{"AFieldDeleted",
               [](Table& table) {
                   table.m_descr->DeleteField(0);
                   table.m_data->Update(0, false);
               }},
        Change{"AFieldRenamed", [](Table& table) { table.m_descr->at(0)->SetName("another"); }},
        Change{"TheTableCleared", [](Table& table) { table.m_data->Clear(); }},
        Change{"TheTableDestroyed",
               [](Table& table) {
                   table.m_data.reset();
                   table.m_descr.reset();
               }}),
    [](const auto& change) { return change.param.m_name; });

TEST(SavedRows, WalkedHalf_ThenChanged_AreAllThere) {
    Table table(40);
    SaveTarget target;
    ASSERT_TRUE(table.Save(target));
    xml::Node row = xml::Node(target.Element()).FirstChild();
    for (int i = 0; i < 19; ++i) {
        row = row.NextSibling();
    }
    table.m_data->Clear();
    std::size_t left = 0;
    for (; !row.IsNull(); row = row.NextSibling()) {
        ++left;
    }
    EXPECT_EQ(left, 21U);
    EXPECT_EQ(target.Content(), RowTexts(40));
}

TEST(SavedRows, AddedAfterASave_NeedNoObjects) {
    Table table(40);
    SaveTarget target;
    ASSERT_TRUE(table.Save(target));
    table.Add(100);
    EXPECT_FALSE(RowsView(*table.m_data->GetRows()).HasMadeRows());
    EXPECT_EQ(target.Content(), RowTexts(40));
    EXPECT_EQ(table.Saved(), RowTexts(140));
}

TEST(SavedRows, BetweenOtherElements_KeepTheirPlace) {
    Table table(20);
    SaveTarget target;
    const xml::Node root(target.Element());
    const xml::Node document = target.Document().Root();
    ASSERT_TRUE((*table.m_data)[0].Save(target.Automation(), target.Element()));
    Table other(20);
    ASSERT_TRUE(other.Save(target));
    ASSERT_TRUE((*table.m_data)[1].Save(target.Automation(), target.Element()));
    ASSERT_TRUE(other.Save(target));
    EXPECT_EQ(target.Content(), RowText(0) + RowTexts(20) + RowText(1) + RowTexts(20));
    root.AppendChild(document.CreateElement("end"));
    EXPECT_EQ(target.Content(), RowText(0) + RowTexts(20) + RowText(1) + RowTexts(20) + "<end />\n");
}

// Each is refused as in a single row: the rows before it are there.
TEST(SavedRows, ATextThatXmlCannotCarry_EndsTheSave) {
    for (const char* text :
         {"\x01", "a long text that ends in U+FFFF \xEF\xBF\xBF", "\xEF\xBF\xBE", "\x1F"}) {
        Table table(40);
        RowsView(*table.m_data->GetRows()).SetCell(30, 1, CellView::Text(text));
        SaveTarget target;
        EXPECT_FALSE(table.Save(target)) << text;
        EXPECT_EQ(target.Content(), RowTexts(30)) << text;
    }
}

TEST(SavedRows, NamesThatXmlRefuses_EndTheSave) {
    for (const char* name : {"1", "d"}) {
        Table table(40);
        table.m_descr->at(2)->SetName(name);
        SaveTarget target;
        EXPECT_FALSE(table.Save(target)) << name;
        EXPECT_EQ(target.Content(), "") << name;
    }
}

// Every kind of cell, and every byte that is escaped, at every place of a text.
TEST(SavedRows, EveryValue_IsWrittenAsThatOfARowObject) {
    const std::vector<std::pair<DbFieldDescr::eFieldType, CellView>> cells = {
        {DbFieldDescr::Double, CellView::Double(-1234.5)},
        {DbFieldDescr::Double, CellView::Double(1.0 / 3)},
        {DbFieldDescr::Double, CellView::Double(1e300)},
        {DbFieldDescr::Double, CellView()},
        {DbFieldDescr::Double, CellView::Null(true)},
        {DbFieldDescr::Float, CellView::Float(0.1F)},
        {DbFieldDescr::Float, CellView::Float(16777216)},
        {DbFieldDescr::Long, CellView::Long(-2147483647 - 1)},
        {DbFieldDescr::Long, CellView::Null(false)},
        {DbFieldDescr::Integer, CellView::Short(-32768)},
        {DbFieldDescr::Boolean, CellView::Boolean(VARIANT_TRUE)},
        {DbFieldDescr::Boolean, CellView::Boolean(VARIANT_FALSE)},
        {DbFieldDescr::Boolean, CellView::Boolean(1)},
        {DbFieldDescr::Text, CellView::Text("")},
        {DbFieldDescr::Text, CellView()},
        {DbFieldDescr::Text,
         CellView::Text("\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80 \xEF\xBB\xBF \xEF\xBF\xBD")},
        {DbFieldDescr::Binary, CellView()},
    };
    std::vector<std::string> texts;
    for (std::size_t length = 1; length < 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::string text(length, 'x');
            text[place] = "&<>\"\t\n\r'\x7F"[place % 9];
            texts.push_back(text);
        }
    }
    DbTableDescr descr(nullptr);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string name = std::string(3 * i, 'f') + "f" + std::to_string(i);
        descr.CreateField(CString(name), false, cells[i].first);
        if (cells[i].second.GetKind() == CellView::Kind::Short) {
            descr.at(i)->GetVariant() = Short(0);
        }
    }
    descr.CreateField("t", false, DbFieldDescr::Text);
    DbTableData data(nullptr, &descr);
    data.GetRows()->AddRows(texts.size(), false);
    RowsView view(*data.GetRows());
    for (uint64 row = 0; row < texts.size(); ++row) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            // Half of the rows hold the values, so that columns with states occur too.
            view.SetCell(row, i, row % 2 == 0 ? cells[i].second : CellView());
        }
        view.SetCell(row, cells.size(), CellView::Text(texts[row]));
    }
    ASSERT_NE(SavedRows::Take(view, 0), nullptr);
    SaveTarget left;
    ASSERT_TRUE(data.Save(left.Automation(), left.Element()));
    SaveTarget made;
    for (uint64 row = 0; row < texts.size(); ++row) {
        ASSERT_TRUE(data[row].Save(made.Automation(), made.Element()));
    }
    EXPECT_EQ(left.Content(), made.Content());
}

TEST(SavedRows, ATextLargerThanAnyBuffer_IsWritten) {
    const std::string large(3'000'000, '&');
    Table table(20);
    RowsView(*table.m_data->GetRows()).SetCell(7, 1, CellView::Text(large));
    SaveTarget target;
    ASSERT_TRUE(table.Save(target));
    const std::string text = target.Content();
    EXPECT_EQ(text.size(), RowTexts(20).size() - std::string("t&lt;7").size() + 5 * large.size());
    EXPECT_EQ(text.substr(text.size() - RowText(19).size()), RowText(19));
}

TEST(SavedRows, ATableWithoutFields_HasEmptyRows) {
    DbTableDescr descr(nullptr);
    DbTableData data(nullptr, &descr);
    data.AddRows(17);
    SaveTarget target;
    ASSERT_TRUE(data.Save(target.Automation(), target.Element()));
    std::string expected;
    for (int i = 0; i < 17; ++i) {
        expected += "<row />\n";
    }
    EXPECT_EQ(target.Content(), expected);
}

TEST(SavedRowsMemory, ARowIsDeleted_WithoutMemory) {
    Table table(40);
    SaveTarget target;
    ASSERT_TRUE(table.Save(target));
    ExpectNoAllocation([&] {
        table.m_data->DeleteRow(39);
        table.m_data->DeleteRow(0);
    });
    EXPECT_EQ(target.Content(), RowTexts(40));
    EXPECT_EQ(table.Saved(), RowTexts(39).substr(RowText(0).size()));
}

struct TableAndDocument {
    Table m_table{40};
    SaveTarget m_target;
};

TEST(SavedRowsMemory, EveryStep_HappensWholeOrNotAtAll) {
    using Subject = TableAndDocument;
    const auto make = [] { return std::make_unique<Subject>(); };
    const auto save = [](Subject& subject) { EXPECT_TRUE(subject.m_table.Save(subject.m_target)); };
    const auto show = [](Subject& subject) { return subject.m_target.Content() + subject.m_table.Saved(); };
    const Step<Subject> steps[] = {
        {"Save", save},
        // Of two pieces, one becomes nodes before the other.
        {"Walk",
         [&](Subject& subject) {
             save(subject);
             save(subject);
         },
         [](Subject& subject) { EXPECT_EQ(xml::Node(subject.m_target.Element()).CountChildren(), 80U); }},
        {"Write", save, [](Subject& subject) { EXPECT_EQ(subject.m_target.Content(), RowTexts(40)); }},
        {"Change", save,
         [](Subject& subject) {
             RowsView(*subject.m_table.m_data->GetRows()).SetCell(3, 2, CellView::Long(-1));
         }},
        {"AddARow", save, [](Subject& subject) { subject.m_table.m_data->AddRow(); }},
    };
    for (const Step<Subject>& step : steps) {
        SCOPED_TRACE(step.m_name);
        ExpectStepWholeOrNotAtAll(step, make, show);
    }
}

std::string LargeAlpha() {
    CatalogParts parts = SmallParts();
    std::string rows;
    for (int i = 0; i < 24; ++i) {
        rows += "<row name=\"a name &amp; more\" count=\"" + std::to_string(i) + "\" />\n";
    }
    parts.m_bodyData = TableXml("Alpha", rows) + TableXml("Beta", "") + TableXml("Gamma", "");
    return parts.Xml();
}

class SavedCatalog : public testing::TestWithParam<Reading> {
protected:
    SavedCatalog() { WriteBytes(Path(), LargeAlpha()); }

    std::filesystem::path Path() const { return m_folder / "alpha.xml"; }
    std::unique_ptr<DbDatabase> Opened() const { return Open(Path(), GetParam()); }

    TemporaryFolder m_folder;
};

INSTANTIATE_TEST_SUITE_P(Readings, SavedCatalog, testing::Values(Reading::Whole, Reading::Sequential),
                         ReadingName);

TEST_P(SavedCatalog, SavedByAHost_OutlivesTheDatabase) {
    xml::Document document;
    const CComPtr<IDispatch> automation = document.Automation();
    auto database = Opened();
    ASSERT_TRUE(database->Save(automation.Get(), nullptr));
    const std::string before = document.SaveText();
    database->DeleteTable("Alpha");
    EXPECT_EQ(document.SaveText(), before);
    database.reset();
    EXPECT_EQ(document.SaveText(), before);
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + before, LargeAlpha());
}

struct DatabaseAndDocument {
    std::unique_ptr<DbDatabase> m_database;
    xml::Document m_document;
};

TEST_P(SavedCatalog, FieldsChangedOutOfMemory_AreAllChangedOrNone) {
    const auto make = [&] {
        WriteBytes(Path(), LargeAlpha());
        auto subject = std::make_unique<DatabaseAndDocument>();
        subject->m_database = Opened();
        EXPECT_TRUE(subject->m_database->Save(subject->m_document.Automation().Get(), nullptr));
        return subject;
    };
    const auto show = [](DatabaseAndDocument& subject) {
        return Dump(*subject.m_database) + subject.m_document.SaveText();
    };
    ExpectWholeOrNotAtAll(
        make,
        [](DatabaseAndDocument& subject) {
            EXPECT_TRUE(subject.m_database->GetTableDescr("Alpha")->DeleteField(0));
        },
        show);
    ExpectWholeOrNotAtAll(
        make,
        [](DatabaseAndDocument& subject) {
            EXPECT_TRUE(
                subject.m_database->GetTableDescr("Alpha")->CreateField("new", false, DbFieldDescr::Text));
        },
        show);
}

TEST_P(SavedCatalog, SavedOutOfMemory_TheFileIsTheOldOrTheNewOne) {
    const auto changed = [&] {
        WriteBytes(Path(), LargeAlpha());
        auto database = Opened();
        database->GetTableData("Beta")->AddRow();
        return database;
    };
    std::string expected;
    {
        const auto database = changed();
        ASSERT_TRUE(database->Save(CString(Utf8(Path()))));
        expected = ReadBytes(Path());
    }
    SweepAttempts([&](std::size_t failing, Failing which) {
        auto database = changed();
        bool saved = false;
        const CString path(Utf8(Path()));
        const Attempt attempt = Try(failing, which, [&] { saved = database->Save(path); });
        EXPECT_EQ(ReadBytes(Path()), saved ? expected : LargeAlpha());
        EXPECT_TRUE(database->Save(path));
        EXPECT_EQ(ReadBytes(Path()), expected);
        return attempt;
    });
}

}  // namespace
}  // namespace quillet::test
