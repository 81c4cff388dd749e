' Walks through all rows of a catalog three times. After each walk it writes its counts to a file, and goes on when the
' file is deleted.
'
'   cscript //nologo walk.vbs CATALOG.xml TABLE MARKER
Option Explicit

Dim catalog, files
Set catalog = CreateObject("IQuillet.DbDatabase")
catalog.Source.FilePath = WScript.Arguments(0)
Set files = CreateObject("Scripting.FileSystemObject")

Sub Walk(rows)
    Dim i, j, row, sum
    sum = 0
    For i = 0 To rows.RowsCount - 1
        Set row = rows.Row(i)
        For j = 0 To row.FieldsCount - 1
            sum = sum + Len(row.FieldByIndex(j).Value)
        Next
        sum = sum + Len(row.FieldByName("name").Value)
    Next
    Dim marker
    Set marker = files.CreateTextFile(WScript.Arguments(2))
    marker.Write rows.RowsCount & " rows, " & sum & " letters"
    marker.Close
End Sub

Dim turn
For turn = 1 To 3
    Walk catalog.TableData(WScript.Arguments(1))
    Do While files.FileExists(WScript.Arguments(2))
    Loop
Next
