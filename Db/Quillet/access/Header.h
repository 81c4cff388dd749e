// The first page of a file: which version it is, how its pages and texts are encoded.
#pragma once

#include <cstdint>

#include "Quillet/access/Layout.h"
#include "Quillet/platform/RandomAccessFile.h"

namespace quillet::access {

struct Header {
    enum eVersion : std::uint8_t {
        Jet3 = 0,  // Access 97
        Jet4 = 1,  // Access 2000 to 2003
        Ace12 = 2,
        Ace14 = 3,
        Ace15 = 4,
        Ace16 = 5,
        Ace17 = 6,
    };

    // Reads the header. Throws Error: NotAccess for anything else than an Access file, Refused, with a line
    // that says why, for one that is not read, Damaged for one that ends within its header.
    static Header Read(platform::RandomAccessFile& file);

    const Layout& PageLayout() const { return m_version == Jet3 ? Jet3Layout : Jet4Layout; }

    eVersion m_version = Jet4;
    // 0 where pages lie plain in the file.
    std::uint32_t m_pageKey = 0;
    // That of texts in Access 97; without meaning in later versions.
    std::uint16_t m_codePage = 0;
    // The language of the texts' order, and its version: 0 or 1.
    std::uint16_t m_sortLanguage = 0;
    std::uint8_t m_sortVersion = 0;
    // Access asks for a password, but the pages are readable without.
    bool m_hasPassword = false;
    // Days since 30 December 1899; 0 in Access 97.
    double m_created = 0;
};

}  // namespace quillet::access
