// CShellModules: the option holders of the shell itself, entered in their slots of the
// module table together with the data space. The application holds one for its life.
#pragma once

#include "eval/script_manager.h"
#include "ops/unwrap/unwrap.h"
#include "shell/desktop.h"
#include "shell/history.h"
#include "shell/main_frame_options.h"
#include "shell/option_table.h"
#include "shell/rename.h"

class CDataSpace;

struct CShellModules {
    // Fills the slots of the modules built so far.
    void Register(COptionTable& table, CDataSpace& space);

    CMainFrameOptions main_frame;
    CDesktop desktop;
    CHistory history;
    CScript script;
    CRename rename;
    CUnwrap unwrap;
};
