// What a reference refers to where there is nothing to refer to.
#pragma once

#include <optional>
#include <utility>

namespace quillet {

// A fresh object that belongs to nobody; what was written to the one before is gone.
template <typename Value, typename... Arguments>
Value& OutOfRange(Arguments&&... arguments) {
    static thread_local std::optional<Value> value;
    return value.emplace(std::forward<Arguments>(arguments)...);
}

}  // namespace quillet
