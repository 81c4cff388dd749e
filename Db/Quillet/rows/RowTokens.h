// Tokens of rows, for those who keep a row that somebody else may delete.
#pragma once

#include <cstddef>
#include <memory>
#include <unordered_map>

class DbTableRow;

namespace quillet {

// A token names its row as long as the row lives and holds null afterwards. Rows whose token nobody holds
// cost nothing: what is kept here grows with the tokens that are held, not with those that were.
class RowTokens {
public:
    RowTokens() = default;
    RowTokens(const RowTokens&) = delete;
    RowTokens& operator=(const RowTokens&) = delete;
    // All rows go.
    ~RowTokens();

    // One token for each row, however often it is requested.
    std::shared_ptr<DbTableRow*> Of(DbTableRow& row);
    // How many are kept here.
    std::size_t Size() const { return m_tokens.size(); }
    // To be called before a row is deleted.
    void RowGoes(const DbTableRow& row) {
        if (!m_tokens.empty()) {
            Forget(row);
        }
    }

private:
    void Forget(const DbTableRow& row);
    void DropUnheld();

    std::unordered_map<const DbTableRow*, std::weak_ptr<DbTableRow*>> m_tokens;
    static constexpr std::size_t FewestToSweep = 16;
    // The number of tokens at which those that nobody holds any more are looked for.
    std::size_t m_sweepAt = FewestToSweep;
};

}  // namespace quillet
