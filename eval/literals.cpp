// The reductions that build arrays and take them apart: list literals, index reads and
// index assignment, casts, size casts and the resolution suffixes.
#include <algorithm>
#include <cstring>
#include <vector>

#include "core/data_cursor.h"
#include "core/elementwise.h"
#include "core/report.h"
#include "core/zrk_error.h"
#include "eval/eval.h"

namespace {

struct CTriple {
    uint64_t start, end, inc;
};

// One bracket as popped: its kind and expressions in source order.
struct CBracket {
    uint64_t kind = 0;
    CZrkData* expr[3] = {nullptr, nullptr, nullptr};
};

uint64_t ReadU64(const CZrkData* r) {
    uint64_t v = 0;
    CDataCursor<uint64_t>(r).GetI(v, 0);
    return v;
}

int32_t ReadI32(const CZrkData* r) {
    int32_t v = 0;
    CDataCursor<int32_t>(r).GetI(v, 0);
    return v;
}

void CheckIndexValue(const CZrkData* r) {
    if (!r || r->Type() < 0 || r->Bytes() == 0) Raise("invalid data type");
}

// The triple of one bracket against the largest index `limit`.
CTriple IndexXyzt(const CBracket& b, uint64_t limit) {
    CTriple t{0, limit, 1};
    for (uint64_t k = 0; k < b.kind && k < 3; ++k) CheckIndexValue(b.expr[k]);
    switch (b.kind) {
        case TAG_BRACKET_ALL:
            break;
        case TAG_BRACKET_ONE: {
            const uint64_t a = ReadU64(b.expr[0]);
            if (a > limit) Raise("index > resolution");
            t = {a, a, 1};
            break;
        }
        case TAG_BRACKET_RANGE: {
            const uint64_t a = ReadU64(b.expr[0]), e = ReadU64(b.expr[1]);
            if (e > limit) Raise("end index > resolution");
            if (a > limit) Raise("start index > resolution");
            t = {a, e, a < e ? uint64_t{1} : ~uint64_t{0}};
            break;
        }
        case TAG_BRACKET_STEP: {
            const uint64_t e = ReadU64(b.expr[2]);
            const int64_t inc = ReadI32(b.expr[1]);
            const uint64_t a = ReadU64(b.expr[0]);
            if (e > limit) Raise("end index > resolution");
            if (inc < 0 && static_cast<uint64_t>(-inc) > limit) Raise("inc < -resolution");
            if (inc > 0 && static_cast<uint64_t>(inc) > limit) Raise("inc > resolution");
            if (a > limit) Raise("start index > resolution");
            // the read would divide by it: no meaning, so its own report
            if (inc == 0) Raise("inc = 0");
            t = {a, e, static_cast<uint64_t>(inc)};
            break;
        }
        default:
            Raise("internal error, invalid index type");
    }
    return t;
}

// The elements of `src` selected by the six triples, into a new record on `temp`.
CZrkData* ArrayXyzt(CDataSpace& temp, const CZrkData* src, const CTriple t[6]) {
    res_t res[6];
    bool runs = true;
    for (int d = 0; d < 6; ++d) {
        res[d] = (t[d].end - t[d].start) / t[d].inc + 1;
        // a reversed range or a negative step keeps its one element but copies nothing
        runs = runs && static_cast<int64_t>(t[d].inc) > 0 && t[d].start <= t[d].end;
    }
    CZrkData* out = NewTemp(temp, src->Type(), res);
    const size_t eb = static_cast<size_t>(src->ElementBytes());
    char* dst = static_cast<char*>(out->Data());
    if (!runs) {
        std::memset(dst, 0, out->Bytes());
        return out;
    }
    for (uint64_t v = t[5].start; v <= t[5].end; v += t[5].inc)
        for (uint64_t u = t[4].start; u <= t[4].end; u += t[4].inc)
            for (uint64_t tt = t[3].start; tt <= t[3].end; tt += t[3].inc)
                for (uint64_t z = t[2].start; z <= t[2].end; z += t[2].inc)
                    for (uint64_t y = t[1].start; y <= t[1].end; y += t[1].inc) {
                        const char* row = src->Address(0, y, z, tt, u, v);
                        if (t[0].inc == 1) {
                            const size_t n = (t[0].end - t[0].start + 1) * eb;
                            std::memcpy(dst, row + t[0].start * eb, n);
                            dst += n;
                        } else {
                            for (uint64_t x = t[0].start; x <= t[0].end; x += t[0].inc) {
                                std::memcpy(dst, row + x * eb, eb);
                                dst += eb;
                            }
                        }
                    }
    return out;
}

// Copies all of `block` (same type as `dst`) into `dst` with its first element at `corner`.
void PutBlock(const CZrkData* block, CZrkData* dst, const res_t corner[6]) {
    const size_t line = block->BytesPerLine();
    if (line == 0) return;
    const char* src = static_cast<const char*>(block->Data());
    for (res_t v = 0; v < block->nv; ++v)
        for (res_t u = 0; u < block->nu; ++u)
            for (res_t t = 0; t < block->nt; ++t)
                for (res_t z = 0; z < block->nz; ++z)
                    for (res_t y = 0; y < block->ny; ++y) {
                        std::memcpy(dst->Address(corner[0], corner[1] + y, corner[2] + z,
                                                 corner[3] + t, corner[4] + u, corner[5] + v),
                                    src, line);
                        src += line;
                    }
}

// Items joined or woven along direction `dir` into a new record; items in source order.
CZrkData* InitListDir(CDataSpace& temp, const std::vector<CZrkData*>& items, int dir,
                      bool interleave) {
    for (CZrkData* item : items) CheckOperand(item);
    int type = items[0]->Type();
    for (size_t k = 1; k < items.size(); ++k) type = Promote(items[k]->Type(), type);
    res_t res[6];
    items[0]->GetRes(res);
    res[dir] = 0;
    for (CZrkData* item : items) {
        for (int s = 1; s < 6; ++s) {
            const int d = (dir + s) % 6;
            if (item->Res(d) != res[d]) {
                static const char* const kText[] = {
                    "x dimensions inconsistent", "y dimensions inconsistent",
                    "z dimensions inconsistent", "t dimensions inconsistent",
                    "u dimensions inconsistent", "v dimensions inconsistent"};
                Raise(kText[d]);
            }
        }
        res[dir] += item->Res(dir);
    }
    CZrkData* out = NewTemp(temp, type, res);
    const size_t eb = static_cast<size_t>(out->ElementBytes());
    uint64_t below = 1, above = 1;
    for (int d = 0; d < dir; ++d) below *= res[d];
    for (int d = dir + 1; d < 6; ++d) above *= res[d];
    const size_t chunk = below * eb;
    char* base = static_cast<char*>(out->Data());
    // a short item leaves slots of a woven list unset: they read as 0
    if (interleave) std::memset(base, 0, out->Bytes());
    uint64_t offset = 0;
    for (size_t k = 0; k < items.size(); ++k) {
        CZrkData* item = items[k];
        const CZrkData* same = item;
        if (item->Type() != type) same = ConvertRecord(temp, item, type);
        const char* src = static_cast<const char*>(same->Data());
        const uint64_t len = item->Res(dir);
        for (uint64_t o = 0; o < above; ++o) {
            char* slab = base + o * res[dir] * chunk;
            if (interleave) {
                for (uint64_t j = 0; j < len; ++j, src += chunk) {
                    const uint64_t slot = j * items.size() + k;
                    if (slot < res[dir]) std::memcpy(slab + slot * chunk, src, chunk);
                }
            } else {
                std::memcpy(slab + offset * chunk, src, len * chunk);
                src += len * chunk;
            }
        }
        offset += len;
        if (same != item) temp.DelData(const_cast<CZrkData*>(same));
    }
    return out;
}

}  // namespace

int CEval::InitList() {
    Settle();
    if (skip) return 0;
    std::vector<CZrkData*> items;
    for (;;) {
        const uint64_t top = Peek(0);
        if (top != TAG_DATA && !(top > TAG_INDEXED && top <= TAG_INDEXED + 6)) break;
        CZrkData* item = PopData();
        if (!item) return DataNotOnStack("InitList()");
        try {
            items.push_back(item);
        } catch (const std::bad_alloc&) {
            return SetError("InitList()", "short of memory");
        }
    }
    uint64_t opener = 0;
    if (PopTag(&opener)) return SetError("InitList()", "invalid list definition");
    if (opener < TAG_OPEN_X || opener > TAG_OPEN_ILEAVE_X + 5)
        return SetError("InitList()", "invalid list definition");
    if (items.empty()) return SetError("InitList()", "empty list");
    std::reverse(items.begin(), items.end());
    const bool interleave = opener >= TAG_OPEN_ILEAVE_X;
    const int dir = static_cast<int>(opener - (interleave ? TAG_OPEN_ILEAVE_X : TAG_OPEN_X));
    static const char* const kFunc[2][6] = {
        {"InitListX()", "InitListY()", "InitListZ()", "InitListT()", "InitListU()", "InitListV()"},
        {"InitIleaveX()", "InitIleaveY()", "InitIleaveZ()", "InitIleaveT()", "InitIleaveU()",
         "InitIleaveV()"}};
    return Reported({.func = kFunc[interleave][dir]}, 1,
                    [&] { return PushData(InitListDir(temp, items, dir, interleave)); });
}

int CEval::IndexOpen(CZrkData* record) {
    Settle();
    if (PushData(record)) return 1;
    return PushTag(TAG_INDEXED);
}

int CEval::IndexCount(int brackets) {
    if (skip) return 0;
    if (brackets > 6) return SetError("Array()", "too many dimensions");
    return PushTag(TAG_INDEXED + brackets);
}

// Pops an index list: its brackets (last first, expressions read as values) and the record.
static int PopIndexList(CEval& ev, std::vector<CBracket>* brackets, CZrkData** record,
                        const char* func) {
    uint64_t count = 0;
    if (ev.PopTag(&count)) return 1;
    if (count <= TAG_INDEXED || count > TAG_INDEXED + 6)
        return SetError(func, "too many dimensions");
    brackets->resize(count - TAG_INDEXED);
    for (size_t b = brackets->size(); b-- > 0;) {
        CBracket& br = (*brackets)[b];
        if (ev.PopTag(&br.kind)) return 1;
        if (br.kind > TAG_BRACKET_STEP)
            return SetError("IndexXyzt()", "internal error, invalid index type");
        for (uint64_t k = br.kind; k-- > 0;) {
            br.expr[k] = ev.PopData();
            if (!br.expr[k]) return ev.DataNotOnStack(func);
        }
    }
    uint64_t tag = 0;
    if (ev.PopTag(&tag) || tag != TAG_INDEXED)
        return SetError(func, "internal error, invalid stack");
    *record = ev.PopData();
    if (!*record) return ev.DataNotOnStack(func);
    return 0;
}

int CEval::Array() {
    std::vector<CBracket> brackets;
    CZrkData* record = nullptr;
    if (PopIndexList(*this, &brackets, &record, "Array()")) return 1;
    CTriple t[6];
    for (int d = 0; d < 6; ++d) t[d] = {0, record->Res(d) - 1, 1};
    if (Reported({.func = "IndexXyzt()"}, 1, [&] {
            CheckOperand(record);
            for (size_t b = brackets.size(); b-- > 0;)
                t[b] = IndexXyzt(brackets[b], record->Res(static_cast<int>(b)) - 1);
            return 0;
        }))
        return 1;
    return Reported({.func = "ArrayXyzt()"}, 1,
                    [&] { return PushData(ArrayXyzt(temp, record, t)); });
}

int CEval::IndexedAssignment(int op, CZrkData* e) {
    std::vector<CBracket> brackets;
    CZrkData* a = nullptr;
    if (PopIndexList(*this, &brackets, &a, "Assignment()")) return 1;
    res_t corner[6] = {0, 0, 0, 0, 0, 0};
    return Reported({.func = "Assignment()"}, 1, [&] {
        for (size_t b = brackets.size(); b-- > 0;) {
            if (brackets[b].kind != TAG_BRACKET_ONE) Raise("internal error, invalid stack");
            CheckIndexValue(brackets[b].expr[0]);
            corner[b] = ReadU64(brackets[b].expr[0]);
            if (corner[b] >= a->Res(static_cast<int>(b))) {
                static const char* const kText[] = {"x index invalid", "y index invalid",
                                                    "z index invalid", "t index invalid",
                                                    "u index invalid", "v index invalid"};
                Raise(kText[b]);
            }
        }
        SetErrFunc("=");
        CheckOperand(a);
        CheckOperand(e);
        for (int d = 0; d < 6; ++d) {
            if (corner[d] + e->Res(d) > a->Res(d)) {
                static const char* const kText[] = {"x index out of range", "y index out of range",
                                                    "z index out of range", "t index out of range",
                                                    "u index out of range", "v index out of range"};
                Raise(kText[d]);
            }
        }
        const CZrkData* block = e;
        if (op != ASSIGN_EQUAL) {
            // the old contents under the block, combined with e element by element
            SetErrFunc(OpText(op));
            CTriple t[6];
            for (int d = 0; d < 6; ++d) t[d] = {corner[d], corner[d] + e->Res(d) - 1, 1};
            block = BinaryOperation(temp, op, ArrayXyzt(temp, a, t), e);
        }
        if (block->Type() != a->Type()) block = ConvertRecord(temp, block, a->Type());
        res_t res[6];
        a->GetRes(res);
        CZrkData* copy = NewTemp(temp, a->Type(), res);
        std::memcpy(copy->Data(), a->Data(), a->Bytes());
        PutBlock(block, copy, corner);
        a->NewUndo("equation", copy);
        temp.DelData(copy);
        return PushData(a);
    });
}

int CEval::Cast(int type) {
    if (skip) return 0;
    CZrkData* e = PopData();
    if (!e) return DataNotOnStack("Cast()");
    return Reported({.func = "Cast()"}, 1, [&] {
        CZrkData* out = ConvertRecord(temp, e, type);
        Drop(e, out);
        return PushData(out);
    });
}

int CEval::Tile(int brackets) {
    if (skip) return 0;
    CZrkData* e = PopData();
    if (!e) return DataNotOnStack("Tile()");
    if (brackets < 1) return SetError("Tile()", "internal error, array dimensions <1");
    if (brackets > 6) return SetError("Tile()", "internal error, array dimensions >6");
    res_t res[6] = {1, 1, 1, 1, 1, 1};
    std::vector<uint64_t> kinds(static_cast<size_t>(brackets));
    std::vector<CZrkData*> sizes(static_cast<size_t>(brackets), nullptr);
    for (int b = brackets; b-- > 0;) {
        if (PopTag(&kinds[b])) return 1;
        if (kinds[b] > TAG_BRACKET_STEP) return SetError("Tile()", "invalid list definition");
        std::vector<CZrkData*> exprs(kinds[b]);
        for (uint64_t k = kinds[b]; k-- > 0;) {
            exprs[k] = PopData();
            if (!exprs[k]) return DataNotOnStack("Tile()");
        }
        if (kinds[b] == TAG_BRACKET_ONE) sizes[b] = exprs[0];
    }
    return Reported({.func = "Tile()"}, 1, [&] {
        for (int b = brackets; b-- > 0;) {
            if (kinds[b] == TAG_BRACKET_ALL) continue;
            if (kinds[b] != TAG_BRACKET_ONE) Raise("invalid list definition");
            CheckIndexValue(sizes[b]);
            res[b] = ReadU64(sizes[b]);
            if (res[b] < 1) {
                static const char* const kText[] = {"x res <1", "y res <1", "z res <1",
                                                    "t res <1", "u res <1", "v res <1"};
                Raise(kText[b]);
            }
        }
        return PushData(TileTo(temp, e, res));
    });
}

int CEval::DataInfo(CZrkData* record, int what) {
    Settle();
    if (skip) return 0;
    return Reported({.func = "DataInfo()"}, 1, [&] {
        if (!IsOnStack(record)) Raise("invalid data");
        if (what < 0 || what > 5) Raise("invalid .suffix");
        const res_t one[6] = {1, 1, 1, 1, 1, 1};
        CZrkData* out = NewTemp(temp, TYPE_N8, one);
        *static_cast<uint64_t*>(out->Data()) = record->Res(what);
        return PushData(out);
    });
}
