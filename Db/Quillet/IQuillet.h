// Everything that a host includes.
#pragma once

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Exception.h"
#include "Quillet/Db_FieldDescr.h"
#include "Quillet/Db_FieldValue.h"
#include "Quillet/Db_Filter.h"
#include "Quillet/Db_Item.h"
#include "Quillet/Db_Rows.h"
#include "Quillet/Db_Source.h"
#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"
#include "Quillet/Db_TableInfo.h"
#include "Quillet/Db_TableRow.h"
#include "Quillet/clv/clause.h"
#include "platform/MessageBox.h"
#include "xml/Document.h"
