#include "files/zrk_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "core/data_space.h"
#include "core/host.h"
#include "core/key_reader.h"
#include "core/report.h"
#include "core/window_space.h"
#include "display/display_entry.h"
#include "display/text_sink.h"
#include "files/atomic_file.h"
#include "files/file_entry.h"

namespace {

constexpr char kClass[] = "zarnik ";
constexpr size_t kClassBytes = 7;
constexpr size_t kWord = 127;

char g_crash_path[4096] = {};

// The display kinds in the order a window writes its blocks.
constexpr uint32_t kBlockOrder[4] = {KIND_1D, KIND_2D, KIND_RGB, KIND_XY};

// ---- writing ----------------------------------------------------------------------------

// Text through a stack buffer, array bytes straight from their buffer with write(2).
class CFdSink : public CTextSink {
  public:
    explicit CFdSink(int fd) : fd_(fd) {}

    void Put(const void* bytes, size_t n) override {
        if (n > sizeof buffer_ - used_) Flush();
        if (n >= sizeof buffer_ / 2) return WriteAll(static_cast<const char*>(bytes), n);
        std::memcpy(buffer_ + used_, bytes, n);
        used_ += n;
    }
    void Flush() {
        WriteAll(buffer_, used_);
        used_ = 0;
    }
    int Error() const { return error_; }

  private:
    void WriteAll(const char* p, size_t n) {
        while (n > 0 && !error_) {
            const ssize_t done = write(fd_, p, n > (1u << 30) ? (1u << 30) : n);
            if (done < 0 && errno == EINTR) continue;
            if (done <= 0) {
                error_ = done < 0 ? errno : EIO;
                return;
            }
            p += done;
            n -= static_cast<size_t>(done);
        }
    }

    int fd_;
    int error_ = 0;
    size_t used_ = 0;
    char buffer_[16384];
};

// "%i %s\n" with the length first, so the text may hold blanks and line breaks.
void PutCounted(CTextSink& out, const char* key, const char* text, size_t n) {
    out.Format("%s %i ", key, static_cast<int>(n));
    out.Put(text, n);
    out.Put("\n", 1);
}

void PutName(CTextSink& out, const CZrkData* a) {
    if (a) out.Put(a->name, strnlen(a->name, sizeof a->name - 1));
    out.Put("\n", 1);
}

// Lines of the history text, without their line ends, each cut to 127 characters.
template <class F>
int EachHistoryLine(const std::string& text, F&& f) {
    int count = 0;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = start;
        while (end < text.size() && text[end] != '\n') ++end;
        size_t len = end - start;
        if (len > 0 && text[start + len - 1] == '\r') --len;
        f(text.data() + start, len < kWord ? len : kWord);
        ++count;
        start = end + 1;
    }
    return count;
}

void WriteData(CTextSink& out, const CZrkData* a) {
    out.Text("view_data= ");
    PutName(out, a);
    const char* type = a->TypeName();
    out.Format("typen= %zu %s\n", std::strlen(type), type);
    out.Format("res6= %d %d %d %d %d %d\n", static_cast<int>(a->nx), static_cast<int>(a->ny),
               static_cast<int>(a->nz), static_cast<int>(a->nt), static_cast<int>(a->nu),
               static_cast<int>(a->nv));
    out.Format("mm6= %f %f %f %f %f %f\n", a->mm[0], a->mm[1], a->mm[2], a->mm[3], a->mm[4],
               a->mm[5]);
    out.Text("data=\n");
    out.Put(a->Data(), a->Bytes());
}

void WriteDisplay(CTextSink& out, const CDisplayEntry& e, uint32_t kind, const CDataSpace& space) {
    switch (kind) {
        case KIND_1D:
            out.Text("DPY1D= ");
            PutName(out, e.data[0]);
            break;
        case KIND_2D:
            out.Text("DPY2D= ");
            PutName(out, e.data[0]);
            PutCounted(out, "name=", e.name, strnlen(e.name, sizeof e.name - 1));
            break;
        case KIND_XY:
            out.Text("DPYXY= ");
            PutName(out, e.data[0]);
            PutName(out, e.data[1]);
            break;
        default:
            out.Text("DPYRGB= ");
            for (CZrkData* a : e.data) PutName(out, a);
            break;
    }
    PutCounted(out, "caption=", e.caption.data(), e.caption.size());
    if (kind == KIND_1D) out.Format("page= %d\n", e.page_z);
    out.Format("pages= %d %d %d %d\n", e.page_z, e.page_t, 0, 0);
    out.Format("%s= %d\n", "minimized", e.minimized);
    out.Format("%s= %d %d %d %d\n", "window_loc", e.window_loc.top, e.window_loc.left,
               e.window_loc.bottom, e.window_loc.right);
    e.look.Write(out, &space);
    out.Text(kind == KIND_1D   ? "end1d \n"
             : kind == KIND_2D ? "end2d \n"
             : kind == KIND_XY ? "endxy \n"
                               : "endrgb \n");
}

}  // namespace

void WriteWorkspace(CTextSink& out, const CDataSpace& space, const CWindowSpace& windows,
                    const std::string& history) {
    out.Text("zarnik win99\n");
    out.Format("nbytes= %zu\n", static_cast<size_t>(space.GetBytes()));
    out.Format("ncount= %i\n", space.GetNonNullCount());
    out.Format("history= %d\n", EachHistoryLine(history, [](const char*, size_t) {}));
    EachHistoryLine(history, [&](const char* line, size_t n) {
        out.Put(line, n);
        out.Put("\n", 1);
    });
    out.Text("end \n");
    for (int k = 0; k < space.Count(); ++k) {
        const CZrkData* a = space.GetData(k);
        if (a && a->Bytes() != 0 && a->Data()) WriteData(out, a);
    }
    for (int k = 0; k < windows.Count(); ++k) {
        const auto* e = dynamic_cast<const CDisplayEntry*>(windows.Get(k));
        if (!e) continue;
        for (uint32_t kind : kBlockOrder)
            if (e->kind & kind) WriteDisplay(out, *e, kind, space);
    }
}

namespace {

// ---- reading ----------------------------------------------------------------------------

struct FileCloser {
    void operator()(FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

std::string OpenFailedText(const std::string& path) {
    return "can't open file\n'" + path + "'\nfor reading";
}

// The rest of the current line, to at most `limit` characters kept; the line end is eaten.
std::string ReadLine(FILE* f, size_t limit) {
    std::string line;
    int c;
    while ((c = std::fgetc(f)) != EOF && c != '\n')
        if (line.size() < limit) line.push_back(static_cast<char>(c));
    if (c == EOF && line.empty()) throw CKeyReader::EndOfFile{};
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

int ExactType(const std::string& name) {
    for (int t = 0; t < TYPE_COUNT; ++t)
        if (name == TypeName(t)) return t;
    return TypeFromText(name.c_str());
}

uint64_t SaturatingBytes(int type, const int res[6]) {
    const ElementTypeInfo* info = TypeInfo(type);
    if (!info) return 0;
    unsigned __int128 n = static_cast<unsigned>(info->elem_bytes);
    for (int k = 0; k < 6; ++k) {
        n *= static_cast<uint64_t>(res[k]);
        if (n > UINT64_MAX) return UINT64_MAX;
    }
    return static_cast<uint64_t>(n);
}

void SwapComponents(void* data, uint64_t bytes, int size) {
    auto* p = static_cast<unsigned char*>(data);
    if (size < 2) return;
    for (uint64_t k = 0; k + static_cast<uint64_t>(size) <= bytes; k += static_cast<uint64_t>(size))
        for (int a = 0, b = size - 1; a < b; ++a, --b) std::swap(p[k + a], p[k + b]);
}

class CWorkspaceReader {
  public:
    CWorkspaceReader(FILE* f, CDataSpace& space, CWindowSpace& windows)
        : f_(f), in_(f), space_(space), windows_(windows) {
        struct stat st = {};
        size_ = fstat(fileno(f), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
    }

    void Head() {
        for (;;) {
            in_.Next();
            if (in_.IsKey("end")) return;
            int n = 0;
            if (!in_.Int("history=", &n)) continue;
            Host().ClearHistory();
            ReadLine(f_, 0);  // the rest of the count's line
            for (int k = 0; k < n; ++k) Host().History(ReadLine(f_, kWord) + "\r\n");
        }
    }

    void Body(bool native) {
        native_ = native;
        for (;;) {
            try {
                in_.Next();
            } catch (const CKeyReader::EndOfFile&) {
                return;
            }
            Dispatch();
        }
    }

  private:
    uint64_t Remaining() const {
        const long at = std::ftell(f_);
        return at < 0 || static_cast<uint64_t>(at) > size_ ? 0 : size_ - static_cast<uint64_t>(at);
    }

    // "%i %s": the count, one blank, then that many characters.
    std::string Counted(size_t limit) {
        int n = 0;
        in_.Ints(in_.Token().c_str(), &n, 1);
        if (n < 0 || static_cast<uint64_t>(n) > Remaining()) Raise("read error");
        std::fgetc(f_);
        std::string text(static_cast<size_t>(n), '\0');
        if (n > 0 && std::fread(text.data(), 1, text.size(), f_) != text.size())
            Raise("read error");
        if (text.size() > limit) text.resize(limit);
        return text;
    }

    void Dispatch() {
        int dpy = 0;
        if (in_.IsKey("view_data=")) {
            name_ = in_.RestOfLine().substr(0, kWord);
        } else if (in_.IsKey("type=")) {
            const std::string words = in_.RestOfLine();
            const size_t blank = words.find(' ');
            type_[0] = words.substr(0, blank);
            type_[1] =
                blank == std::string::npos ? "" : words.substr(words.find_first_not_of(' ', blank));
        } else if (in_.IsKey("typen=")) {
            type_[0] = Counted(kWord);
            type_[1].clear();
        } else if (in_.IsKey("res=") || in_.IsKey("res6=")) {
            for (int& r : res_) r = 1;
            in_.Ints(in_.Token().c_str(), res_, native_ ? (in_.IsKey("res=") ? 4 : 6) : 3);
        } else if (in_.IsKey("mm=") || in_.IsKey("mm6=")) {
            for (float& m : mm_) m = 1.0f;
            if (!in_.Float3(in_.Token().c_str(), &mm_[0], &mm_[1], &mm_[2])) return;
            in_.Float(in_.Token().c_str(), &mm_[3]);
            if (in_.IsKey("mm6=")) in_.Float2(in_.Token().c_str(), &mm_[4], &mm_[5]);
        } else if (in_.IsKey("data=")) {
            DataStep();
        } else if (in_.Int("dpy=", &dpy)) {
            // Like the named blocks: no array, or one shown already, leaves the block unread.
            CZrkData* a = Free(name_);
            if (a && dpy == 4) DisplayStep(KIND_1D, {a, nullptr, nullptr});
            if (a && dpy == 2) DisplayStep(KIND_2D, {a, nullptr, nullptr});
        } else if (in_.IsKey("DPY1D=") || in_.IsKey("DPY2D=")) {
            const uint32_t kind = in_.IsKey("DPY1D=") ? KIND_1D : KIND_2D;
            CZrkData* a = Free(in_.RestOfLine());
            if (a) DisplayStep(kind, {a, nullptr, nullptr});
        } else if (in_.IsKey("DPYXY=")) {
            const std::string x = in_.RestOfLine(), y = ReadLine(f_, kWord);
            CZrkData* ax = Free(x);
            CZrkData* ay = Free(y);
            if (ax && ay) DisplayStep(KIND_XY, {ax, ay, nullptr});
        } else if (in_.IsKey("DPYRGB=")) {
            std::string names[3];
            names[0] = in_.RestOfLine();
            names[1] = ReadLine(f_, kWord);
            names[2] = ReadLine(f_, kWord);
            std::array<CZrkData*, 3> planes = {};
            bool any = false, taken = false;
            for (int k = 0; k < 3; ++k) {
                planes[k] = names[k].empty() ? nullptr : space_.FindData(names[k].c_str());
                any = any || planes[k];
                taken = taken || (planes[k] && windows_.DisplayMask(planes[k]) != 1);
            }
            if (any && !taken) DisplayStep(KIND_RGB, planes);
        } else {
            Raise("read error");
        }
    }

    // The array of that name when no display shows it yet.
    CZrkData* Free(const std::string& name) {
        CZrkData* a = name.empty() ? nullptr : space_.FindData(name.substr(0, kWord).c_str());
        return a && windows_.DisplayMask(a) == 1 ? a : nullptr;
    }

    void DataStep() {
        Host().Status("loading " + name_);
        const std::string type_name = type_[1].empty() ? type_[0] : type_[0] + " " + type_[1];
        const int type = ExactType(type_name);
        if (!IsValidType(type)) Raise("alloc error");
        // A negative size would pass as an empty array of absurd sizes when another is 0.
        for (int r : res_)
            if (r < 0) Raise("read error");
        const uint64_t bytes = SaturatingBytes(type, res_);
        // The line break behind "data=" is one byte of what remains.
        if (bytes != 0 && bytes >= Remaining()) Raise("read error");
        const res_t r[6] = {static_cast<res_t>(res_[0]), static_cast<res_t>(res_[1]),
                            static_cast<res_t>(res_[2]), static_cast<res_t>(res_[3]),
                            static_cast<res_t>(res_[4]), static_cast<res_t>(res_[5])};
        CZrkData* a = space_.FindData(name_.c_str());
        if (!a) {
            a = space_.NewData(type, r[0], r[1], r[2], r[3], r[4], r[5], name_.c_str());
            if (!a) Raise("alloc error");
        } else {
            CZrkData fresh;
            fresh.SetHeader(type, r[0], r[1], r[2], r[3], r[4], r[5]);
            if (bytes != 0 && !fresh.Allocate()) Raise("alloc error");
            a->NewUndo("open", &fresh);
        }
        a->SetMm(mm_[0], mm_[1], mm_[2], mm_[3], mm_[4], mm_[5]);
        std::fgetc(f_);
        if (bytes == 0 || !a->Data()) return;
        if (std::fread(a->Data(), bytes, 1, f_) != 1) Raise("read error");
        if (!native_) SwapComponents(a->Data(), bytes, a->ComponentBytes());
    }

    void DisplayStep(uint32_t kind, std::array<CZrkData*, 3> data) {
        const char* end = kind == KIND_1D   ? "end1d"
                          : kind == KIND_2D ? "end2d"
                          : kind == KIND_XY ? "endxy"
                                            : "endrgb";
        CLook look(kind);
        CDisplayRequest request;
        request.kind = kind;
        int page = 0, pages[4] = {}, minimized = 0, loc[4] = {}, pan[2] = {}, iqmp = 0;
        float zoom[2] = {};
        bool seen_zoom = false, seen_pan = false, seen_iqmp = false;
        const bool image = kind == KIND_2D || kind == KIND_RGB;
        for (;;) {
            in_.Next();
            if (in_.IsKey(end)) break;
            if (in_.IsKey("caption=")) {
                request.caption = Counted(SIZE_MAX);
            } else if (kind == KIND_2D && in_.IsKey("name=")) {
                request.name = Counted(kWord);
            } else if ((kind == KIND_1D && in_.Int("page=", &page)) ||
                       in_.Ints("pages=", pages, 4) || in_.Int("minimized=", &minimized) ||
                       in_.Ints("window_loc=", loc, 4)) {
            } else if (image && in_.Float2("zoom=", &zoom[0], &zoom[1])) {
                seen_zoom = true;
            } else if (image && in_.Int2("pan=", &pan[0], &pan[1])) {
                seen_pan = true;
            } else if (kind == KIND_2D && in_.Int("iqmp=", &iqmp)) {
                seen_iqmp = true;
            } else if (kind == KIND_2D && look.palplane.ReadWinLev(in_)) {
            } else if (in_.IsKey("look=")) {
                look.Read(in_, &space_);
            }
        }
        for (int k = 0; k < 4; ++k) {
            CPlane* plane = look.Plane(k);
            if ((k == 0) != (kind == KIND_2D)) continue;
            if (seen_zoom) plane->zoom[0] = zoom[0], plane->zoom[1] = zoom[1];
            if (seen_pan) plane->pan[0] = pan[0], plane->pan[1] = pan[1];
            if (seen_iqmp) plane->iqmp = iqmp;
        }
        const DisplayWindowHook make = DisplayWindow(kind);
        if (!make) return;
        for (int k = 0; k < 3; ++k) request.data[k] = data[static_cast<size_t>(k)];
        request.look = &look;
        CDisplayEntry* entry = make(request);
        if (!entry) return;
        // Making a 2d window resets its window and level: put back what the file said.
        if (kind == KIND_2D) {
            const CPlane& read = look.palplane;
            CPlane& made = entry->look.palplane;
            made.window = read.window, made.level = read.level;
            made.datamin = read.datamin, made.datamax = read.datamax;
            made.inv = read.inv, made.wscale = read.wscale;
            made.nonlin = read.nonlin, made.wlcycles = read.wlcycles;
        }
        entry->window_loc = {loc[0], loc[1], loc[2], loc[3]};
        entry->minimized = minimized;
        entry->page_z = pages[0];
        entry->page_t = pages[1];
    }

    FILE* f_;
    CKeyReader in_;
    CDataSpace& space_;
    CWindowSpace& windows_;
    uint64_t size_ = 0;
    bool native_ = true;
    std::string name_;
    std::string type_[2];
    int res_[6] = {1, 1, 1, 1, 1, 1};
    float mm_[6] = {1, 1, 1, 1, 1, 1};
};

// Checks the class text and returns the rest of the first line.
bool ReadClassLine(FILE* f, std::string* rest) {
    char head[kClassBytes];
    if (std::fread(head, 1, kClassBytes, f) != kClassBytes) return false;
    if (std::memcmp(head, kClass, kClassBytes) != 0) return false;
    *rest = ReadLine(f, kWord);
    return true;
}

}  // namespace

// ---- CZrkFile ---------------------------------------------------------------------------

CZrkFile::CZrkFile() : CZrkFile(std::string(g_crash_path)) {}

CZrkFile::CZrkFile(std::string a_path)
    : path(std::move(a_path)), space(&GlobalDataSpace()), windows(&GlobalWindowSpace()) {}

int CZrkFile::ReadHeader() {
    Host().Trace("CZrkFile::ReadHeader");
    FilePtr f(std::fopen(path.c_str(), "rb"));
    if (!f) {
        status = OpenFailedText(path);
        return 0;
    }
    std::string rest;
    bool ok = false;
    try {
        ok = ReadClassLine(f.get(), &rest);
    } catch (const CKeyReader::EndOfFile&) {
    }
    if (!ok) {
        status = "invalid header";
        return 0;
    }
    int bytes = 0, count = 0;
    CKeyReader in(f.get());
    try {
        in.Next();
        in.Int("nbytes=", &bytes);
        in.Next();
        in.Int("ncount=", &count);
    } catch (const CKeyReader::EndOfFile&) {
    }
    char text[64] = {};
    if (bytes != 0 && count != 0)
        std::snprintf(text, sizeof text, "%d bytes in %d data sets", bytes, count);
    status = text;
    return 1;
}

int CZrkFile::Read() {
    FilePtr f(std::fopen(path.c_str(), "rb"));
    if (!f) {
        status = OpenFailedText(path);
        return 1;
    }
    err_msg.clear();
    const int result = Reported({.trace = "CZrkFile::Read"}, 1, [&] {
        std::string rest;
        CWorkspaceReader reader(f.get(), *space, *windows);
        try {
            if (!ReadClassLine(f.get(), &rest)) Raise("invalid header");
            reader.Head();
            Host().History("reading " + path + "\r\n");
            reader.Body(rest.compare(0, 3, "win") == 0);
        } catch (const CKeyReader::EndOfFile&) {
            Raise("read error");
        }
        return 0;
    });
    if (result == 0) {
        Host().Status("");
        status = "read complete";
        Host().History("read complete\r\n");
        Host().RefreshDisplays();
        return 0;
    }
    // A raised text is the reader's own; anything else is a failure it did not foresee.
    const bool own = err_msg != "unknown error" && err_msg != "out of memory";
    status = own ? err_msg : "zarnik load failed";
    Host().History(own ? "read failed\r\n" : "zarnik load failed\r\n");
    return 1;
}

int CZrkFile::Write() {
    Host().Trace("CZrkFile::Write");
    switch (WriteWorkspaceFile(path.c_str(), *space, *windows, Host().HistoryText())) {
        case WRITE_DONE:
            status = "save complete";
            return 1;
        case WRITE_CREATE_FAILED:
            status = "file create failed";
            break;
        default:
            status = "write failed";
            break;
    }
    Host().Message(status);
    return 0;
}

int LoadAll(std::string* dialog, FileEntry* entries, int count, CDataSpace* space) {
    for (int k = 0; k < count; ++k) {
        CZrkFile file(entries[k].path);
        if (space) file.space = space;
        const int result = file.Read();
        entries[k].status = file.status;
        if (dialog) *dialog = file.status;
        if (result != 0) return result;
    }
    return 0;
}

void ReadCrashFile() {
    CZrkFile file;
    if (file.path.empty() || !file.ReadHeader()) return;
    if (Host().AskYesNo("read crash file\n" + file.status) && file.Read() != 0)
        Host().Message(file.status);
    if (Host().AskYesNo("delete crash file")) std::remove(file.path.c_str());
}

void SetCrashPath(const char* path) {
    std::snprintf(g_crash_path, sizeof g_crash_path, "%s", path ? path : "");
}

const char* CrashPath() { return g_crash_path; }

// ---- the atomic writer ------------------------------------------------------------------

WorkspaceWriteResult WriteWorkspaceFile(const char* path, const CDataSpace& space,
                                        const CWindowSpace& windows, const std::string& history) {
    char temp[4160];
    const int fd = AtomicCreate(path, temp, sizeof temp);
    if (fd < 0) return WRITE_CREATE_FAILED;
    CFdSink sink(fd);
    WriteWorkspace(sink, space, windows, history);
    sink.Flush();
    if (sink.Error() != 0) {
        close(fd);
        unlink(temp);
        return WRITE_FAILED;
    }
    return AtomicCommit(fd, temp, path) == 0 ? WRITE_DONE : WRITE_FAILED;
}

int WriteCrashWorkspace(const char* path) {
    return WriteWorkspaceFile(path, GlobalDataSpace(), GlobalWindowSpace(), Host().HistoryText()) ==
                   WRITE_DONE
               ? 0
               : 1;
}
