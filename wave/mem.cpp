#include "wave/mem.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "wave/messages.h"

namespace {

mem_entry* g_table = nullptr;
int g_count = 0;
int g_capacity = 0;
uint32_t g_level = 0;
long g_fail_after = -1;

constexpr int kGrowth = 50;

[[noreturn]] void out_of_memory() {
    mem_free_all(0);
    throw std::bad_alloc();
}

void report(const char* text) { wave_warn(WF_CHAIN, text, text); }

void free_entry(int i) {
    mem_entry& e = g_table[i];
    if (*e.holder == e.address) *e.holder = nullptr;
    std::free(e.address);
}

void remove_entry(int i) {
    std::memmove(g_table + i, g_table + i + 1, sizeof(mem_entry) * (g_count - i - 1));
    --g_count;
}

void drop_table_if_empty() {
    if (g_count > 0) return;
    std::free(g_table);
    g_table = nullptr;
    g_capacity = 0;
    g_level = 0;
}

}  // namespace

void* engine_malloc(size_t bytes) {
    if (g_fail_after == 0) return nullptr;
    if (g_fail_after > 0) --g_fail_after;
    return std::malloc(bytes ? bytes : 1);
}

void mem_fail_after(long successes) { g_fail_after = successes; }

void* mem_allocate(void** holder, uint32_t elem_size, uint32_t count, uint32_t permanent) {
    void* block = engine_malloc(size_t(elem_size) * count);
    if (!block) {
        report("\nmem_allocate: Unable to allocate requested memory space. \n");
        out_of_memory();
    }
    *holder = block;
    try {
        _mem_allocate(holder, elem_size, count, permanent);
    } catch (...) {
        std::free(block);
        *holder = nullptr;
        throw;
    }
    return block;
}

void _mem_allocate(void** holder, uint32_t elem_size, uint32_t count, uint32_t permanent) {
    if (g_count == g_capacity) {
        auto* grown =
            static_cast<mem_entry*>(engine_malloc(sizeof(mem_entry) * (g_capacity + kGrowth)));
        if (!grown) {
            report(g_table
                       ? "\n_mem_allocate: Unable to allocate larger memory allocation table. \n"
                       : "\n_mem_allocate: Unable to allocate memory allocation table. \n");
            out_of_memory();
        }
        if (g_table) std::memcpy(grown, g_table, sizeof(mem_entry) * g_count);
        std::free(g_table);
        g_table = grown;
        g_capacity += kGrowth;
    }
    g_table[g_count++] = {permanent, g_level, holder, elem_size, count, *holder};
}

int mem_free(void** holder, int force) {
    for (int i = g_count - 1; i >= 0; --i) {
        if (g_table[i].address != *holder) continue;
        if (g_table[i].permanent && force != 1) return 0;
        std::free(g_table[i].address);
        *holder = nullptr;
        remove_entry(i);
        return 1;
    }
    return 0;
}

int mem_free_level(int level, int force) {
    int freed = 0;
    for (int i = g_count - 1; i >= 0; --i) {
        if (int(g_table[i].level) < level) continue;
        if (g_table[i].permanent && force != 1) continue;
        free_entry(i);
        remove_entry(i);
        ++freed;
    }
    drop_table_if_empty();
    return freed;
}

int mem_free_all(int force) { return mem_free_level(0, force); }

int mem_next_level() {
    uint32_t top = 0;
    bool any = false;
    for (int i = 0; i < g_count; ++i) {
        if (!any || g_table[i].level > top) top = g_table[i].level;
        any = true;
    }
    g_level = any ? top + 1 : 0;
    return int(g_level);
}

int mem_count() { return g_count; }
