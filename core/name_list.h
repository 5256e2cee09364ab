// The naming and ordering rules that the three name lists share.
#pragma once

#include <algorithm>
#include <cstddef>
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

// The exchange sort's result after one record was appended, in linear time when the records
// before it are strictly ascending and its name is new there: then the sorted order is the
// only one, and the new record just moves to its place. Every other list takes the full sort,
// so equal names keep the exchange sort's order. A list of thousands of arrays needs this:
// a full sort on every insertion made filling it cubic.
template <class Vec, class NameOf>
void SortAppended(Vec& list, NameOf name_of) {
    const size_t n = list.size();
    if (n < 2) return;
    for (size_t i = 1; i + 1 < n; ++i)
        if (std::strcmp(name_of(list[i - 1]), name_of(list[i])) >= 0)
            return ExchangeSort(list, name_of);
    const char* name = name_of(list[n - 1]);
    auto last = list.begin() + static_cast<std::ptrdiff_t>(n - 1);
    auto at = std::lower_bound(list.begin(), last, name, [&](const auto& e, const char* key) {
        return std::strcmp(name_of(e), key) < 0;
    });
    if (at != last && std::strcmp(name_of(*at), name) == 0) return ExchangeSort(list, name_of);
    std::rotate(at, last, list.end());
}
