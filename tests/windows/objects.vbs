' Every member of the automation objects, called as this script host calls: variables go by reference, numbers are of
' any type, and whatever fails comes with a description.
'
'   cscript //nologo objects.vbs       in a folder with steel.xml, a copy of european-steel.xml
Option Explicit

Const FindFirst = 0, FindNext = 1, FindLast = 2, FindPrevious = 3
Const WrongType = 13, Overflow = 6

Dim checks, failures
checks = 0
failures = 0

Sub Check(name, actual, expected)
    checks = checks + 1
    If TypeName(actual) <> TypeName(expected) And Not (IsNumeric(actual) And IsNumeric(expected)) Then
        failures = failures + 1
        WScript.Echo "FAILED " & name & ": is a " & TypeName(actual) & " instead of a " & TypeName(expected)
    ElseIf CStr(actual) <> CStr(expected) Then
        failures = failures + 1
        WScript.Echo "FAILED " & name & ": " & actual & " instead of " & expected
    End If
End Sub

Sub CheckTrue(name, condition)
    Check name, CBool(condition), True
End Sub

' Clears the error of the last statement.
Sub CheckError(name, text)
    Dim number, description
    number = Err.Number
    description = Err.Description
    Err.Clear
    On Error GoTo 0
    checks = checks + 1
    If number = 0 Or InStr(description, text) = 0 Then
        failures = failures + 1
        WScript.Echo "FAILED " & name & ": error " & number & " '" & description & "' instead of '" & text & "'"
    End If
End Sub

Sub CheckErrorNumber(name, expected)
    Dim number
    number = Err.Number
    Err.Clear
    On Error GoTo 0
    Check name, number, expected
End Sub

Function Opened(path)
    Set Opened = CreateObject("IQuillet.DbDatabase")
    Opened.Source.FilePath = path
End Function

Function Cell(rows, index, field)
    Cell = rows.Row(index).FieldByName(field).Value
End Function

' ---- The database

Sub TestTables
    Dim c, i, text, number
    Set c = Opened("steel.xml")
    Check "TablesCount", c.TablesCount, 8
    Check "TableName of a constant", c.TableName(2), "IPE"
    i = 3
    Check "TableName of a variable", c.TableName(i), "HEA"
    Check "TableName leaves the variable alone", i, 3
    text = "2"
    Check "TableName of a text", c.TableName(text), "IPE"
    Check "TableName of a double", c.TableName(2.0), "IPE"
    number = 1.5
    Check "TableName rounds half to even", c.TableName(number), "IPE"
    Check "TableName of a byte", c.TableName(CByte(2)), "IPE"
    Check "TableName of a long", c.TableName(CLng(2)), "IPE"
    Check "TableName of a single", c.TableName(CSng(2)), "IPE"
    Check "TableName of a currency", c.TableName(CCur(2)), "IPE"
    Check "TableName of a boolean", c.TableName(False), "Header"
    Check "TableName of -1 is a null text", c.TableName(-1), ""
    Check "TableName of the count is a null text", c.TableName(8), ""
    Check "TableName of the greatest number", c.TableName(2147483647), ""
    On Error Resume Next
    c.TableName "two"
    CheckErrorNumber "TableName of no number", WrongType
    On Error Resume Next
    c.TableName 10000000000
    CheckErrorNumber "TableName of a number that is too great", Overflow
    On Error Resume Next
    c.TableName
    CheckTrue "TableName without an index", Err.Number <> 0
    Err.Clear
    On Error GoTo 0

    Check "TableDescrByIndex", c.TableDescrByIndex(2).FieldsCount, 16
    Check "TableDataByIndex", c.TableDataByIndex(2).RowsCount, 18
    Check "TableDescrByName in any case", c.TableDescrByName("ipe").FieldsCount, 16
    Check "TableDataByName in any case", c.TableDataByName("iPe").RowsCount, 18
    Check "TableDescr of an index", c.TableDescr(2).FieldsCount, 16
    Check "TableData of an index", c.TableData(2).RowsCount, 18
    Check "TableDescr of a name", c.TableDescr("IPE").FieldsCount, 16
    Check "TableData of a name", c.TableData("IPE").RowsCount, 18
    text = "UPE"
    Check "TableDescr of a variable with a name", c.TableDescr(text).FieldsCount, 17
    Check "TableData of a variable with a name", c.TableData(text).RowsCount, 14
    i = 6
    Check "TableDescr of a variable with an index", c.TableDescr(i).FieldsCount, 17
    number = 6.0
    Check "TableData of a variable with a double", c.TableData(number).RowsCount, 14
End Sub

Sub TestTablesThatThereAreNot
    Dim c
    Set c = Opened("steel.xml")
    CheckTrue "TableDescrByIndex of -1", c.TableDescrByIndex(-1) Is Nothing
    CheckTrue "TableDescrByIndex of the count", c.TableDescrByIndex(8) Is Nothing
    CheckTrue "TableDataByIndex of -1", c.TableDataByIndex(-1) Is Nothing
    CheckTrue "TableDataByIndex of the count", c.TableDataByIndex(8) Is Nothing
    CheckTrue "TableDescrByName", c.TableDescrByName("none") Is Nothing
    CheckTrue "TableDataByName", c.TableDataByName("none") Is Nothing
    CheckTrue "TableDescr of an index", c.TableDescr(8) Is Nothing
    CheckTrue "TableData of an index", c.TableData(-1) Is Nothing
    CheckTrue "TableDescr of a name", c.TableDescr("none") Is Nothing
    CheckTrue "TableData of a name", c.TableData("") Is Nothing
    CheckTrue "TableInfoByName", c.TableInfoByName("none") Is Nothing
End Sub

Sub TestQuery
    Dim c, answer, answers(1), holder
    Set c = Opened("steel.xml")
    answer = "before"
    CheckTrue "Query is true", c.Query("select name from IPE where h > 500", answer)
    CheckTrue "Query gives the name", Left(answer, 6) = "Query_"
    Check "the answer's rows", c.TableData(answer).RowsCount, 2
    Check "the answer is a table of the catalog", c.TableName(c.TablesCount - 1), answer
    Dim same
    CheckTrue "Query with an empty variable", c.Query("select name from IPE where h > 500", same)
    Check "the same query has the same answer", same, answer
    CheckTrue "Query with an element of an array", c.Query("select h from IPE where h > 400", answers(1))
    Check "the answer in the element", c.TableData(answers(1)).RowsCount, 4
    CheckTrue "Query with a constant", c.Query("select b from IPE where h > 400", "")
    CheckTrue "Query with an expression", c.Query("select r from IPE where h > 400", "a" & "b")
    CheckTrue "Query of a table's name", c.Query("hea", answer)
    Check "the answer is the table itself", LCase(answer), "hea"
    Check "Query is false", c.Query("select name from none", answer), False
    CheckTrue "ErrorLog tells why", InStr(c.ErrorLog, "SQL Analyze") > 0
    Set holder = CreateObject("Scripting.Dictionary")
    holder("sql") = "select tw from IPE where h > 400"
    CheckTrue "Query with a property", c.Query(holder("sql"), answer)
    answer = 5
    CheckTrue "Query with a number in the variable", c.Query("select tf from IPE where h > 400", answer)
    CheckTrue "the number is the name then", Left(answer, 6) = "Query_"
End Sub

Sub TestTableInfo
    Dim c, answer, info
    Set c = Opened("steel.xml")
    Check "Type of a table", c.TableInfoByName("ipe").Type, 1
    Check "sql of a table", c.TableInfoByName("ipe").sql, ""
    c.Query "select name from IPE where h > 500", answer
    Set info = c.TableInfoByName(answer)
    Check "Type of a query", info.Type, 2
    Check "sql of a query", LCase(info.sql), "select name from ipe where h > 500"
End Sub

Sub TestFind
    Dim c, mode, table, where
    Set c = Opened("steel.xml")
    where = "h > 450"
    table = "IPE"
    mode = FindFirst
    Check "Find first", c.Find(mode, table, where), 15
    Check "Find next", c.Find(FindNext, "ipe", where), 16
    Check "Find next to the end", c.Find(FindNext, "IPE", where), 17
    Check "Find next behind the end", c.Find(FindNext, "IPE", where), -1
    Check "Find last", c.Find(FindLast, "IPE", where), 17
    Check "Find previous", c.Find(FindPrevious, "IPE", where), 16
    Check "Find nothing", c.Find(FindFirst, "IPE", "h > 5000"), -1
    Check "Find in another table", c.Find(FindFirst, "HEA", "h > 450"), 16
    Check "Find next in the other table", c.Find(FindNext, "HEA", "h > 450"), 17
    Check "Find next begins anew in the first", c.Find(FindFirst, "IPE", where), 15
    Check "Find with a text as mode", c.Find("1", "IPE", where), 16
    Check "Find with a double as mode", c.Find(1.0, "IPE", where), 17
End Sub

Sub TestCreate
    Dim c, copy, rows, row
    Set c = CreateObject("IQuillet.DbDatabase")
    Check "a database without a file", c.TablesCount, 0
    c.Create "made.xml"
    Check "Create makes the first two tables", c.TablesCount, 2
    c.CreateTable "Plates"
    Check "CreateTable", c.TableName(2), "Plates"
    c.CreateTable "plates"
    Check "CreateTable of a name that is taken", c.TablesCount, 3
    c.TableDescr("Plates").CreateField "t", 5
    Set row = c.TableData("Plates").AddRow
    row.FieldByName("t").Value = 12.5
    c.CreateTable "Spare"
    c.DeleteTable "none"
    Check "DeleteTable of a name that there is not", c.TablesCount, 4
    c.DeleteTable "SPARE"
    Check "DeleteTable", c.TablesCount, 3
    c.Header.Title = "Made"
    c.Save "saved.xml"
    Set copy = Opened("saved.xml")
    Check "Save", copy.Header.Title, "Made"
    Check "Save of rows", Cell(copy.TableData("Plates"), 0, "t"), 12.5
    ' A failed save is at most logged: no error is raised.
    c.Save "no such folder\saved.xml"
    c.Save "saved.txt"
End Sub

' ---- The source

Sub TestSource
    Dim c, s
    Set c = CreateObject("IQuillet.DbDatabase")
    Set s = c.Source
    CheckTrue "Source is one object", s Is c.Source
    Check "FilePath of no file", s.FilePath, ""
    Check "IsXmlBased of no file", s.IsXmlBased, False
    s.FilePath = "steel.xml"
    Check "FilePath", s.FilePath, "steel.xml"
    Check "IsXmlBased", s.IsXmlBased, True
    Check "FilePath does not switch sequential access on", s.SequentialAccess, False
    s.SequentialAccess = True
    Check "SequentialAccess", s.SequentialAccess, True
    Check "sequential access reads the tables", c.TableData("SHS").RowsCount, 93
    Check "ForceXML", s.ForceXML, True
    s.ForceXML = False
    Check "ForceXML off", s.ForceXML, False
    s.ForceXML = -1
    Check "ForceXML by a number", s.ForceXML, True
    On Error Resume Next
    s.FilePath = "none.xml"
    CheckError "FilePath of a file that there is not", "Message: Invalid source file 'none.xml'"
    On Error Resume Next
    s.SequentialAccess = "sometimes"
    CheckErrorNumber "SequentialAccess of no boolean", WrongType
End Sub

' ---- Structure

Sub TestFields
    Dim c, d, f, i
    Set c = Opened("steel.xml")
    Set d = c.TableDescr("IPE")
    Check "FieldsCount", d.FieldsCount, 16
    i = 1
    Check "FieldByIndex", d.FieldByIndex(i).Name, "h"
    CheckTrue "FieldByIndex of -1", d.FieldByIndex(-1) Is Nothing
    CheckTrue "FieldByIndex of the count", d.FieldByIndex(16) Is Nothing
    Check "FieldByName", d.FieldByName("H").Index, 1
    Check "FieldByName in brackets", d.FieldByName("[tw]").Index, 3
    CheckTrue "FieldByName of none", d.FieldByName("none") Is Nothing
    CheckTrue "one field object", d.FieldByIndex(0) Is d.FieldByIndex(1)

    d.CreateField "note", 6
    Check "CreateField", d.FieldsCount, 17
    d.CreateField "count", "3"
    Set f = d.FieldByName("count")
    Check "Type", f.Type, 3
    Check "TypeName", f.TypeName, "long"
    f.Type = 8
    Check "Type put of 8 leaves the type", f.Type, 3
    f.Type = -1
    Check "Type put of -1 leaves the type", f.Type, 3
    For i = 0 To 7
        f.Type = i
        ' Integers are stored as longs.
        If i = 2 Then Check "Type put of 2", f.Type, 3 Else Check "Type put of " & i, f.Type, i
    Next
    d.DeleteField 17
    Check "DeleteField", d.FieldsCount, 17
    d.DeleteField 17
    d.DeleteField -1
    Check "DeleteField of none", d.FieldsCount, 17
    d.CreateIndex "by height", "h;name"
    c.Save "fields.xml"
    On Error Resume Next
    i = d.FieldByIndex(99).Name
    CheckTrue "a member of Nothing", Err.Number <> 0
End Sub

' ---- Rows

Sub TestRows
    Dim c, t, a, b, i
    Set c = Opened("steel.xml")
    Set t = c.TableData("IPE")
    Check "RowsCount", t.RowsCount, 18
    Set a = t.Row(0)
    Check "Row 0", a.FieldByName("name").Value, "IPE 80"
    Set b = t.Row(1)
    CheckTrue "one row object", a Is b
    Check "the first row object shows the second row", a.FieldByName("name").Value, "IPE 100"
    i = 2
    Check "Row of a variable", t.Row(i).FieldByName("name").Value, "IPE 120"
    Check "Row of a text", t.Row("3").FieldByIndex(0).Value, "IPE 140"
    Check "FieldsCount of a row", t.Row(0).FieldsCount, 16

    Set a = t.AddRow
    Check "AddRow", t.RowsCount, 19
    a.FieldByName("name").Value = "new"
    Check "AddRow gives the new row", Cell(t, 18, "name"), "new"
    t.RemoveRow 18
    Check "RemoveRow", t.RowsCount, 18
    t.RemoveRow 18
    t.RemoveRow -1
    Check "RemoveRow of none", t.RowsCount, 18

    Set a = t.Row(18)
    CheckTrue "Row of the count is an object", Not (a Is Nothing)
    On Error Resume Next
    i = a.FieldsCount
    CheckError "FieldsCount of a row at nothing", ""
    On Error Resume Next
    Set i = a.FieldByIndex(0)
    CheckError "FieldByIndex of a row at nothing", ""
    On Error Resume Next
    Set i = a.FieldByName("h")
    CheckError "FieldByName of a row at nothing", ""
    Set a = t.Row(-1)
    On Error Resume Next
    i = a.FieldsCount
    CheckError "a row at -1 is at nothing", ""
    Check "the row object is good again", t.Row(0).FieldsCount, 16
    c.Save "rows.xml"
End Sub

' ---- Values

Sub TestValues
    Dim c, t, r, v, w, given
    Set c = Opened("steel.xml")
    Set t = c.TableData("IPE")
    Set r = t.Row(0)
    Set v = r.FieldByName("h")
    Check "Value of a double", TypeName(v.Value), "Double"
    Check "Value", v.Value, 80
    Check "Index", v.Index, 1
    Set w = r.FieldByIndex(0)
    CheckTrue "one value object", v Is w
    Check "the first value object shows the second value", v.Value, "IPE 80"
    Check "Value of a text", TypeName(v.Value), "String"

    Set v = r.FieldByName("h")
    v.Value = 81
    Check "Value put of an integer", v.Value, 81
    v.Value = 81.5
    Check "Value put of a double", v.Value, 81.5
    given = 82.25
    v.Value = given
    Check "Value put of a variable", v.Value, 82.25
    v.Value = "83.5"
    Check "Value put of a text that is a number", TypeName(v.Value) & v.Value, "Double83.5"
    given = "text"
    v.Value = given
    Check "Value put of any other text", v.Value, "text"
    v.Value = Null
    CheckTrue "Value put of Null", IsNull(v.Value)
    v.Value = True
    Check "Value put of a boolean", v.Value, True
    v.Value = Empty
    Check "Value put of Empty is converted", v.Value, False

    Set v = r.FieldByIndex(16)
    On Error Resume Next
    given = v.Value
    CheckTrue "a value that there is not", Err.Number <> 0
    Err.Clear
    Set v = r.FieldByName("none")
    given = v.Value
    CheckTrue "a value of no field", Err.Number <> 0
    Err.Clear
    On Error GoTo 0
    c.Save "values.xml"
End Sub

' ---- Header and properties

Sub TestHeader
    Dim c, h, row, i, names
    Set c = Opened("steel.xml")
    Set h = c.Header
    CheckTrue "Header is one object", h Is c.Header
    Check "Category", h.Category, "Sections"
    Check "Symbol", h.Symbol, "EN-STEEL"
    Check "Title", h.Title, "European steel sections"
    Check "CatalogType", h.CatalogType, "Profiles"
    Check "UnitsType", h.UnitsType, "Metric"
    Check "Version", h.Version, "1.0"
    h.Category = "0"
    h.Symbol = "1"
    h.Title = "2"
    h.CatalogType = "3"
    h.UnitsType = "4"
    h.Version = 5
    Check "what was put", h.Category & h.Symbol & h.Title & h.CatalogType & h.UnitsType & h.Version, "012345"
    For i = 0 To 5
        Check "the header's field " & i, c.TableData(0).Row(0).FieldByIndex(i).Value, CStr(i)
    Next
    c.Save "header.xml"
End Sub

Sub TestProperties
    Dim c, p, i
    Set c = Opened("steel.xml")
    Set p = c.Properties
    CheckTrue "Properties is one object", p Is c.Properties
    Check "Units", p.Units, "mm"
    Check "UnitLong", p.UnitLong, "mm"
    Check "UnitSect", p.UnitSect, "cm"
    Check "UnitWeight", p.UnitWeight, "kg"
    Check "Material", p.Material, "Steel"
    p.Units = "0"
    p.UnitLong = "1"
    p.UnitSect = "2"
    p.UnitWeight = "3"
    p.Material = "4"
    Check "what was put", p.Units & p.UnitLong & p.UnitSect & p.UnitWeight & p.Material, "01234"
    For i = 0 To 4
        Check "the properties' field " & i, c.TableData(1).Row(0).FieldByIndex(i).Value, CStr(i)
    Next
    c.Save "properties.xml"
End Sub

' ---- What is gone

Sub TestWhatIsGone
    Dim c, t, s, value
    Set c = Opened("steel.xml")
    Set t = c.TableData("IPE")
    Set s = c.Source
    Set c = Nothing
    On Error Resume Next
    value = t.RowsCount
    CheckError "a table without its catalog", ""
    On Error Resume Next
    value = s.FilePath
    CheckError "a source without its catalog", ""

    Set c = Opened("steel.xml")
    Set t = c.TableData("SHS")
    c.DeleteTable "SHS"
    On Error Resume Next
    value = t.RowsCount
    CheckError "a table that was deleted", ""
    c.Save "deleted.xml"
End Sub

TestTables
TestTablesThatThereAreNot
TestQuery
TestTableInfo
TestFind
TestCreate
TestSource
TestFields
TestRows
TestValues
TestHeader
TestProperties
TestWhatIsGone

If failures = 0 Then
    WScript.Echo "all " & checks & " checks hold"
Else
    WScript.Echo failures & " of " & checks & " checks FAILED"
End If
