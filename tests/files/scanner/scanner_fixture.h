// The files of make_scanner.py, written once per build by the files.scanner_files test (a
// fixture of every scanner test), and what the generator says a reader must make of them.
// No scanner sample ships with Debian, so every file here is the generator's: it writes them
// with struct and NumPy from the formats' layouts alone, and derives the expected headers and
// arrays (baseline corrections in NumPy integer arithmetic at the samples' width) from the
// bytes it wrote.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "core/host.h"
#include "core/zrk_data.h"
#include "files/file_entry.h"
#include "files/file_options.h"
#include "tests/peer.h"

namespace scan {

// One line of manifest.txt: "name kind key=value ...", where text= takes the rest.
struct CFile {
    std::string name, kind;
    std::map<std::string, std::string> fields;

    int64_t Int(const std::string& key) const;
    // A float field, given as its bit pattern.
    uint32_t Bits(const std::string& key) const;
    const std::string& Text(const std::string& key) const;
};

std::string Path(const std::string& name);
std::string Slurp(const std::string& path);
void Spit(const std::string& path, const std::string& bytes);
const std::vector<CFile>& Manifest();
std::vector<const CFile*> OfKind(const std::string& kind);
const CFile& Find(const std::string& name);

inline FileEntry Entry(const std::string& name) {
    FileEntry e;
    e.path = Path(name);
    return e;
}

// A load target made from an entry's header, as the load model makes it; freed on scope end.
struct CTarget {
    CZrkData data;
    CZrkData* targets[3] = {&data, nullptr, nullptr};

    explicit CTarget(const FileEntry& e, const res_t stack[4] = nullptr);
    ~CTarget() { data.FreeData(); }
    CTarget(const CTarget&) = delete;
    CTarget& operator=(const CTarget&) = delete;
};

// The expected array `name` (its .bin), in the target's type and the header's sizes.
peer::Array Expected(const std::string& name, const CZrkData& header);

inline bool BitsEqual(float v, uint32_t bits) {
    uint32_t got;
    std::memcpy(&got, &v, 4);
    return got == bits;
}

// A host that records, installed for the test.
class ScannerTest : public ::testing::Test {
  protected:
    CHeadlessHost host_;
    CScopedHost scoped_{host_};
    COpenOptions options_;
};

}  // namespace scan
