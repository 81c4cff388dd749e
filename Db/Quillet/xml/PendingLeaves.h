// Leaf elements that become text only when their document is written or walked.
#pragma once

#include <cstddef>

namespace quillet::xml {

// What it shows must not change as long as it lives.
class PendingLeaves {
public:
    PendingLeaves() = default;
    PendingLeaves(const PendingLeaves&) = delete;
    PendingLeaves& operator=(const PendingLeaves&) = delete;
    virtual ~PendingLeaves() = default;

    // One at least.
    virtual std::size_t Count() const = 0;
    // So many bytes are enough for the leaf at a position.
    virtual std::size_t RoomFor(std::size_t leaf) const = 0;
    // Writes leaves from this one on, one a line, as long as there is enough room for another. Moves leaf to
    // the first that was not written and returns where the text ends.
    virtual char* Write(std::size_t& leaf, char* text, const char* end) const = 0;
};

}  // namespace quillet::xml
