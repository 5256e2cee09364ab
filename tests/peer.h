// The NumPy/SciPy peer of the tests: arrays and case lines go out to a folder of their own,
// /usr/bin/python3 runs a script on it, and the arrays the script answers with come back.
//
//   peer::Peer p;
//   p.Put("a", record);                         // a.bin and a.shape
//   const std::string id = p.Case("mean a x");  // one line of cases.txt, "id mean a x"
//   ASSERT_TRUE(p.Run("ops/reduce_numpy.py"));  // a failure carries the exit code and stderr
//   const peer::Array want = p.Get(id);         // id.bin and id.shape, written by the script
//
// On disk an array NAME is NAME.bin, elements x fastest (Fortran order), and NAME.shape, one
// line "dtype n0 n1 ...". Complex integer records travel as "cint16", "cuint8" and so on,
// which NumPy lacks; tests/peer.py reads those as complex128. Scripts live under tests/ and
// import peer.py for their side of all this.
#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/element_type.h"
#include "core/zrk_data.h"

namespace peer {

struct Array {
    std::string dtype;            // NumPy's name of the element type
    std::vector<uint64_t> shape;  // x first
    std::string bytes;

    uint64_t Count() const;
    bool IsComplex() const;
    // The sizes, padded with 1 to the six directions of a record.
    std::vector<uint64_t> Shape6() const;
    // i and q of every element as doubles, q = 0 when real.
    std::vector<double> Pairs() const;
    std::vector<std::complex<double>> Complex() const;
};

// NumPy's name for an element type: "int16", "float32", "complex64", "cint16" ...
const char* DType(int type);

// A record as it is stored, in its own element type, with its six sizes.
inline Array FromRecord(const CZrkData* a) {
    return {DType(a->type),
            {a->nx, a->ny, a->nz, a->nt, a->nu, a->nv},
            std::string(static_cast<const char*>(a->data), a->data ? a->Bytes() : 0)};
}

// Same element type, sizes and bytes.
::testing::AssertionResult Same(const Array& got, const Array& want);

// Same sizes, and every i and q within tol times the largest finite component of `want`
// (at least 1); NaN must meet NaN and an infinity the same infinity.
::testing::AssertionResult Near(const Array& got, const Array& want, double tol);

class Peer {
  public:
    Peer();
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    void Put(const std::string& name, const Array& a);
    void Put(const std::string& name, const CZrkData* a) { Put(name, FromRecord(a)); }
    // Adds "id line" to cases.txt; the id names the answer.
    std::string Case(const std::string& line);

    // Runs `script` (a path under tests/) on the folder, with `args` after it. A failure
    // names the script, its exit status and its stderr.
    ::testing::AssertionResult Run(const std::string& script, const std::string& args = "");
    // Runs a few lines of Python with numpy as np, scipy.signal, peer and the folder as
    // FOLDER at hand.
    ::testing::AssertionResult RunText(const std::string& code);

    // The array the script wrote as `name`; a missing or short one fails the test.
    Array Get(const std::string& name) const;
    // What the last run printed.
    const std::string& Output() const { return output_; }
    const std::filesystem::path& Dir() const { return dir_; }

  private:
    ::testing::AssertionResult Launch(const std::string& script, const std::string& args);

    std::filesystem::path dir_;
    std::string cases_;
    int count_ = 0;
    std::string output_;
};

// The numbers a few lines of Python print (see RunText); a failed run fails the test.
std::vector<double> Values(const std::string& code);

// Floats as a Python list literal, each digit that tells one float from its neighbours.
std::string Literal(const float* v, size_t n);

}  // namespace peer
