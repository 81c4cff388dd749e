// Changes to whole files, to be tried on a reader.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

namespace quillet::test {

class AccessMutations {
public:
    AccessMutations(std::string bytes, std::size_t pageSize, unsigned seed)
        : m_original(std::move(bytes)), m_pageSize(pageSize), m_random(seed) {}

    // The file after the next change. The kinds of change take turns.
    std::string Next() {
        std::string bytes = m_original;
        switch (m_turn++ % 13) {
            case 0:
                ChangeBytes(bytes, 0, bytes.size(), 1);
                break;
            case 1:
                ChangeBytes(bytes, 0, bytes.size(), 200);
                break;
            case 2:
                // The head of a page: its type, its owner, its counts and chains.
                ChangeBytes(bytes, PageStart(), 32, 2);
                break;
            case 3:
                // The directory of a data page, or the columns of a definition.
                ChangeBytes(bytes, PageStart() + 14, 100, 3);
                break;
            case 4:
                PutNumber(bytes, PageStart() + Below(64), 2);
                break;
            case 5:
                PutNumber(bytes, Below(bytes.size()), 4);
                break;
            case 6:
                std::fill_n(bytes.begin() + At(PageStart()), m_pageSize, '\0');
                break;
            case 7:
                std::fill_n(bytes.begin() + At(PageStart()), m_pageSize, '\xFF');
                break;
            case 8:
                CopyPage(bytes, PageStart(), PageStart());
                break;
            case 9:
                SwapPages(bytes, PageStart(), PageStart());
                break;
            case 10:
                bytes.resize(Below(bytes.size()));
                break;
            case 11:
                // What comes after is no longer where it was.
                bytes.erase(Below(bytes.size()), 1 + Below(2 * m_pageSize));
                break;
            default:
                ChangeBytes(bytes, PageStart(), m_pageSize, 20);
                break;
        }
        return bytes;
    }

private:
    std::size_t Below(std::size_t count) {
        return count == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, count - 1)(m_random);
    }
    static std::ptrdiff_t At(std::size_t offset) { return static_cast<std::ptrdiff_t>(offset); }
    std::size_t PageStart() { return Below(m_original.size() / m_pageSize) * m_pageSize; }

    void ChangeBytes(std::string& bytes, std::size_t start, std::size_t size, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes[start + Below(size)] = static_cast<char>(Below(256));
        }
    }

    // A number that readers stumble over: the ends of ranges, and pages of this file and beyond it.
    void PutNumber(std::string& bytes, std::size_t offset, std::size_t size) {
        const std::size_t pages = m_original.size() / m_pageSize;
        const std::array<std::size_t, 9> numbers{0,          1,     0xFF,         0xFFFF,   0x7FFFFFFF,
                                                 0xFFFFFFFF, pages, Below(pages), pages - 1};
        const std::size_t number = numbers[Below(numbers.size())];
        for (std::size_t i = 0; i < size && offset + i < bytes.size(); ++i) {
            bytes[offset + i] = static_cast<char>(number >> (8 * i));
        }
    }

    void CopyPage(std::string& bytes, std::size_t from, std::size_t to) const {
        bytes.replace(to, m_pageSize, m_original, from, m_pageSize);
    }
    void SwapPages(std::string& bytes, std::size_t one, std::size_t other) const {
        CopyPage(bytes, one, other);
        CopyPage(bytes, other, one);
    }

    const std::string m_original;
    const std::size_t m_pageSize;
    std::mt19937 m_random;
    std::size_t m_turn = 0;
};

}  // namespace quillet::test
