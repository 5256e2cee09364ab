// A record with its own zeroed samples, released when it goes out of scope.
#pragma once

#include <cstring>

#include "core/zrk_data.h"

struct Owned : CZrkData {
    Owned(int t, res_t x, res_t y = 1, res_t z = 1, res_t tt = 1, res_t u = 1, res_t v = 1) {
        SetHeader(t, x, y, z, tt, u, v);
        AllocateOrThrow();
        std::memset(data, 0, Bytes());
    }
    ~Owned() { FreeData(); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
};
