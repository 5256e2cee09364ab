#include "ops/structural_fill.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "core/data_cursor.h"
#include "core/elementwise.h"
#include "core/zrk_error.h"
#include "display/roi_mask.h"
#include "ops/structural_base.h"
#include "ops/structural_shape.h"

namespace {

CZrkData* CopyOf(CDataSpace& temp, const CZrkData* a) {
    RequireData(a);
    res_t res[6];
    a->GetRes(res);
    CZrkData* r = NewResult(temp, a->type, res, a);
    CopyInParallel(static_cast<char*>(r->data), static_cast<const char*>(a->data), a->Bytes());
    return r;
}

// Slices lo to hi along dir set to the value (keep = false), or all the others (keep = true).
// Each element of the fresh result is written once, either the value or a's.
CZrkData* FillRange(CDataSpace& temp, int dir, const CZrkData* a, int64_t lo, int64_t hi,
                    const CZrkData* value, bool keep) {
    RequireData(a);
    res_t res[6];
    a->GetRes(res);
    CZrkData* r = NewResult(temp, a->type, res, a);
    unsigned char elem[16];
    CastValue(value, a->type, elem);
    const CWalk w(res, dir);
    const int e = a->elem_bytes;
    const uint64_t slice = w.inner * static_cast<uint64_t>(e), n = w.n;
    // [0, lo), [lo, hi], (hi, n): the middle is the range; an empty range when lo > hi
    const uint64_t cut[4] = {0, lo > hi ? n : static_cast<uint64_t>(lo),
                             lo > hi ? n : static_cast<uint64_t>(hi) + 1, n};
    const char* from = static_cast<const char*>(a->data);
    char* to = static_cast<char*>(r->data);
    // few blocks: each fill and copy is shared among the cores instead
    const bool by_block = w.outer >= 8 * static_cast<uint64_t>(omp_get_max_threads()) &&
                          r->Count() >= kParallelElements;
#pragma omp parallel for schedule(static) if (by_block)
    for (int64_t o = 0; o < static_cast<int64_t>(w.outer); ++o) {
        const uint64_t block = static_cast<uint64_t>(o) * n * slice;
        for (int part = 0; part < 3; ++part) {
            const uint64_t at = block + cut[part] * slice, count = cut[part + 1] - cut[part];
            if (count == 0) continue;
            if ((part == 1) != keep) {
                FillElements(to + at, elem, e, count * w.inner);
            } else {
                CopyInParallel(to + at, from + at, count * slice);
            }
        }
    }
    return r;
}

// Elements whose place in the repeating pattern (a plane or a volume) is marked inside are
// set to the value (keep = false), or the others (keep = true).
CZrkData* FillPattern(CDataSpace& temp, const CZrkData* a, const std::vector<unsigned char>& inside,
                      const CZrkData* value, bool keep) {
    RequireData(a);
    res_t res[6];
    a->GetRes(res);
    CZrkData* r = NewResult(temp, a->type, res, a);
    unsigned char elem[16];
    CastValue(value, a->type, elem);
    const uint64_t e = static_cast<uint64_t>(a->elem_bytes);
    const int64_t period = static_cast<int64_t>(inside.size());
    const int64_t count = static_cast<int64_t>(a->Count());  // whole periods
    const char* from = static_cast<const char*>(a->data);
    char* to = static_cast<char*>(r->data);
#pragma omp parallel for schedule(static) if (a->Count() >= kParallelElements)
    for (int64_t k = 0; k < count; ++k) {
        const uint64_t at = static_cast<uint64_t>(k) * e;
        const void* src =
            (inside[k % period] != 0) != keep ? static_cast<const void*>(elem) : from + at;
        std::memcpy(to + at, src, e);
    }
    return r;
}

// Radius i <= r <= j from the centre of the plane (volume = false) or of the volume.
std::vector<unsigned char> Radial(const CZrkData* a, double i, double j, bool volume) {
    const res_t nz = volume ? a->nz : 1;
    const double cx = (a->nx - 1) / 2.0, cy = (a->ny - 1) / 2.0, cz = (nz - 1) / 2.0;
    std::vector<unsigned char> inside(a->nx * a->ny * nz);
    uint64_t k = 0;
    for (res_t z = 0; z < nz; ++z)
        for (res_t y = 0; y < a->ny; ++y)
            for (res_t x = 0; x < a->nx; ++x) {
                const double dz = volume ? (z - cz) * (z - cz) : 0;
                const float r =
                    static_cast<float>(std::sqrt((y - cy) * (y - cy) + (x - cx) * (x - cx) + dz));
                inside[k++] = i <= r && r <= j;
            }
    return inside;
}

// The 1d region as an x range inside a.
void Roi1d(const CZrkData* a, int64_t* lo, int64_t* hi) {
    const CZrkData* roi = GlobalDataSpace().FindData("roi_x");
    if (!roi || !roi->data || roi->Count() < 2) Raise("1d roi does not exist");
    float v[2];
    CDataCursor<float> c(roi);
    c.GetI(v[0], 0);
    c.GetI(v[1], 1);
    if (!(v[0] <= v[1]) || v[1] < 0 || v[0] > static_cast<float>(a->nx - 1))
        Raise("1d roi is invalid");
    *lo = std::max<int64_t>(0, static_cast<int64_t>(v[0]));
    *hi = std::min<int64_t>(a->nx - 1, static_cast<int64_t>(v[1]));
}

// The 2d region as a plane of a's xy size.
std::vector<unsigned char> Roi2d(const CZrkData* a, const char* missing) {
    const CZrkData* m = GlobalDataSpace().FindData("roi_mask");
    if (!m || !m->data) Raise(missing);
    if (m->nx != a->nx || m->ny != a->ny) Raise("invalid mask");
    std::vector<unsigned char> inside(a->CountXY());
    CDataCursor<float> c(m);
    for (uint64_t k = 0; k < inside.size(); ++k) {
        float v = 0;
        c.GetI(v, k);
        inside[k] = v != 0;
    }
    return inside;
}

// The points of each plane inside the plane mask, along x.
CZrkData* SelectPlanes(CDataSpace& temp, const std::vector<unsigned char>& inside,
                       const CZrkData* a) {
    const uint64_t n = std::count(inside.begin(), inside.end(), 1);
    res_t res[6];
    a->GetRes(res);
    res[0] = n;
    res[1] = 1;
    CZrkData* r = NewResult(temp, a->type, res, a);
    const int e = a->elem_bytes;
    const uint64_t planes = a->Count() / a->CountXY(), size = inside.size();
    const char* src = static_cast<const char*>(a->data);
    char* dst = static_cast<char*>(r->data);
    for (uint64_t p = 0; p < planes; ++p)
        for (uint64_t k = 0; k < size; ++k)
            if (inside[k]) {
                std::memcpy(dst, src + (p * size + k) * e, e);
                dst += e;
            }
    return r;
}

// The directions named in `dirs`, in the order written, one per index array.
std::vector<int> IndexDirections(const CZrkData* dirs, size_t count) {
    if (count == 0) Raise("scatter must have at least 4 arguments");
    std::vector<int> out;
    for (char ch : TextOf(dirs)) {
        const char* p = ch ? std::strchr(kDirLetters, ch) : nullptr;
        if (p) out.push_back(static_cast<int>(p - kDirLetters));
    }
    if (out.size() != count) Raise("argument number mismatch");
    return out;
}

// Walks every element of `walk`; its coordinates, with those of the named directions read
// from the index arrays, give the other place. move(walk index, other index) per place
// inside `other`.
template <class F>
void IndexWalk(const CZrkData* walk, const CZrkData* other, const std::vector<int>& dirs,
               const std::vector<const CZrkData*>& indices, F&& move) {
    for (const CZrkData* ix : indices) RequireData(ix);
    std::vector<CDataCursor<int64_t>> cursors;
    for (const CZrkData* ix : indices) cursors.emplace_back(ix);
    res_t wres[6], ores[6];
    walk->GetRes(wres);
    other->GetRes(ores);
    const uint64_t count = walk->Count();
    res_t c[6] = {};
    for (uint64_t k = 0; k < count; ++k) {
        int64_t at[6];
        for (int d = 0; d < 6; ++d) at[d] = static_cast<int64_t>(c[d]);
        for (size_t m = 0; m < dirs.size(); ++m) {
            cursors[m].SeekWrapped(c[0], c[1], c[2], c[3], c[4], c[5]);
            cursors[m].GetI(at[dirs[m]]);
        }
        bool ok = true;
        uint64_t o = 0;
        for (int d = 5; d >= 0; --d) {
            ok = ok && at[d] >= 0 && static_cast<uint64_t>(at[d]) < ores[d];
            o = o * ores[d] + static_cast<uint64_t>(at[d]);
        }
        if (ok) move(k, o);
        for (int d = 0; d < 6 && ++c[d] == wres[d]; ++d) c[d] = 0;
    }
}

CZrkData* MoveIndexed(CDataSpace& temp, const CZrkData* dirs, const CZrkData* a,
                      const CZrkData* init, const std::vector<const CZrkData*>& indices,
                      bool gather) {
    const std::vector<int> d = IndexDirections(dirs, indices.size());
    RequireData(a);
    CZrkData* r = CopyOf(temp, init);
    const CZrkData* src = AsType(temp, a, init->type);
    const int e = r->elem_bytes;
    const char* s = static_cast<const char*>(src->data);
    char* t = static_cast<char*>(r->data);
    if (gather) {
        IndexWalk(r, src, d, indices,
                  [&](uint64_t k, uint64_t o) { std::memcpy(t + k * e, s + o * e, e); });
    } else {
        IndexWalk(src, r, d, indices,
                  [&](uint64_t k, uint64_t o) { std::memcpy(t + o * e, s + k * e, e); });
    }
    return r;
}

template <class T>
void ReplaceNonFinite(char* p, uint64_t count, int comps, const T* value) {
    T* v = reinterpret_cast<T*>(p);
    for (uint64_t k = 0; k < count; ++k)
        for (int c = 0; c < comps; ++c)
            if (!std::isfinite(v[k * comps + c])) v[k * comps + c] = value[c];
}

// The region record of `name` set by undo to `values` (r4, along x); returns a copy on temp.
CZrkData* StoreRegion(CDataSpace& temp, const char* name, const std::vector<float>& values) {
    const res_t res[6] = {values.size(), 1, 1, 1, 1, 1};
    CZrkData* copy = NewResult(temp, TYPE_R4, res, nullptr);
    std::memcpy(copy->data, values.data(), values.size() * sizeof(float));
    CZrkData* target = GlobalDataSpace().FindOrNew(name);
    CZrkData* moved = copy->Duplicate();
    if (!target || !moved) {
        delete moved;
        Raise("out of memory");
    }
    target->NewUndo("set roi", moved);
    delete moved;
    return copy;
}

// The first n numbers of every x line of a.
std::vector<float> LineHeads(const CZrkData* a, res_t n) {
    std::vector<float> out;
    CDataCursor<float> c(a);
    const uint64_t lines = a->Count() / a->nx;
    for (uint64_t l = 0; l < lines; ++l)
        for (res_t x = 0; x < n; ++x) {
            float v = 0;
            c.GetI(v, l * a->nx + x);
            out.push_back(v);
        }
    return out;
}

}  // namespace

CZrkData* Fill(CDataSpace& temp, int dir, const CZrkData* a, int64_t i, int64_t j,
               const CZrkData* value) {
    SetOpFunc("fill", dir);
    return LogFailure({CaughtLine("Fill", dir)}, [&] {
        RequireData(a);
        const int64_t n = static_cast<int64_t>(a->Res(dir));
        if (i < 0 || j < 0 || i >= n || j >= n)
            Raise(dir == 0 ? "invalid fill range" : "fill index > resolution");
        return FillRange(temp, dir, a, i, j, value, false);
    });
}

CZrkData* Strip(CDataSpace& temp, int dir, const CZrkData* a, int64_t i, int64_t j,
                const CZrkData* value) {
    SetOpFunc("strip", dir);
    return LogFailure({CaughtLine("Strip", dir)}, [&] {
        RequireData(a);
        const int64_t n = static_cast<int64_t>(a->Res(dir));
        if (i < 0 || j < 0 || i >= n || j >= n) Raise("index > resolution");
        return FillRange(temp, dir, a, i, j, value, true);
    });
}

CZrkData* FillR(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value) {
    SetErrFunc("fill('r')");
    return LogFailure({CaughtLine("FillR", -1)}, [&] {
        RequireData(a);
        return FillPattern(temp, a, Radial(a, i, j, false), value, false);
    });
}

CZrkData* FillS(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value) {
    SetErrFunc("fill('s')");
    return LogFailure({CaughtLine("FillS", -1)}, [&] {
        RequireData(a);
        return FillPattern(temp, a, Radial(a, i, j, true), value, false);
    });
}

CZrkData* StripR(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value) {
    SetErrFunc("strip('r')");
    return LogFailure({CaughtLine("StripR", -1)}, [&] {
        RequireData(a);
        return FillPattern(temp, a, Radial(a, i, j, false), value, true);
    });
}

CZrkData* StripS(CDataSpace& temp, const CZrkData* a, double i, double j, const CZrkData* value) {
    SetErrFunc("strip('s')");
    return LogFailure({CaughtLine("StripS", -1)}, [&] {
        RequireData(a);
        return FillPattern(temp, a, Radial(a, i, j, true), value, true);
    });
}

CZrkData* Fill1d(CDataSpace& temp, const CZrkData* a, const CZrkData* value) {
    SetOpFunc("fill1d", -1);
    return LogFailure({CaughtLine("Fill1d", -1)}, [&] {
        RequireData(a);
        int64_t lo, hi;
        Roi1d(a, &lo, &hi);
        return FillRange(temp, 0, a, lo, hi, value, false);
    });
}

CZrkData* Strip1d(CDataSpace& temp, const CZrkData* a, const CZrkData* value) {
    SetOpFunc("strip1d", -1);
    return LogFailure({CaughtLine("Strip1d", -1)}, [&] {
        RequireData(a);
        int64_t lo, hi;
        Roi1d(a, &lo, &hi);
        return FillRange(temp, 0, a, lo, hi, value, true);
    });
}

CZrkData* Fill2d(CDataSpace& temp, const CZrkData* a, const CZrkData* value) {
    SetOpFunc("fill2d", -1);
    return LogFailure({CaughtLine("Fill2d", -1)}, [&] {
        RequireData(a);
        return FillPattern(temp, a, Roi2d(a, "roi_mask does not exist"), value, false);
    });
}

CZrkData* Strip2d(CDataSpace& temp, const CZrkData* a, const CZrkData* value) {
    SetOpFunc("strip2d", -1);
    return LogFailure({CaughtLine("Strip2d", -1)}, [&] {
        RequireData(a);
        return FillPattern(temp, a, Roi2d(a, "roi_mask does not exist"), value, true);
    });
}

CZrkData* Crop1d(CDataSpace& temp, const CZrkData* a) {
    SetOpFunc("crop1d", -1);
    return LogFailure({CaughtLine("Crop1d", -1)}, [&] {
        RequireData(a);
        int64_t lo, hi;
        Roi1d(a, &lo, &hi);
        CZrkData* r = Cut(temp, 0, a, lo, hi);
        SetOpFunc("crop1d", -1);
        return r;
    });
}

CZrkData* Crop2d(CDataSpace& temp, const CZrkData* a) {
    SetOpFunc("crop2d", -1);
    return LogFailure({CaughtLine("Crop2d", -1)}, [&] {
        RequireData(a);
        const std::vector<unsigned char> inside = Roi2d(a, "roi_mask does not exist");
        int64_t x0 = INT64_MAX, x1 = -1, y0 = INT64_MAX, y1 = -1;
        for (uint64_t k = 0; k < inside.size(); ++k)
            if (inside[k]) {
                const int64_t x = k % a->nx, y = k / a->nx;
                x0 = std::min(x0, x), x1 = std::max(x1, x), y0 = std::min(y0, y),
                y1 = std::max(y1, y);
            }
        if (x1 < 0) Raise("invalid 2d roi");
        CZrkData* r = Cut(temp, 1, Cut(temp, 0, a, x0, x1), y0, y1);
        SetOpFunc("crop2d", -1);
        return r;
    });
}

CZrkData* Points2d(CDataSpace& temp, const CZrkData* a) {
    SetOpFunc("points2d", -1);
    return LogFailure({CaughtLine("Points2d", -1)}, [&] {
        RequireData(a);
        return SelectPlanes(temp, Roi2d(a, "2d roi must be active"), a);
    });
}

CZrkData* FillInf(CDataSpace& temp, const CZrkData* a, const CZrkData* value) {
    SetOpFunc("fillinf", -1);
    return LogFailure({CaughtLine("FillInf", -1)}, [&] {
        CZrkData* r = CopyOf(temp, a);
        unsigned char elem[16];
        CastValue(value, a->type, elem);
        if (a->type % 10 == TYPE_R4)
            ReplaceNonFinite(static_cast<char*>(r->data), r->Count(), r->Components(),
                             reinterpret_cast<const float*>(elem));
        if (a->type % 10 == TYPE_R8)
            ReplaceNonFinite(static_cast<char*>(r->data), r->Count(), r->Components(),
                             reinterpret_cast<const double*>(elem));
        return r;
    });
}

CZrkData* Select(CDataSpace& temp, const CZrkData* mask, const CZrkData* a) {
    SetOpFunc("select", -1);
    return LogFailure({CaughtLine("Select", -1)}, [&] {
        RequireData(mask);
        RequireData(a);
        if (mask->nx != a->nx || mask->ny != a->ny) Raise("invalid mask");
        std::vector<unsigned char> inside(a->CountXY());
        CDataCursor<float> c(mask);
        for (uint64_t k = 0; k < inside.size(); ++k) {
            float v = 0;
            c.GetI(v, k);
            inside[k] = v != 0;
        }
        return SelectPlanes(temp, inside, a);
    });
}

CZrkData* Gather(CDataSpace& temp, const CZrkData* dirs, const CZrkData* a, const CZrkData* init,
                 const std::vector<const CZrkData*>& indices) {
    SetOpFunc("gather", -1);
    return LogFailure({CaughtLine("Gather", -1)},
                      [&] { return MoveIndexed(temp, dirs, a, init, indices, true); });
}

CZrkData* Scatter(CDataSpace& temp, const CZrkData* dirs, const CZrkData* a, const CZrkData* init,
                  const std::vector<const CZrkData*>& indices) {
    SetOpFunc("scatter", -1);
    return LogFailure({CaughtLine("Scatter", -1)},
                      [&] { return MoveIndexed(temp, dirs, a, init, indices, false); });
}

CZrkData* Set1dRoi(CDataSpace& temp, const CZrkData* a) {
    SetOpFunc("set1droi", -1);
    return LogFailure({CaughtLine("Set1dRoi", -1)}, [&] {
        RequireData(a);
        if (a->nx < 2) Raise("x resolution must be at least 2");
        const std::vector<float> line = LineHeads(a, 2);
        return StoreRegion(temp, "roi_x", {line[0], line[1]});
    });
}

CZrkData* Set2dRoi(CDataSpace& temp, const CZrkData* type, const CZrkData* a) {
    SetOpFunc("set2droi", -1);
    return LogFailure({CaughtLine("Set2dRoi", -1)}, [&] {
        RequireData(a);
        static const struct {
            const char* type;
            const char* name;
            int kind;
        } kTypes[] = {{"x", "roi_x", ROI_X},
                      {"y", "roi_y", ROI_Y},
                      {"rect", "roi_rect", ROI_RECT},
                      {"ellip", "roi_ellip", ROI_ELLIPSE},
                      {"draw", "roi_draw", ROI_DRAW}};
        const std::string text = TextOf(type);
        const auto* t = std::find_if(std::begin(kTypes), std::end(kTypes),
                                     [&](const auto& e) { return text == e.type; });
        if (t == std::end(kTypes)) Raise("invalid roi type");
        if (a->nx < 2) Raise("x resolution must be at least 2");
        if (a->ny < 2) Raise("y resolution must be at least 2");
        // Points (x, y), one per line; x and y keep that coordinate of the first two.
        std::vector<float> points = LineHeads(a, 2);
        if (t->kind == ROI_X || t->kind == ROI_Y) {
            const int c = t->kind == ROI_Y;
            points = {points[c], points[2 + c]};
        }
        CZrkData* r = StoreRegion(temp, t->name, points);
        const CZrkData* mask = GlobalDataSpace().FindData("roi_mask");
        if (mask && mask->data) {
            try {
                GetRoiMask(t->kind, mask->nx, mask->ny);
            } catch (...) {
                Raise("can not create mask for points");
            }
        }
        return r;
    });
}
