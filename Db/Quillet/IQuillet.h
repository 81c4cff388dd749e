// Everything that a host includes.
#pragma once

// Microsoft's compiler keeps the old number in __cplusplus unless it is told otherwise. Nothing else is
// included under an older standard, so that this line is not one of a thousand.
#if defined(_MSVC_LANG) ? _MSVC_LANG <= 201703L : __cplusplus <= 201703L
#error "IQuillet needs C++20: compile with -std=c++20 (GCC, Clang) or /std:c++20 (Microsoft)"
#else

#include "Quillet/Db_ColumnView.h"
#include "Quillet/Db_Database.h"
#include "Quillet/Db_Exception.h"
#include "Quillet/Db_FieldDescr.h"
#include "Quillet/Db_FieldValue.h"
#include "Quillet/Db_Filter.h"
#include "Quillet/Db_Item.h"
#include "Quillet/Db_LogEntry.h"
#include "Quillet/Db_QueryDef.h"
#include "Quillet/Db_Recordset.h"
#include "Quillet/Db_Rows.h"
#include "Quillet/Db_Serializer.h"
#include "Quillet/Db_Source.h"
#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDef.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/Db_TableInfo.h"
#include "Quillet/Db_TableRow.h"
#include "Quillet/clv/clause.h"
#include "Quillet/dbaccess/CTables.h"
#include "Quillet/dbaccess/DBACCESS.h"
#include "Quillet/dbaccess/DBACCESS_ALL.h"
#include "Quillet/dbaccess/DBACCESS_RECORDSET.h"
#include "Quillet/dbaccess/LangMappings.h"
#include "Quillet/dbaccess/VorqOdbcRecordset.h"
#include "Quillet/odbc/CDBVariant.h"
#include "Quillet/odbc/DatabaseError.h"
#include "Quillet/platform/MessageBox.h"
#include "Quillet/xml/Document.h"

#endif
