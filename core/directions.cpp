#include "core/directions.h"

#include <algorithm>
#include <bit>
#include <cstring>

std::string TextOf(const CZrkData* text) {
    if (!text || !text->data || text->type < 0) return {};
    const char* p = static_cast<const char*>(text->data);
    const uint64_t n = text->Bytes();
    return std::string(p, std::find(p, p + n, '\0'));
}

unsigned DirectionsOf(const CZrkData* text) {
    unsigned found = 0;
    for (const char c : TextOf(text)) {
        if (const char* at = std::strchr(kDirLetters, c)) found |= 1u << (at - kDirLetters);
        if (c >= '1' && c <= '6') found |= 1u << (c - '1');
    }
    return found;
}

int DirectionOf(const CZrkData* text) {
    const unsigned found = DirectionsOf(text);
    return found ? std::countr_zero(found) : -1;
}
