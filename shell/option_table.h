// COptionTable: the modules that keep options in the preferences file, in the one fixed
// order in which they are read and written. Each slot holds a module's PrintfOptions and
// ScanfOptions pair; a module that is not built leaves its slot empty and is skipped.
//
// Reading offers every token to each filled slot in order; a token no module wants (a comment
// word, a key of a module that is gone) is passed over. The token "mu_estimation_options"
// runs the section reader of the inversion options when one is hooked in.
//
//   COptionTable table;
//   table.Set(OPT_DATA_SPACE, [&](FILE* f) { ds.PrintfOptions(f); },
//             [&](CKeyReader& r) { return ds.ScanfOptions(r); });
//   table.ReadOptions(path);   // a missing file is normal
#pragma once

#include <cstdio>
#include <functional>
#include <string>

class CKeyReader;

enum OptionModule {
    OPT_MAIN_FRAME,
    OPT_COPY,
    OPT_LOAD_DIALOG,
    OPT_SAVE_DIALOG,
    OPT_AVI_WRITER,
    OPT_1D,
    OPT_2D,
    OPT_XY,
    OPT_RGB,
    OPT_DESKTOP,
    OPT_SCRIPT,
    OPT_NEW_1D,
    OPT_NEW_2D,
    OPT_NEW_RGB,
    OPT_NEW_XY,
    OPT_HISTORY,
    OPT_PIPE,
    OPT_CAPTION,
    OPT_RENAME,
    OPT_UNWRAP,
    OPT_WIN_LEV,
    OPT_ZOOM,
    OPT_DATA_SPACE,
    OPT_WAVE_DIRECTION,
    OPT_MODULE_COUNT
};

class COptionTable {
  public:
    using PrintfFn = std::function<void(FILE*)>;
    using ScanfFn = std::function<int(CKeyReader&)>;
    using SectionFn = std::function<void(CKeyReader&)>;

    void Set(OptionModule slot, PrintfFn printf_options, ScanfFn scanf_options);
    bool Has(OptionModule slot) const { return static_cast<bool>(scanf_[slot]); }
    // The reader of the hand-written section that follows "mu_estimation_options".
    void SetMuEstimationReader(SectionFn reader) { mu_estimation_options_ = std::move(reader); }
    // Its writer, run after every slot: a damaged section then swallows no other module's keys.
    void SetMuEstimationWriter(PrintfFn writer) { mu_estimation_writer_ = std::move(writer); }

    // Reads as far as the file goes; a missing file, a malformed value or a truncated last
    // line ends the read quietly, keeping what was set. Returns the number of keys taken.
    int ReadOptions(const std::string& path) const;
    // Writes every filled slot in order; a failure to write is silent. Returns 0 or 1.
    int WriteOptions(const std::string& path) const;

    // The loop body of ReadOptions, for a reader that is already positioned on a token.
    bool Offer(CKeyReader& reader) const;

  private:
    PrintfFn printf_[OPT_MODULE_COUNT];
    ScanfFn scanf_[OPT_MODULE_COUNT];
    SectionFn mu_estimation_options_;
    PrintfFn mu_estimation_writer_;
};
