// Reserves memory beforehand, so that the step itself can't fail.
#pragma once

#include <algorithm>
#include <cstddef>

namespace quillet {

// Makes room in a vector for that many more elements: at least twice as much as before, so that many small
// steps cost no more than one large one.
template <typename Vector>
void ReserveMore(Vector& vector, std::size_t more) {
    if (vector.capacity() - vector.size() < more) {
        vector.reserve(std::max(vector.size() + more, vector.capacity() * 2));
    }
}

template <typename Vector>
void ReserveOneMore(Vector& vector) {
    ReserveMore(vector, 1);
}

}  // namespace quillet
