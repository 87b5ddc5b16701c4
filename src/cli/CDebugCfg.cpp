#include "cli/CDebugCfg.h"

namespace qmx {

CDebugCfg theDbgConfig;

CDebugCfg::~CDebugCfg() {
    delete[] settings;
}

}  // namespace qmx
