#include "Quillet/access/Pager.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Quillet/access/Error.h"
#include "Quillet/access/PageCipher.h"

namespace quillet::access {
namespace {

PageNumber WholePages(const platform::RandomAccessFile& file, std::size_t pageSize) {
    std::string why;
    const std::optional<std::uint64_t> size = file.Size(&why);
    if (!size) {
        throw Error(Error::Unreadable, why);
    }
    // Pointers have three bytes for the page.
    constexpr std::uint64_t MostPages = std::uint64_t{1} << 24;
    return static_cast<PageNumber>(std::min(*size / pageSize, MostPages));
}

}  // namespace

ByteView Page::Slice(std::size_t offset, std::size_t size) const {
    if (offset > Bytes().size() || size > Bytes().size() - offset) {
        throw DamagedPlace(m_number, offset, "something lies beyond the end of the page");
    }
    return Bytes().subspan(offset, size);
}

Pager::Pager(std::unique_ptr<platform::RandomAccessFile> file, const Header& header)
    : m_file(std::move(file)),
      m_layout(header.PageLayout()),
      m_key(header.m_pageKey),
      m_pageCount(WholePages(*m_file, m_layout.m_pageSize)) {
}

Page Pager::Get(PageNumber number) {
    const auto known = m_byNumber.find(number);
    if (known != m_byNumber.end()) {
        m_frames.splice(m_frames.begin(), m_frames, known->second);
        return {number, known->second->m_bytes};
    }
    if (number >= m_pageCount) {
        throw DamagedPage(number, "the file has no such page");
    }
    Frames frame = TakeFrame();
    frame.front().m_number = number;
    Fill(frame.front());
    m_byNumber.emplace(number, frame.begin());
    m_frames.splice(m_frames.begin(), frame);
    return {number, m_frames.front().m_bytes};
}

Page Pager::Get(PageNumber number, ePageType type) {
    Page page = Get(number);
    if (!page.Is(type)) {
        throw DamagedPlace(number, 0,
                           "the page is of type " + std::to_string(page.Type()) + " instead of " +
                               std::to_string(static_cast<unsigned>(type)));
    }
    return page;
}

// A new frame, or the one that has not been used for longest. If somebody still has its bytes, they are left
// to him.
Pager::Frames Pager::TakeFrame() {
    Frames frame;
    if (m_frames.size() < PagesKept) {
        frame.emplace_back();
    } else {
        m_byNumber.erase(m_frames.back().m_number);
        frame.splice(frame.begin(), m_frames, std::prev(m_frames.end()));
    }
    if (frame.front().m_bytes.use_count() != 1) {
        frame.front().m_bytes = std::make_shared<PageBytes>();
        frame.front().m_bytes->m_bytes.resize(m_layout.m_pageSize);
    }
    return frame;
}

void Pager::Fill(Frame& frame) {
    std::string why;
    const std::uint64_t position = std::uint64_t{frame.m_number} * m_layout.m_pageSize;
    const std::optional<std::size_t> size = m_file->ReadAt(position, frame.m_bytes->m_bytes, &why);
    if (!size) {
        throw Error(Error::Unreadable, why, {"", frame.m_number, std::nullopt});
    }
    if (*size < m_layout.m_pageSize) {
        throw DamagedPage(frame.m_number, "the file has become shorter");
    }
    if (m_key != 0 && frame.m_number != 0) {
        ApplyCipher(KeyOfPage(m_key, frame.m_number), frame.m_bytes->m_bytes);
    }
}

}  // namespace quillet::access
