// What Access keeps beside a table's definition: captions, formats, the types of calculated columns.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Quillet/access/Bytes.h"
#include "Quillet/access/TextDecoder.h"

namespace quillet::access {

class Properties {
public:
    // Reads the bytes of the catalog's LvProp as far as they are well-formed.
    Properties(ByteView bytes, const TextDecoder& texts);

    // The bytes of a column's property; null if it has none of that name.
    const std::vector<std::uint8_t>* OfColumn(platform::WideView column, platform::WideView property) const;

private:
    struct Property {
        WideString m_column;
        WideString m_name;
        std::vector<std::uint8_t> m_bytes;
    };

    void ReadNames(ByteView block, const TextDecoder& texts);
    void ReadColumn(ByteView block, const TextDecoder& texts);

    // Properties are named by their place here.
    std::vector<WideString> m_names;
    std::vector<Property> m_properties;
};

}  // namespace quillet::access
