// A structure that counts its filters.
#pragma once

#include <memory>
#include <utility>

#include "Quillet/IQuillet.h"

namespace quillet::test {

// A filter that is counted during its lifetime.
class CountedFilter : public DbFilter {
public:
    CountedFilter(const DbFilter& other, int& alive) : DbFilter(other), m_alive(alive) { ++m_alive; }
    CountedFilter(const CountedFilter&) = delete;
    CountedFilter& operator=(const CountedFilter&) = delete;
    ~CountedFilter() override { --m_alive; }

private:
    int& m_alive;
};

// A structure that counts the filters it holds and those created.
class CountingDescr : public DbTableDescr {
public:
    using DbTableDescr::DbTableDescr;

    DbFilter* AddFilter(CString left, CString op, CString right) override {
        DbFilter* const made = DbTableDescr::AddFilter(left, op, right);
        if (made == nullptr) {
            return nullptr;
        }
        auto counted = std::make_unique<CountedFilter>(*made, m_alive);
        DbFilter* const filter = counted.get();
        TakeFilters({made});
        AppendFilter(std::move(counted));
        ++m_made;
        return filter;
    }

    int m_alive = 0;
    int m_made = 0;
};

}  // namespace quillet::test
