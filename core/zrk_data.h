// CZrkData: the array record. Everything the program computes with is one of these.
//
// Storage: one contiguous buffer, x fastest, then y, z, t, u, v; the element at
// (x, y, z, t, u, v) has linear index ((((v*nu + u)*nt + t)*nz + z)*ny + y)*nx + x.
// A complex element is i then q, interleaved, each comp_bytes wide.
//
// Ownership: the record does not own its buffers in the C++ sense. Its owner (a list, or
// the code that made it) calls FreeData() before destroying it; the destructor releases
// nothing but the strings, so shallow copies (Assign, CopyHeader) are cheap views.
// Header-only changes (folding, CopyHeader, MakeReal, NewUndo) never touch samples.
//
//   CZrkData a;
//   a.SetHeader(TYPE_R4, 256, 256, 1, 1, 1, 1);
//   a.AllocateOrThrow();        // "out of memory" or "invalid data type"
//   a.FoldXY();                 // 65536 x 1: no sample moves
//   a.FreeData();
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/aligned_alloc.h"
#include "core/element_type.h"

using res_t = uint64_t;

class CZrkData {
  public:
    CZrkData();
    ~CZrkData() = default;
    CZrkData(const CZrkData&) = default;
    CZrkData& operator=(const CZrkData&) = default;

    // Releases data and undo_data and nulls them.
    void FreeData();

    // Shallow copy of every field, sample pointers included.
    void Assign(const CZrkData& other);
    // Assign, then forget the undo: a temporary view of the same samples.
    void CopyHeader(const CZrkData& other);
    // A new unnamed record with a deep copy of the samples; null when memory is short.
    CZrkData* Duplicate() const;

    void SetHeader(int type, res_t nx, res_t ny, res_t nz, res_t nt, res_t nu, res_t nv);
    void SetHeaderData(int type, res_t nx, res_t ny, res_t nz, res_t nt, res_t nu, res_t nv,
                       void* data);
    void SetType(int type);
    void CopyType(const CZrkData& other);
    void CopyHeaderFrom(const CZrkData& other);
    void CopyHeaderPointer(const CZrkData& other);
    void SetHeader2d(const CZrkData& other);
    void SetMm(float x, float y, float z, float t, float u, float v);
    void CopyMm(const CZrkData& other);
    void SetName(const char* name);

    // Result header of a binary operation: promoted type, larger resolution per direction.
    void PromoteFrom(const CZrkData& a, const CZrkData& b);
    static void MaxRes(res_t out[6], const res_t a[6], const res_t b[6], const res_t c[6]);

    void MakeComplex();
    void MakeReal();
    void MakeFloat();
    void MakeSigned();

    void FoldXY();
    void FoldXYZ();
    void FoldXYZT();
    void FoldXYZTU();
    void FoldXYZTUV();
    void FoldYZTUV();
    void FoldZTUV();
    void FoldTUV();
    void FoldUV();

    // Allocates Bytes() into data; null (data null) when short or without type.
    void* Allocate();
    void* AllocateOrThrow();

    // Sizes: 0 without type. Products saturate at 2^64-1 instead of wrapping, so an absurd
    // header asks the allocator for the impossible and gets "out of memory".
    uint64_t Bytes() const;
    uint64_t UndoBytes() const;
    uint64_t Count() const;
    uint64_t CountXY() const;
    uint64_t CountXYZ() const;
    uint64_t CountXYZT() const;
    uint64_t CountXYZTU() const;
    uint64_t BytesPerLine() const;
    uint64_t BytesPerPlane() const;
    uint64_t BytesPerVolume() const;
    uint64_t BytesPerT() const;
    uint64_t BytesPerU() const;

    // Resolution of direction 0 ... 5; 1 for any other number.
    res_t Res(int direction) const;
    bool SameRes(const CZrkData& other) const;
    // The six resolutions as an array, in direction order.
    void GetRes(res_t out[6]) const;
    void SetRes(const res_t in[6]);
    void SetRes(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v);

    void* Data() const { return data; }
    int Type() const { return type; }
    int ComponentBytes() const { return type < 0 ? 0 : comp_bytes; }
    int ElementBytes() const { return type < 0 ? 0 : elem_bytes; }
    int Components() const;
    bool IsReal() const { return type >= 0 && type < 10; }
    bool IsComplex() const { return type >= 10 && type < TYPE_COUNT; }
    bool HasUndo() const { return undo_data != nullptr; }
    const char* TypeName() const { return ::TypeName(type); }

    // Byte addresses, no checks.
    char* Address(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v) const;
    char* Address(res_t x, res_t y, res_t z) const { return Address(x, y, z, 0, 0, 0); }
    char* Address(res_t x, res_t y) const { return Address(x, y, 0, 0, 0, 0); }
    char* AddressWrapped(res_t x, res_t y, res_t z, res_t t, res_t u, res_t v) const;
    uint64_t Offset3dClamped(res_t x, res_t y, res_t z) const;

    // 1 when a component would fall outside target_type's range; `iqmp` has no effect.
    int WouldClip(int iqmp, int target_type) const;

    // One level of undo: take other's samples, keep ours for Undo. `other` keeps no samples.
    void NewUndo(const char* text, CZrkData* other);
    void NoUndo();
    void Undo();

    // "complex r4 [256][256]", "complex r4 a[256][256]", "[256][256]"; empty without type
    // except ResText, which prints at least "[1]".
    std::string HeaderText() const;
    std::string HeaderNameText() const;
    std::string ResText() const;

    res_t nx, ny, nz, nt, nu, nv;
    float mm[6];
    int32_t flag;
    uint32_t select;
    int32_t changed;
    int32_t shape_changed;
    int32_t update_range;
    char name[128];
    void* data;
    CZrkData* link;
    std::string caption;
    int32_t type;
    int32_t comp_bytes;
    int32_t elem_bytes;
    int32_t undo_type;
    res_t undo_nx, undo_ny, undo_nz, undo_nt, undo_nu, undo_nv;
    void* undo_data;
    std::string undo_text;

  private:
    void UpdateTypeSizes();
    // Multiplies `count` resolutions from `first` on into one; the rest move down, 1s fill.
    void Fold(int first, int count);
    int LastDirectionAboveOne() const;
};

// The resolution checks of the operators: raise "x resolutions not equal" and so on.
void CheckResX(const res_t a[6], const res_t b[6]);
void CheckResY(const res_t a[6], const res_t b[6]);
void CheckResZ(const res_t a[6], const res_t b[6]);
void CheckResT(const res_t a[6], const res_t b[6]);
void CheckResU(const res_t a[6], const res_t b[6]);
void CheckResV(const res_t a[6], const res_t b[6]);
