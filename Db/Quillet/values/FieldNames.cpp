#include "Quillet/values/FieldNames.h"

#include <unordered_map>

#include "Quillet/Db_TableDescr.h"
#include "Quillet/xml/Tree.h"

namespace quillet {

namespace {

std::string NameAt(const DbTableDescr& descr, std::size_t field) {
    return "'" + descr.GetField(static_cast<int>(field)).GetName().ToUtf8() + "'";
}

}  // namespace

const std::string& NameInFile(const DbTableDescr* descr, std::size_t position) {
    static const std::string NoName;
    return descr == nullptr ? NoName : descr->GetField(static_cast<int>(position)).SafeNameUtf8();
}

std::vector<UnsavableField> UnsavableFields(const DbTableDescr& descr) {
    std::vector<UnsavableField> found;
    std::unordered_map<CString, std::size_t> first;
    for (std::size_t i = 0; i < descr.size(); ++i) {
        const DbFieldDescr& field = descr.GetField(static_cast<int>(i));
        const std::string safe = "'" + field.GetSafeName().ToUtf8() + "'";
        const auto [same, isFirst] = first.emplace(field.GetSafeName(), i);
        if (!isFirst) {
            found.push_back({i, same->second,
                             "the fields " + NameAt(descr, same->second) + " and " + NameAt(descr, i) +
                                 " would both be saved as " + safe});
        } else if (!xml::IsXmlName(field.SafeNameUtf8())) {
            found.push_back({i, std::nullopt,
                             "the field " + NameAt(descr, i) + " would be saved as " + safe +
                                 ", which is no name in XML"});
        }
    }
    return found;
}

}  // namespace quillet
