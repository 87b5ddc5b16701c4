#pragma once

#include <string>

namespace qmx {

// The files that are being written, so that an interruption can remove them. Safe from any thread.

void addPartFile(const std::string& name);
void forgetPartFile(const std::string& name);
/// Removes all of them, and lets nobody add or forget one afterwards: the process is about to end.
void removePartFilesForGood();

}  // namespace qmx
