// The allocation table. Every engine stage opens a level with mem_next_level(), allocates
// through mem_allocate() and ends with mem_free_level(level, 0), so one call releases the
// stage's blocks on every path. Exhausted memory frees the table (all but permanent blocks)
// and throws std::bad_alloc, which unwinds to the driver.
//
//   int level = mem_next_level();
//   float* buf = nullptr;
//   mem_allocate(&buf, sizeof(float), n, 0);
//   ...
//   mem_free_level(level, 0);  // buf is null again
#pragma once

#include <cstddef>
#include <cstdint>

struct mem_entry {
    uint32_t permanent;  // 1: a bulk free without force spares it
    uint32_t level;
    void** holder;  // the caller's pointer variable
    uint32_t elem_size;
    uint32_t count;
    void* address;  // the block as registered; its identity
};

// Allocates elem_size * count bytes (not cleared), stores the address in *holder and
// registers it at the current level. Never returns null: failure takes the out-of-memory
// exit.
void* mem_allocate(void** holder, uint32_t elem_size, uint32_t count, uint32_t permanent);
template <class T>
T* mem_allocate(T** holder, uint32_t elem_size, uint32_t count, uint32_t permanent) {
    return static_cast<T*>(
        mem_allocate(reinterpret_cast<void**>(holder), elem_size, count, permanent));
}
// Registers the block already in *holder.
void _mem_allocate(void** holder, uint32_t elem_size, uint32_t count, uint32_t permanent);
// Frees the newest entry whose address is *holder; 0 when there is none or it is permanent
// and force is not 1.
int mem_free(void** holder, int force);
template <class T>
int mem_free(T** holder, int force) {
    return mem_free(reinterpret_cast<void**>(holder), force);
}
// Frees every entry (permanent ones only with force 1); returns the count.
int mem_free_all(int force);
// Makes the current level one above the largest in the table, and returns it.
int mem_next_level();
// As mem_free_all for entries at `level` or above.
int mem_free_level(int level, int force);
// Entries in the table now.
int mem_count();

// The engine's raw allocator (malloc), with a fault injection seam: after `successes`
// further allocations every one fails, until called again with -1 (never fail).
void* engine_malloc(size_t bytes);
void mem_fail_after(long successes);
