#include "files/file_kinds.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <sstream>
#include <stdexcept>

namespace {

struct CKinds {
    std::map<int, CFileReader> readers;
    std::vector<CFileWriter> writers;
};

CKinds& Kinds() {
    static CKinds kinds;
    return kinds;
}

std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::vector<std::string> Extensions(const std::string& list) {
    std::istringstream words(list);
    std::vector<std::string> out;
    for (std::string w; words >> w;) out.push_back(Lower(w));
    return out;
}

bool EndsWith(const std::string& s, const std::string& tail) {
    return s.size() > tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

void RegisterReader(int code, const CFileReader& reader) {
    if (!Kinds().readers.emplace(code, reader).second)
        throw std::logic_error("open code " + std::to_string(code) + " registered twice");
}

void RegisterWriter(const CFileWriter& writer) {
    for (const CFileWriter& w : Kinds().writers) {
        if (writer.row >= 0 && w.row == writer.row)
            throw std::logic_error("save row " + std::to_string(writer.row) + " registered twice");
        for (const std::string& e : Extensions(writer.extensions))
            for (const std::string& taken : Extensions(w.extensions))
                if (e == taken) throw std::logic_error("extension " + e + " registered twice");
    }
    Kinds().writers.push_back(writer);
}

const CFileReader* FindReader(int code) {
    auto it = Kinds().readers.find(code);
    return it == Kinds().readers.end() ? nullptr : &it->second;
}

const CFileWriter* FindWriter(int row) {
    if (row < 0) return nullptr;
    for (const CFileWriter& w : Kinds().writers)
        if (w.row == row) return &w;
    return nullptr;
}

const CFileWriter* FindWriterByExtension(const std::string& path) {
    // The longest extension wins, so ".nii.gz" is not taken for ".gz".
    const std::string name = Lower(path);
    const CFileWriter* best = nullptr;
    size_t best_length = 0;
    for (const CFileWriter& w : Kinds().writers)
        for (const std::string& e : Extensions(w.extensions))
            if (e.size() > best_length && EndsWith(name, e)) {
                best = &w;
                best_length = e.size();
            }
    return best;
}
