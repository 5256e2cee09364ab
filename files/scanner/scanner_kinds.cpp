#include "files/scanner/scanner_kinds.h"

#include "files/file_kinds.h"
#include "files/scanner/image_file.h"
#include "files/scanner/plotpulse_file.h"
#include "files/scanner/pulsegen_file.h"
#include "files/scanner/raw_header.h"
#include "files/scanner/raw_load.h"

namespace {

// The baselines radio group as it stands when the file is read.
void TakeBaselines(const COpenOptions& options, FileEntry& entry) {
    entry.addBaseline = options.baselines[1];
    entry.subtractBaseline = options.baselines[2];
}

}  // namespace

void RegisterScannerKinds() {
    static const bool registered = [] {
        RegisterReader(7, {.header =
                               [](const COpenOptions& o, FileEntry& e) {
                                   TakeBaselines(o, e);
                                   return ReadRawHeader(e, nullptr);
                               },
                           .load = LoadRaw});
        RegisterReader(8, {.header =
                               [](const COpenOptions& o, FileEntry& e) {
                                   TakeBaselines(o, e);
                                   return ReadPulsegenHeader(e);
                               },
                           .load = LoadPulsegen});
        RegisterReader(9, {.header =
                               [](const COpenOptions& o, FileEntry& e) {
                                   TakeBaselines(o, e);
                                   return ReadPlotpulseHeader(e);
                               },
                           .load = LoadPlotpulse});
        RegisterReader(12, {.header =
                                [](const COpenOptions& o, FileEntry& e) {
                                    TakeBaselines(o, e);
                                    return ReadImageHeader(e);
                                },
                            .load = LoadImage});
        RegisterWriter({.row = 6, .extensions = "", .write = SavePulsegenRequest});
        return true;
    }();
    (void)registered;
}
