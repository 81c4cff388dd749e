// Opens a catalog, walks through its tables, fields and rows, runs a query, finds and edits rows, and saves a copy.
//
//   cscript //nologo catalog.js CATALOG.xml COPY.xml

// The numbers of the type library's enumerations.
var FieldType = {Double: 5, Text: 6};
var FindMode = {First: 0, Next: 1};

function print(text) {
    WScript.Echo(text);
}

var catalog = new ActiveXObject("IQuillet.DbDatabase");
catalog.Source.FilePath = WScript.Arguments(0);

print(catalog.Header.Title + ", " + catalog.Properties.Material);
for (var i = 0; i < catalog.TablesCount; ++i) {
    print(catalog.TableName(i) + ": " + catalog.TableDescr(i).FieldsCount + " fields, " +
        catalog.TableData(i).RowsCount + " rows");
}

// ---- The fields of a table

var fields = catalog.TableDescrByName("IPE");
for (i = 0; i < 3; ++i) {
    var field = fields.FieldByIndex(i);
    print("field " + field.Index + " is " + field.Name + ", a " + field.TypeName);
}

// ---- Its rows

var rows = catalog.TableDataByName("IPE");
for (i = 0; i < 3; ++i) {
    var row = rows.Row(i);
    // A row has one value object, which shows the field requested last: take the value before you ask for the next one.
    print(row.FieldByName("name").Value + ": " + row.FieldByName("h").Value + " mm, " +
        row.FieldByIndex(6).Value + " cm2");
}

// ---- A query

// This language has no references, so the name of the answer is not returned. A new answer is the last table.
if (catalog.Query("select name, Iy from HEA where h > 700 order by Iy desc", "")) {
    var answer = catalog.TableName(catalog.TablesCount - 1);
    rows = catalog.TableDataByName(answer);
    for (i = 0; i < rows.RowsCount; ++i) {
        row = rows.Row(i);
        print("answer: " + row.FieldByName("name").Value + ", " + row.FieldByName("Iy").Value + " cm4");
    }
    print("asked: " + catalog.TableInfoByName(answer).sql);
}
if (!catalog.Query("select name from nowhere", "")) {
    print("no answer from a table that there is not");
}

// ---- Finding rows

var where = "Wply > 1000 and h < 500";
rows = catalog.TableDataByName("IPE");
var position = catalog.Find(FindMode.First, "IPE", where);
while (position >= 0) {
    print("found: " + rows.Row(position).FieldByName("name").Value);
    position = catalog.Find(FindMode.Next, "IPE", where);
}

// ---- Editing

row = rows.Row(catalog.Find(FindMode.First, "IPE", "name = 'IPE 300'"));
row.FieldByName("name").Value = "IPE 300 cut";
row.FieldByName("h").Value = 290.5;

row = rows.AddRow();
row.FieldByName("name").Value = "IPE 300 welded";
row.FieldByName("h").Value = 300;
rows.RemoveRow(0);

catalog.CreateTable("Plates");
fields = catalog.TableDescrByName("Plates");
fields.CreateField("name", FieldType.Text);
fields.CreateField("t", FieldType.Double);
row = catalog.TableDataByName("Plates").AddRow();
row.FieldByName("name").Value = "PL 10";
row.FieldByName("t").Value = 10;
catalog.DeleteTable("SHS");
catalog.Header.Title = "My sections";

// ---- Saving

catalog.Save(WScript.Arguments(1));

var copy = new ActiveXObject("IQuillet.DbDatabase");
copy.Source.FilePath = WScript.Arguments(1);
rows = copy.TableDataByName("IPE");
print(copy.Header.Title + ": " + copy.TablesCount + " tables, " + rows.RowsCount + " sections");
row = rows.Row(copy.Find(FindMode.First, "IPE", "name = 'IPE 300 cut'"));
print(row.FieldByName("name").Value + " is " + row.FieldByName("h").Value + " mm high");
row = rows.Row(rows.RowsCount - 1);
print(row.FieldByName("name").Value + " is " + row.FieldByName("h").Value + " mm high");
print(copy.TableName(copy.TablesCount - 1) + ": " +
    copy.TableDataByName("Plates").Row(0).FieldByName("t").Value + " mm");

// ---- Errors

try {
    copy.Source.FilePath = "no such file.xml";
} catch (error) {
    print("error: " + error.message.substr(error.message.indexOf("Message:")));
}
