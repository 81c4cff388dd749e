// The pages of a file: read once, decoded in place, kept as long as they are used or recent.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Quillet/access/Bytes.h"
#include "Quillet/access/Header.h"
#include "Quillet/platform/RandomAccessFile.h"

namespace quillet::access {

// The bytes of a page, in a type of our own, so that the library does not export what is made of it.
struct PageBytes {
    std::vector<std::uint8_t> m_bytes;
};

// A page in memory. Its bytes stay as long as a copy of this object does. Reading beyond the page throws
// Error.
class Page {
public:
    Page() = default;
    Page(PageNumber number, std::shared_ptr<const PageBytes> bytes)
        : m_number(number), m_bytes(std::move(bytes)) {}

    PageNumber Number() const { return m_number; }
    ByteView Bytes() const { return m_bytes->m_bytes; }
    std::uint8_t Type() const { return m_bytes->m_bytes[0]; }
    bool Is(ePageType type) const { return Type() == static_cast<std::uint8_t>(type); }

    std::uint16_t U16(std::size_t offset) const { return LittleU16(Slice(offset, 2), 0); }
    std::uint32_t U32(std::size_t offset) const { return LittleU32(Slice(offset, 4), 0); }
    ByteView Slice(std::size_t offset, std::size_t size) const;

private:
    PageNumber m_number = 0;
    std::shared_ptr<const PageBytes> m_bytes;
};

// Used from one thread at a time.
class Pager {
public:
    // How many pages are kept although nobody uses them.
    static constexpr std::size_t PagesKept = 256;

    Pager(std::unique_ptr<platform::RandomAccessFile> file, const Header& header);
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    const Layout& PageLayout() const { return m_layout; }

    // Whole pages, those of the file as it was when the pager was made.
    PageNumber PageCount() const { return m_pageCount; }

    // Throws Error if the file has no such page, or if it can't be read.
    Page Get(PageNumber number);

    // As Get, but also throws Error unless the page is of that type.
    Page Get(PageNumber number, ePageType type);

private:
    struct Frame {
        PageNumber m_number = 0;
        std::shared_ptr<PageBytes> m_bytes;
    };
    using Frames = std::list<Frame>;

    Frames TakeFrame();
    void Fill(Frame& frame);

    std::unique_ptr<platform::RandomAccessFile> m_file;
    const Layout& m_layout;
    std::uint32_t m_key;
    PageNumber m_pageCount;
    // The page used last comes first.
    Frames m_frames;
    std::unordered_map<PageNumber, Frames::iterator> m_byNumber;
};

}  // namespace quillet::access
