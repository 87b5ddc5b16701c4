#include "convert/PartFiles.h"

#include <mutex>
#include <set>
#include <unistd.h>

namespace qmx {
namespace {

std::mutex& partFilesMutex() {
    static std::mutex mutex;
    return mutex;
}

std::set<std::string>& partFiles() {
    static std::set<std::string> names;
    return names;
}

}  // namespace

void addPartFile(const std::string& name) {
    const std::lock_guard lock(partFilesMutex());
    partFiles().insert(name);
}

void forgetPartFile(const std::string& name) {
    const std::lock_guard lock(partFilesMutex());
    partFiles().erase(name);
}

void removePartFilesForGood() {
    partFilesMutex().lock();
    for (const std::string& name : partFiles())
        unlink(name.c_str());
}

}  // namespace qmx
