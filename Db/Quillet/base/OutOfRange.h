// What a reference refers to if the object asked for does not exist.
#pragma once

#include <optional>
#include <utility>

namespace quillet {

// A fresh object that nothing owns. The thread's next call replaces it, so what was written to it is lost.
template <typename Value, typename... Arguments>
Value& OutOfRange(Arguments&&... arguments) {
    static thread_local std::optional<Value> value;
    return value.emplace(std::forward<Arguments>(arguments)...);
}

}  // namespace quillet
