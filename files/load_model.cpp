#include "files/load_model.h"

#include <cstdio>

#include "core/data_space.h"
#include "core/host.h"
#include "display/display_entry.h"
#include "files/file_dispatch.h"
#include "files/file_kinds.h"
#include "files/user_format.h"

namespace {

const char* const kRgbTails[3] = {".r", ".g", ".b"};

bool HasNumbers(int code) { return code == 1 || code == 7 || code == 12; }

// Shows a new array as load_display= asks, when the display kind has a maker.
void ShowLoaded(const COpenOptions& options, const FileEntry& entry, CZrkData* const targets[3]) {
    uint32_t kind = 0;
    if (entry.isRgb && (options.display[1] || options.display[2]))
        kind = KIND_RGB;
    else if (options.display[1])
        kind = KIND_1D;
    else if (options.display[2])
        kind = KIND_2D;
    const DisplayWindowHook make = kind ? DisplayWindow(kind) : nullptr;
    if (!make) return;
    CLook look(kind);
    if (kind == KIND_2D) {
        CPlane* plane = look.Plane(0);
        plane->zoom[0] = plane->zoom[1] = 100.0f;
        plane->iqmp = targets[0]->IsComplex() ? 0 : 2;
    }
    CDisplayRequest request;
    request.kind = kind;
    request.look = &look;
    for (int k = 0; k < (kind == KIND_RGB ? 3 : 1); ++k) request.data[k] = targets[k];
    request.caption = targets[0]->name;
    make(request);
}

}  // namespace

CStackPlan PlanStack(std::vector<FileEntry>& entries, size_t first,
                     const std::function<bool(FileEntry&)>& header) {
    CStackPlan plan;
    if (first >= entries.size() || !header(entries[first])) return plan;
    const CZrkData& h = entries[first].header;
    h.GetRes(plan.res);
    const res_t z = h.nz, t = h.nt, u = h.nu, v = h.nv;
    if (z == 1 && t == 1 && u == 1 && v == 1)
        plan.direction = 2;
    else if (z > 1 && t == 1 && u == 1 && v == 1)
        plan.direction = 3;
    else if (z > 1 && t > 1 && u == 1 && v == 1)
        plan.direction = 4;
    else
        plan.direction = 5;
    const int d = plan.direction;
    plan.res[d] = 0;
    for (size_t k = first; k < entries.size(); ++k) {
        FileEntry& e = entries[k];
        if (k > first && !header(e)) break;
        res_t r[6];
        e.header.GetRes(r);
        bool same = e.header.Type() == h.Type() && e.isRgb == entries[first].isRgb;
        for (int j = 0; j < 6 && same; ++j) same = j == d || r[j] == plan.res[j];
        // The summed size must stay a size.
        if (!same || r[d] > ~res_t{0} - plan.res[d]) break;
        plan.res[d] += r[d];
        ++plan.count;
    }
    return plan;
}

CLoadModel::CLoadModel(COpenOptions& a_options, CDataSpace& a_space,
                       std::vector<FileEntry>& a_entries)
    : options(a_options), space(a_space), entries(a_entries), read_(a_entries.size(), false) {}

bool CLoadModel::Header(FileEntry& entry) {
    const size_t k = static_cast<size_t>(&entry - entries.data());
    if (!read_[k]) {
        read_[k] = true;
        ReadHeader(options, entry);
    }
    return !entry.failed;
}

FileEntry* CLoadModel::Current() {
    if (Done()) return nullptr;
    Header(entries[index]);
    return &entries[index];
}

std::string DataName(COpenOptions& options, const FileEntry& entry, const CZrkData& header,
                     int count, const std::string& typed) {
    if (options.name_is_file == 2 && !HasNumbers(entry.code)) options.name_is_file = 1;
    char text[160];
    switch (options.name_is_file) {
        case 2:
            if (header.nz == 1)
                std::snprintf(text, sizeof text, "e%ds%03di%03d", entry.exam, entry.series,
                              entry.image);
            else
                std::snprintf(text, sizeof text, "e%ds%03d", entry.exam, entry.series);
            return text;
        case 3: {
            const std::string name = FormatCount(options.data_format, count);
            return name.empty() ? entry.title : name;
        }
        case 4:
            return typed.empty() ? entry.title : typed;
        default:
            return entry.title;
    }
}

std::string CLoadModel::Name(const CZrkData& header) {
    const FileEntry* e = Current();
    return e ? DataName(options, *e, header, count, typed_name) : "";
}

bool CLoadModel::MakeTargets(const FileEntry& entry, const CZrkData& header,
                             const std::string& name, CZrkData* targets[3]) {
    const int planes = entry.isRgb ? 3 : 1;
    for (int k = 0; k < 3; ++k) targets[k] = nullptr;
    for (int k = 0; k < planes; ++k) {
        const std::string full = entry.isRgb ? name + kRgbTails[k] : name;
        targets[k] = space.NewData(header.Type(), header.nx, header.ny, header.nz, header.nt,
                                   header.nu, header.nv, full.c_str());
        if (!targets[k] || (header.Bytes() != 0 && !targets[k]->Data())) {
            DropTargets(targets);
            return false;
        }
        targets[k]->CopyMm(header);
    }
    return true;
}

void CLoadModel::DropTargets(CZrkData* targets[3]) {
    for (int k = 0; k < 3; ++k) {
        if (targets[k]) space.DelData(targets[k]);
        targets[k] = nullptr;
    }
}

void CLoadModel::Loaded(const FileEntry& entry, CZrkData* const targets[3]) {
    ++count;
    for (int k = 0; k < 3; ++k)
        if (targets[k]) {
            targets[k]->changed = 1;
            loaded.push_back(targets[k]->name);
        }
    ShowLoaded(options, entry, targets);
}

int CLoadModel::Load1() {
    FileEntry* e = Current();
    if (!e) return 0;
    if (options.report) Host().History(e->path + "\r\n");
    const int ok = !e->failed && LoadOne(*this, *e);
    status = e->status;
    if (!ok) {
        if (failure.empty()) failure = status.empty() ? "read failed" : status;
        Host().History("load one failed\r\n");
        Host().Status("read failed");
    }
    ++index;
    return ok;
}

int CLoadModel::LoadAllIndividually() {
    // A failure ends the walk at the entry that failed.
    while (!Done())
        if (!Load1()) return 0;
    return 1;
}

int CLoadModel::Skip() {
    if (!Done()) ++index;
    return 1;
}

int CLoadModel::LoadInStack() {
    if (!Current()) return 0;
    const CStackPlan plan = PlanStack(entries, index, [this](FileEntry& e) { return Header(e); });
    FileEntry& first = entries[index];
    auto fail = [&](CZrkData* targets[3]) {
        if (targets) DropTargets(targets);
        status = first.status;
        if (failure.empty()) failure = status.empty() ? "read failed" : status;
        Host().History("load stack failed\r\n");
        Host().Status("read failed");
        ++index;
        return 0;
    };
    const CFileReader* reader = FindReader(first.code);
    if (plan.count == 0) return fail(nullptr);
    if (!reader || !reader->load) {
        first.status = "unknown file type";
        return fail(nullptr);
    }
    CZrkData summed;
    summed.CopyHeaderFrom(first.header);
    summed.CopyMm(first.header);
    summed.SetRes(plan.res);
    CZrkData* targets[3] = {};
    if (!MakeTargets(first, summed, Name(summed), targets)) {
        first.status = "alloc failed";
        return fail(targets);
    }
    const int d = plan.direction;
    uint64_t at = 0;
    for (size_t k = 0; k < plan.count; ++k) {
        FileEntry& e = entries[index + k];
        if (options.report) Host().History(e.path + "\r\n");
        for (uint64_t& dest : e.dest) dest = 0;
        e.dest[d - 2] = at;
        int ok = 0;
        try {
            ok = reader->load(options, e, targets);
        } catch (...) {
            e.status = "read failed";
        }
        if (!ok) {
            e.failed = 1;
            first.status = e.status;
            index += k;
            return fail(targets);
        }
        at += e.header.Res(d);
    }
    index += plan.count;
    status = first.status;
    Loaded(first, targets);
    return 1;
}
