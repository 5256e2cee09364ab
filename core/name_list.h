// The naming and ordering rules that the three name lists share.
#pragma once

#include <cstdio>
#include <cstring>
#include <utility>

// Copies `name` into the 128-byte `out` and, when `unique`, appends "." while `taken(out)`
// holds. A 127-character name stays a duplicate: there is no room for another dot.
template <class Taken>
void UniqueDots(char out[128], const char* name, bool unique, Taken taken) {
    std::snprintf(out, 128, "%s", name ? name : "");
    if (!unique) return;
    size_t len = std::strlen(out);
    while (len < 127 && taken(out)) {
        out[len++] = '.';
        out[len] = '\0';
    }
}

// Exchange sort by byte-wise name: equal names swap too, which only a list without unique
// names could notice.
template <class Vec, class NameOf>
void ExchangeSort(Vec& list, NameOf name_of) {
    for (size_t i = 0; i < list.size(); ++i)
        for (size_t j = i + 1; j < list.size(); ++j)
            if (std::strcmp(name_of(list[i]), name_of(list[j])) >= 0) std::swap(list[i], list[j]);
}
