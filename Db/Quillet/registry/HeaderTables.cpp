#include "Quillet/registry/HeaderTables.h"

#include <cstddef>

#include "Quillet/Db_TableData.h"
#include "Quillet/registry/Registry.h"

namespace quillet {

namespace {

constexpr const char* HeaderFields[] = {"category",     "symbol",     "title",
                                        "catalog_type", "units_type", "version"};
constexpr const char* PropertiesFields[] = {"units", "unit_long", "unit_sect", "unit_weight", "material"};

template <std::size_t Count>
void CreateOneRowTable(Registry& registry, const char* name, const char* const (&fields)[Count]) {
    if (registry.Find(name) != nullptr) {
        return;
    }
    const DbTableInfo* const info = registry.Create(name, DbTableInfo::Table, "", nullptr);
    try {
        for (const char* field : fields) {
            info->GetDescr()->CreateField(field, false, DbFieldDescr::Text);
        }
        info->GetData()->AddRow();
    } catch (...) {
        registry.DeleteWithRelated(name);
        throw;
    }
}

}  // namespace

void CreateHeaderTable(Registry& registry) {
    CreateOneRowTable(registry, HeaderTable, HeaderFields);
}

void CreatePropertiesTable(Registry& registry) {
    CreateOneRowTable(registry, PropertiesTable, PropertiesFields);
}

}  // namespace quillet
