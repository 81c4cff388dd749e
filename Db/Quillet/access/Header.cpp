#include "Quillet/access/Header.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string_view>

#include "Quillet/access/Bytes.h"
#include "Quillet/access/Error.h"
#include "Quillet/access/PageCipher.h"

namespace quillet::access {
namespace {

constexpr std::size_t Signature = 4;
constexpr std::size_t VersionByte = 0x14;
constexpr std::size_t MaskedPart = 0x18;
constexpr std::size_t SortLanguageOfJet3 = 0x3A;
constexpr std::size_t CodePage = 0x3C;
constexpr std::size_t PageKey = 0x3E;
constexpr std::size_t Password = 0x42;
constexpr std::size_t SortLanguage = 0x6E;
constexpr std::size_t DefaultSortVersion = 0x71;
constexpr std::size_t Created = 0x72;
constexpr CipherKey MaskKey{0xC7, 0xDA, 0x39, 0x6B};

// The largest page has room for the header of every version.
using FirstBytes = std::array<std::uint8_t, Jet4Layout.m_pageSize>;

bool HasSignature(ByteView bytes, std::string_view name) {
    return bytes.size() >= Signature + name.size() &&
           std::memcmp(bytes.data() + Signature, name.data(), name.size()) == 0;
}

ByteView ReadBeginning(platform::RandomAccessFile& file, FirstBytes& bytes) {
    std::string why;
    const std::optional<std::size_t> size = file.ReadAt(0, bytes, &why);
    if (!size) {
        throw Error(Error::Unreadable, why);
    }
    return ByteView(bytes).first(*size);
}

void CheckSignature(ByteView bytes) {
    if (HasSignature(bytes, "MSISAM Database")) {
        throw Error(Error::Refused, "This is a Money file, which can't be read.");
    }
    if (!HasSignature(bytes, "Standard Jet DB") && !HasSignature(bytes, "Standard ACE DB")) {
        throw Error(Error::NotAccess, "This is not an Access file.");
    }
}

Header::eVersion VersionOf(ByteView bytes) {
    const std::uint8_t version = bytes.size() > VersionByte ? bytes[VersionByte] : 0;
    if (version > Header::Ace17) {
        throw Error(Error::Refused,
                    "The file has an unknown version of the Access format: " + std::to_string(version) + ".");
    }
    return static_cast<Header::eVersion>(version);
}

// The bytes that the field holds while there is no password: zeros, or the day of creation over and over.
bool IsPasswordSet(ByteView header, const Layout& layout, double created) {
    std::array<std::uint8_t, 4> none{};
    if (!layout.m_isJet3 && std::abs(created) < INT32_MAX) {
        const auto day = static_cast<std::uint32_t>(static_cast<std::int32_t>(created));
        for (std::size_t i = 0; i < none.size(); ++i) {
            none[i] = static_cast<std::uint8_t>(day >> (8 * i));
        }
    }
    const ByteView field = header.subspan(Password, layout.m_passwordSize);
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != none[i % none.size()]) {
            return true;
        }
    }
    return false;
}

void ReadFields(ByteView bytes, Header& header) {
    const Layout& layout = header.PageLayout();
    header.m_codePage = LittleU16(bytes, CodePage);
    header.m_pageKey = LittleU32(bytes, PageKey);
    header.m_sortLanguage = LittleU16(bytes, layout.m_isJet3 ? SortLanguageOfJet3 : SortLanguage);
    if (!layout.m_isJet3) {
        header.m_sortVersion = bytes[DefaultSortVersion];
        header.m_created = LittleDouble(bytes, Created);
    }
    header.m_hasPassword = IsPasswordSet(bytes, layout, header.m_created);
}

}  // namespace

Header Header::Read(platform::RandomAccessFile& file) {
    FirstBytes bytes;
    const ByteView beginning = ReadBeginning(file, bytes);
    CheckSignature(beginning);
    Header header;
    header.m_version = VersionOf(beginning);
    const Layout& layout = header.PageLayout();
    if (beginning.size() < layout.m_pageSize) {
        throw Error(Error::Damaged, "The file ends within its header.");
    }
    ApplyCipher(MaskKey, std::span(bytes).subspan(MaskedPart, layout.m_maskedSize));
    ReadFields(beginning, header);
    if (header.m_pageKey != 0 && header.m_version >= Ace12) {
        throw Error(Error::Refused, "The file is encrypted with a password and can't be read without it.");
    }
    return header;
}

}  // namespace quillet::access
