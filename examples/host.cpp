// A host program: opens a catalog, lists its tables, reads and edits rows, and saves a copy.
#include <Quillet/IQuillet.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: host CATALOG.xml COPY.xml\n";
        return 2;
    }
    try {
        DbDatabase catalog(argv[1]);
        for (int i = 0; i < catalog.GetTablesCount(); ++i) {
            const auto index = static_cast<std::size_t>(i);
            std::cout << catalog.GetTableName(index) << ": " << catalog.GetTableDescr(index)->size()
                      << " fields, " << catalog.GetTableData(index)->size() << " rows\n";
        }

        DbTableData* const sections = catalog.GetTableData("ipe");
        DbTableRow& first = (*sections)[0];
        CString name;
        CString area;
        first["name"].ValueToString(name);
        first["A"].ValueToString(area);
        std::cout << name << " has an area of " << area << " cm2\n";

        DbTableRow& added = (*sections)[sections->AddRow()];
        added.SetValue("name", "IPE 300 welded");
        added.SetValue("h", CComVariant(300.0));

        const bool saved = catalog.Save(argv[2]);
        std::cout << (saved ? "saved " : "not saved ") << argv[2] << ", now " << sections->size()
                  << " rows\n";
        catalog.Sync();
        return saved ? 0 : 1;
    } catch (DbException* exception) {
        std::cerr << exception->Message() << "\n";
        exception->Delete();
        return 1;
    }
}
