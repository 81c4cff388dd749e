// A catalog from an Access file, and an Access file filled from a catalog.
#include "Failure.h"
#include "Quillet/platform/File.h"
#include "commands/Commands.h"
#include "commands/LostNumbers.h"
#include "input/AccessCatalog.h"
#include "input/Catalog.h"
#include "input/CatalogRecords.h"
#include "input/FileKind.h"
#include "input/WriteLock.h"
#include "output/PlainText.h"
#include "output/Report.h"

namespace quillet::tool {

namespace {

// Fields of dates, money and the like are read without a type and without values.
void WarnOfLostValues(Catalog& catalog) {
    DbDatabase& database = catalog.Database();
    for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
        for (const DbFieldDescr* field : *database.GetTableDescr(i)) {
            if (field->GetType() == VT_EMPTY) {
                Complain("warning: " + catalog.Path() + ": table " +
                         Quoted(database.GetTableName(i).ToUtf8()) + ", field " +
                         Quoted(field->GetName().ToUtf8()) + ": values of its type are left out");
            }
        }
    }
}

int ToXml(const Settings& settings, const ConvertRequest& request) {
    const std::unique_ptr<platform::FileLock> lock =
        request.m_replace ? LockForWriting(request.m_target, settings) : nullptr;
    Catalog catalog(request.m_source, settings);
    catalog.Database().RefuseForeignChangesOf(request.m_target);
    if (!request.m_replace) {
        RefuseExisting(request.m_target);
    }
    catalog.ReadAll();
    catalog.RefuseFaults("not converted");
    RefuseLostNumbers(catalog, "not converted", settings);
    WarnOfLostValues(catalog);
    const std::size_t tables = catalog.TableNames().size();
    Report report(settings, request.m_target + ": " + Counted(tables, "table") + " converted");
    catalog.SaveAs(request.m_target);
    report.Print();
    return Done;
}

int ToAccess(const Settings& settings, const ConvertRequest& request) {
    if (!platform::PathExists(request.m_target)) {
        throw Failure(
            request.m_target +
            ": not there; tables can only be put into an Access file that exists, an empty one will do");
    }
    RefuseOtherKind(request.m_target);
    const std::unique_ptr<platform::FileLock> lock = LockForWriting(request.m_target, settings);
    Catalog catalog(request.m_source, settings);
    catalog.ReadAll();
    catalog.RefuseFaults("not converted");
    const DBACCESS_ALL tables = ReadRecords(catalog);
    Report report(settings, request.m_target + ": " + Counted(tables.size(), "table") + " converted");
    FillAccessFile(request.m_target, tables);
    report.Print();
    return Done;
}

}  // namespace

int Convert(const Settings& settings, const ConvertRequest& request) {
    if (HasAccessEnding(request.m_source) && HasXmlEnding(request.m_target)) {
        return ToXml(settings, request);
    }
    if (HasXmlEnding(request.m_source) && HasAccessEnding(request.m_target)) {
        return ToAccess(settings, request);
    }
    throw UsageError("convert makes OUT.xml of IN.mdb, or fills OUT.mdb from IN.xml");
}

}  // namespace quillet::tool
