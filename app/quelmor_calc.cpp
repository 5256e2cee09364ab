// quelmor-calc: the equation language from a shell. Each -e is one equation-bar entry, in
// order; without -e, standard input gives one entry per line. History lines go to standard
// output, failure reports to standard error.
//
//   quelmor-calc [-s SCRIPT_DIR] [-k] [--set KEY=VALUE]... [-r [NAME=]FILE]... [--stack FILE...]
//                [-e EQUATION]... [-p NAME]... [-w WORKSPACE.zrk] [-w NAME=FILE]...
//   quelmor-calc --functions
//
// Files are opened before the equations and saved after them. -r opens any file the open
// dialog opens (workspace, binary, text, DICOM, NIfTI, MAT), its kind told by its content and
// extension unless --set open_filetype= names it, with the arrays named as the load dialog names
// them; NAME=FILE gives the one array NAME. --stack loads the files that follow as one stack. -w
// NAME=FILE saves one array in the format of the extension, -w FILE the workspace. --set sets one
// option of the open and save dialogs as the preferences file would ("open_res4d=64 64 1 1").
// Statuses go to standard error; a failed open or save ends the run with status 1. A crash writes
// the crash workspace, as the program does.
// --unwrap OUT=PHASE[,QUALITY] unwraps the whole stack of PHASE after the equations and
// before the prints (OUT=PHASE in place); --unwrap-method 0|1|2, --unwrap-range LOW,HIGH
// (default -pi,pi), --unwrap-thresh T (mask: quality >= T) and --unwrap-3d set its options.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "core/block_io.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/key_reader.h"
#include "core/report.h"
#include "core/script_space.h"
#include "eval/equation_bar.h"
#include "files/file_kinds.h"
#include "files/guess_code.h"
#include "files/load_model.h"
#include "files/open_model.h"
#include "files/zrk_file.h"
#include "ops/function_rows.h"
#include "ops/unwrap/unwrap.h"
#include "shell/crash_hooks.h"
#include "shell/option_table.h"
#include "shell/paths.h"
#include "shell/shell_modules.h"
#include "shell/trace.h"

namespace {

class CConsoleHost : public CHost {
  public:
    void History(const std::string& line) override {
        std::string text = line;
        if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0)
            text.resize(text.size() - 2);
        std::printf("%s\n", text.c_str());
        history_ += line;
    }
    const std::string& HistoryText() const override { return history_; }
    void ClearHistory() override { history_.clear(); }
    void Message(const std::string& text) override { std::fprintf(stderr, "%s", text.c_str()); }
    // Nobody answers: the question is told and the answer is no.
    bool AskYesNo(const std::string& question) override {
        std::fprintf(stderr, "%s: no\n", question.c_str());
        return false;
    }

  private:
    std::string history_;
};

int Usage() {
    std::fprintf(stderr,
                 "usage: quelmor-calc [-s SCRIPT_DIR] [-k] [--set KEY=VALUE]... "
                 "[-r [NAME=]FILE]... [--stack FILE...]\n"
                 "       [-e EQUATION]... [-p NAME]... [-w WORKSPACE.zrk] [-w NAME=FILE]...\n"
                 "       quelmor-calc --functions\n"
                 "       --unwrap OUT=PHASE[,QUALITY] [--unwrap-method 0|1|2]\n"
                 "       [--unwrap-range LOW,HIGH] [--unwrap-thresh T] [--unwrap-3d]\n");
    return 2;
}

void ListFunctions() {
    for (const CFuncRow* row : FunctionTable()) {
        const CFuncHelp help = ReadHelp(row->help);
        std::printf("%s %d %d %s\n", row->name, row->min_args, row->max_args, help.title);
    }
}

void PrintRecord(const CZrkData* r) {
    std::printf("%s\n", r->HeaderNameText().c_str());
    if (!r->Data()) return;
    const int comps = r->IsComplex() ? 2 : 1;
    CBlockReader<double> reader(r, comps);
    std::vector<double> buf(kBlockElements * comps);
    for (uint64_t k = 0; k < r->Count(); k += kBlockElements) {
        const size_t n = static_cast<size_t>(std::min<uint64_t>(kBlockElements, r->Count() - k));
        const double* x = reader.Read(k, n, buf.data());
        for (size_t j = 0; j < n; ++j) {
            if (comps == 2)
                std::printf("%.9g %.9g\n", x[2 * j], x[2 * j + 1]);
            else
                std::printf("%.9g\n", x[j]);
        }
    }
}

// The --unwrap options: the request and the driver's settings.
struct CUnwrapRequest {
    std::string out, phase, quality;
    CUnwrap options;
};

// Takes one --unwrap option at argv[*k]; false when it is not one or is malformed.
bool UnwrapOption(CUnwrapRequest& u, int argc, char** argv, int* k) {
    const std::string arg = argv[*k];
    if (arg == "--unwrap-3d") {
        u.options.unwrap_do_3d = 1;
        return true;
    }
    if (arg.rfind("--unwrap", 0) != 0 || *k + 1 >= argc) return false;
    const std::string value = argv[++*k];
    if (arg == "--unwrap") {
        const size_t eq = value.find('='), comma = value.find(',');
        if (eq == std::string::npos || eq == 0) return false;
        u.out = value.substr(0, eq);
        u.phase = value.substr(eq + 1, comma == std::string::npos ? comma : comma - eq - 1);
        if (comma != std::string::npos) u.quality = value.substr(comma + 1);
        return !u.phase.empty();
    }
    if (arg == "--unwrap-method") {
        u.options.unwrap_method = std::atoi(value.c_str());
        return u.options.unwrap_method >= 0 && u.options.unwrap_method <= 2;
    }
    if (arg == "--unwrap-range") {
        u.options.preset = UNWRAP_RANGE_OTHER;
        return std::sscanf(value.c_str(), "%lf,%lf", &u.options.low, &u.options.high) == 2;
    }
    if (arg == "--unwrap-thresh") {
        u.options.thresh_check = true;
        u.options.unwrap_thresh = std::atoi(value.c_str());
        return true;
    }
    return false;
}

// Runs the driver over the whole stack; 0 or 1 with the reason on standard error.
int RunUnwrap(CDataSpace& space, const CUnwrapRequest& u) {
    CZrkData* phase = space.FindData(u.phase.c_str());
    const CZrkData* quality = u.quality.empty() ? nullptr : space.FindData(u.quality.c_str());
    if (!phase || (!u.quality.empty() && !quality)) {
        std::fprintf(stderr, "unwrap: no array %s\n", (phase ? u.quality : u.phase).c_str());
        return 1;
    }
    CZrkData* out = u.out == u.phase ? nullptr : space.FindOrNew(u.out.c_str());
    const int status = Reported({.func = "unwrap"}, 1, [&] {
        u.options.Unwrap({.phase = phase, .output = out, .quality = quality});
        return 0;
    });
    if (status) std::fprintf(stderr, "%s\n", ErrorText().c_str());
    return status;
}

// One -r, --stack or -w: the file, and the array name of NAME=FILE.
struct CFileArg {
    std::string name, path;
    std::vector<std::string> stack;
};

// NAME=FILE when the part before the first '=' is a name and the whole is not a file.
CFileArg SplitNamed(const std::string& arg) {
    const size_t eq = arg.find('=');
    FILE* f = std::fopen(arg.c_str(), "rb");
    if (f) std::fclose(f);
    if (eq == std::string::npos || eq == 0 || f || arg.substr(0, eq).find('/') != std::string::npos)
        return {"", arg, {}};
    return {arg.substr(0, eq), arg.substr(eq + 1), {}};
}

// "KEY=VALUE" to the module that keeps KEY, as one line of the preferences file.
bool SetOption(const COptionTable& table, const std::string& setting) {
    const size_t eq = setting.find('=');
    if (eq == std::string::npos || eq == 0) return false;
    const std::string line = setting.substr(0, eq + 1) + " " + setting.substr(eq + 1) + "\n";
    std::unique_ptr<FILE, int (*)(FILE*)> f(
        fmemopen(const_cast<char*>(line.data()), line.size(), "r"), std::fclose);
    if (!f) return false;
    CKeyReader reader(f.get());
    try {
        reader.Next();
        return table.Offer(reader);
    } catch (const CKeyReader::EndOfFile&) {
        return false;
    }
}

// Opens as the open dialog does; 0, or 1 with the status on standard error.
// The kind is guessed unless --set open_filetype= named it.
int OpenFiles(CShellModules& modules, CDataSpace& space, const CFileArg& file, bool guess) {
    const std::vector<std::string> paths = file.stack.empty() ? std::vector{file.path} : file.stack;
    COpenOptions& options = modules.open;
    if (guess) options.filetype = GuessOpenCode(paths[0]);
    std::string folder;
    COpenModel open(options, space, folder);
    const int rule = options.name_is_file;
    if (!file.name.empty()) options.name_is_file = 4;
    open.run_load = [&](CLoadModel& load) {
        load.typed_name = file.name;
        if (file.stack.empty()) {
            load.LoadAllIndividually();
            return;
        }
        while (!load.Done() && load.failure.empty()) load.LoadInStack();
    };
    open.Ok(paths);
    options.name_is_file = rule;
    std::fprintf(stderr, "%s\n", open.status.c_str());
    const bool good = open.status == "read success" || open.status == "read complete";
    return good ? 0 : 1;
}

// Saves one array by the extension of its file; 0, or 1 with the reason.
int SaveArray(CShellModules& modules, CDataSpace& space, const CFileArg& file) {
    CZrkData* a = space.FindData(file.name.c_str());
    const CFileWriter* writer = FindWriterByExtension(file.path);
    std::string status = "file not saved";
    if (!a) {
        status = "can not find data";
    } else if (!writer || !writer->write) {
        status = "unknown file type";
    } else {
        CSaveRequest request;
        request.path = file.path;
        request.arrays = {a};
        request.options = &modules.save;
        request.status = &status;
        if (writer->write(request) == 1) status = "file saved";
    }
    std::fprintf(stderr, "%s: %s\n", file.path.c_str(), status.c_str());
    return status == "file saved" ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    InstallFunctions();
    InstallFileKinds();
    CShellModules modules;
    COptionTable table;
    CDataSpace& space = GlobalDataSpace();
    modules.Register(table, space);
    std::vector<std::string> equations, prints;
    std::vector<CFileArg> reads, writes;
    bool keep_going = false;
    bool guess_kind = true;
    CUnwrapRequest unwrap;
    for (int k = 1; k < argc; ++k) {
        const std::string arg = argv[k];
        if (arg.rfind("--unwrap", 0) == 0) {
            if (!UnwrapOption(unwrap, argc, argv, &k)) return Usage();
        } else if (arg == "--functions") {
            ListFunctions();
            return 0;
        } else if (arg == "-k") {
            keep_going = true;
        } else if ((arg == "-r" || arg == "-w") && k + 1 < argc) {
            (arg == "-r" ? reads : writes).push_back(SplitNamed(argv[++k]));
        } else if (arg == "--stack" && k + 1 < argc) {
            CFileArg stack;
            while (k + 1 < argc && argv[k + 1][0] != '-') stack.stack.push_back(argv[++k]);
            if (stack.stack.empty()) return Usage();
            reads.push_back(stack);
        } else if (arg == "--set" && k + 1 < argc) {
            guess_kind = guess_kind && std::string(argv[k + 1]).rfind("open_filetype=", 0) != 0;
            if (!SetOption(table, argv[++k])) {
                std::fprintf(stderr, "unknown option: %s\n", argv[k]);
                return 2;
            }
        } else if ((arg == "-e" || arg == "-p" || arg == "-s") && k + 1 < argc) {
            const char* value = argv[++k];
            if (arg == "-e") equations.push_back(value);
            if (arg == "-p") prints.push_back(value);
            if (arg == "-s") {
                GlobalScriptSpace().SetDirectory(value);
                GlobalScriptSpace().Refresh();
            }
        } else {
            return Usage();
        }
    }
    CTrace trace("quelmor-calc");
    CPaths paths = CPaths::FromExecutable(ExecutablePath());
    paths.UseConfigFolderIfReadOnly(std::getenv("HOME"));
    trace.SetCrashFile(paths.crash_workspace.c_str());
    InstallWorkspaceHooks(paths.crash_workspace.c_str());
    CConsoleHost host;
    CScopedHost scoped(host);
    space.InitReservedData();
    space.SetUnique();
    for (const CFileArg& file : reads)
        if (OpenFiles(modules, space, file, guess_kind) != 0) return 1;

    int exit_status = 0;
    auto run = [&](const std::string& text) {
        if (EquationBarEval(space, text) == 0) return true;
        std::fprintf(stderr, "%s\n", ErrorText().c_str());
        exit_status = 1;
        return keep_going;
    };
    if (equations.empty()) {
        std::string line;
        while (std::getline(std::cin, line))
            if (!run(line)) break;
    } else {
        for (const std::string& text : equations)
            if (!run(text)) break;
    }
    if (exit_status && !keep_going) return exit_status;
    if (!unwrap.phase.empty() && RunUnwrap(space, unwrap)) return 1;
    for (const CFileArg& file : writes) {
        // Message has told a failed workspace already.
        if (file.name.empty() && CZrkFile(file.path).Write() != 1) return 1;
        if (!file.name.empty() && SaveArray(modules, space, file) != 0) return 1;
    }
    for (const std::string& name : prints) {
        const CZrkData* r = space.FindData(name.c_str());
        if (r) PrintRecord(r);
    }
    std::fflush(stdout);
    return exit_status;
}
