#pragma once

namespace qmx {

/// Debug settings of the process: one array, null at the start, released at exit.
class CDebugCfg {
public:
    CDebugCfg() = default;
    CDebugCfg(const CDebugCfg&) = delete;
    CDebugCfg& operator=(const CDebugCfg&) = delete;
    ~CDebugCfg();

private:
    char* settings = nullptr;
};

extern CDebugCfg theDbgConfig;

}  // namespace qmx
