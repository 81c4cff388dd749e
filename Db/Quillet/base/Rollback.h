// Undoes earlier steps if a later one fails.
#pragma once

#include <utility>

namespace quillet {

// Calls the function on destruction unless Keep was called. Each of several steps is followed by one of
// these, and all are kept once the last step is done. The function must not throw.
template <typename Undo>
class Rollback {
public:
    explicit Rollback(Undo undo) : m_undo(std::move(undo)) {}
    Rollback(const Rollback&) = delete;
    Rollback& operator=(const Rollback&) = delete;
    ~Rollback() {
        if (!m_kept) {
            m_undo();
        }
    }

    void Keep() { m_kept = true; }

private:
    Undo m_undo;
    bool m_kept = false;
};

}  // namespace quillet
