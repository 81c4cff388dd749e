#include "input/Headings.h"

#include <gmock/gmock.h>

namespace quillet::tool {
namespace {

using testing::ElementsAre;

TEST(Headings, SafeNames_OfGoodNames_AreTheNames) {
    EXPECT_THAT(SafeNames({"name", "Iy", "h/b", "fy 40", "Größe", "名前"}),
                ElementsAre("name", "Iy", "h/b", "fy 40", "Größe", "名前"));
}

TEST(Headings, SafeNames_OfUnits_KeepLettersAndFigures) {
    EXPECT_THAT(SafeNames({"h [mm]", "b, mm", "t (mm)", "G (kg/m)", "W [cm³]", "I_y [cm⁴]"}),
                ElementsAre("h_mm", "b_mm", "t_mm", "G_kg_m", "W_cm3", "I_y_cm4"));
}

TEST(Headings, SafeNames_ThatWouldBeOne_AreNumbered) {
    EXPECT_THAT(SafeNames({"a", "A", "a"}), ElementsAre("a", "A_2", "a_3"));
    EXPECT_THAT(SafeNames({"a b", "a_b"}), ElementsAre("a b", "a_b_2"));
    EXPECT_THAT(SafeNames({"h [mm]", "h_mm", "h (mm)"}), ElementsAre("h_mm_2", "h_mm", "h_mm_3"));
}

TEST(Headings, SafeNames_OfNothing_CountTheField) {
    EXPECT_THAT(SafeNames({"", "?", "field_1"}), ElementsAre("field_1_2", "field_2", "field_1"));
    EXPECT_THAT(SafeNames({}), testing::IsEmpty());
}

}  // namespace
}  // namespace quillet::tool
