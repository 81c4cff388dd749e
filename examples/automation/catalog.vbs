' Opens a catalog, walks through its tables, fields and rows, runs a query, finds and edits rows, and saves a copy.
'
'   cscript //nologo catalog.vbs CATALOG.xml COPY.xml
Option Explicit

' The numbers of the type library's enumerations.
Const FieldText = 6, FieldDouble = 5
Const FindFirst = 0, FindNext = 1

Dim catalog
Set catalog = CreateObject("IQuillet.DbDatabase")
catalog.Source.FilePath = WScript.Arguments(0)

WScript.Echo catalog.Header.Title & ", " & catalog.Properties.Material
Dim i
For i = 0 To catalog.TablesCount - 1
    WScript.Echo catalog.TableName(i) & ": " & catalog.TableDescr(i).FieldsCount & " fields, " & _
        catalog.TableData(i).RowsCount & " rows"
Next

' ---- The fields of a table

Dim fields, field, line
Set fields = catalog.TableDescrByName("IPE")
For i = 0 To 2
    Set field = fields.FieldByIndex(i)
    WScript.Echo "field " & field.Index & " is " & field.Name & ", a " & field.TypeName
Next

' ---- Its rows

Dim rows, row
Set rows = catalog.TableDataByName("IPE")
For i = 0 To 2
    Set row = rows.Row(i)
    ' A row has one value object, which shows the field requested last: take the value before you ask for the next one.
    WScript.Echo row.FieldByName("name").Value & ": " & row.FieldByName("h").Value & " mm, " & _
        row.FieldByIndex(6).Value & " cm2"
Next

' ---- A query

' The variable must hold a text, which is replaced by the name of the answer.
Dim answer
answer = ""
If catalog.Query("select name, Iy from HEA where h > 700 order by Iy desc", answer) Then
    Set rows = catalog.TableDataByName(answer)
    For i = 0 To rows.RowsCount - 1
        Set row = rows.Row(i)
        WScript.Echo "answer: " & row.FieldByName("name").Value & ", " & row.FieldByName("Iy").Value & " cm4"
    Next
    WScript.Echo "asked: " & catalog.TableInfoByName(answer).sql
End If
If Not catalog.Query("select name from nowhere", answer) Then
    WScript.Echo "no answer from a table that there is not"
End If

' ---- Finding rows

Dim where, position
where = "Wply > 1000 and h < 500"
Set rows = catalog.TableDataByName("IPE")
position = catalog.Find(FindFirst, "IPE", where)
Do While position >= 0
    WScript.Echo "found: " & rows.Row(position).FieldByName("name").Value
    position = catalog.Find(FindNext, "IPE", where)
Loop

' ---- Editing

Set row = rows.Row(catalog.Find(FindFirst, "IPE", "name = 'IPE 300'"))
row.FieldByName("name").Value = "IPE 300 cut"
row.FieldByName("h").Value = 290.5

Set row = rows.AddRow
row.FieldByName("name").Value = "IPE 300 welded"
row.FieldByName("h").Value = 300
rows.RemoveRow 0

catalog.CreateTable "Plates"
Set fields = catalog.TableDescrByName("Plates")
fields.CreateField "name", FieldText
fields.CreateField "t", FieldDouble
Set row = catalog.TableDataByName("Plates").AddRow
row.FieldByName("name").Value = "PL 10"
row.FieldByName("t").Value = 10
catalog.DeleteTable "SHS"
catalog.Header.Title = "My sections"

' ---- Saving

catalog.Save WScript.Arguments(1)

Dim copy
Set copy = CreateObject("IQuillet.DbDatabase")
copy.Source.FilePath = WScript.Arguments(1)
Set rows = copy.TableDataByName("IPE")
WScript.Echo copy.Header.Title & ": " & copy.TablesCount & " tables, " & rows.RowsCount & " sections"
Set row = rows.Row(copy.Find(FindFirst, "IPE", "name = 'IPE 300 cut'"))
WScript.Echo row.FieldByName("name").Value & " is " & row.FieldByName("h").Value & " mm high"
Set row = rows.Row(rows.RowsCount - 1)
WScript.Echo row.FieldByName("name").Value & " is " & row.FieldByName("h").Value & " mm high"
WScript.Echo copy.TableName(copy.TablesCount - 1) & ": " & _
    copy.TableDataByName("Plates").Row(0).FieldByName("t").Value & " mm"

' ---- Errors

On Error Resume Next
copy.Source.FilePath = "no such file.xml"
WScript.Echo "error: " & Mid(Err.Description, InStr(Err.Description, "Message:"))
