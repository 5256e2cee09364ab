#include "tests/peer.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace peer {

namespace fs = std::filesystem;

namespace {

struct Kind {
    const char* name;  // the real dtype, or the part type of a complex one
    int bytes;         // of one component
    double (*read)(const char*);
};

template <class T>
double Read(const char* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return static_cast<double>(v);
}

constexpr Kind kKinds[] = {
    {"int8", 1, Read<int8_t>},     {"int16", 2, Read<int16_t>},   {"int32", 4, Read<int32_t>},
    {"int64", 8, Read<int64_t>},   {"uint8", 1, Read<uint8_t>},   {"uint16", 2, Read<uint16_t>},
    {"uint32", 4, Read<uint32_t>}, {"uint64", 8, Read<uint64_t>}, {"float32", 4, Read<float>},
    {"float64", 8, Read<double>},
};

// The kind of one component and whether there are two; null for a dtype we do not read.
const Kind* KindOf(const std::string& dtype, bool* complex) {
    std::string part = dtype;
    *complex = true;
    if (dtype == "complex64")
        part = "float32";
    else if (dtype == "complex128")
        part = "float64";
    else if (dtype.size() > 1 && dtype[0] == 'c')
        part = dtype.substr(1);
    else
        *complex = false;
    for (const Kind& k : kKinds)
        if (part == k.name) return &k;
    return nullptr;
}

std::string Quote(const std::string& s) {
    std::string out = "'";
    for (char c : s) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string Slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// The end of a long stderr is where Python puts the error.
std::string Tail(const std::string& text, size_t keep = 4000) {
    return text.size() <= keep ? text : "..." + text.substr(text.size() - keep);
}

}  // namespace

uint64_t Array::Count() const {
    uint64_t n = 1;
    for (uint64_t v : shape) n *= v;
    return n;
}

bool Array::IsComplex() const {
    bool complex = false;
    KindOf(dtype, &complex);
    return complex;
}

std::vector<uint64_t> Array::Shape6() const {
    std::vector<uint64_t> out = shape;
    if (out.size() < 6) out.resize(6, 1);
    return out;
}

std::vector<double> Array::Pairs() const {
    bool complex = false;
    const Kind* kind = KindOf(dtype, &complex);
    if (!kind) {
        ADD_FAILURE() << "no reading for dtype '" << dtype << "'";
        return {};
    }
    const uint64_t n = Count();
    const int comps = complex ? 2 : 1;
    if (bytes.size() != n * comps * kind->bytes) {
        ADD_FAILURE() << bytes.size() << " bytes for " << n << " elements of " << dtype;
        return {};
    }
    std::vector<double> out(2 * n, 0.0);
    const char* p = bytes.data();
    for (uint64_t k = 0; k < n; ++k)
        for (int c = 0; c < comps; ++c, p += kind->bytes) out[2 * k + c] = kind->read(p);
    return out;
}

std::vector<std::complex<double>> Array::Complex() const {
    const std::vector<double> v = Pairs();
    std::vector<std::complex<double>> out(v.size() / 2);
    for (size_t k = 0; k < out.size(); ++k) out[k] = {v[2 * k], v[2 * k + 1]};
    return out;
}

const char* DType(int type) {
    static const char* const kNames[TYPE_COUNT] = {
        "int8",   "int16",   "int32",   "int64",   "uint8",     "uint16",    "uint32",
        "uint64", "float32", "float64", "cint8",   "cint16",    "cint32",    "cint64",
        "cuint8", "cuint16", "cuint32", "cuint64", "complex64", "complex128"};
    return IsValidType(type) ? kNames[type] : "null";
}

namespace {

::testing::AssertionResult SameSizes(const Array& got, const Array& want) {
    if (got.Shape6() == want.Shape6()) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure() << "sizes";
    for (uint64_t v : got.Shape6()) failure << ' ' << v;
    failure << ", want";
    for (uint64_t v : want.Shape6()) failure << ' ' << v;
    return failure;
}

}  // namespace

::testing::AssertionResult Same(const Array& got, const Array& want) {
    if (got.dtype != want.dtype)
        return ::testing::AssertionFailure() << "dtype " << got.dtype << ", want " << want.dtype;
    if (auto sizes = SameSizes(got, want); !sizes) return sizes;
    if (got.bytes.size() != want.bytes.size())
        return ::testing::AssertionFailure()
               << got.bytes.size() << " bytes, want " << want.bytes.size();
    for (size_t k = 0; k < got.bytes.size(); ++k)
        if (got.bytes[k] != want.bytes[k])
            return ::testing::AssertionFailure() << "bytes differ from byte " << k << " on";
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult Near(const Array& got, const Array& want, double tol) {
    if (auto sizes = SameSizes(got, want); !sizes) return sizes;
    const std::vector<double> g = got.Pairs(), w = want.Pairs();
    if (g.size() != w.size()) return ::testing::AssertionFailure() << "unreadable arrays";
    double scale = 1;
    for (double v : w)
        if (std::isfinite(v)) scale = std::max(scale, std::fabs(v));
    auto failure = ::testing::AssertionFailure();
    int bad = 0;
    for (size_t i = 0; i < w.size() && bad < 5; ++i) {
        const bool same = std::isnan(w[i])   ? std::isnan(g[i])
                          : std::isinf(w[i]) ? g[i] == w[i]
                                             : std::fabs(g[i] - w[i]) <= tol * scale;
        if (!same) {
            ++bad;
            failure << "\nelement " << i / 2 << (i % 2 ? " q" : " i") << ": " << g[i] << " want "
                    << w[i];
        }
    }
    return bad ? failure : ::testing::AssertionSuccess();
}

Peer::Peer() {
    std::string pattern = (fs::path(::testing::TempDir()) / "quelmor_peer_XXXXXX").string();
    if (mkdtemp(pattern.data())) dir_ = pattern;
}

Peer::~Peer() {
    if (!dir_.empty()) fs::remove_all(dir_);
}

void Peer::Put(const std::string& name, const Array& a) {
    if (dir_.empty()) return;  // Run reports the missing folder
    std::ofstream(dir_ / (name + ".bin"), std::ios::binary)
        .write(a.bytes.data(), static_cast<std::streamsize>(a.bytes.size()));
    std::ofstream shape(dir_ / (name + ".shape"));
    shape << a.dtype;
    for (uint64_t v : a.shape) shape << ' ' << v;
    shape << '\n';
}

std::string Peer::Case(const std::string& line) {
    const std::string id = std::to_string(count_++);
    cases_ += id + ' ' + line + '\n';
    return id;
}

::testing::AssertionResult Peer::Run(const std::string& script, const std::string& args) {
    return Launch((fs::path(QUELMOR_TESTS_DIR) / script).string(), args);
}

::testing::AssertionResult Peer::RunText(const std::string& code) {
    const fs::path script = dir_ / "inline.py";
    std::ofstream(script) << "import sys\nimport numpy as np\nimport scipy.signal\nimport peer\n"
                          << "FOLDER = sys.argv[1]\n"
                          << code;
    return Launch(script.string(), "");
}

::testing::AssertionResult Peer::Launch(const std::string& script, const std::string& args) {
    output_.clear();
    if (dir_.empty()) return ::testing::AssertionFailure() << "no folder for the peer";
    std::ofstream(dir_ / "cases.txt") << cases_;
    // -B: peer.py is imported from the source tree, which gets no __pycache__.
    const std::string command =
        "PYTHONPATH=" + Quote(QUELMOR_TESTS_DIR) + " " + QUELMOR_PYTHON + " -B " + Quote(script) +
        " " + Quote(dir_.string()) + (args.empty() ? "" : " " + args) + " >" +
        Quote((dir_ / "stdout.txt").string()) + " 2>" + Quote((dir_ / "stderr.txt").string());
    const int status = std::system(command.c_str());
    output_ = Slurp(dir_ / "stdout.txt");
    if (status == 0) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure() << fs::path(script).filename().string();
    if (status == -1)
        failure << " could not be started";
    else if (WIFEXITED(status))
        failure << " exited with " << WEXITSTATUS(status);
    else
        failure << " ended by signal " << WTERMSIG(status);
    return failure << "\n" << command << "\n" << Tail(Slurp(dir_ / "stderr.txt"));
}

Array Peer::Get(const std::string& name) const {
    Array a;
    std::ifstream shape(dir_ / (name + ".shape"));
    if (!(shape >> a.dtype)) {
        ADD_FAILURE() << "the peer wrote no " << name << ".shape";
        return a;
    }
    for (uint64_t v; shape >> v;) a.shape.push_back(v);
    a.bytes = Slurp(dir_ / (name + ".bin"));
    bool complex = false;
    const Kind* kind = KindOf(a.dtype, &complex);
    if (kind && a.bytes.size() != a.Count() * kind->bytes * (complex ? 2 : 1))
        ADD_FAILURE() << name << ".bin holds " << a.bytes.size() << " bytes for " << a.Count()
                      << " elements of " << a.dtype;
    return a;
}

std::vector<double> Values(const std::string& code) {
    Peer p;
    const ::testing::AssertionResult ran = p.RunText(code);
    if (!ran) {
        ADD_FAILURE() << ran.message();
        return {};
    }
    // strtod, as it reads nan and inf too.
    std::vector<double> out;
    const char* at = p.Output().c_str();
    for (char* end = nullptr;; at = end) {
        const double v = std::strtod(at, &end);
        if (end == at) break;
        out.push_back(v);
    }
    return out;
}

std::string Literal(const float* v, size_t n) {
    std::string s = "[";
    char num[32];
    for (size_t i = 0; i < n; ++i) {
        std::snprintf(num, sizeof num, "%.9g,", v[i]);
        s += num;
    }
    return s + "]";
}

}  // namespace peer
