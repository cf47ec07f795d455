// The one place for hints to the processor. A hint changes no value: it only
// asks for memory ahead of its use. Building with -DDRAPEX_NO_SPEED_HINTS
// turns every hint into nothing, so that bench/ can measure what each one
// still gains (bench/README.md keeps the figures; a hint that stops paying
// off is removed).
#pragma once

#include <cstddef>

namespace speed {

// Asks for every cache line of [p, p + bytes) for writing.
inline void prefetch(const void* p, std::size_t bytes) {
#ifndef DRAPEX_NO_SPEED_HINTS
    const char* first = static_cast<const char*>(p);
    for (const char* q = first; q < first + bytes; q += 64)
        __builtin_prefetch(q, 1);
    if (bytes > 0) __builtin_prefetch(first + bytes - 1, 1);
#else
    (void)p;
    (void)bytes;
#endif
}

// Asks for the whole of one object.
template <class T> inline void prefetch(const T& object) {
    prefetch(&object, sizeof(T));
}

} // namespace speed
