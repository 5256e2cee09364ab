#include "files/binary_file.h"
#include "files/dicom_reader.h"
#include "files/file_kinds.h"
#include "files/mat_file.h"
#include "files/nifti_reader.h"
#include "files/picture_file.h"
#include "files/scanner/scanner_kinds.h"
#include "files/text_file.h"
#include "files/zrk_file.h"

namespace {

int WorkspaceHeader(const COpenOptions&, FileEntry& entry) {
    CZrkFile file(entry.path);
    const int ok = file.ReadHeader();
    entry.status = file.status;
    return ok;
}

int WorkspaceLoad(const COpenOptions&, FileEntry& entry, CDataSpace& space) {
    CZrkFile file(entry.path);
    file.space = &space;
    const int failed = file.Read();
    entry.status = file.status;
    return failed ? 0 : 1;
}

int WorkspaceSave(const CSaveRequest& request) {
    CZrkFile file(request.path);
    const int ok = file.Write();
    if (request.status) *request.status = file.status;
    return ok;
}

}  // namespace

void InstallFileKinds() {
    static const bool installed = [] {
        RegisterReader(3, {.header = ReadBinaryHeader, .load = LoadBinary});
        RegisterReader(4, {.header = ReadTextHeader, .load = LoadText});
        RegisterReader(6, {.header = WorkspaceHeader, .load_space = WorkspaceLoad});
        RegisterWriter({.row = 0, .extensions = ".raw .bin", .write = SaveBinary});
        RegisterWriter({.row = 1, .extensions = ".txt", .write = SaveText});
        RegisterWriter({.row = 5, .extensions = ".zrk", .write = WorkspaceSave});
        RegisterDicomKinds();
        RegisterNiftiKinds();
        RegisterMatKinds();
        RegisterPictureKinds();
        RegisterScannerKinds();
        return true;
    }();
    (void)installed;
}
