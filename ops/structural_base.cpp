#include "ops/structural_base.h"

#include <emmintrin.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "core/data_cursor.h"
#include "core/host.h"
#include "core/zrk_error.h"
#include "eval/elementwise.h"
#include "eval/eval_error.h"

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

void SetOpText(const char* text) { err_func = text; }

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

std::string TextOf(const CZrkData* text) {
    if (!text || !text->data || text->type < 0) return {};
    const char* p = static_cast<const char*>(text->data);
    const uint64_t n = text->Bytes();
    return std::string(p, std::find(p, p + n, '\0'));
}

int DirectionOf(const CZrkData* text) {
    const std::string s = TextOf(text);
    for (int d = 0; d < 6; ++d) {
        if (s.find(kDirLetters[d]) != std::string::npos ||
            s.find(static_cast<char>('1' + d)) != std::string::npos)
            return d;
    }
    return -1;
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
    CZrkData one;
    one.SetHeaderData(type, 1, 1, 1, 1, 1, 1, out);
    std::memset(out, 0, 16);
    if (value->type % 10 == type % 10) {
        // Same storage: only the number of components may differ.
        const int n = std::min(value->elem_bytes, one.elem_bytes);
        std::memcpy(out, value->data, n);
    } else if (IsFloatType(value->type) && IsFloatType(type)) {
        float pair[2];
        CDataCursor<float>(value).GetIQ(pair, 0);
        CDataCursor<float>(&one).SetIQ(pair, 0);
    } else if (value->type % 10 == TYPE_N8) {
        uint64_t pair[2];
        CDataCursor<uint64_t>(value).GetIQ(pair, 0);
        CDataCursor<uint64_t>(&one).SetIQ(pair, 0);
    } else if (IsFloatType(value->type) && type % 10 == TYPE_N8) {
        float pair[2];
        CDataCursor<float>(value).GetIQ(pair, 0);
        CDataCursor<float>(&one).SetIQ(pair, 0);
    } else {
        // Integer values pass exactly, float values truncate, both by the cursor's rules.
        int64_t pair[2];
        CDataCursor<int64_t>(value).GetIQ(pair, 0);
        CDataCursor<int64_t>(&one).SetIQ(pair, 0);
    }
}

namespace {

// Converts n elements by blocks through a cursor of working type W.
template <class W>
void ConvertBlocks(const CZrkData* from, CZrkData* to, uint64_t n) {
    constexpr size_t kBlock = 4096;
    std::vector<W> buf(2 * kBlock);
    CDataCursor<W> in(from), out(to);
    for (uint64_t k = 0; k < n; k += kBlock) {
        const size_t len = static_cast<size_t>(std::min<uint64_t>(kBlock, n - k));
        in.GetIQBlock(buf.data(), k, len);
        out.SetIQBlock(buf.data(), k, len);
    }
}

}  // namespace

const CZrkData* AsType(CDataSpace& temp, const CZrkData* a, int type) {
    if (a->type == type) return a;
    res_t res[6];
    a->GetRes(res);
    CZrkData* r = NewResult(temp, type, res, a);
    const uint64_t n = a->Count();
    if (a->type % 10 == type % 10) {
        // Real to complex or back: copy i, zero or drop q.
        const int c = a->comp_bytes;
        const char* src = static_cast<const char*>(a->data);
        char* dst = static_cast<char*>(r->data);
        if (r->elem_bytes > a->elem_bytes) std::memset(dst, 0, r->Bytes());
        for (uint64_t k = 0; k < n; ++k)
            std::memcpy(dst + k * r->elem_bytes, src + k * a->elem_bytes, c);
    } else if (IsFloatType(a->type)) {
        ConvertBlocks<float>(a, r, n);
    } else if (a->type % 10 == TYPE_N8) {
        ConvertBlocks<uint64_t>(a, r, n);
    } else {
        ConvertBlocks<int64_t>(a, r, n);
    }
    return r;
}

int CommonType(int a, int b) { return a == b ? a : Promote(a, b); }

void FillElements(char* dst, const unsigned char* elem, int bytes, uint64_t count) {
    if (count == 0) return;
    std::memcpy(dst, elem, bytes);
    // Doubling copies: few calls whatever the count.
    uint64_t done = 1;
    while (done < count) {
        const uint64_t n = std::min(done, count - done);
        std::memcpy(dst + done * bytes, dst, n * bytes);
        done += n;
    }
}

void LogLines(std::initializer_list<std::string> lines) {
    for (const std::string& line : lines) Host().History(line);
}

std::string CaughtLine(const char* name, int dir) {
    std::string line = "error caught: ";
    line += name;
    if (dir >= 0 && dir < 6) line += kDirCapitals[dir];
    return line + ":\r\n";
}
