// quelmor-calc: the equation language from a shell. Each -e is one equation-bar entry, in
// order; without -e, standard input gives one entry per line. History lines go to standard
// output, failure reports to standard error.
//
//   quelmor-calc [-s SCRIPT_DIR] [-k] [-r WORKSPACE] [-e EQUATION]... [-p NAME]... [-w WORKSPACE]
//   quelmor-calc --functions
//
// -r reads a workspace before the equations, -w writes one after them. A crash writes the
// crash workspace, as the program does.
// --unwrap OUT=PHASE[,QUALITY] unwraps the whole stack of PHASE after the equations and
// before the prints (OUT=PHASE in place); --unwrap-method 0|1|2, --unwrap-range LOW,HIGH
// (default -pi,pi), --unwrap-thresh T (mask: quality >= T) and --unwrap-3d set its options.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "core/block_io.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "core/script_space.h"
#include "eval/equation_bar.h"
#include "files/zrk_file.h"
#include "ops/function_rows.h"
#include "ops/unwrap/unwrap.h"
#include "shell/crash_hooks.h"
#include "shell/paths.h"
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

  private:
    std::string history_;
};

int Usage() {
    std::fprintf(stderr,
                 "usage: quelmor-calc [-s SCRIPT_DIR] [-k] [-r WORKSPACE] [-e EQUATION]... "
                 "[-p NAME]... [-w WORKSPACE]\n"
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

}  // namespace

int main(int argc, char** argv) {
    InstallFunctions();
    std::vector<std::string> equations, prints;
    std::string read_path, write_path;
    bool keep_going = false;
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
            (arg == "-r" ? read_path : write_path) = argv[++k];
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
    CDataSpace& space = GlobalDataSpace();
    space.InitReservedData();
    space.SetUnique();
    if (!read_path.empty()) {
        CZrkFile workspace(read_path);
        if (workspace.Read() != 0) {
            std::fprintf(stderr, "%s\n", workspace.status.c_str());
            return 1;
        }
    }

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
    // Message has told the failure already.
    if (!write_path.empty() && CZrkFile(write_path).Write() != 1) return 1;
    for (const std::string& name : prints) {
        const CZrkData* r = space.FindData(name.c_str());
        if (r) PrintRecord(r);
    }
    std::fflush(stdout);
    return exit_status;
}
