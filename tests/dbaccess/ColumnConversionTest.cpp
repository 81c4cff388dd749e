#include "Quillet/dbaccess/ColumnConversion.h"

#include <gtest/gtest.h>

#include "Quillet/dbaccess/LangMappings.h"
#include "support/OtherLocale.h"
#include "support/RecordHelpers.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;

TEST(ColumnConversion, Convert_ConvertsLikeLangMappingsAndSetsTheLocaleBackAtTheEnd) {
    const OtherLocale locale;
    LangMappings mappings;
    {
        quillet::ColumnConversion conversion(mappings);
        CComVariant value;
        mappings.Select("item");
        conversion.Convert(Column("", "a"), value);
        EXPECT_EQ(TextOf(value), "a");
        EXPECT_TRUE(locale.IsUnchanged());
        for (const char* name : {"desc_48", "item", "desc_70"}) {
            mappings.Select(name);
            conversion.Convert(Column("", name), value);
            EXPECT_EQ(TextOf(value), name);
        }
        conversion.Convert(Column("", 7L), value);
        EXPECT_EQ(value.lVal, 7);
    }
    EXPECT_EQ(OtherLocale::Now(), "C");
}

}  // namespace
