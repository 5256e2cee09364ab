#include "ops/structural_base.h"

#include <emmintrin.h>
#include <unistd.h>

#include <algorithm>

#include "core/data_cursor.h"
#include "core/elementwise.h"
#include "core/host.h"
#include "core/report.h"
#include "core/zrk_error.h"

namespace {

// Multiplies, or returns false on overflow.
bool MulChecked(uint64_t a, uint64_t b, uint64_t* out) {
    return !__builtin_mul_overflow(a, b, out);
}

uint64_t PhysicalBytes() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long page = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || page <= 0) return UINT64_MAX;
    return static_cast<uint64_t>(pages) * static_cast<uint64_t>(page);
}

}  // namespace

void SetOpFunc(const char* name, int dir) {
    err_func = name;
    if (dir >= 0 && dir < 6) {
        err_func += "('";
        err_func += kDirLetters[dir];
        err_func += "')";
    } else {
        err_func += "()";
    }
}

bool StreamsResult(const CZrkData* r) { return r->Bytes() >= (uint64_t{32} << 20); }

void CopyBytes(char* dst, const char* src, uint64_t bytes, bool stream) {
    // Large blocks: the library's memcpy streams them by itself.
    if (!stream || bytes < 64 || bytes >= (uint64_t{1} << 20)) {
        std::memcpy(dst, src, bytes);
        return;
    }
    const uint64_t head = (16 - (reinterpret_cast<uintptr_t>(dst) & 15)) & 15;
    std::memcpy(dst, src, head);
    const uint64_t whole = (bytes - head) & ~uint64_t{15};
    for (uint64_t k = head; k < head + whole; k += 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(dst + k),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + k)));
    std::memcpy(dst + head + whole, src + head + whole, bytes - head - whole);
}

void EndStream(bool stream) {
    if (stream) _mm_sfence();
}

void CheckResultSize(int type, const res_t res[6]) {
    if (!IsValidType(type)) Raise("invalid data type");
    uint64_t bytes = static_cast<uint64_t>(TypeInfo(type)->elem_bytes);
    for (int d = 0; d < 6; ++d) {
        if (!MulChecked(bytes, res[d], &bytes)) Raise("out of memory");
    }
    if (bytes > PhysicalBytes()) Raise("out of memory");
}

CZrkData* NewResult(CDataSpace& temp, int type, const res_t res[6], const CZrkData* steps) {
    CheckResultSize(type, res);
    CZrkData* r = NewTemp(temp, type, res);
    if (steps) r->CopyMm(*steps);
    return r;
}

void RequireData(const CZrkData* a) {
    CheckOperand(a);
    if (!a->data) Raise("invalid data type");
}

CWalk::CWalk(const res_t res[6], int dir) : outer(1), n(res[dir]), inner(1) {
    for (int d = 0; d < dir; ++d) inner *= res[d];
    for (int d = dir + 1; d < 6; ++d) outer *= res[d];
}

int64_t IntArg(const CZrkData* a) {
    RequireData(a);
    int64_t v = 0;
    CDataCursor<int64_t>(a).GetI(v, 0);
    return v;
}

double FloatArg(const CZrkData* a) {
    RequireData(a);
    if (a->type % 10 == TYPE_R8) return *static_cast<const double*>(a->data);
    if (!IsFloatType(a->type)) return static_cast<double>(IntArg(a));
    float v = 0;
    CDataCursor<float>(a).GetI(v, 0);
    return v;
}

void ResList(const CZrkData* list, res_t res[6]) {
    RequireData(list);
    std::fill(res, res + 6, 1);
    CDataCursor<int64_t> c(list);
    const uint64_t n = std::min<uint64_t>(list->Count(), 6);
    for (uint64_t k = 0; k < n; ++k) {
        int64_t v = 0;
        c.GetI(v, k);
        if (v < 1) Raise("resolution must be positive");
        res[k] = static_cast<res_t>(v);
    }
}

void CastValue(const CZrkData* value, int type, unsigned char out[16]) {
    RequireData(value);
    CZrkData first, one;
    first.SetHeaderData(value->type, 1, 1, 1, 1, 1, 1, value->data);
    one.SetHeaderData(type, 1, 1, 1, 1, 1, 1, out);
    ConvertInto(&first, &one);
}

const CZrkData* AsType(CDataSpace& temp, const CZrkData* a, int type) {
    return a->type == type ? a : ConvertRecord(temp, a, type);
}

int CommonType(int a, int b) { return a == b ? a : Promote(a, b); }

void FillElements(char* dst, const unsigned char* elem, int bytes, uint64_t count) {
    if (count == 0) return;
    std::memcpy(dst, elem, bytes);
    // A first run of about 64 KB by doubling copies, then copies of that run, shared among
    // the cores for a large fill.
    const uint64_t run = std::min<uint64_t>(count, std::max(1, 65536 / bytes));
    uint64_t done = 1;
    while (done < run) {
        const uint64_t n = std::min(done, run - done);
        std::memcpy(dst + done * bytes, dst, n * bytes);
        done += n;
    }
    const uint64_t run_bytes = run * bytes, total = count * bytes;
    const int64_t runs = static_cast<int64_t>((total + run_bytes - 1) / run_bytes);
    const bool parallel = count >= kParallelElements;
    const uint64_t share =
        ParallelRun(static_cast<uint64_t>(runs), run_bytes, parallel ? omp_get_max_threads() : 1);
#pragma omp parallel for schedule(dynamic, share) if (parallel)
    for (int64_t k = 1; k < runs; ++k) {
        const uint64_t at = static_cast<uint64_t>(k) * run_bytes;
        std::memcpy(dst + at, dst, std::min(run_bytes, total - at));
    }
}

void CopyInParallel(char* dst, const char* src, uint64_t bytes) {
    constexpr uint64_t kChunk = uint64_t{1} << 20;
    const int64_t chunks = static_cast<int64_t>((bytes + kChunk - 1) / kChunk);
    const uint64_t share =
        ParallelRun(static_cast<uint64_t>(chunks), kChunk, chunks > 4 ? omp_get_max_threads() : 1);
#pragma omp parallel for schedule(dynamic, share) if (chunks > 4)
    for (int64_t k = 0; k < chunks; ++k) {
        const uint64_t at = static_cast<uint64_t>(k) * kChunk;
        std::memcpy(dst + at, src + at, std::min(kChunk, bytes - at));
    }
}

void LogLines(std::initializer_list<std::string> lines) {
    for (const std::string& line : lines) Host().History(line);
}

std::string CaughtLine(const char* name, int dir) {
    std::string full = name;
    if (dir >= 0 && dir < 6) full += kDirCapitals[dir];
    return CaughtLine(full.c_str());
}
