#include "tests/files/scanner/scanner_fixture.h"

#include <fstream>
#include <iterator>
#include <sstream>

namespace scan {

int64_t CFile::Int(const std::string& key) const { return std::stoll(Text(key)); }

uint32_t CFile::Bits(const std::string& key) const {
    return static_cast<uint32_t>(std::stoul(Text(key), nullptr, 16));
}

const std::string& CFile::Text(const std::string& key) const {
    static const std::string none;
    auto it = fields.find(key);
    if (it == fields.end()) {
        ADD_FAILURE() << name << ": no field " << key;
        return none;
    }
    return it->second;
}

std::string Path(const std::string& name) { return std::string(QUELMOR_SCANNER_DIR) + "/" + name; }

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void Spit(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

const std::vector<CFile>& Manifest() {
    static const std::vector<CFile> files = [] {
        std::vector<CFile> out;
        std::ifstream in(Path("manifest.txt"));
        for (std::string line; std::getline(in, line);) {
            std::istringstream words(line);
            CFile f;
            if (!(words >> f.name >> f.kind)) continue;
            for (std::string w; words >> w;) {
                const size_t eq = w.find('=');
                if (w.compare(0, 5, "text=") == 0) {
                    std::string rest;
                    std::getline(words, rest);
                    f.fields["text"] = w.substr(5) + rest;
                    break;
                }
                f.fields[w.substr(0, eq)] = w.substr(eq + 1);
            }
            out.push_back(f);
        }
        return out;
    }();
    return files;
}

std::vector<const CFile*> OfKind(const std::string& kind) {
    std::vector<const CFile*> out;
    for (const CFile& f : Manifest())
        if (f.kind == kind) out.push_back(&f);
    return out;
}

const CFile& Find(const std::string& name) {
    for (const CFile& f : Manifest())
        if (f.name == name) return f;
    ADD_FAILURE() << "no file " << name << " in the manifest";
    static const CFile none;
    return none;
}

CTarget::CTarget(const FileEntry& e, const res_t stack[4]) {
    const CZrkData& h = e.header;
    data.SetHeader(h.Type(), h.nx, h.ny, stack ? stack[0] : h.nz, stack ? stack[1] : h.nt,
                   stack ? stack[2] : h.nu, stack ? stack[3] : h.nv);
    if (data.Bytes() > 0 && data.Allocate()) std::memset(data.Data(), 0x5A, data.Bytes());
}

peer::Array Expected(const std::string& name, const CZrkData& header) {
    return {peer::DType(header.Type()),
            {header.nx, header.ny, header.nz, header.nt, header.nu, header.nv},
            Slurp(Path(name + ".bin"))};
}

}  // namespace scan
