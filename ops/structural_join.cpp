#include "ops/structural_join.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "core/zrk_error.h"
#include "ops/structural_base.h"

namespace {

const char* const kNotCompatible[6] = {
    "x resolutions not compatible", "y resolutions not compatible", "z resolutions not compatible",
    "t resolutions not compatible", "u resolutions not compatible", "v resolutions not compatible"};

// The inputs, already of the result's type, joined along dir into `out`.
void JoinInto(const std::vector<const CZrkData*>& parts, int dir, CZrkData* out) {
    res_t res[6];
    out->GetRes(res);
    const CWalk w(res, dir);
    const uint64_t slice = w.inner * out->elem_bytes;
    char* dst = static_cast<char*>(out->data);
    const bool stream = StreamsResult(out);
    for (uint64_t o = 0; o < w.outer; ++o) {
        for (const CZrkData* p : parts) {
            const uint64_t bytes = p->Res(dir) * slice;
            CopyBytes(dst, static_cast<const char*>(p->data) + o * bytes, bytes, stream);
            dst += bytes;
        }
    }
    EndStream(stream);
}

CZrkData* CatAll(CDataSpace& temp, int dir, const std::vector<const CZrkData*>& inputs) {
    for (const CZrkData* p : inputs) RequireData(p);
    int type = inputs[0]->type;
    res_t res[6];
    inputs[0]->GetRes(res);
    res[dir] = 0;
    for (const CZrkData* p : inputs) {
        CheckCompatible(inputs[0], p, dir);
        type = CommonType(type, p->type);
        res[dir] += p->Res(dir);
    }
    CZrkData* r = NewResult(temp, type, res, inputs[0]);
    std::vector<const CZrkData*> parts;
    for (const CZrkData* p : inputs) parts.push_back(AsType(temp, p, type));
    JoinInto(parts, dir, r);
    return r;
}

std::string NameOf(const CZrkData* a) { return a->name[0] ? std::string(a->name) : TextOf(a); }

}  // namespace

void CheckCompatible(const CZrkData* a, const CZrkData* b, int dir) {
    for (int d = 0; d < 6; ++d)
        if (d != dir && a->Res(d) != b->Res(d)) Raise(kNotCompatible[d]);
}

CZrkData* Cat(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b) {
    SetOpFunc("cat", dir);
    return LogFailure({std::string("Cat") + kDirCapitals[dir] + " failed\r\n"}, [&] {
        return CatAll(temp, dir, {a, b});
    });
}

CZrkData* CatM(CDataSpace& temp, int dir, const CZrkData* first, const CZrkData* last,
               CDataSpace& space, bool delete_inputs) {
    SetOpFunc(delete_inputs ? "catmd" : "catm", dir);
    return LogFailure({std::string("CatMultiple") + kDirCapitals[dir] + " failed\r\n"}, [&] {
        const std::string lo = NameOf(first), hi = NameOf(last);
        std::vector<CZrkData*> found;
        for (int k = 0; k < space.Count(); ++k) {
            CZrkData* p = space.GetData(k);
            if (p && std::strcmp(p->name, lo.c_str()) >= 0 && std::strcmp(p->name, hi.c_str()) <= 0)
                found.push_back(p);
        }
        if (found.empty()) Raise("null input data set");
        std::sort(found.begin(), found.end(), [](const CZrkData* x, const CZrkData* y) {
            return std::strcmp(x->name, y->name) < 0;
        });
        for (CZrkData* p : found) space.CheckValid(p);
        CZrkData* r = CatAll(temp, dir, {found.begin(), found.end()});
        if (delete_inputs)
            for (CZrkData* p : found) space.DelData(p);
        return r;
    });
}

CZrkData* Stuff1d(CDataSpace& temp, int dir, const CZrkData* a, const CZrkData* b, int64_t i) {
    SetOpFunc("stuff1d", dir);
    return LogFailure(
        {std::string("stuff1d('") + kDirLetters[dir] + "') failed\r\n", CaughtLine("Stuff1d", dir)},
        [&] {
            RequireData(a);
            RequireData(b);
            CheckCompatible(a, b, dir);
            const uint64_t n = a->Res(dir);
            if (i < 0 || static_cast<uint64_t>(i) >= n) Raise("index > resolution");
            res_t res[6];
            a->GetRes(res);
            CZrkData* r = NewResult(temp, a->type, res, a);
            std::memcpy(r->data, a->data, a->Bytes());
            const CZrkData* src = AsType(temp, b, a->type);
            const CWalk w(res, dir);
            const uint64_t slice = w.inner * a->elem_bytes;
            const uint64_t nb = b->Res(dir);
            const uint64_t len = std::min<uint64_t>(nb, n - i) * slice;
            for (uint64_t o = 0; o < w.outer; ++o)
                std::memcpy(static_cast<char*>(r->data) + (o * n + i) * slice,
                            static_cast<const char*>(src->data) + o * nb * slice, len);
            return r;
        });
}
