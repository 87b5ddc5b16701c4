#pragma once

#include <string>
#include <sys/types.h>

namespace qmx {

// The files that are being written, so that an interruption can remove them. Safe from any thread.

/// Opens a new file for writing, so that no interruption finds it open and unknown. Returns: -1 where that cannot be
/// done, with the reason in errno.
int openPartFile(const std::string& name, mode_t permissions);
void forgetPartFile(const std::string& name);
/// Removes all of them, and lets nobody open or forget one afterwards: the process is about to end.
void removePartFilesForGood();

}  // namespace qmx
