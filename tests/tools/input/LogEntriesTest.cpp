#include "input/LogEntries.h"

#include <gtest/gtest.h>

namespace quillet::tool {
namespace {

using Kind = DbLogEntry::Kind;

const DbLogEntry Read{Kind::QueryRead, "SQL Analyze - query 'x'"};
const DbLogEntry Ok{Kind::QueryReport, "SQL Analyze - ok"};

TEST(LogEntries, IsFault_ReportsAndLinesOfQueries_AreNone) {
    for (const Kind kind : {Kind::Report, Kind::QueryRead, Kind::QueryReport, Kind::QueryFault}) {
        EXPECT_FALSE(IsFault({kind, "Table 'x' has malformed rows"}));
    }
    for (const Kind kind : {Kind::ReadFault, Kind::NoCatalog, Kind::MalformedRows, Kind::SaveFault,
                            Kind::SaveTrace, Kind::Refused}) {
        EXPECT_TRUE(IsFault({kind, "Table 'x' created, index = 1"}));
    }
}

TEST(LogEntries, IsQueryRead_OnlyWhereTheTextIsTakenApart_IsTrue) {
    EXPECT_TRUE(IsQueryRead({Read, Ok}));
    EXPECT_FALSE(IsQueryRead({{Kind::QueryFault, "SQL Analyze - table 'query' not found"}}));
    EXPECT_FALSE(IsQueryRead({}));
}

TEST(LogEntries, QueryComplaint_Faults_AreJoinedWithoutTheirPrefix) {
    const DbLogEntry a{Kind::QueryFault, "SQL Analyze - a"};
    const DbLogEntry b{Kind::QueryFault, "SQL Analyze - b"};
    const DbLogEntry cycle{Kind::QueryFault, "Query 'x' stands on itself"};
    EXPECT_EQ(QueryComplaint({Read, a, b, Ok}), "SQL Analyze - a; b");
    EXPECT_EQ(QueryComplaint({Read, a, cycle}), "SQL Analyze - a; Query 'x' stands on itself");
    EXPECT_EQ(QueryComplaint({Read, Ok, cycle}), "Query 'x' stands on itself");
}

TEST(LogEntries, QueryComplaint_NoFault_IsAMatterOfBrackets) {
    EXPECT_EQ(QueryComplaint({Read, Ok}), "the brackets of the conditions don't match");
}

}  // namespace
}  // namespace quillet::tool
