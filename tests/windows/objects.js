// Every member of the automation objects, called as this script host calls: arguments go by value, a number is a long
// or a double, and whatever fails is thrown with a message.
//
//   cscript //nologo objects.js        in a folder with steel.xml, a copy of european-steel.xml

var FindMode = {First: 0, Next: 1, Last: 2, Previous: 3};

var checks = 0;
var failures = 0;

function fail(name, message) {
    ++failures;
    WScript.Echo("FAILED " + name + ": " + message);
}

function check(name, actual, expected) {
    ++checks;
    if (actual !== expected) {
        fail(name, typeof actual + " " + actual + " instead of " + typeof expected + " " + expected);
    }
}

// The call throws, and its message holds the text.
function checkError(name, call, text) {
    ++checks;
    var result;
    try {
        result = call();
    } catch (error) {
        if (text && error.message.indexOf(text) < 0) {
            fail(name, "'" + error.message + "' instead of '" + text + "'");
        }
        return;
    }
    fail(name, "gave " + result + " instead of an error");
}

function opened(path) {
    var catalog = new ActiveXObject("IQuillet.DbDatabase");
    catalog.Source.FilePath = path;
    return catalog;
}

function cell(rows, index, field) {
    return rows.Row(index).FieldByName(field).Value;
}

// ---- The database

function testTables() {
    var c = opened("steel.xml");
    check("TablesCount", c.TablesCount, 8);
    check("TableName", c.TableName(2), "IPE");
    check("TableName of a double", c.TableName(4 / 2), "IPE");
    check("TableName rounds half to even", c.TableName(1.5), "IPE");
    check("TableName of a text", c.TableName("3"), "HEA");
    check("TableName of a boolean", c.TableName(false), "Header");
    checkError("TableName of null", function () { return c.TableName(null); });
    // A null text is null here.
    check("TableName of -1 is a null text", c.TableName(-1) || "", "");
    check("TableName of the count is a null text", c.TableName(8) || "", "");
    checkError("TableName of no number", function () { return c.TableName("two"); });
    checkError("TableName of a number that is too great", function () { return c.TableName(1e10); });
    checkError("TableName of an object", function () { return c.TableName(c); });
    checkError("TableName without an index", function () { return c.TableName(); });
    checkError("TableName of two indexes", function () { return c.TableName(1, 2); });
    checkError("a member that there is not", function () { return c.Nothing(1); });

    check("TableDescrByIndex", c.TableDescrByIndex(2).FieldsCount, 16);
    check("TableDataByIndex", c.TableDataByIndex(2).RowsCount, 18);
    check("TableDescrByName in any case", c.TableDescrByName("ipe").FieldsCount, 16);
    check("TableDataByName in any case", c.TableDataByName("iPe").RowsCount, 18);
    check("TableDescr of an index", c.TableDescr(2).FieldsCount, 16);
    check("TableData of an index", c.TableData(2).RowsCount, 18);
    check("TableDescr of a name", c.TableDescr("IPE").FieldsCount, 16);
    check("TableData of a name", c.TableData("IPE").RowsCount, 18);
    check("TableData of a double", c.TableData(12 / 2).RowsCount, 14);
    check("members in any case", c.tabledata("IPE").rowscount, 18);

    check("TableDescrByIndex of -1", c.TableDescrByIndex(-1), null);
    check("TableDataByIndex of the count", c.TableDataByIndex(8), null);
    check("TableDescrByName of none", c.TableDescrByName("none"), null);
    check("TableDataByName of none", c.TableDataByName("none"), null);
    check("TableDescr of none", c.TableDescr("none"), null);
    check("TableData of none", c.TableData(99), null);
    check("TableInfoByName of none", c.TableInfoByName("none"), null);
}

function testQuery() {
    var c = opened("steel.xml");
    var answer = "before";
    check("Query", c.Query("select name from IPE where h > 500", answer), true);
    check("Query leaves the variable alone", answer, "before");
    answer = c.TableName(c.TablesCount - 1);
    check("the answer is the last table", c.TableData(answer).RowsCount, 2);
    check("Type of a query", c.TableInfoByName(answer).Type, 2);
    check("sql of a query", c.TableInfoByName(answer).sql.toLowerCase(), "select name from ipe where h > 500");
    check("Type of a table", c.TableInfoByName("IPE").Type, 1);
    check("sql of a table", c.TableInfoByName("IPE").sql || "", "");
    check("Query is false", c.Query("select name from none", ""), false);
    check("ErrorLog", c.ErrorLog.indexOf("SQL Analyze") >= 0, true);
    check("Query with null", c.Query("select h from IPE where h > 500", null), true);
    check("Query with a number", c.Query("select b from IPE where h > 500", 5), true);
    check("Query with undefined", c.Query("select r from IPE where h > 500", undefined), true);
}

function testFind() {
    var c = opened("steel.xml");
    var where = "h > 450";
    check("Find first", c.Find(FindMode.First, "IPE", where), 15);
    check("Find next", c.Find(FindMode.Next, "ipe", where), 16);
    check("Find next to the end", c.Find(FindMode.Next, "IPE", where), 17);
    check("Find next behind the end", c.Find(FindMode.Next, "IPE", where), -1);
    check("Find last", c.Find(FindMode.Last, "IPE", where), 17);
    check("Find previous", c.Find(FindMode.Previous, "IPE", where), 16);
    check("Find in another table", c.Find(FindMode.First, "HEA", where), 16);
    check("Find next begins anew in the first", c.Find(FindMode.First, "IPE", where), 15);
    check("Find with a double as mode", c.Find(1.0, "IPE", where), 16);
    check("Find with a text as mode", c.Find("1", "IPE", where), 17);
}

function testCreate() {
    var c = new ActiveXObject("IQuillet.DbDatabase");
    check("a database without a file", c.TablesCount, 0);
    c.Create("made.xml");
    check("Create makes the first two tables", c.TablesCount, 2);
    c.CreateTable("Plates");
    c.CreateTable("Spare");
    c.DeleteTable("spare");
    check("CreateTable and DeleteTable", c.TableName(2) + c.TablesCount, "Plates3");
    c.TableDescr("Plates").CreateField("t", 5);
    c.TableData("Plates").AddRow().FieldByName("t").Value = 12.5;
    c.Header.Title = "Made";
    c.Save("saved.xml");
    var copy = opened("saved.xml");
    check("Save", copy.Header.Title, "Made");
    check("Save of rows", cell(copy.TableData("Plates"), 0, "t"), 12.5);
}

// ---- The source

function testSource() {
    var c = new ActiveXObject("IQuillet.DbDatabase");
    var s = c.Source;
    check("FilePath of no file", s.FilePath || "", "");
    check("IsXmlBased of no file", s.IsXmlBased, false);
    s.FilePath = "steel.xml";
    check("FilePath", s.FilePath, "steel.xml");
    check("IsXmlBased", s.IsXmlBased, true);
    check("FilePath does not switch sequential access on", s.SequentialAccess, false);
    s.SequentialAccess = true;
    check("SequentialAccess", s.SequentialAccess, true);
    check("sequential access reads the tables", c.TableData("SHS").RowsCount, 93);
    s.ForceXML = false;
    check("ForceXML off", s.ForceXML, false);
    s.ForceXML = 1;
    check("ForceXML by a number", s.ForceXML, true);
    checkError("FilePath of a file that there is not", function () { s.FilePath = "none.xml"; },
        "Message: Invalid source file 'none.xml'");
    checkError("SequentialAccess of no boolean", function () { s.SequentialAccess = "sometimes"; });
}

// ---- Structure

function testFields() {
    var c = opened("steel.xml");
    var d = c.TableDescr("IPE");
    check("FieldsCount", d.FieldsCount, 16);
    check("FieldByIndex", d.FieldByIndex(1).Name, "h");
    check("FieldByIndex of -1", d.FieldByIndex(-1), null);
    check("FieldByIndex of the count", d.FieldByIndex(16), null);
    check("FieldByName", d.FieldByName("H").Index, 1);
    check("FieldByName in brackets", d.FieldByName("[tw]").Index, 3);
    check("FieldByName of none", d.FieldByName("none"), null);
    d.CreateField("count", 3);
    var f = d.FieldByName("count");
    check("Type", f.Type, 3);
    check("TypeName", f.TypeName, "long");
    f.Type = 8;
    check("Type put of 8 leaves the type", f.Type, 3);
    f.Type = 5;
    check("Type put", f.Type, 5);
    d.DeleteField(16);
    d.DeleteField(-1);
    check("DeleteField", d.FieldsCount, 16);
    d.CreateIndex("by height", "h;name");
    c.Save("fields.xml");
}

// ---- Rows and values

function testRows() {
    var c = opened("steel.xml");
    var t = c.TableData("IPE");
    check("RowsCount", t.RowsCount, 18);
    var a = t.Row(0);
    check("Row 0", a.FieldByName("name").Value, "IPE 80");
    t.Row(1);
    check("the first row object shows the second row", a.FieldByName("name").Value, "IPE 100");
    check("FieldsCount of a row", t.Row(0).FieldsCount, 16);
    a = t.AddRow();
    a.FieldByName("name").Value = "new";
    check("AddRow", cell(t, 18, "name"), "new");
    t.RemoveRow(18);
    t.RemoveRow(18);
    t.RemoveRow(-1);
    check("RemoveRow", t.RowsCount, 18);
    a = t.Row(18);
    check("Row of the count is an object", a !== null, true);
    checkError("FieldsCount of a row at nothing", function () { return a.FieldsCount; });
    checkError("FieldByIndex of a row at nothing", function () { return a.FieldByIndex(0); });
    checkError("FieldByName of a row at nothing", function () { return a.FieldByName("h"); });
    c.Save("rows.xml");
}

function testValues() {
    var c = opened("steel.xml");
    var r = c.TableData("IPE").Row(0);
    var v = r.FieldByName("h");
    check("Value", v.Value, 80);
    check("Index", v.Index, 1);
    r.FieldByIndex(0);
    check("the first value object shows the second value", v.Value, "IPE 80");
    v = r.FieldByName("h");
    v.Value = 81;
    check("Value put of a long", v.Value, 81);
    v.Value = 81.5;
    check("Value put of a double", v.Value, 81.5);
    v.Value = "82.5";
    check("Value put of a text that is a number", v.Value, 82.5);
    v.Value = undefined;
    check("Value put of undefined is converted", v.Value, 0);
    v.Value = "text";
    check("Value put of any other text", v.Value, "text");
    v.Value = null;
    check("Value put of null", v.Value, null);
    v.Value = true;
    check("Value put of a boolean", v.Value, true);
    checkError("a value that there is not", function () { return r.FieldByIndex(16).Value; });
    checkError("a value of no field", function () { return r.FieldByName("none").Value; });
    c.Save("values.xml");
}

// ---- Header and properties

function testHeader() {
    var c = opened("steel.xml");
    var h = c.Header;
    check("Header", [h.Category, h.Symbol, h.Title, h.CatalogType, h.UnitsType, h.Version].join("|"),
        "Sections|EN-STEEL|European steel sections|Profiles|Metric|1.0");
    h.Category = "0";
    h.Symbol = "1";
    h.Title = "2";
    h.CatalogType = "3";
    h.UnitsType = "4";
    h.Version = 5;
    for (var i = 0; i < 6; ++i) {
        check("the header's field " + i, c.TableData(0).Row(0).FieldByIndex(i).Value, String(i));
    }
    var p = c.Properties;
    check("Properties", [p.Units, p.UnitLong, p.UnitSect, p.UnitWeight, p.Material].join("|"), "mm|mm|cm|kg|Steel");
    p.Units = "0";
    p.UnitLong = "1";
    p.UnitSect = "2";
    p.UnitWeight = "3";
    p.Material = "4";
    for (i = 0; i < 5; ++i) {
        check("the properties' field " + i, c.TableData(1).Row(0).FieldByIndex(i).Value, String(i));
    }
    c.Save("header.xml");
}

testTables();
testQuery();
testFind();
testCreate();
testSource();
testFields();
testRows();
testValues();
testHeader();

WScript.Echo(failures === 0 ? "all " + checks + " checks hold" : failures + " of " + checks + " checks FAILED");
