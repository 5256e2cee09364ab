#include "core/zrk_data.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "core/data_cursor.h"
#include "core/host.h"
#include "core/zrk_error.h"

namespace {

constexpr uint64_t kSaturated = UINT64_MAX;

// a * b, saturating instead of wrapping.
uint64_t SatMul(uint64_t a, uint64_t b) {
    uint64_t r;
    return __builtin_mul_overflow(a, b, &r) ? kSaturated : r;
}

uint64_t Product(const res_t* r, int n) {
    uint64_t p = 1;
    for (int i = 0; i < n; ++i) p = SatMul(p, r[i]);
    return p;
}

void CheckRes(const res_t a[6], const res_t b[6], int d, const char* text) {
    if (a[d] != b[d]) Raise(text);
}

}  // namespace

CZrkData::CZrkData()
    : nx(0),
      ny(0),
      nz(0),
      nt(0),
      nu(1),
      nv(1),
      mm{1, 1, 1, 1, 1, 1},
      flag(1),
      select(0),
      changed(0),
      shape_changed(0),
      update_range(0),
      name{},
      data(nullptr),
      link(nullptr),
      caption("default"),
      type(TYPE_NULL),
      comp_bytes(0),
      elem_bytes(0),
      undo_type(TYPE_NULL),
      undo_nx(0),
      undo_ny(0),
      undo_nz(0),
      undo_nt(0),
      undo_nu(0),
      undo_nv(0),
      undo_data(nullptr),
      undo_text("no undo to do") {}

void CZrkData::FreeData() {
    AlignedFree(data);
    AlignedFree(undo_data);
    data = nullptr;
    undo_data = nullptr;
}

void CZrkData::Assign(const CZrkData& other) {
    if (&other != this) *this = other;
}

void CZrkData::CopyHeader(const CZrkData& other) {
    Assign(other);
    undo_type = TYPE_NULL;
    undo_nx = undo_ny = undo_nz = undo_nt = undo_nu = undo_nv = 0;
    undo_data = nullptr;
    undo_text.clear();
}

CZrkData* CZrkData::Duplicate() const {
    CZrkData* copy = new (std::nothrow) CZrkData;
    if (!copy) return nullptr;
    copy->SetHeader(type, nx, ny, nz, nt, nu, nv);
    copy->CopyMm(*this);
    if (data && Bytes() > 0) {
        if (!copy->Allocate()) {
            delete copy;
            return nullptr;
        }
        std::memcpy(copy->data, data, Bytes());
    }
    return copy;
}

void CZrkData::SetHeader(int t, res_t x, res_t y, res_t z, res_t tt, res_t u, res_t v) {
    SetRes(x, y, z, tt, u, v);
    SetType(t);
}

void CZrkData::SetHeaderData(int t, res_t x, res_t y, res_t z, res_t tt, res_t u, res_t v,
                             void* d) {
    SetHeader(t, x, y, z, tt, u, v);
    data = d;
}

void CZrkData::SetType(int t) {
    type = IsValidType(t) ? t : TYPE_NULL;
    UpdateTypeSizes();
}

void CZrkData::CopyType(const CZrkData& other) { SetType(other.type); }

void CZrkData::CopyHeaderFrom(const CZrkData& other) {
    res_t r[6];
    other.GetRes(r);
    SetRes(r);
    SetType(other.type);
}

void CZrkData::CopyHeaderPointer(const CZrkData& other) {
    CopyHeaderFrom(other);
    data = other.data;
}

void CZrkData::SetHeader2d(const CZrkData& other) {
    SetHeader(other.type, other.nx, other.ny, 1, 1, 1, 1);
}

void CZrkData::SetMm(float x, float y, float z, float t, float u, float v) {
    mm[0] = x, mm[1] = y, mm[2] = z, mm[3] = t, mm[4] = u, mm[5] = v;
}

void CZrkData::CopyMm(const CZrkData& other) { std::memcpy(mm, other.mm, sizeof mm); }

void CZrkData::SetName(const char* n) { std::snprintf(name, sizeof name, "%s", n ? n : ""); }

void CZrkData::PromoteFrom(const CZrkData& a, const CZrkData& b) {
    res_t ra[6], rb[6], r[6];
    a.GetRes(ra);
    b.GetRes(rb);
    for (int d = 0; d < 6; ++d) r[d] = ra[d] > rb[d] ? ra[d] : rb[d];
    SetRes(r);
    SetType(Promote(a.type, b.type));
}

void CZrkData::MaxRes(res_t out[6], const res_t a[6], const res_t b[6], const res_t c[6]) {
    for (int d = 0; d < 6; ++d) {
        res_t m = a[d] > b[d] ? a[d] : b[d];
        out[d] = m > c[d] ? m : c[d];
    }
}

void CZrkData::MakeComplex() {
    if (type >= 0 && type < 10) SetType(type + 10);
}

void CZrkData::MakeReal() {
    if (type >= 0) SetType(type % 10);
}

void CZrkData::MakeFloat() {
    if (type >= 0) SetType(Promote(type, TYPE_R4));
}

void CZrkData::MakeSigned() {
    switch (type) {
        case TYPE_N1:
        case TYPE_N2:
        case TYPE_N4:
        case TYPE_CN1:
        case TYPE_CN2:
        case TYPE_CN4:
            SetType(type - 4);
            break;
        default:  // n8 stays unsigned on purpose
            break;
    }
}

// Folding rewrites resolutions only; the storage order makes the samples fit unchanged.
void CZrkData::Fold(int first, int count) {
    res_t r[6], out[6] = {1, 1, 1, 1, 1, 1};
    GetRes(r);
    int k = 0;
    for (int d = 0; d < first; ++d) out[k++] = r[d];
    out[k++] = Product(r + first, count);
    for (int d = first + count; d < 6; ++d) out[k++] = r[d];
    SetRes(out);
}

void CZrkData::FoldXY() { Fold(0, 2); }
void CZrkData::FoldXYZ() { Fold(0, 3); }
void CZrkData::FoldXYZT() { Fold(0, 4); }
void CZrkData::FoldXYZTU() { Fold(0, 5); }
void CZrkData::FoldXYZTUV() { Fold(0, 6); }
void CZrkData::FoldYZTUV() { Fold(1, 5); }
void CZrkData::FoldZTUV() { Fold(2, 4); }
void CZrkData::FoldTUV() { Fold(3, 3); }
void CZrkData::FoldUV() { Fold(4, 2); }

void* CZrkData::Allocate() {
    data = nullptr;
    if (type < 0) return nullptr;
    data = AlignedAlloc(Bytes());
    return data;
}

void* CZrkData::AllocateOrThrow() {
    if (type < 0) Raise("invalid data type");
    if (!Allocate()) Raise("out of memory");
    return data;
}

uint64_t CZrkData::Count() const {
    if (type < 0) return 0;
    res_t r[6];
    GetRes(r);
    return Product(r, 6);
}

uint64_t CZrkData::CountXY() const { return type < 0 ? 0 : SatMul(nx, ny); }
uint64_t CZrkData::CountXYZ() const { return type < 0 ? 0 : SatMul(CountXY(), nz); }
uint64_t CZrkData::CountXYZT() const { return type < 0 ? 0 : SatMul(CountXYZ(), nt); }
uint64_t CZrkData::CountXYZTU() const { return type < 0 ? 0 : SatMul(CountXYZT(), nu); }
uint64_t CZrkData::Bytes() const { return SatMul(Count(), ElementBytes()); }
uint64_t CZrkData::BytesPerLine() const { return type < 0 ? 0 : SatMul(nx, elem_bytes); }
uint64_t CZrkData::BytesPerPlane() const { return SatMul(CountXY(), ElementBytes()); }
uint64_t CZrkData::BytesPerVolume() const { return SatMul(CountXYZ(), ElementBytes()); }
uint64_t CZrkData::BytesPerT() const { return SatMul(CountXYZT(), ElementBytes()); }
uint64_t CZrkData::BytesPerU() const { return SatMul(CountXYZTU(), ElementBytes()); }

uint64_t CZrkData::UndoBytes() const {
    if (!undo_data || !IsValidType(undo_type)) return 0;
    const res_t r[6] = {undo_nx, undo_ny, undo_nz, undo_nt, undo_nu, undo_nv};
    return SatMul(Product(r, 6), TypeInfo(undo_type)->elem_bytes);
}

res_t CZrkData::Res(int direction) const {
    switch (direction) {
        case 0:
            return nx;
        case 1:
            return ny;
        case 2:
            return nz;
        case 3:
            return nt;
        case 4:
            return nu;
        case 5:
            return nv;
        default:
            return 1;
    }
}

bool CZrkData::SameRes(const CZrkData& o) const {
    return nx == o.nx && ny == o.ny && nz == o.nz && nt == o.nt && nu == o.nu && nv == o.nv;
}

void CZrkData::GetRes(res_t out[6]) const {
    out[0] = nx, out[1] = ny, out[2] = nz, out[3] = nt, out[4] = nu, out[5] = nv;
}

void CZrkData::SetRes(const res_t in[6]) { SetRes(in[0], in[1], in[2], in[3], in[4], in[5]); }

void CZrkData::SetRes(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v) {
    nx = x, ny = y, nz = z, nt = t, nu = u, nv = v;
}

int CZrkData::Components() const { return type < 0 ? 0 : TypeInfo(type)->components; }

char* CZrkData::Address(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v) const {
    const uint64_t index = ((((v * nu + u) * nt + t) * nz + z) * ny + y) * nx + x;
    return static_cast<char*>(data) + index * static_cast<uint64_t>(ElementBytes());
}

char* CZrkData::AddressWrapped(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v) const {
    auto wrap = [](res_t i, res_t n) { return n ? i % n : 0; };
    return Address(wrap(x, nx), wrap(y, ny), wrap(z, nz), wrap(t, nt), wrap(u, nu), wrap(v, nv));
}

uint64_t CZrkData::Offset3dClamped(res_t x, res_t y, res_t z) const {
    auto clamp = [](res_t i, res_t n) { return n == 0 ? 0 : (i < n ? i : n - 1); };
    return (clamp(z, nz) * ny + clamp(y, ny)) * nx + clamp(x, nx);
}

int CZrkData::WouldClip(int /*iqmp*/, int target_type) const {
    if (type < 0 || target_type < 0 || !IsValidType(target_type)) return 1;
    if (target_type % 10 == TYPE_R8) return 0;
    const double lo = TypeInfo(target_type)->range_min, hi = TypeInfo(target_type)->range_max;
    CDataCursor<float> cursor(this);
    const uint64_t n = Count();
    if (!data || n == 0) return 0;
    constexpr size_t kBlock = 4096;
    std::vector<float> buf(2 * kBlock);
    for (uint64_t k = 0; k < n; k += kBlock) {
        const size_t len = static_cast<size_t>(n - k < kBlock ? n - k : kBlock);
        cursor.GetIQBlock(buf.data(), k, len);
        const size_t comps = IsComplex() ? 2 : 1;
        for (size_t j = 0; j < len; ++j) {
            for (size_t c = 0; c < comps; ++c) {
                const double v = buf[2 * j + c];
                if (v > hi || v < lo) return 1;  // NaN passes
            }
        }
    }
    return 0;
}

void CZrkData::NewUndo(const char* text, CZrkData* other) {
    if (!other || other == this) return;
    AlignedFree(undo_data);
    undo_data = nullptr;
    changed = 1;
    shape_changed = SameRes(*other) ? 0 : 1;
    undo_data = data;
    undo_type = type;
    undo_nx = nx, undo_ny = ny, undo_nz = nz, undo_nt = nt, undo_nu = nu, undo_nv = nv;
    data = other->data;
    res_t r[6];
    other->GetRes(r);
    SetRes(r);
    SetType(other->type);
    undo_text = std::string("undo ") + (text ? text : "");
    other->data = nullptr;
    other->FreeData();
    Host().UndoTip(undo_text);
}

void CZrkData::NoUndo() {
    AlignedFree(undo_data);
    undo_data = nullptr;
    changed = 1;
    undo_nx = undo_ny = undo_nz = undo_nt = 0;  // u and v keep their stale values, harmlessly
    undo_text = "no undo to do";
    Host().UndoTip(undo_text);
}

void CZrkData::Undo() {
    if (undo_data) {
        AlignedFree(data);
        data = undo_data;
        const res_t r[6] = {undo_nx, undo_ny, undo_nz, undo_nt, undo_nu, undo_nv};
        res_t now[6];
        GetRes(now);
        if (std::memcmp(r, now, sizeof r) != 0) shape_changed = 1;
        changed = 1;
        SetRes(r);
        SetType(undo_type);
        undo_nx = undo_ny = undo_nz = undo_nt = undo_nu = undo_nv = 0;
        undo_data = nullptr;
    }
    undo_text = "no undo to do";
    Host().UndoTip(undo_text);
}

int CZrkData::LastDirectionAboveOne() const {
    for (int d = 5; d >= 0; --d)
        if (Res(d) > 1) return d;
    return -1;
}

std::string CZrkData::ResText() const {
    std::string out;
    char buf[32];
    const int last = LastDirectionAboveOne();
    if (last < 0) {
        std::snprintf(buf, sizeof buf, "[%llu]", static_cast<unsigned long long>(nx));
        return buf;
    }
    for (int d = 0; d <= last; ++d) {
        std::snprintf(buf, sizeof buf, "[%llu]", static_cast<unsigned long long>(Res(d)));
        out += buf;
    }
    return out;
}

std::string CZrkData::HeaderText() const {
    if (type < 0) return "";
    if (LastDirectionAboveOne() < 0) return TypeName();
    return std::string(TypeName()) + " " + ResText();
}

std::string CZrkData::HeaderNameText() const {
    if (type < 0) return "";
    std::string out = std::string(TypeName()) + " " + name;
    if (LastDirectionAboveOne() >= 0) out += ResText();
    return out;
}

void CZrkData::UpdateTypeSizes() {
    const ElementTypeInfo* info = TypeInfo(type);
    comp_bytes = info ? info->comp_bytes : 0;
    elem_bytes = info ? info->elem_bytes : 0;
}

void CheckResX(const res_t a[6], const res_t b[6]) { CheckRes(a, b, 0, "x resolutions not equal"); }
void CheckResY(const res_t a[6], const res_t b[6]) { CheckRes(a, b, 1, "y resolutions not equal"); }
void CheckResZ(const res_t a[6], const res_t b[6]) { CheckRes(a, b, 2, "z resolutions not equal"); }
void CheckResT(const res_t a[6], const res_t b[6]) { CheckRes(a, b, 3, "t resolutions not equal"); }
void CheckResU(const res_t a[6], const res_t b[6]) { CheckRes(a, b, 4, "u resolutions not equal"); }
void CheckResV(const res_t a[6], const res_t b[6]) { CheckRes(a, b, 5, "v resolutions not equal"); }
